// sigilctl: the host program for administrators and for trying things out.
//
// Whatever a command throws becomes one line on standard error and an exit status: 2 for what the
// caller has to mend before anything was changed, 1 for any other failure.

#include <iostream>

#include "app/commands/command_line.h"
#include "app/machine/home.h"
#include "app/text/errors.h"
#include "platform/visible_text.h"

namespace app {
namespace {

int Run(const std::vector<std::string>& arguments) {
  CommandLine line;
  for (const auto add : {AddInit, AddCheck, AddDiff, AddPreview, AddUpdate, AddSwitches, AddShow,
                         AddLog, AddSeal, AddUnseal, AddServe, AddVerify, AddReport, AddDoctor})
    add(line);  // in the order of the help
  const int status = line.Run(arguments);
  if (!std::cout.flush()) throw std::runtime_error("standard output cannot be written");
  return status;
}

int Fail(const std::string& cause, int status) {
  std::cerr << "sigilctl: " << platform::Visible(cause) << "\n";
  return status;
}

}  // namespace
}  // namespace app

int main(int argc, char** argv) {
  try {
    return app::Run(app::Arguments(argc, argv));
  } catch (const app::UsageError& error) {
    return app::Fail(error.what(), 2);
  } catch (const std::exception& error) {
    return app::Fail(app::CauseOf(error), 1);
  }
}
