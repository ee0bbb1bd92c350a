// Pictures, by where their ink is: pages are drawn as PNG, and what is not white on the paper is
// measured. Lengths are millimetres.

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "app/page/draw.h"
#include "app/page/set_text.h"

namespace {

using namespace app::page;
using peers::WatermarkRecord;

constexpr double kPixel = 1.0 / kPixelsPerMillimeter;

/// The shades of a page from 0, black, to 255 in each of red, green and blue.
class Picture {
 public:
  Picture(const std::vector<WatermarkRecord>& records, std::string_view paper, bool isLandscape) {
    peers::EntryRecord entry;
    entry.watermarks = records;
    entry.lastSetting.enabled = true;
    for (const WatermarkRecord& record : records) entry.lastSetting.watermarks.push_back(record.id);
    page = LayOut(entry, *FindPaper(paper, isLandscape), MeasureText);
    const std::string bytes = Draw(page, {"title"}, Format::kPng);
    std::string_view left = bytes;
    m_surface = cairo_image_surface_create_from_png_stream(Read, &left);
    EXPECT_EQ(cairo_surface_status(m_surface), CAIRO_STATUS_SUCCESS);
  }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  ~Picture() { cairo_surface_destroy(m_surface); }

  int Width() const { return Pixels(page.paper.size.width); }
  int Height() const { return Pixels(page.paper.size.height); }

  std::uint32_t At(int x, int y) const {
    const unsigned char* const line =
        cairo_image_surface_get_data(m_surface) +
        (y + kBorder * kPixelsPerMillimeter) * cairo_image_surface_get_stride(m_surface);
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, line + (x + kBorder * kPixelsPerMillimeter) * 4, 4);
    return pixel & 0xFFFFFF;
  }

  /// The runs of columns, or of lines, with ink: where each begins and ends.
  using Runs = std::vector<std::pair<double, double>>;
  Runs Columns() const {
    return RunsOf(Width(), Height(), [&](int x, int y) { return At(x, y); });
  }
  Runs Lines() const {
    return RunsOf(Height(), Width(), [&](int y, int x) { return At(x, y); });
  }

  Page page;

 private:
  static int Pixels(double length) { return static_cast<int>(length * kPixelsPerMillimeter); }

  static Runs RunsOf(int length, int across, const std::function<std::uint32_t(int, int)>& at) {
    Runs runs;
    for (int i = 0; i < length; ++i) {
      int j = 0;
      while (j < across && at(i, j) == 0xFFFFFF) ++j;
      if (j == across) continue;
      if (runs.empty() || runs.back().second < i * kPixel - kPixel / 2)
        runs.emplace_back(i * kPixel, i * kPixel);
      runs.back().second = (i + 1) * kPixel;
    }
    return runs;
  }

  static cairo_status_t Read(void* source, unsigned char* data, unsigned int length) {
    auto& left = *static_cast<std::string_view*>(source);
    if (left.size() < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, left.data(), length);
    left.remove_prefix(length);
    return CAIRO_STATUS_SUCCESS;
  }

  cairo_surface_t* m_surface = nullptr;
};

WatermarkRecord Letter(const char* text = "H") {
  WatermarkRecord record;
  record.id = record.name = text;
  record.text = text;
  record.fontSize = 40;
  record.opacity = 100;
  record.printPos = 4;
  return record;
}

struct Ink {
  double left, right, top, bottom;
};

Ink InkOf(const std::vector<WatermarkRecord>& records, std::string_view paper = "A4",
          bool isLandscape = false) {
  const Picture picture(records, paper, isLandscape);
  const auto columns = picture.Columns(), lines = picture.Lines();
  if (columns.empty()) return {};
  return {columns.front().first, columns.back().second, lines.front().first, lines.back().second};
}

TEST(PagePicture, HasItsInkInTheNinePlaces) {
  constexpr double kWhite = 5;  // around an H of 40 points, which is 10 mm high
  for (const bool isLandscape : {false, true}) {
    const double width = isLandscape ? 297 : 210, height = isLandscape ? 210 : 297;
    for (int place = 0; place < 9; ++place) {
      SCOPED_TRACE(testing::Message() << "place " << place << (isLandscape ? " landscape" : ""));
      WatermarkRecord record = Letter();
      record.printPos = place;
      const Ink ink = InkOf({record}, "A4", isLandscape);
      const auto expect = [&](int third, double low, double high, double length) {
        const double inks[] = {low, (low + high) / 2, high}, places[] = {0, length / 2, length};
        EXPECT_NEAR(inks[third], places[third], third == 1 ? 1 : kWhite);
        EXPECT_GT(low, 0);
        EXPECT_LT(high, length);
      };
      expect(place % 3, ink.left, ink.right, width);
      expect(place / 3, ink.top, ink.bottom, height);
      EXPECT_NEAR(ink.bottom - ink.top, 40 * 25.4 / 72 * 0.72, 1) << "the height of a capital";
    }
  }
}

TEST(PagePicture, MovesTheInkByItsOffsets) {
  const Ink before = InkOf({Letter()}, "Letter");
  for (const double x : {-30.5, 0.0, 12.25})
    for (const double y : {-80.0, 0.0, 44.75}) {
      WatermarkRecord record = Letter();
      record.xOffset = x;
      record.yOffset = y;
      const Ink after = InkOf({record}, "Letter");
      EXPECT_NEAR(after.left - before.left, x, kPixel * 1.01);
      EXPECT_NEAR(after.right - before.right, x, kPixel * 1.01);
      EXPECT_NEAR(after.top - before.top, y, kPixel * 1.01);
      EXPECT_NEAR(after.bottom - before.bottom, y, kPixel * 1.01);
    }
}

