#include <iostream>
#include <map>

#include "app/commands/check.h"
#include "app/commands/commands.h"
#include "app/commands/completion.h"
#include "app/commands/diff.h"
#include "app/commands/init.h"
#include "app/commands/log_view.h"
#include "app/commands/manual.h"
#include "app/commands/preview.h"
#include "app/commands/seal.h"
#include "app/commands/serve.h"
#include "app/commands/show.h"
#include "app/commands/unseal.h"
#include "app/machine/settings.h"
#include "app/rehearsal/review.h"

namespace app {
namespace {

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

int RunPrintManual(const Values&) {
  PrintManual(std::cout, Commands());
  return 0;
}

int RunPrintCompletion(const Values&) {
  PrintCompletion(std::cout, Commands());
  return 0;
}

}  // namespace

Action OnLinux(const std::string& name) {
  static const std::map<std::string, Action> runs = {{"init", RunInit},
                                                     {"check", Check},
                                                     {"diff", Diff},
                                                     {"preview", RunPreview},
                                                     {"show", RunShow},
                                                     {"log", RunLog},
                                                     {"seal", RunSeal},
                                                     {"unseal", RunUnseal},
                                                     {"serve", RunServe},
                                                     {"print-manual", RunPrintManual},
                                                     {"print-completion", RunPrintCompletion}};
  return runs.at(name);
}

}  // namespace app
