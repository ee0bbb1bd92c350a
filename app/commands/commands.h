#pragma once

#include <vector>

#include "app/commands/command.h"

namespace app {

/// All commands of the program, in the order of its help.
std::vector<Command> Commands();

/// What runs the command of this name, which Windows lacks; null there.
Action OnLinux(const std::string& name);

/// What holds for all of them.
inline constexpr char kSummary[] = "Host program of the SigilSetting library";
inline const Option kRootOption = {.name = "--root",
                                   .value = "ROOT",
                                   .help = "The machine's folder (else SIGIL_ROOT)",
                                   .place = Place::kFolder};
inline const Option kHelpOption = {.name = "-h,--help", .help = "Print this help message and exit"};
inline const Option kVersionOption = {.name = "--version",
                                      .help = "Display program version information and exit"};

/// For the manual alone, as what follows.
inline constexpr const char* kExamples[] = {
    "sigilctl init ~/machine; export SIGIL_ROOT=~/machine", "sigilctl check policy.xml",
    "sigilctl preview policy.xml -o page.png", "sigilctl update policy.xml",
    "sigilctl seal policy.xml; sigilctl set; sigilctl doctor"};
inline constexpr char kSeeAlso[] =
    "See also:\n"
    "    policy.md on what a policy holds, and machine.md on the machine's folder,\n"
    "    among the documents of this package.\n";
inline constexpr char kFiles[] =
    "Files:\n"
    "  machine.ini      what a Windows machine would know by itself: the user, the\n"
    "                   domain, accounts and printers; in the machine's folder, as\n"
    "                   what follows\n"
    "  C                drive C: the client's files, the delivered policy, the setting\n"
    "                   file and the log\n"
    "  pipe/hlwatermark the pipe, while serve runs\n"
    "  mutex            the named mutexes\n";

}  // namespace app
