#pragma once

// What each export would give on this machine now, and why.

#include <string>
#include <vector>

#include "app/machine/findings.h"

namespace app {

struct Forecast {
  std::string command;  ///< The command of this program that calls the export.
  std::string result;
  std::string reason;
  bool isGood;  ///< The export would do its work, and what it does would be saved.
};

std::vector<Forecast> Foresee(const Findings& findings);

}  // namespace app
