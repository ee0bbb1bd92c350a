#include "app/rehearsal/remarks.h"

#include <algorithm>

#include "app/text/table.h"
#include "app/text/wording.h"

namespace app {
namespace {

constexpr std::size_t kMostOfAKind = 1000;

}  // namespace

void Remarks::Add(Finding finding) {
  ++m_count;
  if (++m_counts[finding.kind] <= kMostOfAKind) m_kept.push_back(std::move(finding));
}

bool Remarks::HasRoom(const std::string& kind) {
  std::size_t& count = m_counts[kind];
  if (count < kMostOfAKind) return true;
  ++count;
  ++m_count;
  return false;
}

void Remarks::Close() {
  std::ranges::stable_sort(m_kept, {}, &Finding::line);
  for (const auto& [kind, count] : m_counts)
    if (count > kMostOfAKind)
      m_kept.push_back({kind, "", "", 0, "and " + std::to_string(count - kMostOfAKind) + " more"});
}

std::string Remark(const Finding& finding, std::size_t width) {
  std::string subject = OneLine(finding.element, width);
  const std::string property = OneLine(finding.property, width);
  if (!property.empty()) subject += (subject.empty() ? "" : " ") + property;
  return subject + (subject.empty() ? "" : ": ") + finding.message;
}

std::string Line(const std::string& file, const Finding& finding) {
  const std::string line = finding.line > 0 ? std::to_string(finding.line) + ":" : "";
  return file + ":" + line + " " + Remark(finding, kTextWidth);
}

}  // namespace app
