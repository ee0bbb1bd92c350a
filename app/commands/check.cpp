#include <algorithm>
#include <iostream>
#include <ranges>

#include "app/commands/command_line.h"
#include "app/machine/settings.h"
#include "app/machine/state.h"
#include "app/text/table.h"
#include "app/text/wording.h"

namespace app {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kNameWidth = 24;
constexpr std::size_t kMostRows = 40;

/// Words behind an indent, in lines that fit the narrowest terminal.
void PrintWrapped(const std::string& head, std::string_view text) {
  std::string margin = head;
  for (const std::string& line : Wrapped(text, kWidth - DisplayWidth(head))) {
    std::cout << margin << line << "\n";
    margin.assign(DisplayWidth(head), ' ');
  }
}

/// Values by name, in the order in which the names came.
template <class Value>
using InOrder = nlohmann::ordered_map<std::string, Value>;

void PrintLacking(const Review& review) {
  // Of each element the values, with the names of the missing properties that read as each.
  InOrder<InOrder<std::string>> elements;
  for (const Finding& note : review.notes.Kept()) {
    if (note.kind != "lacking" || note.element.empty()) continue;
    std::string& names = elements[note.element][note.became];
    names += (names.empty() ? "" : ", ") + note.property;
  }
  if (elements.empty()) return;
  std::size_t width = 0;
  for (const auto& [id, groups] : elements | std::views::take(kMostRows))
    width = std::max(width, DisplayWidth(OneLine(id, kNameWidth)));
  std::cout << "\nWhat is not there reads as\n";
  for (const auto& [id, groups] : elements | std::views::take(kMostRows)) {
    std::string text;  // "Bold, Italic off; Rotate 0"
    for (const auto& [became, names] : groups)
      text += (text.empty() ? "" : "; ") + names + " " + became;
    const std::string name = OneLine(id, kNameWidth);
    PrintWrapped("  " + name + std::string(width - DisplayWidth(name) + 2, ' '), text);
  }
  if (elements.size() > kMostRows)
    std::cout << "  " << AndMore(elements.size() - kMostRows, "element", "elements")
              << ", which --json tells\n";
}

void PrintNotes(const std::string& file, const Review& review) {
  std::string heading = "\nGood to know\n";
  for (const Finding& note : review.notes.Kept()) {
    const bool isInTable = note.kind == "lacking" && note.property != "PrinterScope";
    const bool isTold = note.kind == "second";  // by the finding of its element
    if (!isInTable && !isTold)
      std::cout << std::exchange(heading, "") << "  " << Line(file, note) << "\n";
  }
}

std::string InWords(const PrinterFate& fate) {
  if (fate.watermarks)
    return Counted(*fate.watermarks, "watermark", "watermarks") + ", switched " +
           (fate.isOn ? "on" : "off");
  return fate.isExcluded ? "on the exclude list" : "goes by the default entry";
}

/// "fate" tells of the printer's own entry, or else whether it is excluded; if not, it goes by the
/// default entry.
Json FateAsJson(const PrinterFate& fate) {
  return {{"printer", fate.printer},
          {"fate", fate.watermarks ? Json{{"watermarks", *fate.watermarks}, {"switched", fate.isOn}}
                                   : Json{{"excluded", fate.isExcluded}}}};
}

void PrintPrinters(const Review& review) {
  std::vector<Row> rows = {{"Printer", "What becomes of it"}};
  for (const PrinterFate& printer : review.printers)
    rows.push_back({OneLine(EntryName(printer.printer), 2 * kNameWidth), InWords(printer)});
  std::cout << "\n";
  PrintTable(std::cout, rows, "");
}

void Print(const std::string& file, const Review& review) {
  std::cout << file << ", policy " << review.policyId << ": " << review.Registered() << " of "
            << Counted(review.elements.size(), "element", "elements") << " on "
            << Counted(review.records.entries.size(), "entry", "entries") << "; "
            << (review.findings.Count() == 0
                    ? "nothing found"
                    : Counted(review.findings.Count(), "finding", "findings"))
            << ".\n";
  for (const Finding& finding : review.findings.Kept()) std::cout << Line(file, finding) << "\n";
  PrintNotes(file, review);
  PrintLacking(review);
  PrintPrinters(review);
  if (const std::string unread = WhatIsUnread(); !unread.empty())
    std::cout << "\n" << unread << "\n";
}

Json ToJson(const Remarks& remarks) {
  Json list = Json::array();
  for (const Finding& finding : remarks.Kept()) {
    Json& json = list.emplace_back(Json{{"kind", finding.kind}});
    if (!finding.element.empty()) json["element"] = finding.element;
    if (!finding.property.empty()) json["property"] = finding.property;
    if (finding.line > 0) json["line"] = finding.line;
    if (!finding.written.empty()) json["written"] = finding.written;
    if (!finding.became.empty()) json["became"] = finding.became;
    json["message"] = finding.message;
  }
  return list;
}

void PrintAsJson(const std::string& file, const Review& review) {
  Json elements = Json::array();
  for (const ElementFate& fate : review.elements)
    elements.push_back({{"id", fate.id},
                        {"line", fate.line},
                        {"watermark", fate.mark ? JsonOf(*fate.mark) : Json()}});
  Json printers = Json::array();
  for (const PrinterFate& printer : review.printers) printers.push_back(FateAsJson(printer));
  const Json all = {{"file", file},
                    {"policyId", review.policyId},
                    {"result", review.result},
                    {"findings", ToJson(review.findings)},
                    {"notes", ToJson(review.notes)},
                    {"elements", elements},
                    {"printers", printers}};
  PrintJson(std::cout, all);
}

struct Options {
  std::string file;  ///< Empty: the delivered policy.
  int policyId = 1;
  std::string paper = "A4";
  bool isLandscape = false;
  bool isJson = false;
};

/// Tells what a policy becomes on this machine. Returns 0 when nothing is found, 1 with findings.
/// Throws UsageError for a text that the passes refuse and for one that they fail over here.
int Check(const Options& options) {
  const PolicySource source = ReadPolicySource(options.file);
  const page::Paper paper = page::FindPaper(options.paper, options.isLandscape);
  const Review review = ReviewSource(source, options.policyId, paper);
  if (options.isJson)
    PrintAsJson(source.name, review);
  else
    Print(source.name, review);
  return review.findings.Count() == 0 ? 0 : 1;
}

}  // namespace

void AddCheck(CommandLine& line) {
  auto [command, options] =
      line.Add("check", "Tells what becomes of a policy on this machine; changes nothing", Check);
  AddPolicySource(command, options.file);
  AddPolicyId(command, options.policyId);
  AddPaper(command, options.paper, options.isLandscape);
  AddJson(command, options.isJson);
}

}  // namespace app
