#pragma once

// The commands of the program. Each adds itself to the command line, with its options; its own file
// says what the command takes, does and prints.

#include "app/commands/command_line.h"

namespace app {

/// Adds the commands of this home, in the order of the help.
void AddCommands(CommandLine& line);

/// The last part of the help.
extern const char kFooter[];

/// Returns whether the delivered policy is in force, in a sentence; empty in a home that cannot
/// tell.
std::string DeliveredForce();

void AddInit(CommandLine& line);
void AddCheck(CommandLine& line);
void AddDiff(CommandLine& line);
void AddPreview(CommandLine& line);
void AddUpdate(CommandLine& line);
/// set, release, release-for-service, exclude, content-log.
void AddSwitches(CommandLine& line);
void AddShow(CommandLine& line);
void AddLog(CommandLine& line);
void AddSeal(CommandLine& line);
void AddUnseal(CommandLine& line);
void AddServe(CommandLine& line);
void AddVerify(CommandLine& line);
void AddReport(CommandLine& line);
void AddDoctor(CommandLine& line);

}  // namespace app
