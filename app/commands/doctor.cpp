#include "app/commands/doctor.h"

#include <algorithm>
#include <ostream>

#include "app/text/table.h"

namespace app {
namespace {

constexpr std::size_t kElementsWidth = 60;
constexpr std::size_t kGreatestList = 20;

/// A table of at most kGreatestList records, each made a row of by `rowOf`.
template <class Record, class RowOf>
void PrintList(std::ostream& out, const Row& headings, const std::vector<Record>& records,
               RowOf rowOf) {
  std::vector<Row> rows = {headings};
  for (const Record& record : records) {
    if (rows.size() > kGreatestList) break;
    rows.push_back(rowOf(record));
  }
  PrintTable(out, rows);
  if (records.size() > kGreatestList)
    out << "  and " << records.size() - kGreatestList << " more\n";
}

std::string Listed(const std::vector<std::string>& ids) {
  std::string list;
  for (const std::string& id : ids) {
    if (list.size() > kElementsWidth)
      return OneLine(list, kElementsWidth) + " (" + std::to_string(ids.size()) + ")";
    list += (list.empty() ? "" : " ") + id;
  }
  return OneLine(list, kElementsWidth);
}

void PrintUnread(std::ostream& out, const Diagnosis& diagnosis) {
  if (diagnosis.unread.empty()) return;
  out << "\nLines of machine.ini that are not read as they stand\n";
  PrintList(out, {"Line", "Name", "Why"}, diagnosis.unread, [](const UnreadLine& each) {
    return Row{std::to_string(each.line), each.name, each.reason};
  });
}

void PrintPolicy(std::ostream& out, const Diagnosis& diagnosis) {
  if (!diagnosis.scope) return;
  if (diagnosis.hasSwitchingPolicy)
    out << "\nDelivered policy; set goes by number 1, whose scope is " << *diagnosis.scope << ": "
        << diagnosis.scopeMeaning << "\n";
  else
    out << "\nThe delivered text has no policy 1; set takes scope " << *diagnosis.scope << " ("
        << diagnosis.scopeMeaning << ")\n";
  PrintList(out, {"Policy", "Scope", "Elements"}, diagnosis.policies,
            [](const Diagnosis::PolicyRow& each) {
              return Row{each.id, each.scope, Listed(each.elements)};
            });
  // What is no watermark as it is meant comes first where not all is shown.
  std::vector<Diagnosis::ElementRow> elements = diagnosis.elements;
  if (elements.size() > kGreatestList)
    std::ranges::stable_partition(elements, &Diagnosis::ElementRow::isOdd);
  PrintList(out, {"Element", "Kind", "Name"}, elements, [](const Diagnosis::ElementRow& each) {
    return Row{each.id, each.kind, each.name};
  });
}

void PrintPrinters(std::ostream& out, const Diagnosis& diagnosis) {
  out << "\nPrinters" << (diagnosis.printers ? "" : " cannot be listed") << "\n";
  if (!diagnosis.printers) return;
  PrintList(out, {"Printer", "Driver", "What becomes of it"}, *diagnosis.printers,
            [](const Diagnosis::PrinterRow& each) {
              return Row{each.name, each.driver, each.fate};
            });
}

}  // namespace

void PrintDiagnosis(std::ostream& out, const Diagnosis& diagnosis) {
  out << "Machine " << OneLine(diagnosis.machine) << "\n";
  PrintList(out, {"Part", "State", "Place"}, diagnosis.parts, [](const Diagnosis::Part& each) {
    return Row{each.name, each.state, each.place};
  });
  PrintUnread(out, diagnosis);
  PrintPolicy(out, diagnosis);
  PrintPrinters(out, diagnosis);
  out << "\nWhat an export would give now\n";
  PrintList(out, {"Command", "Result", "Reason"}, diagnosis.forecasts, [](const Forecast& each) {
    return Row{each.command, each.result, each.reason};
  });
}

}  // namespace app
