#pragma once

// Draws a laid-out page in its real size and in the fonts of this machine: the paper with its marks
// and, below it, a caption. Pango and Cairo draw on Linux; on Windows GDI measures and SVG alone is
// written, whose letters the viewer draws.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/page/layout.h"

namespace app::page {

enum class Format { kSvg, kPdf, kPng };

inline constexpr int kPixelsPerMillimeter = 4;  // of a PNG
inline constexpr int kBorder = 10;              // around the paper, in millimetres
inline constexpr int kMargin = 5;               // that most printers cannot print on

/// The extensions of a picture's name, in words.
extern const char kPictures[];
/// Returns the format of an extension, as ".svg"; null for one that this home does not draw.
std::optional<Format> FormatOf(std::string_view extension);

/// Returns the bytes of the picture; without a caption that of the bare paper alone. Throws
/// std::runtime_error when it cannot be drawn.
std::string Draw(const Page& page, const std::vector<std::string>& caption, Format format);

/// Returns the size of a text of one point, in millimetres: of its lines, or of the ink alone where
/// it is fitted to the page.
Size MeasureText(const peers::WatermarkRecord& record);

}  // namespace app::page
