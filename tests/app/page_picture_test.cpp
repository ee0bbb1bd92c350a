// Pictures, by where their ink is: pages are drawn as PNG, and what is not white on the paper is
// measured. Lengths are millimetres.

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "app/page/page.h"
#include "tests/app/records.h"

namespace tests {
namespace {

constexpr double kPixel = 1.0 / kPixelsPerMillimeter;

/// The shades of a page from 0, black, to 255 in each of red, green and blue.
class Picture {
 public:
  explicit Picture(const WatermarkRecord& record, bool isLandscape = false)
      : m_page(LayOut(Entry({record}), FindPaper("A4", isLandscape), MeasureText)) {
    const std::string bytes = Draw(m_page, {}, Format::kPng);
    std::string_view left = bytes;
    m_surface = cairo_image_surface_create_from_png_stream(Read, &left);
    EXPECT_EQ(cairo_surface_status(m_surface), CAIRO_STATUS_SUCCESS);
  }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  ~Picture() { cairo_surface_destroy(m_surface); }

  const Page& PageDrawn() const { return m_page; }
  int Width() const { return Pixels(m_page.paper.size.width); }
  int Height() const { return Pixels(m_page.paper.size.height); }

  std::uint32_t At(int x, int y) const {
    const unsigned char* const line =
        cairo_image_surface_get_data(m_surface) + y * cairo_image_surface_get_stride(m_surface);
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, line + x * 4, 4);
    return pixel & 0xFFFFFF;
  }

 private:
  static int Pixels(double length) { return static_cast<int>(length * kPixelsPerMillimeter); }

  static cairo_status_t Read(void* source, unsigned char* data, unsigned int length) {
    auto& left = *static_cast<std::string_view*>(source);
    if (left.size() < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, left.data(), length);
    left.remove_prefix(length);
    return CAIRO_STATUS_SUCCESS;
  }

