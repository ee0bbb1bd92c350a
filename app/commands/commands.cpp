#include "app/commands/commands.h"

#include <iostream>

#include "app/commands/doctor.h"
#include "app/commands/switches.h"
#include "app/commands/update.h"
#include "app/text/usage_error.h"

namespace app {
namespace {

Option File(std::string name, std::string help, bool isNeeded) {
  return {.name = std::move(name),
          .help = std::move(help),
          .isNeeded = isNeeded,
          .place = Place::kFile};
}

Option Output(std::string value, std::string help, bool isNeeded) {
  return {.name = "-o,--output",
          .value = std::move(value),
          .help = std::move(help),
          .isNeeded = isNeeded,
          .place = Place::kFile};
}

const Option kFile = File("FILE", "The policy, UTF-8 or UTF-16 text; - is standard input", true);
const Option kPolicyId = {"--policy-id", "N", "Which policy of the text (1)"};
const Option kForce = {"--force", "", "Also a policy that a rehearsal finds unfit"};
const Option kJson = {"--json", "", "As one JSON object"};

constexpr char kStandIn[] = "needs the stand-in component, which is on Linux alone";

bool IsOn(const std::string& text) {
  if (text != "on" && text != "off") throw UsageError("content-log: on or off, not '" + text + "'");
  return text == "on";
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
       .options = {{.name = "ROOT",
                    .help = "Its folder, new or empty",
                    .isNeeded = true,
                    .place = Place::kFolder}},
       .run = OnLinux("init"),
       .needsMachine = false},
      {.name = "check",
       .help = "Tells what becomes of a policy on this machine; changes nothing",
       .options = {kFile, kPolicyId, kJson},
       .run = OnLinux("check"),
       .whyElsewhere = kStandIn},
      {.name = "diff",
       .help = "Tells in what two policies differ, as stored; changes nothing",
       .options = {File("A", "A policy, as for check", true), File("B", "Another", true),
                   kPolicyId},
       .run = OnLinux("diff"),
       .whyElsewhere = kStandIn},
      {.name = "preview",
       .help = "Draws the page with its watermarks as a picture",
       .options = {File("FILE", "A policy to try (else what the machine holds)", false),
                   kPolicyId,
                   {"--printer", "NAME", "Whose page (the default entry's)"},
                   Output("PICTURE", "The picture: a .svg, .pdf or .png", true),
                   {.name = "--paper",
                    .value = "SIZE",
                    .help = "The paper (A4)",
                    .words = {"A3", "A4", "Letter"}},
                   {"--landscape", "", "The paper's long side lies"}},
       .run = OnLinux("preview"),
       .whyElsewhere = kStandIn},
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
       .help = "Switches off and deletes the watermarks until the next update",
       .run = [](const Values&) { return ReleaseForService(); }},
      {.name = "exclude",
       .help = "Rebuilds the exclude list from the printers that exist now",
       .run = [](const Values&) { return Exclude(); }},
      {.name = "content-log",
       .help = "Switches the print-content log callback",
       .options =
           {{.name = "STATE", .help = "What it becomes", .isNeeded = true, .words = {"on", "off"}}},
       .run = [](const Values& values) { return SwitchContentLog(IsOn(values.Text("STATE"))); }},
      {.name = "show",
       .help = "Shows what the setting file holds",
       .options = {kJson,
                   {"--no-ids", "", "JSON without IDs, for comparing", false, "--json"},
                   {"--brief", "", "Without the watermarks"},
                   {"--printer", "NAME", "One entry alone (*: the default entry)"}},
       .run = OnLinux("show"),
       .whyElsewhere = kStandIn},
      {.name = "log",
       .help = "Prints the log file",
       .options = {{"--follow", "", "And goes on as it grows"},
                   {.name = "--level",
                    .value = "LEVEL",
                    .help = "Lines of this level and above, 0 to 5 or its word",
                    .words = {"trace", "detail", "progress", "info", "warning", "error"}},
                   {"--since", "TIME", "Lines since: 2025-03-31, '2025-03-31 09:12', 10m"}},
       .run = OnLinux("log")},
      {.name = "seal",
       .help = "Makes the delivered policy file of a policy",
       .options = {kFile, Output("FILE", "Another place for it", false), kPolicyId, kForce},
       .run = OnLinux("seal"),
       .whyElsewhere = kStandIn},
      {.name = "unseal",
       .help = "Gives the text of a delivered policy file back",
       .options = {File("FILE", "The sealed file (the delivered one)", false),
                   Output("FILE", "A file for the text", false)},
       .run = OnLinux("unseal")},
      {.name = "serve",
       .help = "Runs the control service and prints its events",
       .run = OnLinux("serve")},
      {.name = "doctor",
       .help = "Tells what an export would meet on this machine; changes nothing",
       .options = {kJson},
       .run = RunDoctor},
      {.name = "print-manual",
       .help = "Prints this program's page of the manual",
       .run = OnLinux("print-manual"),
       .needsMachine = false,
       .isHidden = true},
      {.name = "print-completion",
       .help = "Prints the completion of its command line for bash",
       .run = OnLinux("print-completion"),
       .needsMachine = false,
       .isHidden = true},
  };
}

}  // namespace app
