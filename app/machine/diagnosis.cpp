#include "app/machine/diagnosis.h"

#include <algorithm>
#include <set>

#include "app/machine/home.h"
#include "host/shared_names.h"
#include "platform/crt.h"
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

std::string SwitchMeaning(const std::optional<int>& value) {
  if (!value) return "unknown: the file cannot be opened";
  const std::string number = "item 63 is " + std::to_string(*value);
  if (*value < 0) return "unreadable: " + number;
  return (*value == 0 ? "off: " : "on: ") + number;
}

Diagnosis::ElementRow Registered(const PolicyElement& element) {
  const int kind = _wtoi(element.kind.c_str());
  const std::string meaning = kind == 0 ? "header or footer"
                              : kind == 1
                                  ? "stamp"
                                  : "unknown (" + std::to_string(kind) + "), not registered";
  return {ToUtf8(element.id), meaning, ToUtf8(element.name), kind != 0 && kind != 1};
}

/// It reads as an element that is all empty, and registers as such.
Diagnosis::ElementRow Missing(const std::wstring& id) {
  if (id.empty()) return {"", "an ID without text, not registered", "", true};
  return {ToUtf8(id), "no such element: an empty header or footer is registered", "", true};
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

std::vector<Diagnosis::Part> Parts(const Findings& findings) {
  std::vector<Diagnosis::Part> parts = {
      {"User", findings.user, ""},
      {"Delivery folder", findings.delivery.origin, ToUtf8(findings.delivery.path)},
      {"Key source", findings.keySource, ToUtf8(KeySource())},
      {"Policy file", findings.policyFile, ToUtf8(findings.delivery.PolicyFile())},
      {"Function switch", SwitchMeaning(findings.functionSwitch),
       ToUtf8(findings.delivery.SystemSetting())},
      {"Component", findings.component.empty() ? "found" : findings.component,
       ToUtf8(BesideHost(L"SigilUtil_x86.dll"))},
      {"Setting file", findings.settingFile.state, findings.settingFile.place},
      {"Mutex", findings.mutex.empty() ? "can be had" : findings.mutex, ""},
      {"Log", findings.log, findings.logFile},
      {"Pipe",
       findings.pipeError == 0 ? "served"
                               : "not served (error " + std::to_string(findings.pipeError) + ")",
       ToUtf8(kControlPipe)}};
  for (const RefusedPlace& place : findings.refused)
    parts.push_back({"Not opened", place.why, place.path.string()});
  return parts;
}

void AddPolicies(Diagnosis& diagnosis, const PolicyText& policy) {
  for (const Policy& each : policy.policies) {
    auto& row = diagnosis.policies.emplace_back();
    row.id = ToUtf8(each.id);
    row.scope = ToUtf8(each.scope.value_or(L""));
    for (const std::wstring& id : each.elementIds) row.elements.push_back(ToUtf8(id));
  }
}

void AddElements(Diagnosis& diagnosis, const PolicyText& policy) {
  std::set<std::wstring> told;
  for (const PolicyElement& element : policy.elements) {
    told.insert(element.id);
    diagnosis.elements.push_back(Registered(element));
  }
  for (const Policy& each : policy.policies)
    for (const std::wstring& id : each.elementIds)
      if (told.insert(id).second) diagnosis.elements.push_back(Missing(id));
}

}  // namespace

bool Diagnosis::IsGood() const {
  return std::ranges::all_of(forecasts, &Forecast::isGood);
}

Diagnosis Diagnose() {
  const Findings findings = Examine();
  Diagnosis diagnosis;
  diagnosis.machine = findings.machine;
  diagnosis.parts = Parts(findings);
  diagnosis.unread = findings.unread;
  if (findings.policy && findings.scope) {
    diagnosis.scope = findings.scope;
    diagnosis.scopeMeaning = ScopeMeaning(*findings.scope);
    diagnosis.hasSwitchingPolicy = HasSwitchingPolicy(*findings.policy);
    AddPolicies(diagnosis, *findings.policy);
    AddElements(diagnosis, *findings.policy);
  }
  if (findings.printers) {
    diagnosis.printers.emplace();
    for (const PrinterFinding& printer : *findings.printers)
      diagnosis.printers->push_back(
          {ToUtf8(printer.name), ToUtf8(printer.driver), Fate(printer.kind)});
  }
  diagnosis.forecasts = Foresee(findings);
  return diagnosis;
}

}  // namespace app
