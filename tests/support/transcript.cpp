#include "tests/support/transcript.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>

namespace tests {

namespace {

std::string g_places;

std::string Filled(std::string line, const Transcript::Values& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string mark = "$" + std::to_string(i + 1);
    for (std::size_t at = 0; (at = line.find(mark, at)) != std::string::npos;
         at += values[i].size())
      line.replace(at, mark.size(), values[i]);
  }
  return line;
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
  for (const std::string& name : files) {
    std::ifstream file(SIGIL_TEST_FOLDER "/" + name + ".txt");
    if (!file) throw std::runtime_error("no transcript " + name + ".txt");
    m_rows.clear();
    auto section = m_sections.end();
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with("== ")) {
        bool isNew = false;
        std::tie(section, isNew) = m_sections.emplace(line.substr(3), Section{name + ".txt", ""});
        if (!isNew) throw std::runtime_error(name + ".txt has a second section " + line);
      } else if (line.starts_with("when ")) {
        const std::size_t colon = line.rfind(": ");
        m_rows.push_back(
            {section->first, line.substr(5, colon - 5), std::stoi(line.substr(colon + 2))});
      } else if (section != m_sections.end()) {
        section->second.text += line + "\n";
      }
    }
  }
}

std::string Transcript::TakePlaces() {
  return std::exchange(g_places, {});
}

const Transcript::Section& Transcript::Find(const std::string& section) const {
  const auto found = m_sections.find(section);
  if (found == m_sections.end()) throw std::runtime_error("no section == " + section);
  return found->second;
}

std::string Transcript::operator()(const std::string& section, const Values& values) const {
  std::string told;
  g_places += "\n" + Find(section).file + " == " + section;
  std::istringstream lines(Find(section).text);
  for (std::string line; std::getline(lines, line);) {
    line = Filled(line, values);
    if (line.starts_with('@')) {
      const Values parts = Parts(line.substr(1));
      line = Filled(Find(parts[0]).text, {parts.begin() + 1, parts.end()});
      if (line.starts_with('@') || line.find("\n@") != line.npos)
        throw std::runtime_error("another section in == " + parts[0]);
    }
    told += line + "\n";
  }
  return told;
}

}  // namespace tests
