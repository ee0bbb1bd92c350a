#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <numbers>
#include <stdexcept>

#include "app/page/draw.h"
#include "platform/owner.h"
#include "platform/utf.h"

namespace app::page {
namespace {

constexpr double kMillimetersPerPoint = 25.4 / 72;
constexpr double kSetPoints = 50;
constexpr double kCaptionPoints = 7;

using Attributes = Owner<PangoAttrList*, pango_attr_list_unref>;
using Description = Owner<PangoFontDescription*, pango_font_description_free>;

/// The fonts of this machine, and the way in which all texts are set. One point is one unit.
class Typesetting {
 public:
  static const Typesetting& Get() {
    static const Typesetting typesetting;
    return typesetting;
  }
  Typesetting(const Typesetting&) = delete;
  Typesetting& operator=(const Typesetting&) = delete;

  PangoContext* Context() const { return m_context.Get(); }

 private:
  Typesetting()
      : m_fonts(pango_cairo_font_map_new()),
        m_context(pango_font_map_create_context(m_fonts.Get())) {
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(m_fonts.Get()), 72);
    const Owner<cairo_font_options_t*, cairo_font_options_destroy> options(
        cairo_font_options_create());
    cairo_font_options_set_hint_style(options.Get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.Get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options.Get(), CAIRO_ANTIALIAS_GRAY);
    pango_cairo_context_set_font_options(m_context.Get(), options.Get());
    pango_context_set_round_glyph_positions(m_context.Get(), FALSE);
    // Han characters take their Japanese form.
    pango_context_set_language(m_context.Get(), pango_language_from_string("ja"));
  }
  Owner<PangoFontMap*, g_object_unref> m_fonts;
  Owner<PangoContext*, g_object_unref> m_context;
};

PangoLayout* NewLayout() {
  return pango_layout_new(Typesetting::Get().Context());
}

/// Returns text that can be drawn, whatever the bytes are: each ill-formed part and each
/// noncharacter, which Cairo refuses in a PDF, becomes U+FFFD.
std::string Sound(const std::string& text) {
  std::wstring sound;
  const std::wstring units = platform::FromUtf8(text);
  for (std::wstring_view rest = units; !rest.empty();) {
    const std::wstring_view before = rest;
    const char32_t character = platform::TakeCodePoint(rest);
    const bool isNoncharacter =
        (character >= 0xFDD0 && character <= 0xFDEF) || (character & 0xFFFE) == 0xFFFE;
    sound += isNoncharacter ? L"\xFFFD" : before.substr(0, before.size() - rest.size());
  }
  return platform::ToUtf8(sound);
}

void SetWords(PangoLayout* layout, const std::string& text) {
  const std::string sound = Sound(text);
  pango_layout_set_text(layout, sound.data(), static_cast<int>(sound.size()));
}

void SetAttribute(PangoLayout* layout, PangoAttribute* attribute) {
  const Attributes attributes(pango_attr_list_new());
  pango_attr_list_insert(attributes.Get(), attribute);
  pango_layout_set_attributes(layout, attributes.Get());
}

Description Font(const std::string& family, double points) {
  Description font(pango_font_description_new());
  pango_font_description_set_family(font.Get(), Sound(family).c_str());
  pango_font_description_set_size(font.Get(), pango_units_from_double(points));
  return font;
}

Description FontOf(const peers::WatermarkRecord& record) {
  Description font = Font(record.fontName, kSetPoints);
  if (record.bold) pango_font_description_set_weight(font.Get(), PANGO_WEIGHT_BOLD);
  if (record.italic) pango_font_description_set_style(font.Get(), PANGO_STYLE_ITALIC);
  return font;
}

/// A text as Pango sets it, in one size, kSetPoints, and without hints, which would fit the letters
/// to pixels that a printer has not. The text is scaled when it is drawn, so its measures are in
/// proportion to its size.
class SetText {
 public:
  explicit SetText(const peers::WatermarkRecord& record, Alignment lines = Alignment::kLeft)
      : m_layout(NewLayout()), m_isFitted(record.fit) {
    constexpr PangoAlignment kAlignments[] = {PANGO_ALIGN_LEFT, PANGO_ALIGN_CENTER,
                                              PANGO_ALIGN_RIGHT};
    pango_layout_set_alignment(m_layout.Get(), kAlignments[static_cast<int>(lines)]);
    pango_layout_set_font_description(m_layout.Get(), FontOf(record).Get());
    SetWords(m_layout.Get(), record.text);
    if (record.underLine)
      SetAttribute(m_layout.Get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
  }

  struct Box {
    double x, y, width, height;
  };
  /// Returns the box of the lines and of ink beyond them, as a slanted letter has; of a fitted text
  /// the box of the ink alone. In points, like all measures of Pango here.
  Box Covered() const {
    PangoRectangle ink, lines;
    pango_layout_get_extents(m_layout.Get(), &ink, &lines);
    if (m_isFitted) lines = ink;
    const int x = std::min(ink.x, lines.x), y = std::min(ink.y, lines.y);
    const int right = std::max(ink.x + ink.width, lines.x + lines.width);
    const int bottom = std::max(ink.y + ink.height, lines.y + lines.height);
    return {pango_units_to_double(x), pango_units_to_double(y), pango_units_to_double(right - x),
            pango_units_to_double(bottom - y)};
  }

  PangoLayout* Layout() const { return m_layout.Get(); }

 private:
  Owner<PangoLayout*, g_object_unref> m_layout;
  bool m_isFitted;
};

/// Lines of text, the first in bold, wrapped to a width in millimetres.
class SetCaption {
 public:
  SetCaption(const std::vector<std::string>& lines, double width) : m_layout(NewLayout()) {
    pango_layout_set_font_description(m_layout.Get(), Font("Sans", kCaptionPoints).Get());
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    SetWords(m_layout.Get(), text);
    pango_layout_set_width(m_layout.Get(), pango_units_from_double(width / kMillimetersPerPoint));
    pango_layout_set_wrap(m_layout.Get(), PANGO_WRAP_WORD_CHAR);
    PangoAttribute* const bold = pango_attr_weight_new(PANGO_WEIGHT_BOLD);
    bold->end_index = static_cast<guint>(text.find('\n'));
    SetAttribute(m_layout.Get(), bold);
  }

