// The desk against policies whose records are known from how they were made: `check` names every
// value that changes and none that does not, and what it tells is what `update` leaves. Of a policy
// without a fault it finds nothing, and of planted faults each on its line and nothing else.
//
// properties.json tells for each property the field that it becomes, what that holds without it,
// and texts with what they are stored as: those that are kept, and those that are changed. Of
// RepeatType the field is made two: the first axis is its lowest bit.

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

#include "tests/app/desk.h"

namespace tests {
namespace {

class RandomPolicy {
 public:
  explicit RandomPolicy(unsigned seed) : m_random(seed) {
    std::vector<std::string> elements;
    const std::size_t count = 1 + m_random() % 4;
    while (elements.size() < count)
      elements.push_back(MakeElement(std::to_string(elements.size())));
    text = Policy(elements, "<PrinterScope>0</PrinterScope>");
  }

  std::string text;
  std::set<std::string> changed, unread, lacking;  ///< "ELEMENT PROPERTY"
  std::vector<Json> marks;

 private:
  std::string MakeElement(const std::string& id) {
    static const Json kProperties =
        Json::parse(Read(fs::path(SIGIL_SOURCE_FOLDER) / "tests/app/properties.json"));
    const bool isStamp = m_random() % 2 != 0;
    Json mark = {{"printPos", isStamp ? 4 : 0},
                 {"positionOption", 0},
                 {"xOffset", 0.0},
                 {"yOffset", 0.0},
                 {"axes", 0},
                 {"repeatHSpace", 0},
                 {"repeatVSpace", 0}};
    std::vector<std::string> written = {Node("Kind", isStamp ? "1" : "0")};
    for (const char* group : {"both kinds", isStamp ? "stamp" : "header or footer"}) {
      for (const auto& [name, property] : kProperties.at(group).items()) {
        Json& field = mark[property.at("field")];
        field = property.at("without");
        if (m_random() % 4 == 0) {
          lacking.insert(id + " " + name);
          continue;
        }
        const bool isChanged = m_random() % 2 != 0;
        const Json& texts = property.at(isChanged ? "changed" : "kept");
        const auto chosen = std::next(texts.begin(), static_cast<int>(m_random() % texts.size()));
        field = *chosen;
        if (isChanged) changed.insert(id + " " + name);
        written.push_back(Node(name, chosen.key()));
      }
    }
    for (const std::string name : {isStamp ? "XOffset" : "RepeatType", "Opacty"}) {
      if (m_random() % 3 != 0) continue;
      unread.insert(id + " " + name);
      written.push_back(Node(name, "1"));
    }
    mark["name"] = id + "_" + mark["name"].get<std::string>();
    const int axes = mark["axes"].get<int>();
    mark.erase("axes");
    mark["repeatFirstAxis"] = (axes & 1) != 0;
    mark["repeatSecondAxis"] = (axes & 2) != 0;
    marks.push_back(mark);
    std::shuffle(written.begin(), written.end(), m_random);
    return std::accumulate(written.begin(), written.end(), std::string());
  }

  static std::string Node(const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
  }

