#include "app/text/table.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <utility>

#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

/// Blanks between two cells.
constexpr std::size_t kGap = 2;

/// What `limit` leaves of each of the widths, in sum.
std::size_t Total(const std::vector<std::size_t>& widths, std::size_t limit) {
  std::size_t total = 0;
  for (const std::size_t width : widths) total += std::min(width, limit);
  return total;
}

/// Returns the size in bytes of the first characters that fit into `width` places.
std::size_t BytesIn(std::string_view text, std::size_t width) {
  std::size_t end = 0;
  for (std::size_t next = 0; end < text.size(); end = next) {
    do ++next;
    while (next < text.size() && (text[next] & 0xC0) == 0x80);  // the rest of the character
    const std::size_t places = DisplayWidth(text.substr(end, next - end));
    if (places > width) break;
    width -= places;
  }
  return end;
}

/// Of Windows or of Linux.
bool IsPath(std::string_view cell) {
  return cell.starts_with('/') || cell.starts_with("\\\\") || cell.find(":\\") == 1;
}

/// Without its beginning, where it is too long: what tells one path from another stands last.
std::string EndOf(const std::string& path, std::size_t width) {
  const std::size_t whole = DisplayWidth(path);
  if (whole <= width) return path;
  std::size_t cut = BytesIn(path, whole - width + 1);
  if (DisplayWidth(path.substr(cut)) >= width) cut += BytesIn(path.substr(cut), 2);
  return "…" + path.substr(cut);
}

/// Narrows the widest columns to the greatest width with which the rows fit into `room`. False when
/// that would leave too little to be read.
bool Fit(std::vector<std::size_t>& widths, std::size_t room) {
  constexpr std::size_t kLeast = 12;
  std::size_t limit = *std::max_element(widths.begin(), widths.end());
  while (Total(widths, limit) > room)
    if (limit-- <= kLeast) return false;
  // One place more for the first ones, as far as there is room.
  std::size_t left = room - Total(widths, limit);
  for (std::size_t& width : widths) {
    if (width <= limit) continue;
    width = limit + (left > 0 ? 1 : 0);
    if (left > 0) --left;
  }
  return true;
}

void PrintLine(std::ostream& out, std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << "\n";
}

void PrintColumns(std::ostream& out, const std::vector<Row>& rows, std::string_view indent,
                  const std::vector<std::size_t>& widths) {
  for (const Row& row : rows) {
    std::vector<std::vector<std::string>> cells;
    std::size_t height = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      cells.push_back(IsPath(row[i]) ? std::vector{EndOf(OneLine(row[i]), widths[i])}
                                     : Wrapped(row[i], widths[i]));
      height = std::max(height, cells.back().size());
    }
    for (std::size_t part = 0; part < height; ++part) {
      std::string line(indent);
      for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string cell = part < cells[i].size() ? cells[i][part] : "";
        line += cell + std::string(widths[i] - DisplayWidth(cell) + kGap, ' ');
      }
      PrintLine(out, line);
    }
  }
}

/// Each row as the first cell and, below it, the others behind their headings, broken to lines.
void PrintRecords(std::ostream& out, const std::vector<Row>& rows, std::string_view indent,
                  std::size_t width) {
  const std::string margin = std::string(indent) + "  ";
  for (std::size_t row = 1; row < rows.size(); ++row) {
    if (!rows[row][0].empty()) PrintLine(out, std::string(indent) + OneLine(rows[row][0]));
    std::string line = margin;
    for (std::size_t i = 1; i < rows[row].size(); ++i) {
      if (rows[row][i].empty()) continue;
      const std::string item = OneLine(rows[0][i] + ": " + rows[row][i]);
      if (line != margin && DisplayWidth(line) + DisplayWidth(item) > width)
        PrintLine(out, std::exchange(line, margin));
      line += item + std::string(kGap, ' ');
    }
    if (line != margin) PrintLine(out, line);
  }
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  const std::wstring units = platform::FromUtf8(text);
  for (std::wstring_view rest = units; !rest.empty();)
    width += CharacterWidth(platform::TakeCodePoint(rest));
  return width;
}

std::string OneLine(std::string_view text, std::size_t width) {
  constexpr std::size_t kMostBytes = 16;  // of a place, so that a text of megabytes is cut first
  const bool isCut = text.size() / kMostBytes > width;
  if (isCut) text = text.substr(0, width * kMostBytes);
  while (isCut && !text.empty() && (text.back() & 0xC0) == 0x80) text.remove_suffix(1);
  if (isCut && !text.empty() && (text.back() & 0x80) != 0) text.remove_suffix(1);
  std::string visible = platform::Visible(text);
  if (!isCut && DisplayWidth(visible) <= width) return visible;
  visible.resize(BytesIn(visible, width - 1));
  return visible + "…";
}

std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
  const std::string visible = OneLine(text);
  if (DisplayWidth(visible) <= width) return {visible};
  std::vector<std::string> lines(1);
  std::size_t left = width;  // in the last line
  for (std::string_view rest = visible; !rest.empty();) {
    std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
    std::size_t places = DisplayWidth(word);
    if (!lines.back().empty() && 1 + places <= left) {
      lines.back() += ' ';
      --left;
    } else if (!lines.back().empty()) {
      lines.emplace_back();
      left = width;
    }
    for (; places > left; left = width) {
      const std::string_view part = word.substr(0, BytesIn(word, width));
      lines.back() = part;
      lines.emplace_back();
      word.remove_prefix(part.size());
      places -= DisplayWidth(part);
    }
    lines.back() += word;
    left -= places;
  }
  return lines;
}

std::string NamesInARow(const std::vector<std::string>& names, std::size_t most) {
  std::string row;
  for (std::size_t i = 0; i < std::min(names.size(), most); ++i)
    row += (i == 0 ? "" : ", ") + names[i];
  if (names.size() > most) row += " and " + std::to_string(names.size() - most) + " more";
  return row;
}

std::size_t TerminalWidth() {
  const char* const exported = std::getenv("COLUMNS");
  if (const int columns = exported == nullptr ? 0 : std::atoi(exported); columns > 0)
    return static_cast<std::size_t>(columns);
  const std::size_t columns = ConsoleColumns();
  return columns == 0 ? std::string_view::npos : columns;
}

void PrintTable(std::ostream& out, const std::vector<Row>& rows, std::string_view indent) {
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], DisplayWidth(OneLine(row[i])));
  }
  // One name of a megabyte must not make each row as long.
  constexpr std::size_t kWidest = 4096;
  const std::size_t width = std::min(TerminalWidth(), kWidest);
  const std::size_t taken = indent.size() + kGap * (widths.size() - 1);
  if (Fit(widths, width - std::min(width, taken)))
    PrintColumns(out, rows, indent, widths);
  else
    PrintRecords(out, rows, indent, width);
}

}  // namespace app
