#pragma once

// Draws a laid-out page with Pango and Cairo, in its real size and in the fonts of this machine:
// the paper with its marks and, below it, a caption.

#include <string>
#include <vector>

#include "app/page/layout.h"

namespace app::page {

enum class Format { kSvg, kPdf, kPng };

inline constexpr int kPixelsPerMillimeter = 4;  // of a PNG
inline constexpr int kBorder = 10;              // around the paper, in millimetres
inline constexpr int kMargin = 5;               // that most printers cannot print on

/// Returns the bytes of the picture; without a caption that of the bare paper alone. Throws
/// std::runtime_error when it cannot be drawn.
std::string Draw(const Page& page, const std::vector<std::string>& caption, Format format);

/// Returns the size of a text of one point, in millimetres: of its lines, or of the ink alone where
/// it is fitted to the page.
Size MeasureText(const peers::WatermarkRecord& record);

}  // namespace app::page
