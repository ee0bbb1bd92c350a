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

/// The copies along one axis that touch the page: those with the numbers from `first` to `last`,
/// each a step from the next; 0 is the text in its own place.
struct Copies {
  double step = 0;
  int first = 0;
  int last = 0;

  int Count() const { return last - first + 1; }
  /// Leaves out the first and the last in turn, so that those in the middle stay.
  void Shorten() { Count() % 2 == 0 ? ++first : --last; }
};

Copies CopiesAlong(double middle, double extent, double step, double length) {
  return {step, static_cast<int>(std::ceil((-extent / 2 - middle) / step)),
          static_cast<int>(std::floor((length + extent / 2 - middle) / step))};
}

/// What of a box lies beyond the two ends of a length, and whether that is all of it.
struct Beyond {
  double before = 0;
  double behind = 0;
  bool isWhole = false;
};

Beyond BeyondPage(double middle, double extent, double length) {
  const double before = extent / 2 - middle, behind = middle + extent / 2 - length;
  return {before, behind, before >= extent || behind >= extent};
}

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
  /// Tells also of what is not drawn as it stands in the record.
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
    const Size page = m_page.paper.size;
    const Point own = {
        MiddleAt(record.printPos % 3, mark.box.width, page.width) + record.xOffset,
        MiddleAt(record.printPos / 3, mark.box.height, page.height) + record.yOffset};
    const double across = mark.box.width + record.repeatHSpace;
    const double down = mark.box.height + record.repeatVSpace;
    const bool hasColumns = HasCopies(record.repeatFirstAxis, across, "first");
    const bool hasRows = HasCopies(record.repeatSecondAxis, down, "second");

    const Beyond x = hasColumns ? Beyond{} : BeyondPage(own.x, mark.box.width, page.width);
    const Beyond y = hasRows ? Beyond{} : BeyondPage(own.y, mark.box.height, page.height);
    TellBeyond(x, y);
    if (x.isWhole || y.isWhole) return;

    Copies columns, rows;
    if (hasColumns) columns = CopiesAlong(own.x, mark.box.width, across, page.width);
    if (hasRows) rows = CopiesAlong(own.y, mark.box.height, down, page.height);
    KeepToRoom(mark, columns, rows);
    for (int row = rows.first; row <= rows.last; ++row)
      for (int column = columns.first; column <= columns.last; ++column)
        mark.centers.push_back({own.x + column * columns.step, own.y + row * rows.step});
  }

  void TellBeyond(const Beyond& x, const Beyond& y) {
    if (x.isWhole || y.isWhole) {
      Tell("lies off the page, so nothing of it is seen", true);
      return;
    }
    std::string sides;
    const auto add = [&](double length, const char* side) {
      if (length > kTolerance) sides += ", " + Number(length) + " mm at the " + side;
    };
    add(x.before, "left");
    add(x.behind, "right");
    add(y.before, "top");
    add(y.behind, "bottom");
    if (!sides.empty()) Tell("runs off the page" + sides, true);
  }

  bool HasCopies(bool isRepeated, double step, const char* axis) {
    if (isRepeated && step < kLeastStep)
      Tell("is not repeated along the " + std::string(axis) +
           " axis: its space leaves no step from one copy to the next");
    return isRepeated && step >= kLeastStep;
  }

  static double CostOf(const Mark& mark) {
    return static_cast<double>(mark.record.text.size()) + kCopy;
  }

  /// Leaves copies out at the edges. One has its room already.
  void KeepToRoom(const Mark& mark, Copies& columns, Copies& rows) {
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
  else if (active < entry.watermarks.size())
    page.notes.push_back({"", std::to_string(entry.watermarks.size() - active) +
                                  " watermarks are not listed by the last setting"});
  return page;
}

}  // namespace app::page
