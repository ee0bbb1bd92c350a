// Layout by numbers: a text of one point is 10 mm wide and 5 mm high, whatever its letters. Where
// the ink of a single text is, its picture tells.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "tests/app/records.h"

namespace tests {
namespace {

const Size kOnePoint = {10, 5};

WatermarkRecord Text(int printPos, double fontSize = 2) {
  WatermarkRecord record = Record("W", fontSize, printPos);
  record.text = "text";
  return record;
}

Page LayOutOn(std::string_view paper, const std::vector<WatermarkRecord>& records) {
  return LayOut(Entry(records), FindPaper(paper, false), [](const auto&) { return kOnePoint; });
}

std::string Told(const Page& page) {
  std::string told;
  for (const Note& note : page.notes) told += note.watermark + ": " + note.text + "\n";
  return told;
}

// All copies that touch the page, each a step from the next, and the text in its own place is one.
TEST(PageLayout, RepeatsOverTheWholePage) {
  const auto copies = [](bool first, bool second, int across, int down) {
    WatermarkRecord record = Text(4);
    record.repeatFirstAxis = first;
    record.repeatSecondAxis = second;
    record.repeatHSpace = across;
    record.repeatVSpace = down;
    const Page page = LayOutOn("A4", {record});
    std::string places;
    for (const Point& center : page.marks.at(0).centers)
      places += std::to_string(std::lround(center.x * 2)) + "/" +
                std::to_string(std::lround(center.y * 2)) + " ";
    return places;  // in halves of a millimetre
  };
  EXPECT_EQ(copies(true, false, 30, 60), "10/297 110/297 210/297 310/297 410/297 ");
  EXPECT_EQ(copies(false, true, 30, 60), "210/17 210/157 210/297 210/437 210/577 ");
  EXPECT_EQ(copies(true, true, 80, 130),
            "10/17 210/17 410/17 10/297 210/297 410/297 10/577 210/577 410/577 ");
  const std::string overlapping = copies(true, false, -10, 0);
  EXPECT_EQ(std::count(overlapping.begin(), overlapping.end(), '/'), 23);
}

TEST(PageLayout, DrawsWhatTheLastSettingListsWhileItIsOn) {
  WatermarkRecord other = Text(0);
  other.id = "unlisted";
  EntryRecord entry = Entry({Text(0), Text(8)});
  entry.watermarks.push_back(other);
  entry.lastSetting.watermarks.push_back("gone since");
  entry.customSettings = {{"HLMimosaOption", true, {"unlisted"}}};
  const auto measure = [](const auto&) { return kOnePoint; };
  Page page = LayOut(entry, FindPaper("A3", true), measure);
  EXPECT_EQ(page.marks.size(), 2U);
  EXPECT_NEAR(page.marks.at(1).centers.at(0).x, 410, 1e-9);
  EXPECT_EQ(Told(page), ": 1 watermark is not listed by the last setting\n");

  entry.lastSetting.enabled = false;
  page = LayOut(entry, FindPaper("Letter", false), measure);
  EXPECT_EQ(page.marks.size(), 0U);
  EXPECT_EQ(Told(page), ": the watermarks of this entry are switched off: it prints none\n");
  EXPECT_THROW(FindPaper("a4", false), std::invalid_argument);
}

// What cannot be drawn as it stands is told, and nothing runs on without end.
TEST(PageLayout, TellsWhatIsNotDrawnAsItStands) {
  const auto repeat = [](WatermarkRecord& record, int across, int down) {
    record.repeatFirstAxis = record.repeatSecondAxis = true;
    record.repeatHSpace = across;
    record.repeatVSpace = down;
  };
  const std::pair<std::function<void(WatermarkRecord&)>, const char*> cases[] = {
      {[](auto& record) { record.text.clear(); }, "has no text, so nothing of it is seen"},
      {[](auto& record) { record.opacity = 0; }, "has opacity 0, so nothing of it is seen"},
      {[](auto& record) { record.xOffset = 100; }, "runs off the page, 5 mm at the right"},
      {[](auto& record) { record.yOffset = -1000; }, "lies off the page, so nothing of it is seen"},
      {[](auto& record) { record.positionOption = 3; },
       "has position option 3, which is drawn as 0"},
      {[&](auto& record) { repeat(record, -20, 500); },
       "is not repeated along the first axis: its space leaves no step from one copy to the next"},
      {[&](auto& record) {
         record.fontSize = 200;  // 2 m wide, so that a step is left
         repeat(record, -999, -999);
       },
       "has 3891 copies on the page; 1923 in the middle are drawn"},
      {[&](auto& record) { repeat(record, -19, -9); },
       "has 70917 copies on the page; 1892 in the middle are drawn"},
      {[](auto& record) { record.text = "x" + std::string(700'000, '\xE2'); },
       "has a text of 700001 bytes; its first 4000 are drawn"}};
  for (const auto& [change, told] : cases) {
    WatermarkRecord record = Text(4);
    change(record);
    const Page page = LayOutOn("A4", {record});
    EXPECT_EQ(Told(page), std::string("W: ") + told + "\n");
    std::size_t bytes = 0;
    for (const Mark& mark : page.marks) bytes += mark.centers.size() * mark.record.text.size();
    EXPECT_LE(bytes, 200'000U);
  }
}

// A file that others wrote may hold any number.
TEST(PageLayout, PullsNumbersIntoTheirRanges) {
  WatermarkRecord record = Text(99, std::numeric_limits<double>::infinity());
  record.rotate = std::numeric_limits<int>::min();
  record.opacity = 1000;
  record.xOffset = std::numeric_limits<double>::quiet_NaN();
  record.repeatFirstAxis = record.repeatSecondAxis = true;
  record.repeatHSpace = std::numeric_limits<int>::max();
  record.repeatVSpace = std::numeric_limits<int>::min();
  const Page page = LayOutOn("A4", {record, record});
  for (const Mark& mark : page.marks) {
    EXPECT_EQ(mark.points, 200);
    EXPECT_EQ(mark.record.opacity, 100);
    EXPECT_GE(mark.record.rotate, 0);
  }
  const std::vector<WatermarkRecord> many(60'000, Text(4));
  EXPECT_EQ(Told(LayOutOn("A4", many)), ": 58076 more have no room in the picture\n");
}

}  // namespace
}  // namespace tests
