#include "app/rehearsal/scope.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/machine/sample.h"
#include "app/pass/messages.h"
#include "app/rehearsal/rehearse.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/utf.h"

namespace app {
namespace {

/// Which kinds of entry a scope switches on: the default entry, and the suite's printers.
std::vector<bool> SwitchedOn(const std::string& scope, const ScratchMachine& machine) {
  std::string escaped;
  for (const char each : scope)
    escaped += each == '<' ? "&lt;" : each == '&' ? "&amp;" : std::string(1, each);
  const std::string text =
      "<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID='1'><PrinterScope>" + escaped +
      "</PrinterScope><ElementIDs><ID>1</ID></ElementIDs></PolicyInfo></PolicyInfos></Watermark>"
      "</HLE></QuietMIMOSA>";
  std::vector<bool> on;
  for (const auto& entry :
       Rehearse(machine, UpdateCall(platform::FromUtf8(text), 1)).records.entries)
    on.push_back(entry.lastSetting.enabled);
  return on;
}

/// Gives the machine, which has no key source and so a key of zero, the text as its delivered
/// policy and switches the function on.
void Deliver(const std::wstring& text) {
  const DeliveryFolder delivery = FindDeliveryFolder();
  const auto write = [](const std::wstring& path, const std::string& bytes) {
    const auto file = platform::HostPath(path);
    std::filesystem::create_directories(file.parent_path());
    platform::ChangeWholeFile(file, [&](const auto&) { return bytes; });
  };
  write(delivery.PolicyFile(), SealText(platform::ToUtf8(text)));
  write(delivery.SystemSetting(), "63,1\r\n");
}

}  // namespace

std::optional<int> ScopeMeaning(const std::string& scope) {
  constexpr int kMost = 8;
  ScratchMachine machine;
  machine.Write("machine.ini", sample::kMachine);  // with printers of each kind
  const std::vector<bool> wanted = SwitchedOn(scope, machine);
  std::vector<std::vector<bool>> known;
  for (int number = 0; number < kMost; ++number) {
    std::vector<bool> on = SwitchedOn(std::to_string(number), machine);
    if (std::ranges::find(known, on) != known.end()) break;
    if (on == wanted) return number;
    known.push_back(std::move(on));
  }
  return std::nullopt;
}

std::string WhyNotDelivered(const std::wstring& text) {
  ScratchMachine machine;
  machine.Write("machine.ini", "");
  const Outcome outcome = Rehearse(machine, [&](const Exports& exports) {
                            Deliver(text);
                            return exports.set();
                          }).outcome;
  return outcome.result == SIGIL_SETTING_FAILED ? FirstFailure(outcome.messages).sentence : "";
}

}  // namespace app
