// Pictures, by where their ink is: pages are drawn as PNG, and what is not white on the paper is
// measured. Lengths are millimetres.

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "app/page/draw.h"

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

// Offsets of 20 mm inwards leave the ink at the sides within the letter's own white.
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

// From one copy to the next it is everywhere as far as the box and the space say.
TEST(PagePicture, RepeatsEvenlyAlongBothAxes) {
  const auto steps = [](const Picture::Runs& runs) {
    std::vector<double> steps;
    for (std::size_t i = 1; i + 1 < runs.size(); ++i)  // those at the page's edges are cut
      steps.push_back(runs[i].second - runs[i - 1].second);
    return steps;
  };
  double last[2] = {};
  for (const int space : {10, 25}) {
    WatermarkRecord record = Letter();
    record.repeatFirstAxis = record.repeatSecondAxis = true;
    record.repeatHSpace = space;
    record.repeatVSpace = space + 5;
    const Picture picture({record}, "A3", false);
    const Size box = picture.page.marks.at(0).box;
    const auto columns = steps(picture.Columns()), lines = steps(picture.Lines());
    EXPECT_GT(columns.size(), 6U);
    EXPECT_GT(lines.size(), 6U);
    for (const double step : columns) EXPECT_NEAR(step, box.width + space, kPixel * 1.01);
    for (const double step : lines) EXPECT_NEAR(step, box.height + space + 5, kPixel * 1.01);
    if (space == 25) {
      EXPECT_NEAR(columns.at(1) - last[0], 15, kPixel * 1.01);
      EXPECT_NEAR(lines.at(1) - last[1], 15, kPixel * 1.01);
    }
    last[0] = columns.at(1);
    last[1] = lines.at(1);
  }
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
  const auto inked = [](WatermarkRecord record,
                        const std::function<void(WatermarkRecord&)>& change) {
    change(record);
    return InkOf({record});
  };
  const auto darkest = [](std::int32_t color, std::int32_t opacity) {
    WatermarkRecord record = Letter("HHH");
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
  EXPECT_EQ(darkest(0xFF0000, 80) >> 16, 0xFFU);
  EXPECT_NEAR(darkest(0, 40) & 0xFF, 153, 1);
  EXPECT_EQ(darkest(0, 0), 0xFFFFFFU);

  const Ink plain = inked(Letter("HHH"), [](auto&) {});
  const Ink bold = inked(Letter("HHH"), [](auto& record) { record.bold = true; });
  const Ink lined = inked(Letter("HHH"), [](auto& record) { record.underLine = true; });
  const Ink large = inked(Letter("HHH"), [](auto& record) { record.fontSize = 80; });
  EXPECT_GT(bold.right - bold.left, plain.right - plain.left);
  EXPECT_GT(lined.bottom, plain.bottom + 0.5);
  EXPECT_NEAR((large.right - large.left) / (plain.right - plain.left), 2, 0.05);
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
