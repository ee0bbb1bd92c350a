// docs/policy.md is held to what it says: its policy, each row of its tables and each bound are
// applied to a sample machine by the program, and `show --json` is compared with the page.

#include <regex>
#include <sstream>

#include "app/page/page.h"
#include "tests/app/desk.h"

namespace tests {
namespace {

using Row = std::vector<std::string>;

std::string Page() {
  return Read(fs::path(SIGIL_SOURCE_FOLDER) / "docs/policy.md");
}

/// The rows of the table whose heading begins with `heading`, a cell without its blanks.
std::vector<Row> Table(const std::string& heading) {
  std::istringstream lines(Page());
  std::string line;
  while (std::getline(lines, line) && !line.starts_with(heading)) {
  }
  std::getline(lines, line);
  std::vector<Row> rows;
  while (std::getline(lines, line) && line.starts_with("|")) {
    static const std::regex kCell(R"(\| *([^|]*?) *(?=\|))");
    Row& row = rows.emplace_back();
    for (std::sregex_iterator cell(line.begin(), line.end(), kCell), end; cell != end; ++cell)
      row.push_back((*cell)[1]);
  }
  EXPECT_FALSE(rows.empty()) << heading;
  return rows;
}

/// What stands in backticks.
Row Quoted(const std::string& cell) {
  static const std::regex kQuoted("`([^`]*)`");
  Row quoted;
  for (std::sregex_iterator each(cell.begin(), cell.end(), kQuoted), end; each != end; ++each)
    quoted.push_back((*each)[1]);
  return quoted;
}

/// What a fresh sample machine holds when a policy has been applied.
Json Applied(const std::string& policy) {
  const Desk desk;
  desk.Write(policy);
  return desk.Apply();
}

/// The watermarks of these elements, which must all be there, by their numbers.
std::map<std::size_t, Json> Watermarks(const std::vector<std::string>& elements) {
  std::map<std::size_t, Json> marks;
  const Json all = Applied(Policy(elements));
  for (const Json& mark : all["entries"][0]["watermarks"])
    marks[std::stoul(mark["name"].get<std::string>())] = mark;
  return marks;
}

TEST(PolicyPage, ItsPolicyLeavesWhatItSays) {
  const std::string page = Page();
  const auto start = page.find("```xml\n") + 7;
  const Json entries = Applied(page.substr(start, page.find("```", start) - start))["entries"];
  ASSERT_EQ(entries.size(), 3U);
  const std::vector<Row> rows = Table("| Name | Text |");
  for (const Json& entry : entries) {
    ASSERT_EQ(entry["watermarks"].size(), rows.size());
    EXPECT_EQ(entry["lastSetting"]["watermarks"].size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const Json& mark = entry["watermarks"][i];
      EXPECT_EQ(mark["name"], Quoted(rows[i][0]).at(0));
      EXPECT_EQ(mark["text"], Quoted(rows[i][1]).at(0));
      EXPECT_EQ(mark["printPos"], Json::parse(Quoted(rows[i][2]).at(1)));
    }
  }
}

TEST(PolicyPage, ItsScopesSwitchWhatItSays) {
  for (const Row& row : Table("| PrinterScope |")) {
    const Row scope = Quoted(row[0]);
    const std::string node = scope.empty() ? "" : "<PrinterScope>" + scope[0] + "</PrinterScope>";
    const Json all = Applied(Policy({"<Text>t</Text>"}, node));
    EXPECT_EQ(all["entries"].size(), 3U);
    for (const Json& entry : all["entries"])
      EXPECT_EQ(entry["lastSetting"]["enabled"], row[entry["printer"] == "*" ? 1 : 2] == "on")
          << row[0] << " " << entry["printer"];
  }
}

TEST(PolicyPage, ItsElementsBecomeWhatItSays) {
  const std::vector<Row> rows = Table("| In the element |");
  std::vector<std::string> elements;
  for (const Row& row : rows) elements.push_back(Quoted(row[0]).at(0));
  auto marks = Watermarks(elements);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row becomes = Quoted(rows[i][1]);
    EXPECT_EQ(becomes.empty(), !marks.contains(i)) << elements[i];
    for (std::size_t j = 0; j + 1 < becomes.size(); j += 2) {
      const std::string expected =
          std::regex_replace(becomes[j + 1], std::regex("\"ID_"), "\"" + std::to_string(i) + "_");
      EXPECT_EQ(marks[i][becomes[j]], Json::parse(expected)) << elements[i] << " " << becomes[j];
    }
  }
}

// A number at an end of its range stays, one beyond becomes that end, and `check` names form and
// range as the page does; and no property lacks an example.
TEST(PolicyPage, ItsRangesEndWhereItSays) {
  struct Case {
    std::string property;
    int becomes;
  };
  std::vector<Case> cases;
  std::vector<std::string> elements, wrong, rules;
  const std::string page = Page();
  for (const Row& row : Table("| Property | Kind |")) {
    const std::string name = Quoted(row[0]).at(0);
    EXPECT_TRUE(std::regex_search(page, std::regex("\\| `[^`]*<" + name + ">")))
        << "no example of " << name;
    static const std::regex kRange("(-?[0-9]+) to (-?[0-9]+)");
    std::smatch range;
    if (!std::regex_match(row[3], range, kRange)) continue;
    wrong.push_back("<Kind>" + row[1].substr(0, 1) + "</Kind><" + name + ">?</" + name + ">");
    rules.push_back("'?' reads as 0; a " + row[2] + ", " + row[3]);
    const int low = std::stoi(range[1]), high = std::stoi(range[2]);
    for (const int number : {low - 1, low, low + 1, high - 1, high, high + 1}) {
      cases.push_back({Quoted(row[4]).at(0), std::clamp(number, low, high)});
      elements.push_back("<Kind>" + row[1].substr(0, 1) + "</Kind><" + name + ">" +
                         std::to_string(number) + "</" + name + ">");
    }
  }
  EXPECT_EQ(cases.size(), 6U * 6);
  auto marks = Watermarks(elements);
  for (std::size_t i = 0; i < cases.size(); ++i)
    EXPECT_EQ(marks[i][cases[i].property], cases[i].becomes) << elements[i];
  const Desk desk;
  desk.Write(Policy(wrong));
  const Json told = Json::parse(desk.Answer("check --json policy.xml"));
  Row messages;
  for (const Json& finding : told.at("findings"))
    if (finding.contains("written")) messages.push_back(finding.at("message"));
  EXPECT_EQ(messages, rules);
}

TEST(PolicyPage, SaysWhatStandsUnderThePictures) {
  for (const std::string_view line : app::page::kMeaning)
    EXPECT_NE(Page().find("- " + std::string(line) + "\n"), std::string::npos) << line;
}

}  // namespace
}  // namespace tests
