#include "app/text/wording.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "app/text/table.h"

namespace app {
namespace {

constexpr char kSpace[] = " \t\r\n";

bool SameLetter(char left, char right) {
  return std::tolower(static_cast<unsigned char>(left)) ==
         std::tolower(static_cast<unsigned char>(right));
}

/// How many letters have to be put in, taken out or changed to make one of the other.
std::size_t Distance(const std::string& left, const std::string& right) {
  std::vector<std::size_t> row(right.size() + 1);
  for (std::size_t i = 0; i < row.size(); ++i) row[i] = i;
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t before = row[0]++;
    for (std::size_t k = 0; k < right.size(); ++k) {
      const std::size_t changed = before + (SameLetter(left[i], right[k]) ? 0 : 1);
      before = row[k + 1];
      row[k + 1] = std::min({changed, row[k] + 1, row[k + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

bool IsBlank(const std::string& text) {
  return text.find_first_not_of(kSpace) == std::string::npos;
}

std::string Trimmed(const std::string& text) {
  if (IsBlank(text)) return "";
  const std::size_t first = text.find_first_not_of(kSpace);
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string Quoted(const std::string& text) {
  return "'" + OneLine(text, kTextWidth) + "'";
}

std::string NumberOrQuoted(const std::string& text) {
  return NumberOf(Trimmed(text)) ? Trimmed(text) : Quoted(text);
}

std::string Listed(const std::vector<std::string>& words, const std::string& last) {
  std::string list;
  for (const std::string& word : words)
    list += (list.empty() ? "" : &word == &words.back() ? last : ", ") + word;
  return list;
}

std::string OnLines(const std::vector<long>& lines) {
  constexpr std::size_t kMost = 8;
  if (lines.front() == lines.back())
    return std::to_string(lines.size()) + " times on line " + std::to_string(lines.front());
  std::string text = "on the lines ";
  for (std::size_t i = 0; i < lines.size() && i < kMost; ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
  return lines.size() > kMost ? text + ", ..." : text;
}

std::string Superseded(long first, long line) {
  return "nobody reads it: the one " +
         (first == line ? "before it" : "of line " + std::to_string(first)) + " counts";
}

std::string Hexadecimal(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  for (const unsigned char byte : bytes) {
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 15];
  }
  return digits;
}

std::string Counted(std::size_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string AndMore(std::size_t count, const std::string& one, const std::string& many) {
  return "and " + Counted(count, one, many) + " more";
}

std::string WithError(const std::string& what, unsigned long error) {
  return what + " (error " + std::to_string(error) + ")";
}

std::optional<double> NumberOf(const std::string& text) {
  const char* first = text.data();
  const char* const last = first + text.size();
  if (text.starts_with("0x") || text.starts_with("0X")) {
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(first + 2, last, number, 16);
    if (error != std::errc() || stop != last) return std::nullopt;
    return static_cast<double>(number);
  }
  if (text.starts_with('+') && !text.starts_with("+-")) ++first;
  double number = 0;
  const auto [stop, error] = std::from_chars(first, last, number);
  if (error != std::errc() || stop != last || !std::isfinite(number)) return std::nullopt;
  return number;
}

std::string Guess(const std::string& misspelt, const std::set<std::string>& names) {
  constexpr std::size_t kLongest = 64;  // nobody misspells a name that long
  if (misspelt.size() > kLongest) return "";
  std::string best;
  std::size_t least = std::max<std::size_t>(1, misspelt.size() / 3) + 1;
  for (const std::string& name : names)
    if (const std::size_t distance = Distance(misspelt, name); distance < least) {
      least = distance;
      best = name;
    }
  return best;
}

}  // namespace app
