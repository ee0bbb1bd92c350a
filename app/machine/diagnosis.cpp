#include "app/machine/diagnosis.h"

#include <map>
#include <set>
#include <utility>

#include "app/machine/home.h"
#include "app/machine/policy_file.h"
#include "app/machine/state.h"
#include "app/text/wording.h"
#include "component/names.h"
#include "host/shared_names.h"
#include "platform/utf.h"

namespace app {
namespace {

using platform::ToUtf8;

std::string ScopeState(const MachineState& state) {
  if (!state.scope) return "none: there is no policy to read it from";
  return std::to_string(*state.scope) +
         (state.hasSwitchingPolicy ? " of policy 1: " : ", for want of a policy 1: ") +
         ScopeMeaning(*state.scope);
}

std::string PipeState(DWORD error) {
  return error == 0 ? "served" : "not served (error " + std::to_string(error) + ")";
}

std::string Fate(PrinterKind kind) {
  switch (kind) {
    case PrinterKind::kSuite:
      return "suite's driver: watermarks of its own";
    case PrinterKind::kNoComment:
      return "excluded: it has no comment";
    case PrinterKind::kNotMarked:
      return "excluded: its comment has no mark";
    case PrinterKind::kMonitored:
      break;
  }
  return "monitored: goes by the default entry";
}

/// "; is the suite's driver meant?", of a name that is nearly its.
std::string Meant(const PrinterState& printer) {
  if (printer.kind == PrinterKind::kSuite) return "";
  const std::set<std::string> suite = {ToUtf8(SigilSettingManagement::kSuiteDriver)};
  return Guess(ToUtf8(printer.driver), suite).empty() ? "" : "; is the suite's driver meant?";
}

Json Parts(const MachineState& state) {
  Json parts = Json::array();
  const auto add = [&](const char* part, const std::string& text, const std::string& place) {
    parts.push_back({{"part", part}, {"state", text}, {"place", place}});
  };
  const UserFile& user = state.userFile;
  const std::string fullName = user.hasFullName ? user.fullName : "not obtained yet";
  add("User", state.user + (user.path.empty() ? "" : ", full name " + fullName), "");
  add("User file", user.state, HostPath(user.path).string());
  add("Delivery folder", state.delivery.origin, HostPath(state.delivery.path).string());
  add("Key source", state.keySource, HostPath(KeySource()).string());
  add("Policy file", state.policyFile, HostPath(state.delivery.PolicyFile()).string());
  add("Its SHA-256", state.checksum.empty() ? "none" : state.checksum, "");
  add("Scope of set", ScopeState(state), "");
  add("Function switch", state.functionSwitch.state,
      HostPath(state.delivery.SystemSetting()).string());
  add("Library", state.library.empty() ? "found" : state.library, ToUtf8(BesideHost(kLibrary)));
  add("Component", state.component.empty() ? "found" : state.component,
      ToUtf8(BesideHost(kComponentFile)));
  add("Setting file", state.settingFile.state, state.settingFile.place);
  add("Mutex", state.mutex.empty() ? "can be had" : state.mutex, "");
  add("Log", state.log, state.logFile);
  add("Pipe", PipeState(state.pipeError), ToUtf8(kControlPipe));
  for (const RefusedPlace& place : state.refused) add("Not opened", place.why, place.path.string());
  return parts;
}

Json UnreadLines(const MachineState& state) {
  Json lines = Json::array();
  for (const UnreadLine& each : state.unread)
    lines.push_back({{"line", each.line}, {"name", each.name}, {"reason", each.reason}});
  return lines;
}

/// Null when the printers cannot be listed.
Json Printers(const MachineState& state) {
  if (!state.printers) return nullptr;
  Json printers = Json::array();
  for (const PrinterState& each : *state.printers)
    printers.push_back({{"printer", ToUtf8(each.name)},
                        {"driver", ToUtf8(each.driver)},
                        {"fate", Fate(each.kind) + Meant(each)}});
  return printers;
}

}  // namespace

Json Diagnose() {
  const MachineState state = Examine();
  Json forecasts = Json::array();
  bool isGood = true;
  for (const Forecast& each : Foresee(state)) {
    isGood = isGood && each.isGood;
    forecasts.push_back({{"command", each.command},
                         {"result", each.result},
                         {"reason", each.reason},
                         {"good", each.isGood}});
  }
  return {{"machine", state.machine},
          {"good", isGood},
          {"parts", Parts(state)},
          {"unread", UnreadLines(state)},
          {"scope", state.scope ? Json(*state.scope) : Json()},
          {"printers", Printers(state)},
          {"forecast", forecasts}};
}

std::vector<std::vector<std::string>> RowsOf(const Json& diagnosis, const std::string& list) {
  using Columns = std::vector<std::pair<const char*, const char*>>;  // headings and keys
  static const std::map<std::string, Columns> columns = {
      {"parts", {{"Part", "part"}, {"State", "state"}, {"Place", "place"}}},
      {"unread", {{"Line", "line"}, {"Name", "name"}, {"Why", "reason"}}},
      {"printers", {{"Printer", "printer"}, {"Driver", "driver"}, {"What becomes of it", "fate"}}},
      {"forecast", {{"Command", "command"}, {"Result", "result"}, {"Reason", "reason"}}}};
  std::vector<std::vector<std::string>> rows(1);
  for (const auto& [heading, key] : columns.at(list)) rows[0].push_back(heading);
  for (const Json& record : diagnosis.at(list)) {
    std::vector<std::string>& row = rows.emplace_back();
    for (const auto& [heading, key] : columns.at(list)) {
      const Json& cell = record.at(key);
      row.push_back(cell.is_string() ? cell.get<std::string>() : cell.dump());
    }
  }
  return rows;
}

}  // namespace app
