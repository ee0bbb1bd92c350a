// Pictures in SVG, written here; GDI measures the texts.

#include <windows.h>

#include <algorithm>
#include <stdexcept>

#include "app/page/page.h"
#include "app/text/html.h"
#include "app/text/table.h"
#include "platform/owner.h"
#include "platform/utf.h"

namespace app::page {
namespace {

/// The size in which texts are measured: units of the font.
constexpr int kEm = 1000;
constexpr double kUnit = kMillimetersPerPoint / kEm;  // of a text of one point, in millimetres
constexpr double kCaptionLine = kCaptionPoints * 1.3 * kMillimetersPerPoint;

using Font = Owner<HFONT, [](HFONT font) { DeleteObject(font); }>;
using Context = Owner<HDC, [](HDC context) { DeleteDC(context); }>;

/// A text as GDI sets it, line by line.
struct SetText {
  struct Line {
    std::wstring text;
    int width = 0;
  };
  struct Box {
    int left = 0, top = 0, right = 0, bottom = 0;
  };
  std::vector<Line> lines;
  int ascent = 0;
  int height = 0;    ///< Of a line.
  Box covered = {};  ///< The lines and ink beyond them; of a fitted text the ink alone.

  int Width() const { return std::ranges::max_element(lines, {}, &Line::width)->width; }
  /// Where a line begins, among the others.
  int Left(const Line& line, Alignment alignment) const {
    return (Width() - line.width) * static_cast<int>(alignment) / 2;
  }
};

std::vector<SetText::Line> LinesOf(const std::string& text) {
  std::vector<SetText::Line> lines(1);
  bool isAfterReturn = false;
  for (const wchar_t unit : platform::FromUtf8(text)) {
    if (unit == L'\r' || (unit == L'\n' && !isAfterReturn)) lines.emplace_back();
    // U+FFFD takes the place of a character that no SVG may hold.
    const bool isSound = unit >= L' ' && unit < 0xFFFE;
    if (unit != L'\r' && unit != L'\n') lines.back().text += isSound ? unit : L'\xFFFD';
    isAfterReturn = unit == L'\r';
  }
  return lines;
}

Font FontOf(const peers::WatermarkRecord& record) {
  LOGFONTW font = {};
  font.lfHeight = -kEm;
  font.lfWeight = record.bold ? FW_BOLD : FW_NORMAL;
  font.lfItalic = record.italic;
  font.lfUnderline = record.underLine;
  font.lfCharSet = DEFAULT_CHARSET;
  font.lfOutPrecision = OUT_TT_PRECIS;
  const std::wstring name = platform::FromUtf8(record.fontName).substr(0, LF_FACESIZE - 1);
  std::copy(name.begin(), name.end(), font.lfFaceName);
  return Font(CreateFontIndirectW(&font));
}

/// Widens the box to the ink of a line.
void AddInk(HDC context, const std::wstring& line, int left, int top, SetText::Box& box) {
  BeginPath(context);
  TextOutW(context, left, top, line.c_str(), static_cast<int>(line.size()));
  EndPath(context);
  const int count = GetPath(context, nullptr, nullptr, 0);
  if (count <= 0) return;
  std::vector<POINT> points(static_cast<std::size_t>(count));
  std::vector<BYTE> kinds(points.size());
  GetPath(context, points.data(), kinds.data(), count);
  for (const POINT& point : points) {
    box.left = std::min(box.left, static_cast<int>(point.x));
    box.top = std::min(box.top, static_cast<int>(point.y));
    box.right = std::max(box.right, static_cast<int>(point.x));
    box.bottom = std::max(box.bottom, static_cast<int>(point.y));
  }
}

SetText Set(const peers::WatermarkRecord& record, Alignment alignment) {
  SetText set = {.lines = LinesOf(record.text)};
  const Context context(CreateCompatibleDC(nullptr));
  const Font font = FontOf(record);
  if (!context || !font) throw std::runtime_error("the system measures no text");
  const HGDIOBJ before = SelectObject(context.Get(), font.Get());
  SetBkMode(context.Get(), TRANSPARENT);
  TEXTMETRICW metrics = {};
  GetTextMetricsW(context.Get(), &metrics);
  set.ascent = metrics.tmAscent;
  set.height = metrics.tmHeight;
  for (SetText::Line& line : set.lines) {
    SIZE size = {};
    GetTextExtentPoint32W(context.Get(), line.text.c_str(), static_cast<int>(line.text.size()),
                          &size);
    line.width = size.cx;
  }
  constexpr int kFar = 1 << 30;
  const int height = set.height * static_cast<int>(set.lines.size());
  set.covered =
      record.fit ? SetText::Box{kFar, kFar, -kFar, -kFar} : SetText::Box{0, 0, set.Width(), height};
  int top = 0;
  for (const SetText::Line& line : set.lines) {
    AddInk(context.Get(), line.text, set.Left(line, alignment), top, set.covered);
    top += set.height;
  }
  if (set.covered.right < set.covered.left) set.covered = {};
  SelectObject(context.Get(), before);
  return set;
}

template <class... Values>
std::string Printed(const char* form, Values... values) {
  char text[512];
  std::snprintf(text, sizeof text, form, values...);
  return text;
}

/// The mark's text around its middle, in units of the font.
std::string TextOf(const Mark& mark) {
  const SetText set = Set(mark.record, mark.lines);
  const int x = -(set.covered.left + set.covered.right) / 2;
  int y = -(set.covered.top + set.covered.bottom) / 2 + set.ascent;
  std::string svg;
  for (const SetText::Line& line : set.lines) {
    if (line.width > 0)
      svg += Printed(
                 "<text x=\"%d\" y=\"%d\" textLength=\"%d\" "
                 "lengthAdjust=\"spacingAndGlyphs\">",
                 x + set.Left(line, mark.lines), y, line.width) +
             MarkupEscaped(platform::ToUtf8(line.text)) + "</text>";
    y += set.height;
  }
  return svg;
}

/// The text once, and a reference to it for each copy.
std::string SvgOf(const Mark& mark, std::size_t number) {
  const peers::WatermarkRecord& record = mark.record;
  std::string svg = Printed(
      "<defs><g id=\"m%u\" font-size=\"%d\" fill=\"#%06X\" "
      "fill-opacity=\"%.2f\" xml:space=\"preserve\"%s%s%s font-family=\"",
      static_cast<unsigned>(number), kEm, static_cast<unsigned>(record.color) & 0xFFFFFF,
      record.opacity / 100.0, record.bold ? " font-weight=\"bold\"" : "",
      record.italic ? " font-style=\"italic\"" : "",
      record.underLine ? " text-decoration=\"underline\"" : "");
  const std::string font = platform::ToUtf8(LinesOf(record.fontName).front().text);
  svg += MarkupEscaped("'" + font.substr(0, font.find('\'')) + "'") + "\">" + TextOf(mark) +
         "</g></defs>\n";
  for (const Point& center : mark.centers)
    svg += Printed(
        "<use xlink:href=\"#m%u\" transform=\"translate(%.3f %.3f) rotate(%d) "
        "scale(%.7f)\"/>\n",
        static_cast<unsigned>(number), center.x, center.y, -record.rotate, mark.points * kUnit);
  return svg;
}

std::string PaperOf(const Page& page) {
  const Size paper = page.paper.size;
  std::string svg = Printed(
      "<svg width=\"%g\" height=\"%g\" overflow=\"hidden\">\n"
      "<rect width=\"%g\" height=\"%g\" fill=\"#fff\"/>\n",
      paper.width, paper.height, paper.width, paper.height);
  for (std::size_t i = 0; i < page.marks.size(); ++i) svg += SvgOf(page.marks[i], i);
  return svg + "</svg>\n";
}

/// The paper's edge, and the line beyond which most printers print nothing.
std::string EdgesOf(Size paper) {
  constexpr char kLine[] =
      "<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"none\" stroke=\"#8c8c8c\" "
      "stroke-width=\"%g\"%s/>\n";
  return Printed(kLine, 1.0 * kMargin, 1.0 * kMargin, paper.width - 2 * kMargin,
                 paper.height - 2 * kMargin, 0.15, " stroke-dasharray=\"0.3 1.2\"") +
         Printed(kLine, -0.1, -0.1, paper.width + 0.2, paper.height + 0.2, 0.2, "");
}

/// The lines, each broken where the paper ends.
std::vector<std::string> Broken(const std::vector<std::string>& caption, double width) {
  const auto places = static_cast<std::size_t>(width / (kCaptionPoints / 2 * kMillimetersPerPoint));
  std::vector<std::string> lines;
  for (const std::string& line : caption)
    for (std::string& part : Wrapped(line, places)) lines.push_back(std::move(part));
  return lines;
}

std::string CaptionOf(const std::vector<std::string>& lines, double top) {
  std::string svg = Printed("<g font-family=\"sans-serif\" font-size=\"%.4f\" fill=\"#404040\">\n",
                            kCaptionPoints * kMillimetersPerPoint);
  for (std::size_t i = 0; i < lines.size(); ++i)
    svg += Printed("<text y=\"%.3f\"%s>", top + static_cast<double>(i + 1) * kCaptionLine,
                   i == 0 ? " font-weight=\"bold\"" : "") +
           MarkupEscaped(lines[i]) + "</text>\n";
  return svg + "</g>\n";
}

}  // namespace

const char kPictures[] = ".svg (only Linux draws .pdf and .png)";

std::optional<Format> FormatOf(std::string_view extension) {
  return extension == ".svg" ? std::optional(Format::kSvg) : std::nullopt;
}

std::string Draw(const Page& page, const std::vector<std::string>& caption, Format /*format*/) {
  const Size paper = page.paper.size;
  const bool isPlain = caption.empty();
  const std::vector<std::string> lines = Broken(caption, paper.width);
  const double border = isPlain ? 0 : kBorder;
  const Size size = {paper.width + 2 * border,
                     paper.height + 2 * border + static_cast<double>(lines.size()) * kCaptionLine};
  std::string svg = Printed(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
      "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"%.3fmm\" height=\"%.3fmm\" "
      "viewBox=\"%g %g %.3f %.3f\">\n",
      size.width, size.height, -border, -border, size.width, size.height);
  if (!isPlain)
    svg += Printed("<rect x=\"%g\" y=\"%g\" width=\"%.3f\" height=\"%.3f\" fill=\"#f0f0f0\"/>\n",
                   -border, -border, size.width, size.height);
  svg += PaperOf(page);
  if (!isPlain) svg += EdgesOf(paper) + CaptionOf(lines, paper.height + border / 2);
  return svg + "</svg>\n";
}

Size MeasureText(const peers::WatermarkRecord& record) {
  const SetText::Box box = Set(record, Alignment::kLeft).covered;
  return {(box.right - box.left) * kUnit, (box.bottom - box.top) * kUnit};
}

}  // namespace app::page
