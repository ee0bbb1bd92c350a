#pragma once

// What the author of a policy should know, as findings or as notes.

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace app {

struct Finding {
  std::string kind;      ///< One word for programs: "changed", "zero", "unread", ...
  std::string element;   ///< Its ID; empty when the finding is about no element.
  std::string property;  ///< Empty when it is about no property.
  long line = 0;         ///< 0 when it is about no line.
  std::string message;
  std::string written = "";  ///< Of a value: the text of the policy.
  std::string became = "";   ///< Of a value: the record's, for people.
};

/// "E1 FontSize: -3 became 1", with no name longer than `width` places.
std::string Remark(const Finding& finding, std::size_t width = std::string::npos);

/// "policy.xml:24: E1 FontSize: -3 became 1", on one line whatever the texts in it.
std::string Line(const std::string& file, const Finding& finding);

/// Findings, or notes. Of each kind the first ones are kept and the others counted, because a text
/// may hold a million.
class Remarks {
 public:
  void Add(Finding finding);
  /// Returns false, and counts, where one more of the kind would not be kept. For a caller that can
  /// spare its words.
  bool HasRoom(const std::string& kind);
  /// Sorts them by line, and adds one of each kind that says how many were not kept.
  void Close();

  const std::vector<Finding>& Kept() const { return m_kept; }
  /// How many there are in all.
  std::size_t Count() const { return m_count; }

 private:
  std::vector<Finding> m_kept;
  std::map<std::string, std::size_t> m_counts;  ///< By kind.
  std::size_t m_count = 0;
};

}  // namespace app
