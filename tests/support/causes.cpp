#include "tests/support/causes.h"

#include <regex>
#include <stdexcept>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/test_machine.h"

namespace tests {

namespace {

using Parts = std::smatch;

unsigned Number(const std::string& digits, unsigned usual) {
  return digits.empty() ? usual : static_cast<unsigned>(std::stoul(digits));
}

bool FailMachine(const Parts& parts) {
  const DWORD error = parts[2] == "throws" ? platform::kThrows : ERROR_ACCESS_DENIED;
  platform::SetFault(parts.str(1).c_str(), Number(parts[3], 0), Number(parts[4], error));
  return platform::kHasFaults;
}

bool ScriptCall(const Parts& parts) {
  const std::wstring call = platform::FromUtf8(parts.str(2));
  const unsigned nth = Number(parts[1], 0);
  if (parts[4].matched)
    RecorderScript(call.c_str(), nth, std::stoi(parts[4]));
  else
    RecorderScriptThrow(call.c_str(), nth);
  return parts[4].matched || CanComponentThrow();
}

bool SetState(const Parts& parts) {
  RecorderSetState(platform::FromUtf8(parts.str(1)).c_str(),
                   platform::FromUtf8(parts.str(2)).c_str());
  return true;
}

const struct {
  std::regex form;
  bool (*arrange)(const Parts& parts);
} kCauses[] = {
    {std::regex(R"(([\w:]+) (fails|throws)(?: after (\d+))?(?: with (\d+))?)"), FailMachine},
    {std::regex(R"((?:call (\d+)|each call) of (.+) (throws|gives (-?\d+)))"), ScriptCall},
    {std::regex(R"re("(.+)" is (.+))re"), SetState}};

bool ArrangeOne(const std::string& cause) {
  for (const auto& [form, arrange] : kCauses)
    if (Parts parts; std::regex_match(cause, parts, form)) return arrange(parts);
  throw std::runtime_error("no cause: " + cause);
}

}  // namespace

bool Arrange(const std::string& causes) {
  constexpr std::string_view kAnd = " and ";
  const std::size_t end = causes.find(kAnd);
  return ArrangeOne(causes.substr(0, end)) &&
         (end == causes.npos || Arrange(causes.substr(end + kAnd.size())));
}

}  // namespace tests
