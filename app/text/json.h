#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "platform/visible_text.h"

namespace app {

/// Members stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// Prints the value over several lines. A control in a text stands as its escape, so that a
/// terminal shows what a program reads; ill-formed text becomes U+FFFD.
inline void PrintJson(std::ostream& out, const Json& value) {
  std::istringstream lines(value.dump(2, ' ', false, Json::error_handler_t::replace));
  // Between the line ends of the layout a control can only stand within a text.
  for (std::string line; std::getline(lines, line);) out << platform::Visible(line) << "\n";
}

}  // namespace app
