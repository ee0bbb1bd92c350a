#include "tests/support/transcript.h"

#include <algorithm>
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
      } else if (section != m_sections.end() && !line.empty()) {
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
  g_places += "\n" + Find(section).file + " == " + section;
  std::string told;
  for (const std::string& line : Lines(section, values)) told += line + "\n";
  return told;
}

Transcript::Values Transcript::Lines(const std::string& section, const Values& values) const {
  Values told, base;
  auto place = base.cbegin();
  bool isGap = false;
  const auto add = [&](const std::string& line) {
    const auto found = std::find(place, base.cend(), line);
    if (isGap && found == base.cend())
      throw std::runtime_error("== " + section + ": no such line after ...: " + line);
    if (std::exchange(isGap, false)) told.insert(told.end(), place, found);
    if (found != base.cend()) place = std::next(found);
    told.push_back(line);
  };
  std::istringstream text(Find(section).text);
  for (std::string line; std::getline(text, line);) {
    line = Filled(line, values);
    const bool isBase = line.starts_with("= ");
    if (line == "...") {
      isGap = true;
    } else if (isBase || line.starts_with('@')) {
      const Values parts = Parts(std::string_view(line).substr(isBase ? 2 : 1));
      const Values lines = Lines(parts[0], {parts.begin() + 1, parts.end()});
      if (isBase)
        place = (base = lines).cbegin();
      else
        std::for_each(lines.begin(), lines.end(), add);
    } else {
      add(line);
    }
  }
  if (isGap) told.insert(told.end(), place, base.cend());
  return told;
}

}  // namespace tests
