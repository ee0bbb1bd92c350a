// The desk against policies whose records are known from how they were made: `check` names every
// value that changes and none that does not, and what it tells is what `update` leaves.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

/// A property, the field that it becomes with what that holds without it, and texts with what they
/// are stored as: those that are kept, and those that are changed.
struct Property {
  std::string name, field;
  Json usual;
  std::vector<std::pair<std::string, Json>> kept, changed;
};

Property Flag(const char* name, const char* field) {
  return {name,
          field,
          false,
          {{"1", true}, {"0", false}, {" 1 ", true}, {"01", true}},
          {{"2", false}, {"true", false}, {"", false}, {"1x", true}}};
}

Property Offset(const char* name, const char* field) {
  return {name,
          field,
          0.0,
          {{"5.5", 5.5}, {"-1000", -1000.0}, {"+.25", 0.25}, {"1e2", 100.0}},
          {{"-1000.5", -1000.0}, {"1e9", 1000.0}, {"5,5", 5.0}, {"left", 0.0}}};
}

Property Space(const char* name, const char* field) {
  return {name,
          field,
          0,
          {{"40", 40}, {"-1000", -1000}, {"0", 0}, {"60.0", 60}},
          {{"1001", 1000}, {"-4000000000", -1000}, {"5.5", 5}, {"wide", 0}}};
}

const std::vector<Property> kCommon = {
    {"Name", "name", "", {{"題", "題"}, {"A_b", "A_b"}}, {{"  x ", "x"}, {"", ""}}},
    {"Text",
     "text",
     "",
     {{"社外秘😀", "社外秘😀"}, {"a &lt; b", "a < b"}, {"<![CDATA[ x ]]>", " x "}},
     {{" COPY\n", "COPY"}, {"", ""}, {"  ", ""}}},
    {"FontSize",
     "fontSize",
     1.0,
     {{"0.5", 0.5}, {"200", 200.0}, {" 9.25", 9.25}},
     {{"-3", 1.0}, {"0", 1.0}, {"200.5", 200.0}, {"big", 1.0}, {"9pt", 9.0}, {"", 1.0}}},
    {"FontName", "fontName", "", {{"MS ゴシック", "MS ゴシック"}}, {{"Arial ", "Arial"}, {"", ""}}},
    {"Color",
     "color",
     0,
     {{"0xFF0000", 0xFF0000}, {"255", 255}, {"0x0", 0}},
     {{"-1", 0xFFFFFF}, {"0XFF", 0}, {"#FF0000", 0}, {"0x1FFFFFF", 0xFFFFFF}, {"0xFFg", 255}}},
    Flag("Bold", "bold"),
    Flag("Italic", "italic"),
    Flag("UnderLine", "underLine"),
    Flag("Fit", "fit"),
    {"Opacity",
     "opacity",
     0,
     {{"80", 80}, {"100", 100}, {"0", 0}},
     {{"101", 100}, {"-1", 0}, {"50.5", 50}, {"half", 0}, {"0x50", 0}}},
    {"Rotate",
     "rotate",
     0,
     {{"45", 45}, {"359", 359}, {"0", 0}},
     {{"360", 359}, {"-90", 0}, {"up", 0}, {"9 0", 9}}}};

const std::vector<Property> kHeaderFooter = {
    {"PrintPos",
     "printPos",
     0,
     {{"1", 0}, {"2", 1}, {"3", 2}, {"4", 6}, {"5", 7}, {"6", 8}, {"7", 3}, {"8", 4}, {" 9", 5}},
     {{"0", 0}, {"10", 0}, {"-2", 0}, {"top", 0}, {"8.5", 4}, {"3rd", 2}}},
    Offset("XOffset", "xOffset"),
    Offset("YOffset", "yOffset")};

/// Of RepeatType, whose field is made two: the first axis is its lowest bit.
const std::vector<Property> kStamp = {{"RepeatType",
                                       "axes",
                                       0,
                                       {{"0", 0}, {"1", 1}, {"2", 2}, {"3", 3}},
                                       {{"4", 0}, {"7", 3}, {"-1", 3}, {"both", 0}}},
                                      Space("RepeatHSpace", "repeatHSpace"),
                                      Space("RepeatVSpace", "repeatVSpace")};

class RandomPolicy {
 public:
  explicit RandomPolicy(unsigned seed) : m_random(seed) {
    const std::size_t count = 1 + m_random() % 4;
    for (std::size_t i = 0; i < count; ++i) AddElement("E" + std::to_string(i));
  }

  std::string Text() const {
    return "<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo "
           "ID='1'><PrinterScope>0</PrinterScope>"
           "<ElementIDs>" +
           m_list + "</ElementIDs></PolicyInfo></PolicyInfos><Elements>" + m_elements +
           "</Elements></Watermark></HLE></QuietMIMOSA>";
  }

