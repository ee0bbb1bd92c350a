#include <algorithm>
#include <iostream>
#include <memory>

#include "app/commands/commands.h"
#include "app/machine/home.h"
#include "app/machine/state.h"
#include "app/text/json.h"
#include "app/text/table.h"
#include "component/names.h"
#include "host/shared_names.h"
#include "platform/utf.h"

namespace app {
namespace {

using platform::ToUtf8;

std::string ScopeMeaning(int scope) {
  if (scope == -1) return "none";
  if (scope == 1) return "the default entry, not the suite's printers";
  if (scope == 2) return "the suite's printers, not the default entry";
  return "the default entry and the suite's printers";
}

std::string ScopeState(const MachineState& state) {
  if (!state.scope) return "none: there is no policy to read it from";
  return std::to_string(*state.scope) +
         (state.hasSwitchingPolicy ? " of policy 1: " : ", for want of a policy 1: ") +
         ScopeMeaning(*state.scope);
}

std::string SwitchState(const std::optional<int>& value) {
  if (!value) return "unknown: the file cannot be opened";
  const std::string number = "item 63 is " + std::to_string(*value);
  if (*value < 0) return "unreadable: " + number;
  return (*value == 0 ? "off: " : "on: ") + number;
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

Json Parts(const MachineState& state) {
  Json parts = Json::array();
  const auto add = [&](const char* part, const std::string& text, const std::string& place) {
    parts.push_back({{"part", part}, {"state", text}, {"place", place}});
  };
  add("User", state.user, "");
  add("Delivery folder", state.delivery.origin, ToUtf8(state.delivery.path));
  add("Key source", state.keySource, ToUtf8(KeySource()));
  add("Policy file", state.policyFile, ToUtf8(state.delivery.PolicyFile()));
  add("Scope of set", ScopeState(state), "");
  add("Function switch", SwitchState(state.functionSwitch), ToUtf8(state.delivery.SystemSetting()));
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
                        {"fate", Fate(each.kind)}});
  return printers;
}

/// Returns all that the doctor says. Its tables are columns of these lists.
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

struct Column {
  const char* heading;
  const char* key;
};

/// Prints the columns of a list, and how many records are left out of a long one.
void PrintList(const char* title, const Json& records, const std::vector<Column>& columns) {
  constexpr std::size_t kMostRecords = 20;
  std::vector<Row> rows(1);
  for (const Column& column : columns) rows[0].push_back(column.heading);
  for (const Json& record : records) {
    if (rows.size() > kMostRecords) break;
    Row& row = rows.emplace_back();
    for (const Column& column : columns) {
      const Json& cell = record.at(column.key);
      row.push_back(cell.is_string() ? cell.get<std::string>() : cell.dump());
    }
  }
  std::cout << title << "\n";
  PrintTable(std::cout, rows);
  if (records.size() > kMostRecords)
    std::cout << "  and " << records.size() - kMostRecords << " more\n";
}

/// Prints one page: the state of each part, the printers and the forecast.
void PrintPage(const Json& diagnosis) {
  const std::string machine = "Machine " + OneLine(diagnosis["machine"].get<std::string>());
  PrintList(machine.c_str(), diagnosis["parts"],
            {{"Part", "part"}, {"State", "state"}, {"Place", "place"}});
  if (!diagnosis["unread"].empty())
    PrintList("\nLines of machine.ini that are not read as they stand", diagnosis["unread"],
              {{"Line", "line"}, {"Name", "name"}, {"Why", "reason"}});
  if (diagnosis["printers"].is_null())
    std::cout << "\nPrinters cannot be listed\n";
  else
    PrintList("\nPrinters", diagnosis["printers"],
              {{"Printer", "printer"}, {"Driver", "driver"}, {"What becomes of it", "fate"}});
  PrintList("\nWhat an export would give now", diagnosis["forecast"],
            {{"Command", "command"}, {"Result", "result"}, {"Reason", "reason"}});
}

/// Returns 0 when every export would do its work, else 1.
int RunDoctor(bool isJson) {
  const Json diagnosis = Diagnose();
  if (isJson)
    PrintJson(std::cout, diagnosis);
  else
    PrintPage(diagnosis);
  return diagnosis["good"].get<bool>() ? 0 : 1;
}

}  // namespace

void AddDoctor(CommandLine& line) {
  const auto isJson = std::make_shared<bool>(false);
  CLI::App& command =
      line.Add("doctor", "Tells what an export would meet on this machine; changes nothing",
               [isJson] { return RunDoctor(*isJson); });
  AddJson(command, *isJson);
}

}  // namespace app
