#include "app/rehearsal/placeholders.h"

#include <string_view>

namespace app {
namespace {

constexpr std::string_view kUser = "{WinUser}";

/// The "{...}" at `open`, or what looks like one that is not closed: the word.
std::string PlaceholderAt(const std::string& text, std::size_t open) {
  const std::size_t close = text.find_first_of("{}", open + 1);
  if (close != text.npos && text[close] == '}') return text.substr(open, close + 1 - open);
  return text.substr(open, text.find_first_of("{ \t\r\n", open + 1) - open);
}

}  // namespace

std::size_t CountUsers(const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(kUser); at != text.npos; at = text.find(kUser, at + kUser.size()))
    ++count;
  return count;
}

std::set<std::string> Unfilled(const std::string& written, const std::string& stored) {
  constexpr std::size_t kMost = 3;
  std::set<std::string> seen;
  std::set<std::string> unfilled;
  for (std::size_t open = written.find('{'); open != written.npos && unfilled.size() < kMost;
       open = written.find('{', open + 1)) {
    const std::string placeholder = PlaceholderAt(written, open);
    if (seen.insert(placeholder).second && stored.find(placeholder) != stored.npos)
      unfilled.insert(placeholder);
  }
  return unfilled;
}

std::optional<std::string> UserIn(const std::string& written, const std::string& stored) {
  const std::size_t first = written.find(kUser);
  if (first == written.npos) return std::nullopt;
  const std::size_t count = CountUsers(written);
  const std::size_t rest = written.size() - count * kUser.size();
  if (stored.size() < rest || first > stored.size()) return std::nullopt;
  std::string user = stored.substr(first, (stored.size() - rest) / count);
  std::string expected;
  std::size_t from = 0;
  for (std::size_t at = first; at != written.npos; at = written.find(kUser, from)) {
    expected.append(written, from, at - from).append(user);
    from = at + kUser.size();
  }
  if (expected.append(written, from) != stored) return std::nullopt;
  return user;
}

}  // namespace app
