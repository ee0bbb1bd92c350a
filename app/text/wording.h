#pragma once

// Texts and numbers in words.

#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace app {

/// Where a text in a line is cut.
inline constexpr std::size_t kTextWidth = 40;

/// Nothing but what XML takes as white space.
bool IsBlank(const std::string& text);
/// Without the white space at its ends.
std::string Trimmed(const std::string& text);

/// 'text', in one line and not longer than some.
std::string Quoted(const std::string& text);
/// A number as it is written, anything else in quotes.
std::string NumberOrQuoted(const std::string& text);

/// "00ff": the bytes in hexadecimal digits.
std::string Hexadecimal(std::span<const unsigned char> bytes);

/// "1 entry", "2 entries".
std::string Counted(std::size_t count, const std::string& one, const std::string& many);

/// "and 1 finding more", "and 2 findings more".
std::string AndMore(std::size_t count, const std::string& one, const std::string& many);

/// "cannot be opened (error 5)": with the number of a Windows error, because its text is in the
/// ANSI code page there.
std::string WithError(const std::string& what, unsigned long error);

/// Returns the number that a person wrote: decimal, or hexadecimal behind 0x; nothing for any other
/// text.
std::optional<double> NumberOf(const std::string& text);

/// "A3, A4 or Letter", with " or " as the last mark.
std::string Listed(const std::vector<std::string>& words, const std::string& last);

/// "on the lines 3, 14", and no more than some of them, or "2 times on line 3".
std::string OnLines(const std::vector<long>& lines);

/// Of a property on `line`, when another that begins on the line `first` is read.
std::string Superseded(long first, long line);

/// The one of the names that a misspelt name is most like; empty when none is like enough.
std::string Guess(const std::string& misspelt, const std::set<std::string>& names);

}  // namespace app
