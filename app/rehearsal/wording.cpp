#include "app/rehearsal/wording.h"

#include "app/inventory/table.h"
#include "app/rehearsal/trial.h"

namespace app {
namespace {

constexpr char kSpace[] = " \t\r\n";

}  // namespace

bool IsBlank(const std::string& text) {
  return text.find_first_not_of(kSpace) == std::string::npos;
}

std::string Trimmed(const std::string& text) {
  if (IsBlank(text)) return "";
  const std::size_t first = text.find_first_not_of(kSpace);
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string Quoted(const std::string& text) {
  return "'" + OneLine(text, kTextWidth) + "'";
}

std::string NumberOrQuoted(const std::string& text) {
  return NumberOf(Trimmed(text)) ? Trimmed(text) : Quoted(text);
}

std::string Listed(const std::vector<long>& lines) {
  constexpr std::size_t kMost = 8;
  std::string text;
  for (std::size_t i = 0; i < lines.size() && i < kMost; ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
  return lines.size() > kMost ? text + ", ..." : text;
}

}  // namespace app
