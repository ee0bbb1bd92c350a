#include "app/commands/doctor.h"

#include <algorithm>
#include <iostream>
#include <map>

#include "app/commands/command_line.h"
#include "app/machine/state.h"
#include "app/rehearsal/compare.h"
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
  add("Key source", state.key.source, HostPath(KeySource()).string());
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
  add("Pipe", state.pipeError == 0 ? "served" : WithError("not served", state.pipeError),
      ToUtf8(kControlPipe));
  for (const RefusedPlace& place : state.refused) add("Not opened", place.why, place.path.string());
  return parts;
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

/// Prints a list of the diagnosis, and how many records of a long one are left out.
void PrintList(const std::string& title, const Json& diagnosis, const char* list) {
  constexpr std::size_t kMostRecords = 20;
  std::vector<Row> rows = RowsOf(diagnosis, list);
  const std::size_t records = rows.size() - 1;
  rows.resize(1 + std::min(records, kMostRecords));
  std::cout << title << "\n";
  PrintTable(std::cout, rows);
  if (records > kMostRecords) std::cout << "  and " << records - kMostRecords << " more\n";
}

/// Prints one page: the state of each part, the printers and the forecast.
void PrintPage(const Json& diagnosis) {
  PrintList("Machine " + OneLine(diagnosis["machine"].get<std::string>()), diagnosis, "parts");
  if (!diagnosis["unread"].empty())
    PrintList("\nLines of machine.ini that are not read as they stand", diagnosis, "unread");
  if (diagnosis["printers"].is_null())
    std::cout << "\nPrinters cannot be listed\n";
  else
    PrintList("\nPrinters", diagnosis, "printers");
  PrintList("\nWhat an export would give now", diagnosis, "forecast");
}

/// Returns whether the delivered policy is in force, in a sentence.
std::string DeliveredForce() try {
  const Force force = ForceOf(ReviewPolicy({ReadPolicySource("").text}));
  if (force.IsIn()) return "yes";
  if (force.unknown.empty()) return "no; `sigilctl verify` names what differs";
  return Sentence(force);
} catch (const std::exception&) {
  return "cannot be told; `sigilctl verify` says why";  // at length, with the file's path
}

/// Returns 0 when every export would do its work, else 1.
int RunDoctor(const bool& isJson) {
  Json diagnosis = Diagnose();
  // On Windows a rehearsal would wait for the mutex, as the doctor must not.
  if (kMachineIsFolder)
    diagnosis["parts"].push_back(
        {{"part", "In force"}, {"state", DeliveredForce()}, {"place", ""}});
  if (isJson)
    PrintJson(std::cout, diagnosis);
  else
    PrintPage(diagnosis);
  return diagnosis["good"].get<bool>() ? 0 : 1;
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
          {"unread", state.unread},
          {"scope", state.scope ? Json(*state.scope) : Json()},
          {"printers", Printers(state)},
          {"forecast", forecasts}};
}

std::vector<Row> RowsOf(const Json& diagnosis, const std::string& list) {
  using Columns = std::vector<std::pair<const char*, const char*>>;  // headings and keys
  static const std::map<std::string, Columns> columns = {
      {"parts", {{"Part", "part"}, {"State", "state"}, {"Place", "place"}}},
      {"unread", {{"Line", "line"}, {"Name", "name"}, {"Why", "reason"}}},
      {"printers", {{"Printer", "printer"}, {"Driver", "driver"}, {"What becomes of it", "fate"}}},
      {"forecast", {{"Command", "command"}, {"Result", "result"}, {"Reason", "reason"}}}};
  std::vector<Row> rows(1);
  for (const auto& [heading, key] : columns.at(list)) rows[0].push_back(heading);
  for (const Json& record : diagnosis.at(list)) {
    Row& row = rows.emplace_back();
    for (const auto& [heading, key] : columns.at(list)) {
      const Json& cell = record.at(key);
      row.push_back(cell.is_string() ? cell.get<std::string>() : cell.dump());
    }
  }
  return rows;
}

void AddDoctor(CommandLine& line) {
  auto [command, isJson] = line.Add(
      "doctor", "Tells what an export would meet on this machine; changes nothing", RunDoctor);
  AddJson(command, isJson);
}

}  // namespace app
