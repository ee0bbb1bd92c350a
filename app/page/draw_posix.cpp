// Pictures by Pango and Cairo: SVG, PDF and PNG.

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <numbers>
#include <stdexcept>

#include "app/page/page.h"
#include "platform/owner.h"
#include "platform/utf.h"

namespace app::page {
namespace {

constexpr double kSetPoints = 50;

using Attributes = Owner<PangoAttrList*, pango_attr_list_unref>;
using Description = Owner<PangoFontDescription*, pango_font_description_free>;
using Context = Owner<PangoContext*, g_object_unref>;
using Layout = Owner<PangoLayout*, g_object_unref>;
using Surface = Owner<cairo_surface_t*, cairo_surface_destroy>;
using Drawing = Owner<cairo_t*, cairo_destroy>;

/// The fonts of this machine, and the way in which all texts are set. One point is one unit.
Context MakeContext() {
  const Owner<PangoFontMap*, g_object_unref> fonts(pango_cairo_font_map_new());
  pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(fonts.Get()), 72);
  Context context(pango_font_map_create_context(fonts.Get()));
  const Owner<cairo_font_options_t*, cairo_font_options_destroy> options(
      cairo_font_options_create());
  // Hints would fit the letters to pixels that a printer has not.
  cairo_font_options_set_hint_style(options.Get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options.Get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options.Get(), CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context.Get(), options.Get());
  pango_context_set_round_glyph_positions(context.Get(), FALSE);
  // Han characters take their Japanese form.
  pango_context_set_language(context.Get(), pango_language_from_string("ja"));
  return context;
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

/// A text in a font, with one attribute from its beginning on.
Layout SetText(const std::string& text, const Description& font, PangoAttribute* attribute) {
  static const Context context = MakeContext();
  Layout layout(pango_layout_new(context.Get()));
  const std::string sound = Sound(text);
  pango_layout_set_text(layout.Get(), sound.data(), static_cast<int>(sound.size()));
  pango_layout_set_font_description(layout.Get(), font.Get());
  const Attributes attributes(pango_attr_list_new());
  if (attribute != nullptr) pango_attr_list_insert(attributes.Get(), attribute);
  pango_layout_set_attributes(layout.Get(), attributes.Get());
  return layout;
}

Description Font(const std::string& family, double points) {
  Description font(pango_font_description_new());
  pango_font_description_set_family(font.Get(), Sound(family).c_str());
  pango_font_description_set_size(font.Get(), pango_units_from_double(points));
  return font;
}

/// The text of a watermark in one size, kSetPoints. It is scaled when it is drawn, so its measures
/// are in proportion to its size.
Layout SetMark(const peers::WatermarkRecord& record, Alignment lines = Alignment::kLeft) {
  constexpr PangoAlignment kAlignments[] = {PANGO_ALIGN_LEFT, PANGO_ALIGN_CENTER,
                                            PANGO_ALIGN_RIGHT};
  const Description font = Font(record.fontName, kSetPoints);
  if (record.bold) pango_font_description_set_weight(font.Get(), PANGO_WEIGHT_BOLD);
  if (record.italic) pango_font_description_set_style(font.Get(), PANGO_STYLE_ITALIC);
  Layout layout =
      SetText(record.text, font,
              record.underLine ? pango_attr_underline_new(PANGO_UNDERLINE_SINGLE) : nullptr);
  pango_layout_set_alignment(layout.Get(), kAlignments[static_cast<int>(lines)]);
  return layout;
}

struct Box {
  double x, y, width, height;
};

/// Returns the box of the lines and of ink beyond them, as a slanted letter has; of a fitted text
/// the box of the ink alone. In points, like all measures of Pango here.
Box Covered(const Layout& layout, bool isFitted) {
  PangoRectangle ink, lines;
  pango_layout_get_extents(layout.Get(), &ink, &lines);
  if (isFitted) lines = ink;
  const int x = std::min(ink.x, lines.x), y = std::min(ink.y, lines.y);
  const int right = std::max(ink.x + ink.width, lines.x + lines.width);
  const int bottom = std::max(ink.y + ink.height, lines.y + lines.height);
  return {pango_units_to_double(x), pango_units_to_double(y), pango_units_to_double(right - x),
          pango_units_to_double(bottom - y)};
}

/// Lines of text, the first in bold, wrapped to a width in millimetres.
Layout SetCaption(const std::vector<std::string>& lines, double width) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  PangoAttribute* const bold = pango_attr_weight_new(PANGO_WEIGHT_BOLD);
  bold->end_index = static_cast<guint>(text.find('\n'));
  Layout layout = SetText(text, Font("Sans", kCaptionPoints), bold);
  pango_layout_set_width(layout.Get(), pango_units_from_double(width / kMillimetersPerPoint));
  pango_layout_set_wrap(layout.Get(), PANGO_WRAP_WORD_CHAR);
  return layout;
}

/// Numbers of the page are millimetres from the paper's upper left corner.
void DrawMark(cairo_t* drawing, const Mark& mark) {
  const Layout text = SetMark(mark.record, mark.lines);
  const Box box = Covered(text, mark.record.fit);
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
    pango_cairo_show_layout(drawing, text.Get());
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

void DrawCaption(cairo_t* drawing, const Layout& caption) {
  cairo_save(drawing);
  cairo_scale(drawing, kMillimetersPerPoint, kMillimetersPerPoint);
  cairo_set_source_rgb(drawing, 0.25, 0.25, 0.25);
  cairo_move_to(drawing, 0, 0);
  pango_cairo_show_layout(drawing, caption.Get());
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

/// A surface of a size in millimetres, of `scale` units each.
Surface MakeSurface(Size size, double scale, Format format, std::string& bytes) {
  const double width = size.width * scale, height = size.height * scale;
  if (format == Format::kPng)
    return Surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width),
                                              static_cast<int>(height)));
  const auto create = format == Format::kSvg ? cairo_svg_surface_create_for_stream
                                             : cairo_pdf_surface_create_for_stream;
  return Surface(create(Append, &bytes, width, height));
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
  const Layout words = SetCaption(caption, paper.width);
  Size size = paper;
  if (!isPlain) {
    int height = 0;
    pango_layout_get_size(words.Get(), nullptr, &height);
    size = {paper.width + 2 * kBorder,
            paper.height + 2 * kBorder + pango_units_to_double(height) * kMillimetersPerPoint};
  }
  const double scale = format == Format::kPng ? kPixelsPerMillimeter : 1 / kMillimetersPerPoint;
  std::string bytes;
  const Surface surface = MakeSurface(size, scale, format, bytes);
  {
    const Drawing drawing(cairo_create(surface.Get()));
    cairo_scale(drawing.Get(), scale, scale);
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
    Check(cairo_surface_write_to_png_stream(surface.Get(), Append, &bytes));
  cairo_surface_finish(surface.Get());
  Check(cairo_surface_status(surface.Get()));
  return bytes;
}

Size MeasureText(const peers::WatermarkRecord& record) {
  const Box box = Covered(SetMark(record), record.fit);
  constexpr double kOnePoint = kMillimetersPerPoint / kSetPoints;
  return {box.width * kOnePoint, box.height * kOnePoint};
}

}  // namespace app::page
