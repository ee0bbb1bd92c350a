// sigilctl: the host program for administrators and for trying things out.
//
// The commands stand in commands.cpp. Here the command line is read by their definitions, and
// whatever a command throws becomes one line and an exit status.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <set>

#include "app/commands/commands.h"
#include "app/machine/home.h"
#include "app/text/cause.h"
#include "app/text/guess.h"
#include "app/text/usage_error.h"
#include "platform/visible_text.h"

namespace app {
namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;
/// Above the commands that this home lacks, in the help.
constexpr char kElsewhere[] = "On Linux alone";

/// In place of the help's, where it is that of one command.
constexpr char kCommandFooter[] = "`sigilctl --help` tells of the exit status and the rest.";

/// The command line as it is read: by CLI11, which keeps what it finds in Values.
struct CommandLine {
  CLI::App parser{kSummary, "sigilctl"};
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
  AddMachineOption(line.parser);
  for (const Command& command : commands) {
    CLI::App* const parser = line.parser.add_subcommand(command.name, command.help);
    if (command.run == nullptr)
      parser->group(kElsewhere)->fallthrough(false)->prefix_command();
    else
      for (const Option& option : command.options) AddOption(*parser, option, line.values);
    if (command.run != nullptr && command.needsMachine) AddMachineOption(*parser);
    parser->footer(kCommandFooter);
    if (command.isHidden) parser->group("");
    parser->callback([&line, &command] { line.chosen = &command; });
  }
}

/// "no option '--jsn'; is '--json' meant?"
[[noreturn]] void RefuseName(const char* kind, const std::string& name,
                             const std::set<std::string>& names) {
  const std::string guess = Guess(name, names);
  throw UsageError(std::string("no ") + kind + " '" + name + "'" +
                   (guess.empty() ? "; --help lists them" : "; is '" + guess + "' meant?"));
}

/// The first argument is a command, or is told to be none.
void RequireCommand(const std::vector<std::string>& arguments,
                    const std::vector<Command>& commands) {
  std::set<std::string> names;
  for (const Command& command : commands) names.insert(command.name);
  std::size_t first = 1;
  while (first < arguments.size() && arguments[first].starts_with('-'))
    first += arguments[first] == "--root" ? 2 : 1;
  if (first >= arguments.size()) return;
  if (!names.contains(arguments[first])) RefuseName("command", arguments[first], names);
}

/// Each argument is one that the command knows, or the first other is told.
void RequireKnown(const CLI::App& parser) {
  std::vector<std::string> others = parser.remaining(true);
  if (others.empty()) return;
  const auto isOption = [](const std::string& each) { return each.starts_with('-'); };
  const auto option = std::ranges::find_if(others, isOption);
  if (option == others.end()) throw UsageError("'" + others.front() + "' is an argument too many");
  std::set<std::string> names;
  for (const CLI::App* each : parser.get_subcommands())
    for (const CLI::Option* known : each->get_options())
      for (const std::string& word : known->get_lnames()) names.insert("--" + word);
  RefuseName("option", option->substr(0, option->find('=')), names);
}

/// "help" in place of --help, also before a command.
std::vector<std::string> WithHelpOption(std::vector<std::string> arguments) {
  if (arguments.size() < 2 || arguments[1] != "help") return arguments;
  arguments.erase(arguments.begin() + 1);
  arguments.push_back("--help");
  return arguments;
}

int Run(const std::vector<std::string>& arguments) {
  std::vector<Command> commands = Commands();
  // What this home lacks comes last in the help.
  std::ranges::stable_partition(commands, [](const Command& each) { return each.run != nullptr; });
  CommandLine line;
  Define(line, commands);
  try {
    // From the last one on, and without the program itself.
    line.parser.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
  } catch (const CLI::Success& help) {
    return line.parser.exit(help);
  } catch (const CLI::ParseError& error) {
    RequireCommand(arguments, commands);
    RequireKnown(line.parser);
    throw UsageError(error.what());
  }
  if (line.chosen == nullptr) throw UsageError("a command is needed; --help lists them");
  if (line.chosen->run == nullptr)
    throw UsageError(line.chosen->name + ": " + line.chosen->whyElsewhere);
  if (line.chosen->needsMachine) RequireMachine();
  const int status = line.chosen->run(line.values);
  if (!std::cout.flush()) throw std::runtime_error("standard output cannot be written");
  return status;
}

}  // namespace
}  // namespace app

int main(int argc, char** argv) {
  try {
    return app::Run(app::WithHelpOption(app::Arguments(argc, argv)));
  } catch (const app::UsageError& error) {
    std::cerr << "sigilctl: " << platform::Visible(error.what()) << "\n";
    return app::kMisused;
  } catch (const std::exception& error) {
    std::cerr << "sigilctl: " << platform::Visible(app::CauseOf(error)) << "\n";
    return app::kFailed;
  }
}
