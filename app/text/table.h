#pragma once

// Tables for people. A column is as wide as its widest cell on a terminal, where a character of
// East Asia takes two places and a combining mark none.

#include <cstddef>
#include <cstdio>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace app {

/// The places that UTF-8 text takes on a terminal.
std::size_t DisplayWidth(std::string_view text);

/// The text in one line, its controls made visible (platform/visible_text.h); cut, with an
/// ellipsis, to `width` places.
std::string OneLine(std::string_view text, std::size_t width = std::string_view::npos);

/// The same, whole, in lines of at most `width` places, which must be 2 at least: broken between
/// words, and inside a word where it is longer than a line. One line at least.
std::vector<std::string> Wrapped(std::string_view text, std::size_t width);

/// "A, B and 7 more": the first `most` of the names.
std::string NamesInARow(const std::vector<std::string>& names, std::size_t most);

/// The places in a line of standard output: the environment variable COLUMNS, where it is exported,
/// else the terminal's. Without limit where there is no terminal.
std::size_t TerminalWidth();

using Row = std::vector<std::string>;

/// Prints the rows, of which the first holds the headings, two places apart, each line behind
/// `indent` and each cell as OneLine shows it. Where the terminal is too narrow, the widest columns
/// are wrapped, and a path in them loses its beginning; where too little would be left of them,
/// each row becomes a paragraph of its cells.
void PrintTable(std::ostream& out, const std::vector<Row>& rows, std::string_view indent = "  ");

// What a table asks of the home that it is printed in.

/// Returns the places that a character takes on a terminal: 0, 1 or 2.
std::size_t CharacterWidth(char32_t character);

/// Returns the places in a line of the terminal that standard output goes to; 0 where it goes
/// elsewhere.
std::size_t ConsoleColumns();

/// Returns whether a standard stream goes to a terminal.
bool IsTerminal(std::FILE* stream);

}  // namespace app
