#include "app/text/guess.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace app {
namespace {

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
