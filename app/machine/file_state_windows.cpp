#include "app/machine/file_state.h"

namespace app {

// Nothing can be told of it before a call.
SettingState ExamineSettingFile() {
  return {.state = "the component's own", .place = "", .unsaved = ""};
}

std::optional<std::set<std::string>> WatermarkIds() {
  return std::nullopt;
}

std::vector<std::string> WhatIsIdle() {
  return {};
}

}  // namespace app