  const Page m_page;
  cairo_surface_t* m_surface = nullptr;
};

WatermarkRecord Letter(const char* text = "H") {
  return Record(text, 40);
}

struct Ink {
  double left = 1e9, right = 0, top = 1e9, bottom = 0;
};

Ink InkOf(const WatermarkRecord& record, bool isLandscape = false) {
  const Picture picture(record, isLandscape);
  Ink ink;
  for (int y = 0; y < picture.Height(); ++y) {
    for (int x = 0; x < picture.Width(); ++x) {
      if (picture.At(x, y) == 0xFFFFFF) continue;
      ink = {std::min(ink.left, x * kPixel), std::max(ink.right, (x + 1) * kPixel),
             std::min(ink.top, y * kPixel), std::max(ink.bottom, (y + 1) * kPixel)};
    }
  }
  return ink;
}

TEST(PagePicture, HasItsInkInTheNinePlacesMovedByItsOffsets) {
  constexpr double kWhite = 5;  // around an H of 40 points, which is 10 mm high
  for (const bool isLandscape : {false, true}) {
    const double width = isLandscape ? 297 : 210, height = isLandscape ? 210 : 297;
    for (int place = 0; place < 9; ++place) {
      SCOPED_TRACE(testing::Message() << "place " << place << (isLandscape ? " landscape" : ""));
      WatermarkRecord record = Letter();
      record.printPos = place;
      const Ink ink = InkOf(record, isLandscape);
      const auto expect = [&](int third, double low, double high, double length) {
        const double inks[] = {low, (low + high) / 2, high}, places[] = {0, length / 2, length};
        EXPECT_NEAR(inks[third], places[third], third == 1 ? 1 : kWhite);
        EXPECT_GT(low, 0);
        EXPECT_LT(high, length);
      };
      expect(place % 3, ink.left, ink.right, width);
      expect(place / 3, ink.top, ink.bottom, height);
      EXPECT_NEAR(ink.bottom - ink.top, 40 * 25.4 / 72 * 0.72, 1) << "the height of a capital";

      record.xOffset = place % 3 == 0 ? 12.25 : -30.5;
      record.yOffset = place / 3 == 0 ? 44.75 : -80;
      const Ink moved = InkOf(record, isLandscape);
      EXPECT_NEAR(moved.left - ink.left, record.xOffset, kPixel * 1.01);
      EXPECT_NEAR(moved.right - ink.right, record.xOffset, kPixel * 1.01);
      EXPECT_NEAR(moved.top - ink.top, record.yOffset, kPixel * 1.01);
      EXPECT_NEAR(moved.bottom - ink.bottom, record.yOffset, kPixel * 1.01);
    }
  }
}

TEST(PagePicture, HasEveryCopyOfARepeatedText) {
  WatermarkRecord record = Letter("_");  // Whose ink has no gap.
  const Ink single = InkOf(record);
  record.repeatFirstAxis = record.repeatSecondAxis = true;
  record.repeatHSpace = 10;
  record.repeatVSpace = 20;
  const Picture picture(record);
  int copies = 0;
  for (const Point& center : picture.PageDrawn().marks.at(0).centers) {
    const double x = center.x - 210 / 2.0 + (single.left + single.right) / 2;
    const double y = center.y - 297 / 2.0 + (single.top + single.bottom) / 2;
    if (std::min(x, y) < 10 || x >= 210 || y >= 297) continue;
    const auto pixel = [](double length) { return static_cast<int>(length / kPixel); };
    EXPECT_NE(picture.At(pixel(x), pixel(y)), 0xFFFFFFU) << x << " " << y;
    EXPECT_EQ(picture.At(pixel(x), pixel(y - 10)), 0xFFFFFFU) << "above " << x << " " << y;
    ++copies;
  }
  EXPECT_GT(copies, 50);
}

TEST(PagePicture, TurnsAndFitsInsideThePage) {
  // A line from the lower left to the upper right: its ends are in those two corners only.
  WatermarkRecord line = Letter("________________");
  line.rotate = 45;
  const Ink slanted = InkOf(line);
  const Picture picture(line);
  const auto first = static_cast<int>(std::lround(slanted.left / kPixel));
  int y = 0;
  while (picture.At(first, y) == 0xFFFFFF) ++y;
  EXPECT_NEAR(y * kPixel, slanted.bottom, 3) << "the left end is the lowest part";

  for (const int rotate : {0, 30, 90, 200}) {
    WatermarkRecord record = Letter("Wj\nfit");
    record.fit = record.italic = record.underLine = true;
    record.rotate = rotate;
    const Ink ink = InkOf(record);
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
    const Picture picture(record);
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
  const Ink plain = InkOf(Letter());
  EXPECT_GT(width(InkOf(bold)), width(plain) + kPixel);
  EXPECT_GT(InkOf(lined).bottom, plain.bottom + 0.5);
  EXPECT_NEAR(width(InkOf(large)), 2 * width(plain), 2 * kPixel);
}

// Also a page of the worst texts is drawn in all forms, as of a noncharacter, which no PDF may
// hold.
TEST(PagePicture, DrawsWhateverAFileHolds) {
  WatermarkRecord bad = Letter("\xC3(\x01\t\n\xE2\x80\xA8\xF0\x9F\x98\x80\xEF\xB7\x90\xFF");
  bad.fontName = "No Such Font, \xFF";
  bad.fontSize = 200;
  bad.rotate = 359;
  const Page page = LayOut(Entry({bad, Letter()}), FindPaper("A4", false), MeasureText);
  EXPECT_EQ(page.marks.size(), 2U);
  EXPECT_EQ(Draw(page, {"\xFF", ""}, Format::kPng).substr(1, 3), "PNG");
  EXPECT_EQ(Draw(page, {"t"}, Format::kPdf).substr(0, 5), "%PDF-");
  EXPECT_EQ(Draw(page, {"t"}, Format::kSvg).substr(0, 5), "<?xml");
}

}  // namespace
}  // namespace tests
