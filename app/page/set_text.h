#pragma once

// Texts as Pango sets them in the fonts of this machine.
//
// Every text is set in one size, kSetPoints, and scaled when it is drawn, so that its measures are
// in proportion to its size. It is set without hints, which would fit the letters to pixels that a
// printer has not. Han characters take their Japanese form.

#include <pango/pangocairo.h>

#include <string>
#include <vector>

#include "app/page/layout.h"
#include "platform/owner.h"

namespace app::page {

inline constexpr double kMillimetersPerPoint = 25.4 / 72;
inline constexpr double kSetPoints = 50;

class SetText {
 public:
  explicit SetText(const peers::WatermarkRecord& record, Alignment lines = Alignment::kLeft);

  /// The lines, and what their ink covers beyond, as a slanted letter does. In points, like all
  /// measures of the layout.
  struct Box {
    double x, y, width, height;
  };
  Box Covered() const;

  /// The font families that the characters come from, and how many characters no font has.
  std::vector<std::string> Families() const;
  int UnknownCount() const;

  PangoLayout* Layout() const { return m_layout.Get(); }

 private:
  Owner<PangoLayout*, g_object_unref> m_layout;
};

/// A text of several lines, the first in bold, in lines of a width in millimetres.
class SetCaption {
 public:
  SetCaption(const std::vector<std::string>& lines, double width);

  double Height() const;  ///< In millimetres.
  PangoLayout* Layout() const { return m_layout.Get(); }

 private:
  Owner<PangoLayout*, g_object_unref> m_layout;
};

/// What a text covers at a size of one point, in millimetres.
Size MeasureText(const peers::WatermarkRecord& record);

/// For each font that a page asks for and this machine has not, or not with all characters, what
/// stands in.
std::vector<Note> FontNotes(const Page& page);

}  // namespace app::page
