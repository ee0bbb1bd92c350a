#pragma once

// The page that a printer's watermarks make: from an entry's records and a paper to placed marks
// (LayOut), and from those to a picture (Draw). All lengths are millimetres, counted from the
// paper's upper left corner to the right and down.
//
// The Settings component decides what its numbers mean on paper. This layout is a stand-in for it,
// and what it takes them to mean is written in kMeaning, which stands under a picture with a
// caption and in docs/policy.md. The layout asks its caller for the size of a text, so that it
// needs no fonts.
//
// No record makes a page without end: numbers are pulled into the ranges that the library itself
// keeps, texts are cut, and copies are left out from a number on. A note tells of each text that is
// cut and of the copies.
//
// A picture shows the page in its real size and in the fonts of this machine, and below it a
// caption. Pango and Cairo draw on Linux; on Windows GDI measures and SVG alone is written, whose
// letters the viewer draws.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "peers/settings_component/setting_file.h"

namespace app::page {

struct Size {
  double width = 0;
  double height = 0;
};

struct Point {
  double x = 0;
  double y = 0;
};

struct Paper {
  std::string name;
  Size size;
};

/// Returns A3, A4 or Letter. Throws std::invalid_argument for any other name.
Paper FindPaper(std::string_view name, bool isLandscape);

enum class Alignment { kLeft, kCenter, kRight };

/// One watermark, with all its copies on the page.
struct Mark {
  peers::WatermarkRecord record;  ///< Its text and numbers as they are drawn, within their ranges.
  Alignment lines = Alignment::kLeft;  ///< How the lines of a text of several stand.
  double points = 0;                   ///< The size of the text, fitted or as the record says.
  Size box;                            ///< What the turned text covers.
  std::vector<Point> centers;          ///< The middle of each copy's box.
};

/// What the one who looks at the picture has to know.
struct Note {
  std::string watermark;  ///< The name of the one that it is about; empty for the whole page.
  std::string text;
  bool isOffPage = false;  ///< The watermark lies off the paper, or a part of it does.
};

struct Page {
  Paper paper;
  std::vector<Mark> marks;  ///< In the order of their drawing.
  std::vector<Note> notes;
};

/// What the text of the record covers upright, lines as they are, at a size of one point.
using Measure = std::function<Size(const peers::WatermarkRecord& record)>;

/// The page of an entry: the watermarks that its last setting lists, if that is switched on.
Page LayOut(const peers::EntryRecord& entry, const Paper& paper, const Measure& measure);

inline constexpr std::string_view kMeaning[] = {
    "This is a stand-in's reading of the records; the component that prints may differ.",
    "Drawn are the watermarks that the entry's last setting lists, if it is switched on.",
    "PrintPos 1 2 3 are the places at the top, 7 8 9 in the middle, 4 5 6 at the bottom.",
    "A text lies at its place's edges; an X offset moves it right, a Y offset down, in mm.",
    "Sizes are in points; a fitted text is as large as its ink has room, whatever its size.",
    "Rotation is anticlockwise, in degrees. Colours are red, green, blue; opacity is in percent.",
    "Copies along the first axis go across the page, along the second down the page, both ways.",
    "A space is what lies between two copies, in mm; below 0 they overlap.",
    "Letters come from this machine's fonts; the machine that prints may have others.",
    "The dotted line is 5 mm from the edge: most printers print nothing beyond it.",
};

enum class Format { kSvg, kPdf, kPng };

inline constexpr double kMillimetersPerPoint = 25.4 / 72;
inline constexpr double kCaptionPoints = 7;
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
