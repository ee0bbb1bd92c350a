#include "app/commands/doctor.h"
#include "app/text/json.h"

namespace app {
namespace {

Json ToJson(const Diagnosis::Part& part) {
  return {{"part", part.name}, {"state", part.state}, {"place", part.place}};
}

Json ToJson(const UnreadLine& line) {
  return {{"line", line.line}, {"name", line.name}, {"reason", line.reason}};
}

Json ToJson(const Diagnosis::PolicyRow& policy) {
  return {{"policy", policy.id}, {"scope", policy.scope}, {"elements", policy.elements}};
}

Json ToJson(const Diagnosis::ElementRow& element) {
  return {{"element", element.id}, {"kind", element.kind}, {"name", element.name}};
}

Json ToJson(const Diagnosis::PrinterRow& printer) {
  return {{"printer", printer.name}, {"driver", printer.driver}, {"fate", printer.fate}};
}

Json ToJson(const Forecast& forecast) {
  return {{"command", forecast.command},
          {"result", forecast.result},
          {"reason", forecast.reason},
          {"good", forecast.isGood}};
}

template <class Record>
Json ToJson(const std::vector<Record>& records) {
  Json list = Json::array();
  for (const Record& record : records) list.push_back(ToJson(record));
  return list;
}

}  // namespace

void PrintDiagnosisJson(std::ostream& out, const Diagnosis& diagnosis) {
  Json policy;
  if (diagnosis.scope)
    policy = {{"scope", *diagnosis.scope},
              {"policies", ToJson(diagnosis.policies)},
              {"elements", ToJson(diagnosis.elements)}};
  PrintJson(out, {{"machine", diagnosis.machine},
                  {"good", diagnosis.IsGood()},
                  {"parts", ToJson(diagnosis.parts)},
                  {"unread", ToJson(diagnosis.unread)},
                  {"policy", policy},
                  {"printers", diagnosis.printers ? ToJson(*diagnosis.printers) : Json()},
                  {"forecast", ToJson(diagnosis.forecasts)}});
}

}  // namespace app