  std::mt19937 m_random;
};

/// The findings or notes of some kinds, "ELEMENT PROPERTY".
std::set<std::string> Named(const Json& remarks, const std::set<std::string>& kinds) {
  std::set<std::string> named;
  for (const Json& finding : remarks)
    if (kinds.contains(finding.at("kind")))
      named.insert(finding.value("element", "") + " " + finding.value("property", ""));
  return named;
}

class RandomPolicies : public testing::TestWithParam<unsigned> {};

TEST_P(RandomPolicies, AreToldAsTheyAreStored) {
  constexpr unsigned kCount = 50;
  const Desk desk;
  for (unsigned i = 0; i < kCount; ++i) {
    const RandomPolicy policy(GetParam() * kCount + i);
    SCOPED_TRACE(policy.text);
    desk.Write(policy.text);
    const Json told = Json::parse(desk.Answer("check --json policy.xml"));
    EXPECT_EQ(Named(told.at("findings"), {"changed", "zero"}), policy.changed);
    EXPECT_EQ(Named(told.at("findings"), {"unread"}), policy.unread);
    EXPECT_EQ(Named(told.at("notes"), {"lacking"}), policy.lacking);
    std::vector<Json> marks;
    for (const Json& element : told.at("elements")) marks.push_back(element.at("watermark"));
    EXPECT_EQ(marks, policy.marks);

    const Json stored = desk.Apply();
    ASSERT_EQ(stored.at("entries").size(), 3u);
    for (Json entry : stored.at("entries")) {
      for (Json& mark : entry.at("watermarks")) mark.erase("id");
      EXPECT_EQ(entry.at("watermarks").get<std::vector<Json>>(), marks);
    }
    if (HasFailure()) break;
  }
}

struct Fault {
  const char* property;  ///< Its line is replaced.
  const char* line;
  const char* kind;          ///< Of the finding.
  bool isOfElement = false;  ///< The finding is on the element's line.
};

const Fault kFaults[] = {
    {"Opacity", "<Opacity>120</Opacity>", "changed"},
    {"Opacity", "<Opacity>0</Opacity>", "invisible", true},
    {"Color", "<Color>0xFFFFFF</Color>", "invisible", true},
    {"Color", "<Color>red</Color>", "zero"},
    {"FontName", "<FontNme>Arial</FontNme>", "unread"},
    {"Text", "<Text>on {Date}</Text>", "unfilled"},
    {"Kind", "<Kind>7</Kind>", "dropped", true},
    {"YOffset", "<YOffset>900</YOffset>", "page", true},
    {"FontSize", "<FontSize>200</FontSize><Fit>0</Fit>", "page", true},
    {"PrintPos", "<PrintPos>2</PrintPos>", "place", true},
    {"PrintPos", "<PrintPos>bottom left</PrintPos>", "zero"},
};

/// A policy of seven headers on the places 2 to 8, of which up to three have a fault.
class PlantedPolicy {
 public:
  PlantedPolicy(unsigned seed, unsigned faults) : m_random(seed) {
    std::vector<const Fault*> all, planted(kElements);  // in which element; the first has none
    for (const Fault& fault : kFaults) all.push_back(&fault);
    std::sample(all.begin(), all.end(), planted.begin() + 1, faults, m_random);
    std::shuffle(planted.begin() + 1, planted.end(), m_random);
    std::vector<std::string> elements;
    for (const Fault* fault : planted) elements.push_back(MakeElement(elements.size() + 2, fault));
    text = Policy(elements, "<PrinterScope>0</PrinterScope>");
  }

  std::string text;
  std::multiset<std::string> told;  ///< "LINE KIND"

 private:
  static constexpr std::size_t kElements = 7;

  std::string MakeElement(std::size_t place, const Fault* fault) {
    const std::pair<std::string, std::string> properties[] = {
        {"Kind", "0"},
        {"Name", OneOf({"題", "A_b"})},
        {"Text", OneOf({"社外秘 取扱注意", "PLEASE COPY", "by {WinUser}"})},
        {"FontSize", OneOf({"9", "12.5"})},
        {"FontName", "Arial"},
        {"Color", OneOf({"0xFF0000", "255", "0"})},
        {"Opacity", OneOf({"1", "80", "100"})},
        {"PrintPos", std::to_string(place)},
        {"XOffset", "0"},
        {"YOffset", OneOf({"0", "0.0"})}};
    const long first = m_line;
    std::string element;
    for (const auto& [name, value] : properties) {
      element += "\n";
      ++m_line;
      const bool isPlanted = fault != nullptr && name == fault->property;
      element += isPlanted ? fault->line : "<" + name + ">" + value + "</" + name + ">";
      if (isPlanted)
        told.insert(std::to_string(fault->isOfElement ? first : m_line) + " " + fault->kind);
    }
    ++m_line;  // which the element ends
    return element;
  }

  std::string OneOf(const std::vector<std::string>& texts) {
    return texts[m_random() % texts.size()];
  }

  std::mt19937 m_random;
  long m_line = 1;
};

TEST_P(RandomPolicies, HaveTheFaultsThatArePlanted) {
  constexpr unsigned kCount = 75;
  const Desk desk;
  for (unsigned i = 0; i < kCount; ++i) {
    const PlantedPolicy policy(GetParam() * kCount + i, i % 4);
    SCOPED_TRACE(policy.text);
    desk.Write(policy.text);
    std::multiset<std::string> told;
    const Json answer = Json::parse(desk.Answer("check --json policy.xml"));
    for (const Json& finding : answer.at("findings"))
      told.insert(std::to_string(finding.value("line", 0)) + " " +
                  finding.at("kind").get<std::string>());
    EXPECT_EQ(told, policy.told);
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPolicies, testing::Range(0U, 4U));

}  // namespace
}  // namespace tests
