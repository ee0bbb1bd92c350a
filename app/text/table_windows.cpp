#include <windows.h>

#include <algorithm>
#include <iterator>

#include "app/text/table.h"

namespace app {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Windows has no call for this. The ranges are the blocks of East Asia and of pictures, and the
// combining marks of scripts that a printer or policy is likely to be named in.
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0xA4CF},
                           {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                           {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                           {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
constexpr Range kMarks[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0x3099, 0x309A}, {0xFE00, 0xFE0F}};

template <std::size_t kCount>
bool IsIn(char32_t character, const Range (&ranges)[kCount]) {
  return std::ranges::any_of(ranges, [character](const Range& range) {
    return range.first <= character && character <= range.last;
  });
}

}  // namespace

std::size_t CharacterWidth(char32_t character) {
  if (IsIn(character, kMarks)) return 0;
  return IsIn(character, kWide) ? 2 : 1;
}

std::size_t ConsoleColumns() {
  CONSOLE_SCREEN_BUFFER_INFO console = {};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &console)) return 0;
  // A line that fills the whole width would be followed by an empty one.
  return static_cast<std::size_t>(console.srWindow.Right - console.srWindow.Left);
}

bool IsTerminal(std::FILE* stream) {
  CONSOLE_SCREEN_BUFFER_INFO console;
  return GetConsoleScreenBufferInfo(
      GetStdHandle(stream == stdout ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE), &console);
}

}  // namespace app
