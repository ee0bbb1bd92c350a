#include <iostream>
#include <memory>

#include "app/commands/commands.h"
#include "app/machine/diagnosis.h"
#include "app/text/table.h"

namespace app {
namespace {

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
  Json diagnosis = Diagnose();
  if (const std::string force = DeliveredForce(); !force.empty())
    diagnosis["parts"].push_back({{"part", "In force"}, {"state", force}, {"place", ""}});
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
