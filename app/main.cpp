// sigilctl: the host program for administrators and for trying things out.
//
// Exit status: 0 when the work is done, 1 when an export or the machine fails, 2 for a wrong
// argument or a file that will not do; then nothing has been changed.

#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <iostream>

#include "app/delivery/seal.h"
#include "app/delivery/unseal.h"
#include "app/init.h"
#include "app/inventory/doctor.h"
#include "app/inventory/log_view.h"
#include "app/inventory/show.h"
#include "app/library.h"
#include "app/page/preview.h"
#include "app/result.h"
#include "app/serve.h"
#include "app/text_file.h"
#include "app/usage_error.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

/// What the command line says. A command's own work is in `run`.
struct Arguments {
  std::string root;
  std::string newRoot;
  std::string file;
  std::string output;
  std::string policyId = "1";
  std::string onOff;
  bool resetName = false;
  bool json = false;
  bool follow = false;
  PreviewOptions preview;
  std::string level;
  std::string since;
  ShowOptions show;
  std::function<int()> run;
};

int Number(const std::string& text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end)
    throw UsageError("--policy-id: '" + text + "' is no number of 32 bits");
  return number;
}

bool IsOn(const std::string& text) {
  if (text != "on" && text != "off") throw UsageError("content-log: on or off, not '" + text + "'");
  return text == "on";
}

int Update(const Arguments& arguments) {
  const int policyId = Number(arguments.policyId);
  const std::wstring text = ReadTextFile(arguments.file);
  const int result =
      LoadExports().update(0, policyId, nullptr, text.c_str(), arguments.resetName ? 1 : 0);
  return Report("update", result, "The policy is applied.");
}

int SetContentLog(const Arguments& arguments) {
  const bool on = IsOn(arguments.onOff);
  return Report("content-log", LoadExports().setUseContentLog(on),
                on ? "The content log is on." : "The content log is off.");
}

int PrintLog(const Arguments& arguments) {
  const LogFilter filter = ParseLogFilter(arguments.level, arguments.since);
  if (arguments.follow) FollowLog(LogFile(), filter);
  PrintLog(LogFile(), filter);
  return 0;
}

int Doctor(const Arguments& arguments) {
  const Diagnosis diagnosis = Diagnose();
  arguments.json ? PrintDiagnosisJson(std::cout, diagnosis) : PrintDiagnosis(std::cout, diagnosis);
  return diagnosis.IsGood() ? 0 : kFailed;
}

/// What the machine would hold after the policy of FILE, or what it holds.
peers::SettingFileContent Rehearsed(const Arguments& arguments) {
  if (!arguments.file.empty())
    throw UsageError("preview: FILE cannot be tried yet; `sigilctl update` it on a sample machine");
  return ReadSettings();
}

