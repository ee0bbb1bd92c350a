// What both homes examine of the machine, and the forecasts.

#include "app/machine/state.h"

#include <algorithm>
#include <stdexcept>

#include "app/text/wording.h"
#include "component/names.h"
#include "platform/crt.h"

namespace app {
namespace {

void ExaminePolicy(MachineState& state) try {
  state.key = ExamineKey();
  state.policyFile = "not opened, without a key";
  if (!state.key.gives) return;
  const auto file = Unseal(state.delivery.PolicyFile());
  state.policyFile = std::string("missing; ") + kMendMissing;
  if (!file) return;
  const std::string& refusal = file->policy.refusal;
  state.policyFile = std::to_string(file->size) + " bytes" +
                     (refusal.empty()   ? ", readable"
                      : file->size == 0 ? "; empty"
                      : file->isNoise   ? "; " + kOtherKey
                                        : "; under this key, " + refusal + "; " + kMendDelivery);
  if (!refusal.empty()) return;
  state.checksum = ChecksumOf(file->text);
  state.scope = _wtoi(file->policy.scope.value_or(L"").c_str());
  state.hasSwitchingPolicy = file->policy.hasPolicy;
} catch (const std::runtime_error& error) {
  state.policyFile = std::string("unreadable: ") + error.what();
}

std::string ExamineComponent() {
  const Part component = LoadPart(kComponentFile);
  if (!component.fault.empty()) return component.fault;
  const bool hasEntry = GetProcAddress(component.module.Get(), kCreateInstanceName) != nullptr;
  return hasEntry ? "" : "has no SigilCreateInstance";
}

Forecast Bad(const char* command, const char* result, std::string reason) {
  return {command, result, std::move(reason), false};
}

bool HasSuitePrinter(const MachineState& state) {
  const auto isSuite = [](const PrinterState& each) { return each.kind == PrinterKind::kSuite; };
  return state.printers && std::ranges::any_of(*state.printers, isSuite);
}

Forecast Pass(const MachineState& state, const char* command, bool readsPolicy,
              bool listsPrinters) {
  if (!state.library.empty()) return Bad(command, "none", "the library " + state.library);
  const std::pair<bool, std::string> obstacles[] = {
      {!state.mutex.empty(), "no mutex: " + state.mutex},
      {!state.component.empty(), "the Settings component " + state.component},
      {readsPolicy && !state.key.gives, "the key source: " + state.key.source},
      {readsPolicy && !state.scope, "the policy file: " + state.policyFile},
      {readsPolicy && state.scope == -1, "the policy's scope is -1, which stands for none"},
      {listsPrinters && !state.printers, "the printers cannot be listed: " + state.noPrinters}};
  for (const auto& [isMet, reason] : obstacles)
    if (isMet) return Bad(command, "-101", reason);
  if (state.settingFile.unsaved.empty()) return {command, "0", "", true};
  // The switches count the printers that they failed on.
  return Bad(command, readsPolicy && HasSuitePrinter(state) ? "-101" : "0",
             "nothing is saved: " + state.settingFile.unsaved);
}

/// A switch that asks the system settings first.
Forecast ClientSwitch(const MachineState& state, const char* command) {
  const auto& [value, meaning] = state.functionSwitch;
  if (!state.library.empty() || value > 0) return Pass(state, command, true, true);
  return Bad(command, value < 0 ? "-201" : "-200", "SystemSetting.csv: " + meaning);
}

std::string NotTold(DWORD error) {
  const char* const what = error == ERROR_PIPE_BUSY ? "the pipe is busy" : "nobody serves the pipe";
  return WithError(what, error) + "; the settings change all the same";
}

/// A failed notification of the service does not change the result of set.
Forecast Set(const MachineState& state) {
  Forecast set = ClientSwitch(state, "set");
  if (set.isGood && state.pipeError != 0) set.reason = NotTold(state.pipeError);
  return set;
}

Forecast Release(const MachineState& state) {
  Forecast release = ClientSwitch(state, "release");
  if (release.result != "0" || state.pipeError == 0) return release;
  release.result = "-2";
  release.isGood = false;
  if (release.reason.empty()) release.reason = NotTold(state.pipeError);
  return release;
}

Forecast Update(const MachineState& state) {
  Forecast update = Pass(state, "update", false, true);
  if (update.result != "0" || state.userFile.hasFullName) return update;
  // A name that is found counts only once it is stored.
  const bool isStored = state.unstoredName.empty();
  update.result = isStored ? "0 or -99" : "-99";
  if (update.reason.empty() && !isStored)
    update.reason = "the user's full name cannot be stored: " + state.unstoredName;
  if (update.reason.empty())
    update.reason = "-99 when the user's full name is not found; a policy comes with the call";
  return update;
}

}  // namespace

MachineState Examine() {
  MachineState state;
  state.machine = MachineName();
  state.delivery = FindDeliveryFolder();
  ExaminePolicy(state);
  state.functionSwitch = ReadFunctionSwitch(state.delivery.SystemSetting());
  state.library = LoadPart(kLibrary).fault;
  state.component = ExamineComponent();
  ExamineMachine(state);
  state.mutex = WhyNoMutex();
  state.refused = RefusedPlaces();
  return state;
}

std::string WhyForeseen(const std::string& command, int result) {
  for (const Forecast& each : Foresee(Examine()))
    if (each.command == command && each.result == std::to_string(result)) return each.reason;
  return "";
}

std::vector<Forecast> Foresee(const MachineState& state) {
  return {Set(state),
          Release(state),
          Pass(state, "release-for-service", true, true),
          Update(state),
          Pass(state, "exclude", false, true),
          Pass(state, "content-log", false, false)};
}

}  // namespace app
