#include "app/page/draw.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <map>
#include <numbers>
#include <stdexcept>

#include "platform/owner.h"
#include "platform/utf.h"

namespace app::page {
namespace {

constexpr double kMillimetersPerPoint = 25.4 / 72;
// Every text is set in this size and then scaled, so that its measures are in proportion.
constexpr double kSetPoints = 50;
constexpr double kCaptionPoints = 7;

template <class Object>
using ObjectOwner = Owner<Object*, [](Object* object) { g_object_unref(object); }>;
using Attributes = Owner<PangoAttrList*, pango_attr_list_unref>;
using Description = Owner<PangoFontDescription*, pango_font_description_free>;
using Surface = Owner<cairo_surface_t*, cairo_surface_destroy>;
using Drawing = Owner<cairo_t*, cairo_destroy>;

/// Without hints, which would fit the letters to pixels that a printer has not. One point is one
/// unit. Han characters take their Japanese form.
PangoContext* Context() {
  static const ObjectOwner<PangoContext> context = [] {
    PangoFontMap* const fonts = pango_cairo_font_map_get_default();
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(fonts), 72);
    ObjectOwner<PangoContext> made(pango_font_map_create_context(fonts));
    const Owner<cairo_font_options_t*, cairo_font_options_destroy> options(
        cairo_font_options_create());
    cairo_font_options_set_hint_style(options.Get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.Get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options.Get(), CAIRO_ANTIALIAS_GRAY);
    pango_cairo_context_set_font_options(made.Get(), options.Get());
    pango_context_set_round_glyph_positions(made.Get(), FALSE);
    pango_context_set_language(made.Get(), pango_language_from_string("ja"));
    return made;
  }();
  return context.Get();
}

/// A file that others wrote may hold ill-formed text.
std::string Sound(const std::string& text) {
  return platform::ToUtf8(platform::FromUtf8(text));
}

Description FontOf(const peers::WatermarkRecord& record) {
  Description font(pango_font_description_new());
  pango_font_description_set_family(font.Get(), Sound(record.fontName).c_str());
  pango_font_description_set_size(font.Get(), static_cast<int>(kSetPoints * PANGO_SCALE));
  if (record.bold) pango_font_description_set_weight(font.Get(), PANGO_WEIGHT_BOLD);
  if (record.italic) pango_font_description_set_style(font.Get(), PANGO_STYLE_ITALIC);
  return font;
}

/// A watermark's text, set in kSetPoints.
class SetText {
 public:
  explicit SetText(const peers::WatermarkRecord& record) : m_layout(pango_layout_new(Context())) {
    const Description font = FontOf(record);
    pango_layout_set_font_description(m_layout.Get(), font.Get());
    const std::string text = Sound(record.text);
    pango_layout_set_text(m_layout.Get(), text.data(), static_cast<int>(text.size()));
    if (record.underLine) {
      const Attributes attributes(pango_attr_list_new());
      pango_attr_list_insert(attributes.Get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
      pango_layout_set_attributes(m_layout.Get(), attributes.Get());
    }
  }

  void Align(Alignment lines) {
    constexpr PangoAlignment kAlignments[] = {PANGO_ALIGN_LEFT, PANGO_ALIGN_CENTER,
                                              PANGO_ALIGN_RIGHT};
    pango_layout_set_alignment(m_layout.Get(), kAlignments[static_cast<int>(lines)]);
  }

  PangoLayout* Layout() const { return m_layout.Get(); }

  struct Box {
    double x, y, width, height;
  };

  /// The lines and what their ink covers beyond, as a slanted letter does; in points.
  Box Covered() const {
    PangoRectangle ink, lines;
    pango_layout_get_extents(m_layout.Get(), &ink, &lines);
    const int x = std::min(ink.x, lines.x), y = std::min(ink.y, lines.y);
    const int right = std::max(ink.x + ink.width, lines.x + lines.width);
    const int bottom = std::max(ink.y + ink.height, lines.y + lines.height);
    return {pango_units_to_double(x), pango_units_to_double(y), pango_units_to_double(right - x),
            pango_units_to_double(bottom - y)};
  }

  /// The families that the text takes its characters from, in their order.
  std::vector<std::string> Families() const {
    std::vector<std::string> families;
    const Owner<PangoLayoutIter*, pango_layout_iter_free> walk(
        pango_layout_get_iter(m_layout.Get()));
    do {
      const PangoLayoutRun* const run = pango_layout_iter_get_run_readonly(walk.Get());
      if (run == nullptr || IsUnknown(*run)) continue;
      const Description font(pango_font_describe(run->item->analysis.font));
      std::string family = pango_font_description_get_family(font.Get());
      if (std::find(families.begin(), families.end(), family) == families.end())
        families.push_back(std::move(family));
    } while (pango_layout_iter_next_run(walk.Get()));
    return families;
  }

 private:
  static bool IsUnknown(const PangoLayoutRun& run) {
    return run.glyphs->num_glyphs > 0 &&
           (run.glyphs->glyphs[0].glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0;
  }

  ObjectOwner<PangoLayout> m_layout;
};

/// Under any of its names, as a Japanese one.
bool IsHere(const std::string& family) {
  const Owner<FcPattern*, FcPatternDestroy> pattern(FcPatternCreate());
  FcPatternAddString(pattern.Get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  const Owner<FcObjectSet*, FcObjectSetDestroy> wanted(
      FcObjectSetBuild(FC_FAMILY, static_cast<const char*>(nullptr)));
  const Owner<FcFontSet*, FcFontSetDestroy> found(FcFontList(nullptr, pattern.Get(), wanted.Get()));
  return found && found->nfont > 0;
}

/// The family that serves for the one that the record asks for.
std::string FirstFamily(const peers::WatermarkRecord& record) {
  const Description asked = FontOf(record);
  const ObjectOwner<PangoFont> font(
      pango_font_map_load_font(pango_cairo_font_map_get_default(), Context(), asked.Get()));
  if (!font) return "";
  const Description loaded(pango_font_describe(font.Get()));
  return pango_font_description_get_family(loaded.Get());
}

std::string Listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list + (names.size() == 1 ? " stands in" : " stand in");
}

/// Numbers of the page are millimetres from the paper's upper left corner.
void DrawMark(cairo_t* drawing, const Mark& mark) {
  SetText text(mark.record);
  text.Align(mark.lines);
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
  cairo_rectangle(drawing, -0.1, -0.1, paper.width + 0.2, paper.height + 0.2);
  cairo_set_source_rgb(drawing, 0.55, 0.55, 0.55);
  cairo_set_line_width(drawing, 0.2);
  cairo_stroke(drawing);
}

/// The caption's lines, the first in bold, as wide as the paper.
ObjectOwner<PangoLayout> SetCaption(const std::vector<std::string>& lines, double width) {
  ObjectOwner<PangoLayout> layout(pango_layout_new(Context()));
  const Description font(pango_font_description_new());
  pango_font_description_set_family(font.Get(), "Sans");
  pango_font_description_set_size(font.Get(), static_cast<int>(kCaptionPoints * PANGO_SCALE));
  pango_layout_set_font_description(layout.Get(), font.Get());
  std::string text;
  for (const std::string& line : lines) text += Sound(line) + "\n";
  pango_layout_set_text(layout.Get(), text.data(), static_cast<int>(text.size()));
  pango_layout_set_width(layout.Get(), pango_units_from_double(width / kMillimetersPerPoint));
  pango_layout_set_wrap(layout.Get(), PANGO_WRAP_WORD_CHAR);
  const Attributes attributes(pango_attr_list_new());
  PangoAttribute* const bold = pango_attr_weight_new(PANGO_WEIGHT_BOLD);
  bold->start_index = 0;
  bold->end_index = static_cast<guint>(text.find('\n'));
  pango_attr_list_insert(attributes.Get(), bold);
  pango_layout_set_attributes(layout.Get(), attributes.Get());
  return layout;
}

void DrawCaption(cairo_t* drawing, PangoLayout* caption) {
  cairo_save(drawing);
  cairo_scale(drawing, kMillimetersPerPoint, kMillimetersPerPoint);
  cairo_set_source_rgb(drawing, 0.25, 0.25, 0.25);
  cairo_move_to(drawing, 0, 0);
  pango_cairo_show_layout(drawing, caption);
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

Size MeasureText(const peers::WatermarkRecord& record) {
  const SetText::Box box = SetText(record).Covered();
  constexpr double kOnePoint = kMillimetersPerPoint / kSetPoints;
  return {box.width * kOnePoint, box.height * kOnePoint};
}

std::vector<Note> FontNotes(const Page& page) {
  std::vector<Note> notes;
  std::map<std::string, std::vector<std::string>> standIns;  // by the font that is asked for
  for (const Mark& mark : page.marks) {
    const SetText text(mark.record);
    const std::string& asked = mark.record.fontName;
    std::vector<std::string>& names = standIns[asked];
    const std::string own = IsHere(asked) ? FirstFamily(mark.record) : "";
    for (const std::string& family : text.Families())
      if (family != own && std::find(names.begin(), names.end(), family) == names.end())
        names.push_back(family);
    if (const int unknown = pango_layout_get_unknown_glyphs_count(text.Layout()); unknown > 0)
      notes.push_back({mark.record.name, "has " + std::to_string(unknown) +
                                             " characters that no font here has; they are drawn "
                                             "as boxes"});
  }
  for (const auto& [asked, names] : standIns) {
    if (names.empty()) continue;
    const std::string which = asked.empty() ? "no font is named" : "font '" + asked + "' ";
    const char* const what = asked.empty()   ? ""
                             : IsHere(asked) ? "lacks characters"
                                             : "is not here";
    notes.push_back({"", which + what + "; " + Listed(names)});
  }
  return notes;
}

std::string Draw(const Page& page, const std::vector<std::string>& caption, Format format) {
  const Size paper = page.paper.size;
  const ObjectOwner<PangoLayout> words = SetCaption(caption, paper.width);
  int wordsWidth = 0, wordsHeight = 0;
  pango_layout_get_size(words.Get(), &wordsWidth, &wordsHeight);
  const double under = pango_units_to_double(wordsHeight) * kMillimetersPerPoint;
  const Size size = {paper.width + 2 * kBorder, paper.height + 2 * kBorder + under};

  std::string bytes;
  {
    const Canvas canvas = MakeCanvas(size, format, bytes);
    {
      const Drawing drawing(cairo_create(canvas.surface.Get()));
      cairo_scale(drawing.Get(), canvas.scale, canvas.scale);
      cairo_set_source_rgb(drawing.Get(), 0.94, 0.94, 0.94);
      cairo_paint(drawing.Get());
      cairo_translate(drawing.Get(), kBorder, kBorder);
      DrawPaper(drawing.Get(), page);
      cairo_translate(drawing.Get(), 0, paper.height + kBorder / 2.0);
      DrawCaption(drawing.Get(), words.Get());
      Check(cairo_status(drawing.Get()));
    }
    if (format == Format::kPng)
      Check(cairo_surface_write_to_png_stream(canvas.surface.Get(), Append, &bytes));
    cairo_surface_finish(canvas.surface.Get());
    Check(cairo_surface_status(canvas.surface.Get()));
  }
  return bytes;
}

}  // namespace app::page
