#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>

namespace app {

/// Members stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// Prints the value over several lines. A control in a text stands as its escape, so that a
/// terminal shows what a program reads; ill-formed text becomes U+FFFD.
void PrintJson(std::ostream& out, const Json& value);

}  // namespace app