  std::set<std::string> changed;  ///< "ELEMENT PROPERTY"
  std::set<std::string> unread;
  std::vector<Json> marks;

 private:
  void AddElement(const std::string& id) {
    const bool isStamp = m_random() % 2 != 0;
    Json mark = {{"printPos", isStamp ? 4 : 0},
                 {"positionOption", 0},
                 {"xOffset", 0.0},
                 {"yOffset", 0.0},
                 {"axes", 0},
                 {"repeatHSpace", 0},
                 {"repeatVSpace", 0}};
    std::vector<std::string> written = {Node("Kind", isStamp ? "1" : "0")};
    for (const auto* properties : {&kCommon, isStamp ? &kStamp : &kHeaderFooter}) {
      for (const Property& property : *properties) {
        mark[property.field] = property.usual;
        if (m_random() % 4 == 0) continue;
        const bool isChanged = m_random() % 2 != 0;
        const auto& values = isChanged ? property.changed : property.kept;
        const auto& [text, stored] = values[m_random() % values.size()];
        mark[property.field] = stored;
        if (isChanged) changed.insert(id + " " + property.name);
        written.push_back(Node(property.name, text));
      }
    }
    for (const char* const name : {isStamp ? "XOffset" : "RepeatType", "Opacty"})
      if (m_random() % 3 == 0) {
        unread.insert(id + " " + std::string(name));
        written.push_back(Node(name, "1"));
      }
    std::shuffle(written.begin(), written.end(), m_random);
    m_elements += "<Element ID='" + id + "'>";
    for (const std::string& each : written) m_elements += each;
    m_elements += "</Element>\n";
    m_list += Node("ID", id);
    mark["name"] = id + "_" + mark["name"].get<std::string>();
    const int axes = mark["axes"].get<int>();
    mark.erase("axes");
    mark["repeatFirstAxis"] = (axes & 1) != 0;
    mark["repeatSecondAxis"] = (axes & 2) != 0;
    marks.push_back(mark);
  }

  static std::string Node(const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
  }

  std::mt19937 m_random;
  std::string m_list;
  std::string m_elements;
};

/// A sample machine and the program, which is run in its folder.
class Desk {
 public:
  Desk() : m_folder(MakeFolder()) {
    setenv("SIGIL_ROOT", (m_folder / "machine").c_str(), 1);
    Run("init machine");
  }
  ~Desk() {
    unsetenv("SIGIL_ROOT");
    fs::remove_all(m_folder);
  }

  void Write(const std::string& text) const { std::ofstream(m_folder / "policy.xml") << text; }

  std::string Run(const std::string& arguments) const {
    const fs::path programs = fs::read_symlink("/proc/self/exe").parent_path() / SIGIL_BUILD_FOLDER;
    const std::string command = "cd '" + m_folder.string() + "' && '" +
                                (programs / "sigilctl").string() + "' " + arguments + " > answer";
    [[maybe_unused]] const int status = system(command.c_str());
    std::ifstream answer(m_folder / "answer");
    return {std::istreambuf_iterator<char>(answer), {}};
  }

 private:
  static fs::path MakeFolder() {
    const bool hasMemory = access("/dev/shm", W_OK) == 0;
    std::string name = hasMemory ? "/dev/shm/sigil-app-XXXXXX"
                                 : (fs::temp_directory_path() / "sigil-app-XXXXXX").string();
    return mkdtemp(name.data());
  }

  fs::path m_folder;
};

/// The findings of some kinds, "ELEMENT PROPERTY".
std::set<std::string> Named(const Json& told, const std::set<std::string>& kinds) {
  std::set<std::string> named;
  for (const Json& finding : told.at("findings"))
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
    SCOPED_TRACE(policy.Text());
    desk.Write(policy.Text());
    const Json told = Json::parse(desk.Run("check --json policy.xml"));
    EXPECT_EQ(Named(told, {"changed", "zero"}), policy.changed);
    EXPECT_EQ(Named(told, {"unread"}), policy.unread);
    std::vector<Json> marks;
    for (const Json& element : told.at("elements")) marks.push_back(element.at("watermark"));
    EXPECT_EQ(marks, policy.marks);

    EXPECT_TRUE(desk.Run("update policy.xml").starts_with("update: 0. The policy is applied."));
    const Json stored = Json::parse(desk.Run("show --json"));
    ASSERT_EQ(stored.at("entries").size(), 3u);
    for (Json entry : stored.at("entries")) {
      for (Json& mark : entry.at("watermarks")) mark.erase("id");
      EXPECT_EQ(entry.at("watermarks").get<std::vector<Json>>(), marks);
    }
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPolicies, testing::Range(0U, 4U));

}  // namespace