  /// In millimetres.
  double Height() const {
    int height = 0;
    pango_layout_get_size(m_layout.Get(), nullptr, &height);
    return pango_units_to_double(height) * kMillimetersPerPoint;
  }
  PangoLayout* Layout() const { return m_layout.Get(); }

 private:
  Owner<PangoLayout*, g_object_unref> m_layout;
};

using Surface = Owner<cairo_surface_t*, cairo_surface_destroy>;
using Drawing = Owner<cairo_t*, cairo_destroy>;

/// Numbers of the page are millimetres from the paper's upper left corner.
void DrawMark(cairo_t* drawing, const Mark& mark) {
  const SetText text(mark.record, mark.lines);
  const SetText::Box box = text.Covered();
  const auto color = static_cast<std::uint32_t>(mark.record.color);
  const auto part = [&](int shift) { return (color >> shift & 0xFF) / 255.0; };
  const double scale = mark.points / kSetPoints * kMillimetersPerPoint;
  cairo_set_source_rgba(drawing, part(16), part(8), part(0), mark.record.opacity / 100.0);
  for (const Point& center : mark.centers) {
    cairo_save(drawing);
    cairo_translate(drawing, center.x, center.y);
    cairo_rotate(drawing, -mark.record.rotate * std::numbers::pi / 180);
    cairo_scale(drawing, scale, scale);
    cairo_move_to(drawing, -box.x - box.width / 2, -box.y - box.height / 2);
    pango_cairo_show_layout(drawing, text.Layout());
    cairo_restore(drawing);
  }
}

void DrawPaper(cairo_t* drawing, const Page& page) {
  const Size paper = page.paper.size;
  cairo_save(drawing);
  cairo_rectangle(drawing, 0, 0, paper.width, paper.height);
  cairo_set_source_rgb(drawing, 1, 1, 1);
  cairo_fill_preserve(drawing);
  cairo_clip(drawing);
  for (const Mark& mark : page.marks) DrawMark(drawing, mark);
  cairo_restore(drawing);
}

/// The paper's edge, and the line beyond which most printers print nothing.
void DrawEdges(cairo_t* drawing, const Size& paper) {
  constexpr double kDots[] = {0.3, 1.2};
  cairo_save(drawing);
  cairo_set_source_rgb(drawing, 0.55, 0.55, 0.55);
  cairo_set_line_width(drawing, 0.15);
  cairo_set_dash(drawing, kDots, 2, 0);
  cairo_rectangle(drawing, kMargin, kMargin, paper.width - 2 * kMargin, paper.height - 2 * kMargin);
  cairo_stroke(drawing);
  cairo_restore(drawing);
  cairo_rectangle(drawing, -0.1, -0.1, paper.width + 0.2, paper.height + 0.2);
  cairo_set_source_rgb(drawing, 0.55, 0.55, 0.55);
  cairo_set_line_width(drawing, 0.2);
  cairo_stroke(drawing);
}

void DrawCaption(cairo_t* drawing, const SetCaption& caption) {
  cairo_save(drawing);
  cairo_scale(drawing, kMillimetersPerPoint, kMillimetersPerPoint);
  cairo_set_source_rgb(drawing, 0.25, 0.25, 0.25);
  cairo_move_to(drawing, 0, 0);
  pango_cairo_show_layout(drawing, caption.Layout());
  cairo_restore(drawing);
}

cairo_status_t Append(void* bytes, const unsigned char* data, unsigned int length) {
  try {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  } catch (...) {  // nothing is thrown through Cairo
    return CAIRO_STATUS_NO_MEMORY;
  }
}

void Check(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error(std::string("the picture cannot be drawn: ") +
                             cairo_status_to_string(status));
}

/// A surface of a size in millimetres, and the units of the surface in one.
struct Canvas {
  Surface surface;
  double scale;
};

Canvas MakeCanvas(Size size, Format format, std::string& bytes) {
  constexpr double kPoints = 1 / kMillimetersPerPoint;
  const double width = size.width * kPoints, height = size.height * kPoints;
  switch (format) {
    case Format::kSvg:
      return {Surface(cairo_svg_surface_create_for_stream(Append, &bytes, width, height)), kPoints};
    case Format::kPdf:
      return {Surface(cairo_pdf_surface_create_for_stream(Append, &bytes, width, height)), kPoints};
    case Format::kPng:
      break;
  }
  return {Surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                             static_cast<int>(size.width * kPixelsPerMillimeter),
                                             static_cast<int>(size.height * kPixelsPerMillimeter))),
          kPixelsPerMillimeter};
}

}  // namespace

