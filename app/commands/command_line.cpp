#include "app/commands/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <iostream>

#include "app/machine/home.h"
#include "app/text/errors.h"
#include "app/text/wording.h"

namespace app {

const char kVersion[] = SIGIL_VERSION;
namespace {

constexpr char kSummary[] = "Host program of the SigilSetting library";
constexpr char kExitStatus[] =
    "Exit status:\n"
    "  0  the work is done; check: nothing found; diff: no difference;\n"
    "     verify: in force\n"
    "  1  an export or the machine failed, or nothing was saved;\n"
    "     check: findings; diff: differences; verify: not in force\n"
    "  2  a wrong argument or a file that will not do; nothing has been changed\n"
    "\n";
/// Heads the commands that this home lacks.
constexpr char kElsewhere[] = "On Linux alone";
constexpr char kCommandFooter[] = "`sigilctl --help` tells of the exit status and the rest.";

/// "no option '--jsn'; is '--json' meant?"
[[noreturn]] void RefuseName(const char* kind, const std::string& name,
                             const std::set<std::string>& names) {
  const std::string guess = Guess(name, names);
  throw UsageError(std::string("no ") + kind + " '" + name + "'" +
                   (guess.empty() ? "; --help lists them" : "; is '" + guess + "' meant?"));
}

/// Throws when the first argument is no command.
void RequireCommand(const std::vector<std::string>& arguments, const CLI::App& parser) {
  std::set<std::string> names;
  for (const CLI::App* command : parser.get_subcommands(nullptr)) names.insert(command->get_name());
  std::size_t first = 1;
  while (first < arguments.size() && arguments[first].starts_with('-'))
    first += arguments[first] == "--root" ? 2 : 1;
  if (first < arguments.size() && !names.contains(arguments[first]))
    RefuseName("command", arguments[first], names);
}

/// Throws when an argument is left that the command does not know.
void RequireKnown(const CLI::App& parser) {
  std::vector<std::string> others = parser.remaining(true);
  if (others.empty()) return;
  const auto isOption = [](const std::string& each) { return each.starts_with('-'); };
  const auto option = std::ranges::find_if(others, isOption);
  if (option == others.end()) throw UsageError("'" + others.front() + "' is an argument too many");
  std::set<std::string> names;
  for (const CLI::App* command : parser.get_subcommands())
    for (const CLI::Option* known : command->get_options())
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

}  // namespace

CommandLine::CommandLine() : m_parser(kSummary, "sigilctl") {
  m_parser.fallthrough();  // --root may stand behind the command too
  m_parser.footer(std::string(kExitStatus) + kEnvironment);
  m_parser.set_version_flag("--version", std::string("sigilctl ") + kVersion);
  AddMachineOption(m_parser);
}

CLI::App& CommandLine::Add(const std::string& name, const std::string& help, Action action) {
  CLI::App& command = AddWithoutMachine(name, help, [action = std::move(action)] {
    RequireMachine();
    return action();
  });
  AddMachineOption(command);
  return command;
}

CLI::App& CommandLine::AddWithoutMachine(const std::string& name, const std::string& help,
                                         Action action) {
  CLI::App* const command = m_parser.add_subcommand(name, help);
  command->footer(kCommandFooter);
  command->callback([this, action = std::move(action)] { m_action = action; });
  return *command;
}

void CommandLine::AddMissing(const std::string& name, const std::string& help,
                             const std::string& why) {
  AddWithoutMachine(name, help, [name, why]() -> int { throw UsageError(name + ": " + why); })
      .group(kElsewhere)
      ->fallthrough(false)
      ->prefix_command();
}

int CommandLine::Run(const std::vector<std::string>& given) {
  const std::vector<std::string> arguments = WithHelpOption(given);
  try {
    // The parser wants the last argument first.
    m_parser.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
  } catch (const CLI::Success& help) {
    return m_parser.exit(help);
  } catch (const CLI::ParseError& error) {
    Refuse(error, arguments);
  }
  if (!m_action) throw UsageError("a command is needed; --help lists them");
  return m_action();
}

void CommandLine::AddMachineOption(CLI::App& parser) {
  if (kMachineIsFolder)
    parser
        .add_option_function<std::string>("--root", UseMachine,
                                          "The machine's folder (else SIGIL_ROOT)")
        ->type_name("ROOT");
}

void CommandLine::Refuse(const CLI::ParseError& error, const std::vector<std::string>& arguments) {
  RequireCommand(arguments, m_parser);
  RequireKnown(m_parser);
  throw UsageError(error.what());
}

CLI::Validator WholeNumber() {
  const auto check = [](const std::string& text) -> std::string {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::result_out_of_range) return "'" + text + "' has more than 32 bits";
    if (error != std::errc() || stop != end) return "'" + text + "' is no whole number";
    return "";
  };
  return {check, ""};
}

CLI::Validator OneOf(std::vector<std::string> words) {
  const auto check = [words = std::move(words)](const std::string& text) -> std::string {
    if (std::ranges::find(words, text) != words.end()) return "";
    return Listed(words, " or ") + ", not '" + text + "'";
  };
  return {check, ""};
}

void AddPolicyFile(CLI::App& command, std::string& file) {
  command.add_option("FILE", file, "The policy, UTF-8 or UTF-16 text; - is standard input")
      ->type_name("")
      ->required();
}

void AddPolicySource(CLI::App& command, std::string& file) {
  command
      .add_option("FILE", file,
                  "The policy, text or sealed; - is a text on standard input (the delivered one)")
      ->type_name("");
}

CLI::Option* AddOutput(CLI::App& command, std::string& file, const std::string& value,
                       const std::string& help) {
  return command.add_option("-o,--output", file, help)->type_name(value);
}

void AddPolicyId(CLI::App& command, int& policyId) {
  command.add_option("--policy-id", policyId, "Which policy of the text (1)")
      ->type_name("N")
      ->check(WholeNumber());
}

void AddCare(CLI::App& command, Care& care) {
  CLI::Option* const force =
      command.add_flag("--force", care.isForced, "Also a policy that would be refused");
  command.add_flag("--strict", care.isStrict, "No policy with a finding")->excludes(force);
}

void AddPaper(CLI::App& command, std::string& paper, bool& isLandscape) {
  command.add_option("--paper", paper, "The paper (A4): A3, A4 or Letter")
      ->type_name("SIZE")
      ->check(OneOf({"A3", "A4", "Letter"}));
  command.add_flag("--landscape", isLandscape, "The paper's long side lies");
}

void AddJson(CLI::App& command, bool& isJson) {
  command.add_flag("--json", isJson, "As one JSON object");
}

void AddVerbose(CLI::App& command, bool& isVerbose) {
  command.add_flag("-v,--verbose", isVerbose, "With the library's own messages");
}

}  // namespace app
