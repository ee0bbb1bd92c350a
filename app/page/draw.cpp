#include "app/page/draw.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include <numbers>
#include <stdexcept>

#include "app/page/set_text.h"
#include "platform/owner.h"

namespace app::page {
namespace {

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

std::string Draw(const Page& page, const std::vector<std::string>& caption, Format format) {
  const Size paper = page.paper.size;
  const SetCaption words(caption, paper.width);
  const Size size = {paper.width + 2 * kBorder, paper.height + 2 * kBorder + words.Height()};

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
      DrawCaption(drawing.Get(), words);
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