const char kPictures[] = ".svg, .pdf or .png";

std::optional<Format> FormatOf(std::string_view extension) {
  if (extension == ".svg") return Format::kSvg;
  if (extension == ".pdf") return Format::kPdf;
  if (extension == ".png") return Format::kPng;
  return std::nullopt;
}

std::string Draw(const Page& page, const std::vector<std::string>& caption, Format format) {
  const Size paper = page.paper.size;
  const bool isPlain = caption.empty();
  const SetCaption words(caption, paper.width);
  const Size size =
      isPlain ? paper
              : Size{paper.width + 2 * kBorder, paper.height + 2 * kBorder + words.Height()};
  std::string bytes;
  const Canvas canvas = MakeCanvas(size, format, bytes);
  {
    const Drawing drawing(cairo_create(canvas.surface.Get()));
    cairo_scale(drawing.Get(), canvas.scale, canvas.scale);
    if (!isPlain) {
      cairo_set_source_rgb(drawing.Get(), 0.94, 0.94, 0.94);
      cairo_paint(drawing.Get());
      cairo_translate(drawing.Get(), kBorder, kBorder);
    }
    DrawPaper(drawing.Get(), page);
    if (!isPlain) {
      DrawEdges(drawing.Get(), paper);
      cairo_translate(drawing.Get(), 0, paper.height + kBorder / 2.0);
      DrawCaption(drawing.Get(), words);
    }
    Check(cairo_status(drawing.Get()));
  }
  if (format == Format::kPng)
    Check(cairo_surface_write_to_png_stream(canvas.surface.Get(), Append, &bytes));
  cairo_surface_finish(canvas.surface.Get());
  Check(cairo_surface_status(canvas.surface.Get()));
  return bytes;
}

Size MeasureText(const peers::WatermarkRecord& record) {
  const SetText::Box box = SetText(record).Covered();
  constexpr double kOnePoint = kMillimetersPerPoint / kSetPoints;
  return {box.width * kOnePoint, box.height * kOnePoint};
}

}  // namespace app::page
