#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <set>
#include <stdexcept>
#include <utility>

#include "app/page/page.h"

namespace app::page {
namespace {

constexpr std::size_t kMostText = 4000;  // bytes of one text
constexpr double kLeastStep = 1;         // from one copy to the next
constexpr double kTolerance = 0.05;

/// The limit that keeps a hostile file from being drawn for ever: so many bytes of text in all
/// copies, each of which counts for kCopy bytes more.
constexpr double kRoom = 200'000;
constexpr double kCopy = 100;

std::string Number(double number) {
  char text[32];
  std::snprintf(text, sizeof text, std::abs(number) < 1000 ? "%.4g" : "%.0f", number);
  return text;
}

/// The beginning of UTF-8 text, without a part of a character at its end.
std::string Cut(const std::string& text, std::size_t most) {
  if (text.size() <= most) return text;
  const auto isInside = [&](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
  while (most > 0 && isInside(most)) --most;
  return text.substr(0, most);
}

double Within(double number, double least, double most) {
  return std::isnan(number) ? least : std::clamp(number, least, most);
}

/// The record as it is drawn. The library keeps these ranges, a file that others wrote may not.
peers::WatermarkRecord WithinRanges(peers::WatermarkRecord record) {
  record.text = Cut(record.text, kMostText);
  record.fontName = Cut(record.fontName, 255);
  record.fontSize = Within(record.fontSize, 0.1, 200);
  record.opacity = std::clamp(record.opacity, 0, 100);
  record.rotate = (record.rotate % 360 + 360) % 360;
  if (record.printPos < 0 || record.printPos > 8) record.printPos = 0;
  record.xOffset = Within(record.xOffset, -1000, 1000);
  record.yOffset = Within(record.yOffset, -1000, 1000);
  record.repeatHSpace = std::clamp(record.repeatHSpace, -1000, 1000);
  record.repeatVSpace = std::clamp(record.repeatVSpace, -1000, 1000);
  return record;
}

/// What a turned box covers.
Size Turned(Size box, int degrees) {
  const double angle = degrees * std::numbers::pi / 180;
  const double cosine = std::abs(std::cos(angle)), sine = std::abs(std::sin(angle));
  return {box.width * cosine + box.height * sine, box.width * sine + box.height * cosine};
}

/// The middle of what lies at the first, second or third place of a length.
double MiddleAt(int place, double extent, double length) {
  return extent / 2 + place * (length - extent) / 2;
}

/// A text and its copies along one axis of the page.
struct Axis {
  const char* name;
  const char* sides[2];
  double extent;  ///< Of the text.
  double length;  ///< Of the page.
  double middle;  ///< Of the text in its own place.
  double step;    ///< From one copy to the next; 0 without copies.
  /// The numbers of the copies that touch the page; 0 is the text in its own place.
  int first = 0, last = 0;

  int Count() const { return last - first + 1; }
  /// Leaves out the first and the last in turn, so that those in the middle stay.
  void Shorten() { Count() % 2 == 0 ? ++first : --last; }
};

/// Lays out one watermark after the other and takes notes on the way.
class Setter {
 public:
  Setter(const Paper& paper, const Measure& measure) : m_measure(measure) { m_page.paper = paper; }

  void Add(const peers::WatermarkRecord& record) {
    if (m_room <= 0) {
      ++m_left;
      return;
    }
    Mark mark;
    mark.record = WithinRanges(record);
    m_name = mark.record.name;
    if (!IsSeen(record)) return;
    m_room -= CostOf(mark);
    const Size one = Turned(m_measure(mark.record), mark.record.rotate);
    if (!(one.width > 0 && one.height > 0)) return;
    const Size page = m_page.paper.size;
    mark.points = mark.record.fit ? std::min(page.width / one.width, page.height / one.height)
                                  : mark.record.fontSize;
    mark.box = {one.width * mark.points, one.height * mark.points};
    mark.lines = static_cast<Alignment>(mark.record.printPos % 3);
    PlaceCopies(mark);
    if (!mark.centers.empty()) m_page.marks.push_back(std::move(mark));
  }

  void Tell(std::string text, bool isOffPage = false) {
    m_page.notes.push_back({m_name, std::move(text), isOffPage});
  }

  Page Finish() {
    m_name.clear();
    if (m_left > 0) Tell(std::to_string(m_left) + " more have no room in the picture");
    return std::move(m_page);
  }

 private:
  /// Adds a note of a text, an opacity or an option that is not drawn as the record has it.
  bool IsSeen(const peers::WatermarkRecord& record) {
    if (record.text.empty()) Tell("has no text, so nothing of it is seen");
    if (record.opacity <= 0) Tell("has opacity 0, so nothing of it is seen");
    if (record.text.empty() || record.opacity <= 0) return false;
    if (record.text.size() > kMostText)
      Tell("has a text of " + std::to_string(record.text.size()) + " bytes; its first " +
           std::to_string(kMostText) + " are drawn");
    if (record.positionOption != 0)
      Tell("has position option " + std::to_string(record.positionOption) +
           ", which is drawn as 0");
    return true;
  }

  void PlaceCopies(Mark& mark) {
    const peers::WatermarkRecord& record = mark.record;
    const Size box = mark.box, page = m_page.paper.size;
    Axis x = {"first",
              {"left", "right"},
              box.width,
              page.width,
              MiddleAt(record.printPos % 3, box.width, page.width) + record.xOffset,
              box.width + record.repeatHSpace};
    Axis y = {"second",
              {"top", "bottom"},
              box.height,
              page.height,
              MiddleAt(record.printPos / 3, box.height, page.height) + record.yOffset,
              box.height + record.repeatVSpace};
    FindCopies(record.repeatFirstAxis, x);
    FindCopies(record.repeatSecondAxis, y);
    if (IsOffPage(x, y)) return;
    KeepToRoom(mark, x, y);
    for (int row = y.first; row <= y.last; ++row)
      for (int column = x.first; column <= x.last; ++column)
        mark.centers.push_back({x.middle + column * x.step, y.middle + row * y.step});
  }

  void FindCopies(bool isRepeated, Axis& axis) {
    if (isRepeated && axis.step >= kLeastStep) {
      axis.first = static_cast<int>(std::ceil((-axis.extent / 2 - axis.middle) / axis.step));
      axis.last =
          static_cast<int>(std::floor((axis.length + axis.extent / 2 - axis.middle) / axis.step));
      return;
    }
    axis.step = 0;
    if (isRepeated)
      Tell("is not repeated along the " + std::string(axis.name) +
           " axis: its space leaves no step from one copy to the next");
  }

  /// Notes how much of the text lies beyond the page along the axes without copies. Returns
  /// true when the whole text lies beyond it.
  bool IsOffPage(const Axis& x, const Axis& y) {
    bool isOff = false;
    std::string sides;
    for (const Axis& axis : {x, y}) {
      const double half = axis.extent / 2;
      const double beyond[] = {half - axis.middle, half + axis.middle - axis.length};
      for (const int side : {0, 1}) {
        if (axis.step > 0) continue;
        isOff = isOff || beyond[side] >= axis.extent;
        if (beyond[side] > kTolerance)
          sides += ", " + Number(beyond[side]) + " mm at the " + axis.sides[side];
      }
    }
    if (isOff)
      Tell("lies off the page, so nothing of it is seen", true);
    else if (!sides.empty())
      Tell("runs off the page" + sides, true);
    return isOff;
  }

  static double CostOf(const Mark& mark) {
    return static_cast<double>(mark.record.text.size()) + kCopy;
  }

  /// Leaves copies out at the edges. The first one is counted in m_room already.
  void KeepToRoom(const Mark& mark, Axis& columns, Axis& rows) {
    const auto count = [&] { return static_cast<double>(columns.Count()) * rows.Count(); };
    const double most = 1 + std::floor(std::max(0.0, m_room / CostOf(mark)));
    const double wanted = count();
    while (count() > most) (columns.Count() > rows.Count() ? columns : rows).Shorten();
    if (wanted > most)
      Tell("has " + Number(wanted) + " copies on the page; " + Number(count()) +
           " in the middle are drawn");
    m_room -= (count() - 1) * CostOf(mark);
  }

  const Measure& m_measure;
  Page m_page;
  double m_room = kRoom;
  std::string m_name;  // of the watermark at hand
  std::size_t m_left = 0;
};

}  // namespace

Paper FindPaper(std::string_view name, bool isLandscape) {
  static const Paper kPapers[] = {
      {"A3", {297, 420}}, {"A4", {210, 297}}, {"Letter", {215.9, 279.4}}};
  for (Paper paper : kPapers) {
    if (paper.name != name) continue;
    if (isLandscape) std::swap(paper.size.width, paper.size.height);
    return paper;
  }
  throw std::invalid_argument("no paper of this name");
}

Page LayOut(const peers::EntryRecord& entry, const Paper& paper, const Measure& measure) {
  Setter setter(paper, measure);
  const peers::ActiveRecord& setting = entry.lastSetting;
  const std::set<std::string_view> listed(setting.watermarks.begin(), setting.watermarks.end());
  std::size_t active = 0;
  for (const peers::WatermarkRecord& record : entry.watermarks) {
    if (!setting.enabled || !listed.contains(record.id)) continue;
    setter.Add(record);
    ++active;
  }
  Page page = setter.Finish();
  if (!setting.enabled)
    page.notes.push_back({"", "the watermarks of this entry are switched off: it prints none"});
  else if (const std::size_t left = entry.watermarks.size() - active; left > 0)
    page.notes.push_back({"", std::to_string(left) +
                                  (left == 1 ? " watermark is" : " watermarks are") +
                                  " not listed by the last setting"});
  return page;
}

}  // namespace app::page
