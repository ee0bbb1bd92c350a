// The desk against policies whose records are known from how they were made: `check` names every
// value that changes and none that does not, and what it tells is what `update` leaves. Of a policy
// without a fault it finds nothing, and of planted faults each on its line and nothing else.
//
// properties.json tells for each property the field that it becomes, what that holds without it,
// and texts with what they are stored as: those that are kept, and those that are changed; or, as
// "like", the property whose texts it shares. Of RepeatType the field is made two: the first axis
// is its lowest bit.

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

#include "tests/app/desk.h"

namespace tests {
namespace {

std::string Node(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">";
}

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
      for (const auto& [name, own] : kProperties.at(group).items()) {
        const Json& property = kProperties.at(group).at(own.value("like", name));
        Json& field = mark[own.at("field")];
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
  std::string property;  ///< Its line is replaced.
  std::string line;
  std::string kind;          ///< Of the finding.
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

/// A header on each of the places 2 to 8, of which up to three have a fault, but never the first.
TEST_P(RandomPolicies, HaveTheFaultsThatArePlanted) {
  constexpr unsigned kCount = 75, kPlaces = 7;
  const Desk desk;
  std::mt19937 random(GetParam());
  for (unsigned i = 0; i < kCount; ++i) {
    std::vector<Fault> faults;  // one for each element
    std::sample(std::begin(kFaults), std::end(kFaults), std::back_inserter(faults), i % 4, random);
    faults.resize(kPlaces - 1);
    std::shuffle(faults.begin(), faults.end(), random);
    faults.insert(faults.begin(), Fault());
    std::vector<std::string> elements;
    std::multiset<std::string> planted, told;  // "LINE KIND"
    long line = 1;
    for (const auto& [property, text, kind, isOfElement] : faults) {
      const std::pair<std::string, std::vector<std::string>> properties[] = {
          {"Kind", {"0"}},
          {"Name", {"題", "A_b"}},
          {"Text", {"社外秘 取扱注意", "PLEASE COPY", "by {WinUser}"}},
          {"FontSize", {"9", "12.5"}},
          {"FontName", {"Arial"}},
          {"Color", {"0xFF0000", "255", "0"}},
          {"Opacity", {"1", "80", "100"}},
          {"PrintPos", {std::to_string(elements.size() + 2)}},
          {"XOffset", {"0"}},
          {"YOffset", {"0", "0.0"}}};
      const long first = line;
      std::string& element = elements.emplace_back();
      for (const auto& [name, texts] : properties) {
        ++line;
        element += "\n" + (name == property ? text : Node(name, texts[random() % texts.size()]));
        if (name == property)
          planted.insert(std::to_string(isOfElement ? first : line) + " " + kind);
      }
      ++line;  // which the element ends
    }
    const std::string policy = Policy(elements, "<PrinterScope>0</PrinterScope>");
    SCOPED_TRACE(policy);
    desk.Write(policy);
    const Json answer = Json::parse(desk.Answer("check --json policy.xml"));
    for (const Json& finding : answer.at("findings"))
      told.insert(std::to_string(finding.value("line", 0)) + " " +
                  finding.at("kind").get<std::string>());
    EXPECT_EQ(told, planted);
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPolicies, testing::Range(0U, 4U));

}  // namespace
}  // namespace tests
