#pragma once

#include <vector>

#include "app/command.h"

namespace app {

/// All commands of the program, in the order of its help.
std::vector<Command> Commands();

/// What holds for all of them.
inline constexpr char kSummary[] = "Host program of the SigilSetting library";
inline const Option kRootOption = {.name = "--root",
                                   .value = "ROOT",
                                   .help = "The machine's folder (else SIGIL_ROOT)",
                                   .place = Place::kFolder};
inline const Option kHelpOption = {.name = "-h,--help", .help = "Print this help message and exit"};
inline const Option kVersionOption = {.name = "--version",
                                      .help = "Display program version information and exit"};

/// The help prints this text as it is, the manual by its form: parts with a heading and, behind two
/// blanks each, names with what they stand for.
inline constexpr char kFooter[] =
    "Exit status:\n"
    "  0  the work is done; check: nothing found; diff: no difference\n"
    "  1  an export or the machine failed, or nothing was saved;\n"
    "     check: findings; diff: differences\n"
    "  2  a wrong argument or a file that will not do; nothing has been changed\n"
    "\n"
    "Environment:\n"
    "  SIGIL_ROOT       the machine's folder; else sigil/machine in XDG_DATA_HOME,\n"
    "                   which is ~/.local/share where it is not set\n"
    "  SIGIL_LOG        the log file, in place of the machine's own\n"
    "  SIGIL_LOG_LEVEL  the lowest level that is written to it (0)\n"
    "  TMPDIR           where policies are rehearsed, in private folders that go\n"
    "                   again; memory where it is not set\n";
/// For the manual alone.
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
