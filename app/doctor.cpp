#include "app/doctor.h"

#include <algorithm>
#include <ostream>

#include "app/findings.h"
#include "app/library.h"
#include "app/table.h"
#include "platform/crt.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr std::size_t kElementsWidth = 60;

std::string Utf8(const std::wstring& text) {
  return OneLine(platform::ToUtf8(text));
}

std::string ScopeMeaning(int scope) {
  if (scope == -1) return "none";
  if (scope == 1) return "the default entry, not the suite's printers";
  if (scope == 2) return "the suite's printers, not the default entry";
  return "the default entry and the suite's printers";
}

std::string SwitchMeaning(const std::optional<int>& value) {
  if (!value) return "unknown: the file cannot be opened";
  const std::string number = "item 63 is " + std::to_string(*value);
  if (*value < 0) return "unreadable: " + number;
  return (*value == 0 ? "off: " : "on: ") + number;
}

std::string KindMeaning(const std::wstring& kind) {
  const int number = _wtoi(kind.c_str());
  if (number == 0) return "header or footer";
  if (number == 1) return "stamp";
  return "unknown (" + std::to_string(number) + "), not registered";
}

std::string Fate(const platform::Printer& printer) {
  if (IsSuitePrinter(printer)) return "suite's driver: watermarks of its own";
  if (IsMonitored(printer)) return "monitored: goes by the default entry";
  return printer.comment ? "excluded: its comment has no mark" : "excluded: it has no comment";
}

void PrintParts(std::ostream& out, const Findings& findings) {
  const std::string delivery = platform::ToUtf8(findings.delivery.path);
  const auto file = [](const std::wstring& path) { return platform::ToUtf8(path); };
  PrintTable(
      out,
      {{"Part", "State", "Place"},
       {"User", OneLine(findings.user), ""},
       {"Delivery folder", findings.delivery.origin, delivery},
       {"Key source", findings.keySource, file(kKeySource)},
       {"Policy file", findings.policyFile, delivery + file(kPolicyFile)},
       {"Function switch", SwitchMeaning(findings.functionSwitch), delivery + file(kSystemSetting)},
       {"Component", findings.component.empty() ? "found" : findings.component,
        file(BesideHost(L"SigilUtil_x86.dll"))},
       {"Setting file", findings.settingFile, findings.settingPath},
       {"Pipe",
        findings.pipeError == 0 ? "served"
                                : "not served (error " + std::to_string(findings.pipeError) + ")",
        file(kPipe)}});
}

void PrintPolicies(std::ostream& out, const Findings& findings) {
  if (!findings.policy || !findings.scope) return;
  const PolicyText& policy = *findings.policy;
  out << "\nDelivered policy; set goes by number 1, whose scope is " << *findings.scope << ": "
      << ScopeMeaning(*findings.scope) << "\n";
  std::vector<Row> policies = {{"Policy", "Scope", "Elements"}};
  for (const Policy& each : policy.policies) {
    std::wstring ids;
    for (const std::wstring& id : each.elementIds) ids += (ids.empty() ? L"" : L" ") + id;
    policies.push_back({Utf8(each.id), Utf8(each.scope.value_or(L"")),
                        OneLine(platform::ToUtf8(ids), kElementsWidth)});
  }
  PrintTable(out, policies);
  std::vector<Row> elements = {{"Element", "Kind", "Name"}};
  for (const PolicyElement& element : policy.elements)
    elements.push_back({Utf8(element.id), KindMeaning(element.kind), Utf8(element.name)});
  for (const Policy& each : policy.policies)
    for (const std::wstring& id : each.elementIds)
      if (std::none_of(policy.elements.begin(), policy.elements.end(),
                       [&](const PolicyElement& element) { return element.id == id; }))
        elements.push_back({Utf8(id), "missing, not registered", ""});
  PrintTable(out, elements);
}

void PrintPrinters(std::ostream& out, const Findings& findings) {
  out << "\nPrinters" << (findings.printers ? "" : " cannot be listed") << "\n";
  if (!findings.printers) return;
  std::vector<Row> rows = {{"Printer", "Driver", "What becomes of it"}};
  for (const platform::Printer& printer : *findings.printers)
    rows.push_back({Utf8(printer.name), Utf8(printer.driver), Fate(printer)});
  PrintTable(out, rows);
}

}  // namespace

void PrintDiagnosis(std::ostream& out) {
  const Findings findings = Examine();
  out << "Machine " << platform::MachineRoot().string() << "\n";
  PrintParts(out, findings);
  PrintPolicies(out, findings);
  PrintPrinters(out, findings);
  out << "\nWhat an export would give now\n";
  std::vector<Row> rows = {{"Command", "Result", "Reason"}};
  for (const Forecast& forecast : Foresee(findings))
    rows.push_back({forecast.command, forecast.result, forecast.reason});
  PrintTable(out, rows);
}

}  // namespace app
