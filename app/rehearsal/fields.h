#pragma once

// A watermark record as a list of named values, for all that compares and prints records. A random
// ID is none of them.

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "app/text/json.h"
#include "peers/settings_component/setting_file.h"

namespace app {

/// Red, green and blue in the lowest 24 bits.
struct Colour {
  std::int32_t value;
  bool operator==(const Colour&) const = default;
};

using FieldValue = std::variant<bool, std::int32_t, double, std::string, Colour>;

struct Field {
  const char* name;  ///< As in the setting file.
  FieldValue (*get)(const peers::WatermarkRecord&);
};

/// In the order of the setting file.
const std::vector<Field>& Fields();

/// For people: 'text', 14, on, 0xFF0000.
std::string Shown(const FieldValue& value);

Json JsonOf(const peers::WatermarkRecord& mark);

}  // namespace app
