#include "tests/support/transcript.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace tests {

namespace {

std::string Filled(const std::string& line, const Transcript::Values& values) {
  std::string filled;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool isMark = line[i] == '$' && i + 1 < line.size();
    const auto place = isMark ? static_cast<std::size_t>(line[i + 1] - '1') : values.size();
    if (place < values.size()) {
      filled += values[place];
      ++i;
    } else {
      filled += line[i];
    }
  }
  return filled;
}

std::vector<std::string> Parts(std::string_view line) {
  std::vector<std::string> parts;
  for (std::size_t end; (end = line.find(" | ")) != std::string_view::npos;
       line.remove_prefix(end + 3))
    parts.emplace_back(line.substr(0, end));
  parts.emplace_back(line);
  return parts;
}

}  // namespace

Transcript::Transcript(const std::vector<std::string>& files) {
  for (const std::string& file : files) Read(SIGIL_TEST_FOLDER "/" + file + ".txt");
}

void Transcript::Read(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("no transcript " + path);
  std::string* section = nullptr;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("== ")) {
      const auto [place, isNew] = m_sections.emplace(line.substr(3), "");
      if (!isNew) throw std::runtime_error("again in " + path + ": " + line);
      section = &place->second;
    } else if (section != nullptr) {
      *section += line + "\n";
    }
  }
}

std::string Transcript::operator()(const std::string& section, const Values& values) const {
  const auto found = m_sections.find(section);
  if (found == m_sections.end()) throw std::runtime_error("no section == " + section);
  std::string text;
  std::istringstream lines(found->second);
  for (std::string line; std::getline(lines, line);) {
    line = Filled(line, values);
    if (!line.starts_with('@')) {
      text += line + "\n";
      continue;
    }
    const Values parts = Parts(line.substr(1));
    text += (*this)(parts[0], parts.size() == 1 ? values : Values(parts.begin() + 1, parts.end()));
  }
  return text;
}

}  // namespace tests