// From one copy to the next it is everywhere the same, and more by as much as the space is.
TEST(PagePicture, RepeatsEvenlyAlongBothAxes) {
  const auto step = [](const Picture::Runs& runs) {
    EXPECT_GT(runs.size(), 8U);
    const double first = runs.at(2).second - runs.at(1).second;
    for (std::size_t i = 3; i + 1 < runs.size(); ++i)  // those at the page's edges may be cut
      EXPECT_NEAR(runs[i].second - runs[i - 1].second, first, kPixel * 1.01);
    return first;
  };
  const auto repeated = [](int across, int down) {
    WatermarkRecord record = Letter();
    record.repeatFirstAxis = record.repeatSecondAxis = true;
    record.repeatHSpace = across;
    record.repeatVSpace = down;
    return std::vector{record};
  };
  const Picture near(repeated(10, 20), "A3", false), far(repeated(25, 27), "A3", false);
  EXPECT_NEAR(step(near.Columns()), near.page.marks.at(0).box.width + 10, kPixel * 1.01);
  EXPECT_NEAR(step(far.Columns()) - step(near.Columns()), 15, kPixel * 2.01);
  EXPECT_NEAR(step(far.Lines()) - step(near.Lines()), 7, kPixel * 2.01);
}

TEST(PagePicture, TurnsAndFitsInsideThePage) {
  // A line from the lower left to the upper right: its ends are in those two corners only.
  WatermarkRecord line = Letter("________________");
  line.rotate = 45;
  const Picture slanted({line}, "A4", false);
  const auto columns = slanted.Columns(), lines = slanted.Lines();
  ASSERT_EQ(columns.size(), 1U);
  const auto first = static_cast<int>(columns[0].first * kPixelsPerMillimeter);
  int y = 0;
  while (slanted.At(first, y) == 0xFFFFFF) ++y;
  EXPECT_NEAR(y * kPixel, lines[0].second, 3) << "the left end is the lowest part";

  for (const int rotate : {0, 30, 90, 200}) {
    WatermarkRecord record = Letter("Wj\nfit");
    record.fit = record.italic = record.underLine = true;
    record.rotate = rotate;
    const Ink ink = InkOf({record});
    EXPECT_GE(ink.left, kPixel);
    EXPECT_GE(ink.top, kPixel);
    EXPECT_LE(ink.right, 210 - kPixel);
    EXPECT_LE(ink.bottom, 297 - kPixel);
    const bool isWide = ink.right - ink.left > 160, isHigh = ink.bottom - ink.top > 230;
    EXPECT_TRUE(isWide || isHigh) << "turned by " << rotate;
  }
}

TEST(PagePicture, HasColorOpacityAndStyles) {
  const auto darkest = [](std::int32_t color, std::int32_t opacity) {
    WatermarkRecord record = Letter();
    record.fontSize = 100;
    record.color = color;
    record.opacity = opacity;
    const Picture picture({record}, "A4", false);
    std::uint32_t pixel = 0xFFFFFF;
    for (int y = 0; y < picture.Height(); ++y)
      for (int x = 0; x < picture.Width(); ++x) pixel = std::min(pixel, picture.At(x, y));
    return pixel;
  };
  EXPECT_EQ(darkest(0x123456, 100), 0x123456U);
  EXPECT_NEAR(darkest(0, 40) & 0xFF, 153, 1);

  WatermarkRecord bold = Letter(), lined = Letter(), large = Letter();
  bold.bold = lined.underLine = true;
  large.fontSize = 80;
  const auto width = [](const Ink& ink) { return ink.right - ink.left; };
  const Ink plain = InkOf({Letter()});
  EXPECT_GT(width(InkOf({bold})), width(plain) + kPixel);
  EXPECT_GT(InkOf({lined}).bottom, plain.bottom + 0.5);
  EXPECT_NEAR(width(InkOf({large})), 2 * width(plain), 2 * kPixel);
}

// Also a page of the worst texts is drawn in all forms, and the font that stands in is told.
TEST(PagePicture, DrawsWhateverAFileHolds) {
  WatermarkRecord bad = Letter("\xC3(\x01\t\n\xE2\x80\xA8\xF0\x9F\x98\x80\xEF\xB7\xBD\xFF");
  bad.fontName = "No Such Font, \xFF";
  bad.fontSize = 200;
  bad.rotate = 359;
  WatermarkRecord named = Letter("H");
  named.fontName = "No Such Font";
  peers::EntryRecord entry;
  entry.watermarks = {bad, named};
  entry.lastSetting = {"", true, {bad.id, named.id}};
  const Page page = LayOut(entry, *FindPaper("A4", false), MeasureText);
  EXPECT_EQ(page.marks.size(), 2U);
  EXPECT_EQ(Draw(page, {"\xFF", ""}, Format::kPng).substr(1, 3), "PNG");
  EXPECT_EQ(Draw(page, {"t"}, Format::kPdf).substr(0, 5), "%PDF-");
  EXPECT_EQ(Draw(page, {"t"}, Format::kSvg).substr(0, 5), "<?xml");
  const std::vector<Note> notes = FontNotes(page);
  EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [](const Note& note) {
    return note.text.starts_with("font 'No Such Font' is not here; ") &&
           note.text.ends_with(" stands in");
  }));
}

}  // namespace
