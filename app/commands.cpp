#include "app/commands.h"

#include <iostream>

#include "app/delivery/seal.h"
#include "app/delivery/unseal.h"
#include "app/init.h"
#include "app/inventory/doctor.h"
#include "app/inventory/log_view.h"
#include "app/inventory/show.h"
#include "app/page/preview.h"
#include "app/rehearsal/check.h"
#include "app/rehearsal/diff.h"
#include "app/rehearsal/review.h"
#include "app/serve.h"
#include "app/switches.h"
#include "app/text_file.h"
#include "app/update.h"
#include "app/usage_error.h"

namespace app {
namespace {

const Option kFile = {"FILE", "", "The policy, UTF-8 or UTF-16 text; - is standard input", true};
const Option kPolicyId = {"--policy-id", "N", "Which policy of the text (1)"};
const Option kForce = {"--force", "", "Also a policy that a rehearsal finds unfit"};
const Option kJson = {"--json", "", "As one JSON object"};

bool IsOn(const std::string& text) {
  if (text != "on" && text != "off") throw UsageError("content-log: on or off, not '" + text + "'");
  return text == "on";
}

int RunInit(const Values& values) {
  LayOutMachine(values.Text("ROOT"));
  std::cout << "init: the sample machine is in " << values.Text("ROOT") << "\n";
  return 0;
}

int RunPreview(const Values& values) {
  PreviewOptions options;
  options.printer = values.Text("--printer", options.printer);
  options.paper = values.Text("--paper", options.paper);
  options.isLandscape = values.Has("--landscape");
  options.picture = values.Text("--output");
  const auto records = values.Has("FILE")
                           ? RehearsedRecords(values.Text("FILE"), values.Number("--policy-id", 1))
                           : ReadSettings();
  Preview(std::cout, records, options);
  return 0;
}

int RunShow(const Values& values) {
  Show(std::cout, {.json = values.Has("--json"),
                   .brief = values.Has("--brief"),
                   .noIds = values.Has("--no-ids"),
                   .printer = values.Text("--printer")});
  return 0;
}

int RunLog(const Values& values) {
  const LogFilter filter = ParseLogFilter(values.Text("--level"), values.Text("--since"));
  if (values.Has("--follow")) FollowLog(LogFile(), filter);
  PrintLog(LogFile(), filter);
  return 0;
}

int RunSeal(const Values& values) {
  SealPolicy(values.Text("FILE"), values.Text("--output"), values.Number("--policy-id", 1),
             values.Has("--force"));
  return 0;
}

int RunUnseal(const Values& values) {
  UnsealPolicy(values.Text("FILE"), values.Text("--output"));
  return 0;
}

int RunServe(const Values&) {
  Serve();
  return 0;
}

int RunDoctor(const Values& values) {
  const Diagnosis diagnosis = Diagnose();
  values.Has("--json") ? PrintDiagnosisJson(std::cout, diagnosis)
                       : PrintDiagnosis(std::cout, diagnosis);
  return diagnosis.IsGood() ? 0 : 1;
}

}  // namespace

std::vector<Command> Commands() {
  return {
      {.name = "init",
       .help = "Lays out a sample machine with a sample policy",
       .options = {{"ROOT", "", "Its folder, new or empty", true}},
       .run = RunInit,
       .needsMachine = false},
      {.name = "check",
       .help = "Tells what becomes of a policy on this machine; changes nothing",
       .options = {kFile, kPolicyId, kJson},
       .run = Check},
      {.name = "diff",
       .help = "Tells in what two policies differ, as stored; changes nothing",
       .options = {{"A", "", "A policy, as for check", true},
                   {"B", "", "Another", true},
                   kPolicyId},
       .run = Diff},
      {.name = "preview",
       .help = "Draws the page with its watermarks as a picture",
       .options = {{"FILE", "", "A policy to try (else what the machine holds)"},
                   kPolicyId,
                   {"--printer", "NAME", "Whose page (the default entry's)"},
                   {"-o,--output", "PICTURE", "The picture: a .svg, .pdf or .png", true},
                   {"--paper", "SIZE", "A3, A4 or Letter (A4)"},
                   {"--landscape", "", "The paper's long side lies"}},
       .run = RunPreview},
      {.name = "update",
       .help = "Applies a policy to the default entry and printers",
       .options =
           {kFile, kPolicyId, {"--reset-name", "", "Looks the user's full name up anew"}, kForce},
       .run = Update},
      {.name = "set",
       .help = "Switches the watermarks on, as the delivered policy's scope says",
       .run = [](const Values&) { return Set(); }},
      {.name = "release",
       .help = "Switches the watermarks off",
       .run = [](const Values&) { return Release(); }},
      {.name = "release-for-service",
       .help = "Switches the watermarks off and deletes them",
       .run = [](const Values&) { return ReleaseForService(); }},
      {.name = "exclude",
       .help = "Rebuilds the exclude list from the printers that exist now",
       .run = [](const Values&) { return Exclude(); }},
      {.name = "content-log",
       .help = "Switches the print-content log callback",
       .options = {{"STATE", "", "on or off", true}},
       .run = [](const Values& values) { return SwitchContentLog(IsOn(values.Text("STATE"))); }},
      {.name = "show",
       .help = "Shows what the setting file holds",
       .options = {kJson,
                   {"--no-ids", "", "JSON without IDs, for comparing", false, "--json"},
                   {"--brief", "", "Without the watermarks"},
                   {"--printer", "NAME", "One entry alone (*: the default entry)"}},
       .run = RunShow},
      {.name = "log",
       .help = "Prints the log file",
       .options = {{"--follow", "", "And goes on as it grows"},
                   {"--level", "LEVEL", "Lines of this level and above: 0 to 5 or its word"},
                   {"--since", "TIME", "Lines since: 2025-03-31, '2025-03-31 09:12', 10m"}},
       .run = RunLog},
      {.name = "seal",
       .help = "Makes the delivered policy file of a policy",
       .options = {kFile, {"-o,--output", "FILE", "Another place for it"}, kPolicyId, kForce},
       .run = RunSeal},
      {.name = "unseal",
       .help = "Gives the text of a delivered policy file back",
       .options = {{"FILE", "", "The sealed file (the delivered one)"},
                   {"-o,--output", "FILE", "A file for the text"}},
       .run = RunUnseal},
      {.name = "serve", .help = "Runs the control service and prints its events", .run = RunServe},
      {.name = "doctor",
       .help = "Tells what an export would meet on this machine; changes nothing",
       .options = {kJson},
       .run = RunDoctor},
  };
}

}  // namespace app
