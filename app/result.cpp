#include "app/result.h"

#include <iostream>

#include "app/inventory/setting_state.h"
#include "boundary/exports.h"

namespace app {
namespace {

std::string NotTold(const char* reason) {
  return std::string("The watermarks are off, but the control service was not told: ") + reason;
}

}  // namespace

std::string MeaningOf(int result) {
  switch (result) {
    case SIGIL_SETTING_NO_FULL_NAME:
      return "The policy is applied, but the user's full name has not been obtained yet.";
    case SIGIL_SETTING_FAILED:
      return "The pass failed; the log tells where.";
    case SIGIL_SETTING_FUNCTION_OFF:
      return "The watermark function is off in the system settings; nothing was done.";
    case SIGIL_SETTING_UNREADABLE:
      return "The system settings could not be read; nothing was done.";
    case -1:
      return NotTold("no security descriptor.");
    case -2:
      return NotTold("its pipe could not be opened.");
    case -3:
      return NotTold("writing to its pipe failed.");
    case -4:
      return NotTold("closing its pipe failed.");
    case -5:
      return NotTold("there was no message.");
    default:
      return "This result has no meaning.";
  }
}

int Report(const std::string& command, int result, const std::string& done) {
  const std::string meaning = result == SIGIL_SETTING_DONE ? done : MeaningOf(result);
  std::cout << command << ": " << result << ". " << meaning << "\n";
  if (result == SIGIL_SETTING_NO_FULL_NAME)
    std::cerr << "sigilctl: warning: the login name stands in for the user's full name.\n";
  const bool isDone = result == SIGIL_SETTING_DONE || result == SIGIL_SETTING_NO_FULL_NAME;
  if (isDone && !CanSave())
    std::cerr << "sigilctl: warning: nothing was saved, the setting file is none; see the log.\n";
  return isDone ? 0 : 1;
}

}  // namespace app