void AddCommands(CLI::App& program, Arguments& arguments) {
  const auto add = [&](const char* name, const char* description, const std::function<int()>& run) {
    CLI::App* const command = program.add_subcommand(name, description);
    command->callback([&arguments, run] { arguments.run = run; });
    return command;
  };

  add("init", "Lays out a sample machine with a sample policy",
      [&] {
        LayOutMachine(arguments.newRoot);
        std::cout << "init: the sample machine is in " << arguments.newRoot << "\n";
        return 0;
      })
      ->add_option("ROOT", arguments.newRoot, "Its folder, new or empty")
      ->required();

  CLI::App* const update = add("update", "Applies a policy text to the default entry and printers",
                               [&] { return Update(arguments); });
  update->add_option("FILE", arguments.file, "The policy, UTF-8 or UTF-16 text")->required();
  update->add_option("--policy-id", arguments.policyId, "Which policy of the text (1)");
  update->add_flag("--reset-name", arguments.resetName, "Looks the user's full name up anew");

  add("set", "Switches the watermarks on, as the delivered policy's scope says", [] {
    return Report("set", LoadExports().set(), "The watermarks are on where the scope wants them.");
  });
  add("release", "Switches the watermarks off", [] {
    return Report("release", LoadExports().release(),
                  "The watermarks are off and the control service knows.");
  });
  add("release-for-service", "Switches the watermarks off and deletes them", [] {
    return Report("release-for-service", LoadExports().releaseForService(),
                  "The watermarks are off and deleted.");
  });
  add("exclude", "Rebuilds the exclude list from the printers that exist now", [] {
    return Report("exclude", LoadExports().updateExclude(), "The exclude list is rebuilt.");
  });
  add("content-log", "Switches the print-content log callback",
      [&] { return SetContentLog(arguments); })
      ->add_option("STATE", arguments.onOff, "on or off")
      ->required();

  CLI::App* const preview = add("preview", "Draws the page with its watermarks as a picture", [&] {
    Preview(std::cout, Rehearsed(arguments), arguments.preview);
    return 0;
  });
  preview->add_option("FILE", arguments.file, "A policy to try (else what the machine holds)");
  preview->add_option("--printer", arguments.preview.printer, "Whose page (the default entry's)");
  preview->add_option("-o,--output", arguments.preview.picture, "The picture: a .svg, .pdf or .png")
      ->required();
  preview->add_option("--paper", arguments.preview.paper, "A3, A4 or Letter (A4)");
  preview->add_flag("--landscape", arguments.preview.isLandscape, "The paper's long side lies");

  CLI::App* const show = add("show", "Shows what the setting file holds", [&] {
    Show(std::cout, arguments.show);
    return 0;
  });
  CLI::Option* const json = show->add_flag("--json", arguments.show.json, "As one JSON object");
  show->add_flag("--no-ids", arguments.show.noIds, "JSON without IDs, for comparing")->needs(json);
  show->add_flag("--brief", arguments.show.brief, "Without the watermarks");
  show->add_option("--printer", arguments.show.printer, "One entry alone (*: the default entry)");

  CLI::App* const log = add("log", "Prints the log file", [&] { return PrintLog(arguments); });
  log->add_flag("--follow", arguments.follow, "And goes on as it grows");
  log->add_option("--level", arguments.level, "Lines of this level and above: 0 to 5 or its word");
  log->add_option("--since", arguments.since, "Lines since: 2025-03-31, '2025-03-31 09:12', 10m");

  CLI::App* const seal = add("seal", "Makes the delivered policy file of a policy text", [&] {
    SealPolicy(arguments.file, arguments.output);
    return 0;
  });
  seal->add_option("FILE", arguments.file, "The policy, UTF-8 or UTF-16 text")->required();
  seal->add_option("-o,--output", arguments.output, "Another place for it");

  CLI::App* const unseal = add("unseal", "Gives the text of a delivered policy file back", [&] {
    UnsealPolicy(arguments.file, arguments.output);
    return 0;
  });
  unseal->add_option("FILE", arguments.file, "The sealed file (the delivered one)");
  unseal->add_option("-o,--output", arguments.output, "A file for the text");

  add("serve", "Runs the control service and prints its events", [] {
    Serve();
    return 0;
  });
  add("doctor", "Tells what an export would meet on this machine; changes nothing", [&] {
    return Doctor(arguments);
  })->add_flag("--json", arguments.json, "As one JSON object");
}

/// Nothing is to appear in a folder that was misspelt, or that belongs to another account.
void RequireMachine() {
  const std::string root = platform::MachineRoot().string();
  const auto state = platform::ExamineRoot();
  if (!state) throw UsageError(root + ": no machine here; `sigilctl init` lays one out");
  if (!state->isOwn) {
    const auto user = platform::FindUser(state->owner);
    const std::string owner =
        user ? platform::ToUtf8(user->login) : "#" + std::to_string(state->owner);
    throw UsageError(root + ": this machine belongs to " + owner +
                     "; run it as that account: sudo -u '" + owner + "' sigilctl --root '" + root +
                     "' ...");
  }
  if (state->isOpenToOthers)
    throw UsageError(root + ": other accounts can write here; `chmod go-w` closes it to them");
}

int Run(int argc, char** argv) {
  CLI::App program("Host program of the SigilSetting library", "sigilctl");
  program.set_version_flag("--version", std::string("sigilctl ") + SIGIL_VERSION);
  program.fallthrough();  // --root may stand behind the command too, which takes this over now
  Arguments arguments;
  const CLI::Option* const root =
      program.add_option("--root", arguments.root, "The machine's folder (else SIGIL_ROOT)");
  AddCommands(program, arguments);
  program.require_subcommand(1);
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& help) {
    return program.exit(help);
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  if (!root->empty()) {
    if (arguments.root.empty()) throw UsageError("--root: a folder, not an empty text");
    setenv("SIGIL_ROOT", arguments.root.c_str(), 1);
  }
  if (!program.got_subcommand("init")) RequireMachine();
  const int status = arguments.run();
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
    std::cerr << "sigilctl: " << platform::Visible(error.what()) << "\n";
    return app::kFailed;
  }
}
