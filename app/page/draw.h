#pragma once

// Draws a laid-out page with Pango and Cairo, in its real size: the paper with its marks, and below
// it a caption.

#include <string>
#include <vector>

#include "app/page/layout.h"

namespace app::page {

enum class Format { kSvg, kPdf, kPng };

inline constexpr int kPixelsPerMillimeter = 4;  // of a PNG
inline constexpr int kBorder = 10;              // around the paper, in millimetres

/// The bytes of the picture. std::runtime_error when it cannot be drawn.
std::string Draw(const Page& page, const std::vector<std::string>& caption, Format format);

}  // namespace app::page
