// sigilctl: the host program for administrators and for trying things out.
//
// The commands stand in commands.cpp. Here the command line is read by their definitions, and
// whatever a command throws becomes one line and an exit status.

#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <set>

#include "app/cause.h"
#include "app/commands.h"
#include "app/guess.h"
#include "app/usage_error.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr int kFailed = 1;
constexpr int kMisused = 2;

/// The command line as it is read: by CLI11, which keeps what it finds in Values.
struct CommandLine {
  CLI::App parser{kSummary, "sigilctl"};
  std::string root;
  Values values;
  const Command* chosen = nullptr;
};

void AddOption(CLI::App& parser, const Option& option, Values& values) {
  const auto keep = [&values, key = option.Key()](const std::string& text) {
    values.Set(key, text);
  };
  CLI::Option* const added =
      option.IsFlag() ? parser.add_flag_callback(
                            option.name, [keep] { keep(""); }, option.Help())
                      : parser.add_option_function<std::string>(option.name, keep, option.Help())
                            ->type_name(option.value);
  added->required(option.isNeeded);
  if (!option.needs.empty()) added->needs(parser.get_option(option.needs));
}

void Define(CommandLine& line, const std::vector<Command>& commands) {
  line.parser.fallthrough();  // --root may stand behind the command too, which takes this over now
  line.parser.footer(kFooter);
  line.parser.set_help_flag(kHelpOption.name, kHelpOption.help);
  line.parser.set_version_flag(kVersionOption.name, std::string("sigilctl ") + SIGIL_VERSION,
                               kVersionOption.help);
  line.parser.add_option(kRootOption.name, line.root, kRootOption.help)
      ->type_name(kRootOption.value);
  for (const Command& command : commands) {
    CLI::App* const parser = line.parser.add_subcommand(command.name, command.help);
    if (command.isHidden) parser->group("");
    for (const Option& option : command.options) AddOption(*parser, option, line.values);
    parser->callback([&line, &command] { line.chosen = &command; });
  }
}

/// The first argument is a command, or is told to be none.
void RequireCommand(int argc, char** argv, const std::vector<Command>& commands) {
  std::set<std::string> names;
  for (const Command& command : commands) names.insert(command.name);
  int first = 1;
  while (first < argc && argv[first][0] == '-')
    first += std::string(argv[first]) == "--root" ? 2 : 1;
  if (first >= argc) return;
  const std::string name = argv[first];
  if (names.contains(name)) return;
  const std::string guess = Guess(name, names);
  throw UsageError("no command '" + name + "'" +
                   (guess.empty() ? "; --help lists them" : "; is '" + guess + "' meant?"));
}

/// Nothing is to appear in a folder that was misspelt, or that belongs to another account.
void RequireMachine() {
  const fs::path root = platform::MachineRoot();
  const auto state = platform::ExamineRoot();
  std::error_code error;
  if (!state) throw UsageError(root.string() + ": no machine here; `sigilctl init` lays one out");
  if (!state->isOwn) {
    const auto user = platform::FindUser(state->owner);
    const std::string owner =
        user ? platform::ToUtf8(user->login) : "#" + std::to_string(state->owner);
    throw UsageError(root.string() + ": this machine belongs to " + owner +
                     "; run it as that account: sudo -u '" + owner + "' sigilctl --root '" +
                     root.string() + "' ...");
  }
  if (state->isOpenToOthers)
    throw UsageError(root.string() +
                     ": other accounts can write here; `chmod go-w` closes it to them");
  if (!fs::exists(root / "machine.ini", error))
    throw UsageError(root.string() +
                     ": no machine here, for want of a machine.ini; `sigilctl init` lays one out");
}

int Run(int argc, char** argv) {
  const std::vector<Command> commands = Commands();
  CommandLine line;
  Define(line, commands);
  try {
    line.parser.parse(argc, argv);
  } catch (const CLI::Success& help) {
    return line.parser.exit(help);
  } catch (const CLI::ParseError& error) {
    RequireCommand(argc, argv, commands);
    throw UsageError(error.what());
  }
  if (line.chosen == nullptr) throw UsageError("a command is needed; --help lists them");
  if (line.parser.count("--root") > 0) {
    if (line.root.empty()) throw UsageError("--root: a folder, not an empty text");
    setenv("SIGIL_ROOT", line.root.c_str(), 1);
  }
  if (line.chosen->needsMachine) RequireMachine();
  const int status = line.chosen->run(line.values);
  if (!std::cout.flush()) throw std::runtime_error("standard output cannot be written");
  return status;
}

}  // namespace
}  // namespace app

int main(int argc, char** argv) {
  try {
    return app::Run(argc, argv);
  } catch (const app::UsageError& error) {
    std::cerr << "sigilctl: " << platform::Visible(error.what()) << "\n";
    return app::kMisused;
  } catch (const std::exception& error) {
    std::cerr << "sigilctl: " << platform::Visible(app::CauseOf(error)) << "\n";
    return app::kFailed;
  }
}
