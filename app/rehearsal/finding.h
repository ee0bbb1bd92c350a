#pragma once

#include <string>
#include <vector>

namespace app {

/// Something that the policy's author should know.
struct Finding {
  std::string kind;      ///< One word for programs: "changed", "zero", "unread", ...
  std::string element;   ///< Its ID; empty when the finding is about no element.
  std::string property;  ///< Empty when it is about no property.
  long line = 0;         ///< 0 when it is about no line.
  std::string message;
  std::string written = "";  ///< Of a value: what the text says.
  std::string became = "";   ///< What it became, as it is told.
};

struct Remarks {
  std::vector<Finding> findings;  ///< What is not as it should be.
  std::vector<Finding> notes;     ///< What is as it may be, and good to know.
};

/// "policy.xml:24: E1 FontSize: -3 became 1", on one line whatever the texts in it.
std::string Line(const std::string& file, const Finding& finding);

}  // namespace app
