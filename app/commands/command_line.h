#pragma once

// The command line as CLI11 reads it, and the commands. Each is a file that adds itself and binds
// its options. Whatever a command throws goes to the caller of Run.

#include <CLI/App.hpp>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/rehearsal/review.h"

namespace app {

extern const char kVersion[];

/// Does the work of a command and returns the exit status.
using Action = std::function<int()>;

class CommandLine {
 public:
  CommandLine();

  /// Adds a command and returns its parser, for the command's options. The action runs when the
  /// line names the command and there is a machine to work on.
  CLI::App& Add(const std::string& name, const std::string& help, Action action);
  /// The same for a command that has options, which `run` is given. Returns them beside the parser.
  template <class Options>
  std::pair<CLI::App&, Options&> Add(const std::string& name, const std::string& help,
                                     int (*run)(const Options&)) {
    const auto options = std::make_shared<Options>();
    return {Add(name, help, [=] { return run(*options); }), *options};
  }
  /// The same for a command that needs no machine.
  CLI::App& AddWithoutMachine(const std::string& name, const std::string& help, Action action);
  /// Adds the name of a command that this home lacks; `why` ends the error of each use.
  void AddMissing(const std::string& name, const std::string& help, const std::string& why);

  /// Reads the line, runs its command and returns the exit status; prints the help or the version
  /// where one is asked for. Throws UsageError for a line that names no command, for an unknown
  /// option and for a value that an option does not take. `arguments` begins with the program.
  int Run(const std::vector<std::string>& arguments);

 private:
  void AddMachineOption(CLI::App& parser);
  [[noreturn]] void Refuse(const CLI::ParseError& error, const std::vector<std::string>& arguments);

  CLI::App m_parser;
  Action m_action;
};

/// Takes decimal numbers of 32 bits alone.
CLI::Validator WholeNumber();
/// Takes these words alone.
CLI::Validator OneOf(std::vector<std::string> words);

// Options that several commands have.

void AddPolicyFile(CLI::App& command, std::string& file);
/// Adds FILE, which ReadPolicySource takes: empty stands for the delivered policy.
void AddPolicySource(CLI::App& command, std::string& file);
/// Returns the option -o, for a caller that requires it.
CLI::Option* AddOutput(CLI::App& command, std::string& file, const std::string& value,
                       const std::string& help);
void AddPolicyId(CLI::App& command, int& policyId);
/// Adds --force and --strict.
void AddCare(CLI::App& command, Care& care);
/// Adds the options of the paper, which page::FindPaper takes.
void AddPaper(CLI::App& command, std::string& paper, bool& isLandscape);
void AddJson(CLI::App& command, bool& isJson);
void AddVerbose(CLI::App& command, bool& isVerbose);

// The commands.

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
