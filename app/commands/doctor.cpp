#include <algorithm>
#include <iostream>
#include <memory>

#include "app/commands/commands.h"
#include "app/machine/diagnosis.h"
#include "app/text/table.h"

namespace app {
namespace {

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
