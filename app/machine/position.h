#pragma once

#include <cstdint>
#include <string>

namespace app {

/// A watermark's position number with the place of the page that it stands for: "8 bottom right".
/// Numbers beside 0 to 8 stand for none.
inline std::string PositionText(std::int32_t position) {
  constexpr const char* kPlaces[] = {"top left",    "top center",    "top right",
                                     "middle left", "center",        "middle right",
                                     "bottom left", "bottom center", "bottom right"};
  const std::string number = std::to_string(position);
  return position >= 0 && position < 9 ? number + " " + kPlaces[position] : number;
}

}  // namespace app
