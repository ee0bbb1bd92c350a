#include "app/page/set_text.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <map>

#include "platform/utf.h"

namespace app::page {
namespace {

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

  PangoFontMap* Fonts() const { return m_fonts.Get(); }
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
    pango_context_set_language(m_context.Get(), pango_language_from_string("ja"));
  }
  Owner<PangoFontMap*, g_object_unref> m_fonts;
  Owner<PangoContext*, g_object_unref> m_context;
};

PangoLayout* NewLayout() {
  return pango_layout_new(Typesetting::Get().Context());
}

/// UTF-8, whatever the bytes are: a file that others wrote may hold ill-formed text.
std::string Sound(const std::string& text) {
  return platform::ToUtf8(platform::FromUtf8(text));
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

bool IsUnknown(const PangoLayoutRun& run) {
  return run.glyphs->num_glyphs > 0 &&
         (run.glyphs->glyphs[0].glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0;
}

void AddOnce(std::vector<std::string>& names, std::string name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
}

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
  const Typesetting& typesetting = Typesetting::Get();
  const Owner<PangoFont*, g_object_unref> font(
      pango_font_map_load_font(typesetting.Fonts(), typesetting.Context(), asked.Get()));
  if (!font) return "";
  const Description loaded(pango_font_describe(font.Get()));
  return pango_font_description_get_family(loaded.Get());
}

std::string Listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list + (names.size() == 1 ? " stands in" : " stand in");
}

/// A font that is asked for, and those that characters come from in its place.
struct AskedFont {
  bool isHere = false;
  std::string own;  ///< Its family, where it is here.
  std::vector<std::string> standIns;
};

Note NoteOf(const std::string& name, const AskedFont& font) {
  const std::string stand = Listed(font.standIns);
  if (name.empty()) return {"", "no font is named; " + stand};
  return {"", "font '" + name + (font.isHere ? "' lacks characters; " : "' is not here; ") + stand};
}

}  // namespace

SetText::SetText(const peers::WatermarkRecord& record, Alignment lines) : m_layout(NewLayout()) {
  constexpr PangoAlignment kAlignments[] = {PANGO_ALIGN_LEFT, PANGO_ALIGN_CENTER,
                                            PANGO_ALIGN_RIGHT};
  pango_layout_set_alignment(m_layout.Get(), kAlignments[static_cast<int>(lines)]);
  pango_layout_set_font_description(m_layout.Get(), FontOf(record).Get());
  SetWords(m_layout.Get(), record.text);
  if (record.underLine)
    SetAttribute(m_layout.Get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
}

SetText::Box SetText::Covered() const {
  PangoRectangle ink, lines;
  pango_layout_get_extents(m_layout.Get(), &ink, &lines);
  const int x = std::min(ink.x, lines.x), y = std::min(ink.y, lines.y);
  const int right = std::max(ink.x + ink.width, lines.x + lines.width);
  const int bottom = std::max(ink.y + ink.height, lines.y + lines.height);
  return {pango_units_to_double(x), pango_units_to_double(y), pango_units_to_double(right - x),
          pango_units_to_double(bottom - y)};
}

std::vector<std::string> SetText::Families() const {
  std::vector<std::string> families;
  const Owner<PangoLayoutIter*, pango_layout_iter_free> walk(pango_layout_get_iter(m_layout.Get()));
  do {
    const PangoLayoutRun* const run = pango_layout_iter_get_run_readonly(walk.Get());
    if (run == nullptr || IsUnknown(*run)) continue;
    const Description font(pango_font_describe(run->item->analysis.font));
    AddOnce(families, pango_font_description_get_family(font.Get()));
  } while (pango_layout_iter_next_run(walk.Get()));
  return families;
}

int SetText::UnknownCount() const {
  return pango_layout_get_unknown_glyphs_count(m_layout.Get());
}

SetCaption::SetCaption(const std::vector<std::string>& lines, double width)
    : m_layout(NewLayout()) {
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

double SetCaption::Height() const {
  int height = 0;
  pango_layout_get_size(m_layout.Get(), nullptr, &height);
  return pango_units_to_double(height) * kMillimetersPerPoint;
}

Size MeasureText(const peers::WatermarkRecord& record) {
  const SetText::Box box = SetText(record).Covered();
  constexpr double kOnePoint = kMillimetersPerPoint / kSetPoints;
  return {box.width * kOnePoint, box.height * kOnePoint};
}

std::vector<Note> FontNotes(const Page& page) {
  std::vector<Note> notes;
  std::map<std::string, AskedFont> fonts;
  for (const Mark& mark : page.marks) {
    const auto [place, isNew] = fonts.try_emplace(mark.record.fontName);
    AskedFont& font = place->second;
    if (isNew) font.isHere = IsHere(place->first);
    if (isNew && font.isHere) font.own = FirstFamily(mark.record);
    const SetText text(mark.record);
    for (const std::string& family : text.Families())
      if (family != font.own) AddOnce(font.standIns, family);
    if (const int unknown = text.UnknownCount(); unknown > 0)
      notes.push_back({mark.record.name, "has " + std::to_string(unknown) +
                                             " characters that no font here has; boxes stand in"});
  }
  for (const auto& [name, font] : fonts)
    if (!font.standIns.empty()) notes.push_back(NoteOf(name, font));
  return notes;
}

}  // namespace app::page
