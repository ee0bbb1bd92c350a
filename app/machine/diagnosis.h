#pragma once

// What the doctor tells, in words, for people and for programs alike.

#include <optional>
#include <string>
#include <vector>

#include "app/machine/forecast.h"

namespace app {

struct Diagnosis {
  struct Part {
    std::string name;
    std::string state;
    std::string place;
  };
  struct PolicyRow {
    std::string id;
    std::string scope;
    std::vector<std::string> elements;  ///< Their IDs.
  };
  struct ElementRow {
    std::string id;
    std::string kind;  ///< And what becomes of it.
    std::string name;
    bool isOdd;  ///< It is listed without an element, or of no kind that is registered.
  };
  struct PrinterRow {
    std::string name;
    std::string driver;
    std::string fate;
  };

  std::string machine;
  std::vector<Part> parts;
  std::vector<UnreadLine> unread;

  /// Of the delivered policy; nothing when there is none, or none that is readable.
  std::optional<int> scope;
  std::string scopeMeaning;
  bool hasSwitchingPolicy = false;  ///< The scope is that of policy 1, which is there.
  std::vector<PolicyRow> policies;
  std::vector<ElementRow> elements;

  std::optional<std::vector<PrinterRow>> printers;
  std::vector<Forecast> forecasts;

  /// Every export would do its work.
  bool IsGood() const;
};

Diagnosis Diagnose();

}  // namespace app
