#include "app/commands/check.h"

#include <algorithm>
#include <iostream>
#include <set>

#include "app/machine/state.h"
#include "app/pass/result.h"
#include "app/rehearsal/review.h"
#include "app/text/input.h"
#include "app/text/json.h"
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

/// "Bold, Italic off; Rotate 0": the properties that an element lacks, by what they read as.
std::string Lacking(const std::vector<Finding>& notes, const std::string& element) {
  std::vector<std::pair<std::string, std::string>> groups;
  for (const Finding& note : notes) {
    if (note.kind != "lacking" || note.element != element) continue;
    const auto same = [&](const auto& group) { return group.first == note.became; };
    const auto found = std::ranges::find_if(groups, same);
    if (found == groups.end())
      groups.emplace_back(note.became, note.property);
    else
      found->second += ", " + note.property;
  }
  std::string text;
  for (const auto& [became, names] : groups)
    text += (text.empty() ? "" : "; ") + names + " " + became;
  return text;
}

void PrintLacking(const Review& review) {
  std::set<std::string> seen;
  std::vector<std::pair<std::string, std::string>> rows;
  for (const ElementFate& fate : review.elements) {
    const std::string text = Lacking(review.remarks.notes, fate.id);
    if (text.empty() || !seen.insert(fate.id).second) continue;
    rows.emplace_back(OneLine(fate.id, kNameWidth), text);
  }
  if (rows.empty()) return;
  const std::size_t left = rows.size() - std::min(rows.size(), kMostRows);
  rows.resize(rows.size() - left);
  std::size_t width = 0;
  for (const auto& [id, text] : rows) width = std::max(width, DisplayWidth(id));
  std::cout << "\nWhat is not there reads as\n";
  for (const auto& [id, text] : rows)
    PrintWrapped("  " + id + std::string(width - DisplayWidth(id) + 2, ' '), text);
  if (left > 0) std::cout << "  and " << left << " elements more, which --json tells\n";
}

void PrintNotes(const std::string& file, const Review& review) {
  bool isFirst = true;
  for (const Finding& note : review.remarks.notes) {
    if (note.kind == "lacking" && !note.element.empty()) continue;
    if (isFirst) std::cout << "\nGood to know\n";
    isFirst = false;
    std::cout << "  " << Line(file, note) << "\n";
  }
}

void PrintPrinters(const Review& review) {
  std::vector<Row> rows = {{"Printer", "What becomes of it"}};
  for (const PrinterFate& printer : review.printers)
    rows.push_back(
        {printer.printer == "*" ? "* (default entry)" : OneLine(printer.printer, 2 * kNameWidth),
         printer.fate});
  std::cout << "\n";
  PrintTable(std::cout, rows, "");
}

void Print(const std::string& file, const Review& review) {
  std::cout << file << ", policy " << review.policyId << ": " << review.Registered() << " of "
            << Counted(review.elements.size(), "element", "elements") << " on "
            << Counted(review.records.entries.size(), "entry", "entries") << "; "
            << (review.remarks.findings.empty()
                    ? "nothing found"
                    : Counted(review.remarks.findings.size(), "finding", "findings"))
            << ".\n";
  for (const Finding& finding : review.remarks.findings) std::cout << Line(file, finding) << "\n";
  PrintNotes(file, review);
  PrintLacking(review);
  PrintPrinters(review);
  if (const std::string unread = WhatIsUnread(); !unread.empty())
    std::cout << "\n" << unread << "\n";
}

Json ToJson(const std::vector<Finding>& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
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
  for (const PrinterFate& printer : review.printers)
    printers.push_back({{"printer", printer.printer}, {"fate", printer.fate}});
  const Json all = {{"file", file},
                    {"policyId", review.policyId},
                    {"result", review.outcome.result},
                    {"findings", ToJson(review.remarks.findings)},
                    {"notes", ToJson(review.remarks.notes)},
                    {"elements", elements},
                    {"printers", printers}};
  PrintJson(std::cout, all);
}

}  // namespace

int Check(const CheckOptions& options) {
  const std::string file = NameOf(options.file);
  const Review review = ReviewFile(options.file, options.policyId);
  if (options.isJson)
    PrintAsJson(file, review);
  else
    Print(file, review);
  return review.remarks.findings.empty() ? 0 : 1;
}

}  // namespace app
