#include "app/commands/command.h"

#include <charconv>
#include <sstream>

#include "app/text/usage_error.h"

namespace app {

std::vector<std::string> Option::Names() const {
  std::vector<std::string> names;
  std::istringstream text(name);
  for (std::string each; std::getline(text, each, ',');) names.push_back(each);
  return names;
}

std::string Option::Help() const {
  return words.empty() ? help : help + ": " + Listed(words);
}

std::string Listed(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) {
    const bool isLast = &word == &words.back();
    list += (list.empty() ? "" : isLast ? " or " : ", ") + word;
  }
  return list;
}

std::string Values::Text(const std::string& name, const std::string& otherwise) const {
  const auto found = m_values.find(name);
  return found == m_values.end() ? otherwise : found->second;
}

int Values::Number(const std::string& name, int otherwise) const {
  if (!Has(name)) return otherwise;
  const std::string text = Text(name);
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end)
    throw UsageError(name + ": '" + text + "' is no whole number");
  return number;
}

}  // namespace app
