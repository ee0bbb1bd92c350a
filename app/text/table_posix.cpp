#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <wchar.h>

#include "app/text/table.h"
#include "platform/owner.h"

namespace app {
namespace {

/// The thread's locale, which another has taken the place of.
using LocaleBefore = Owner<locale_t, uselocale>;

/// The C library's knowledge of all characters from now on, whatever the process's locale.
LocaleBefore UseUnicode() {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return LocaleBefore(uselocale(unicode));  // without it the current one stays
}

}  // namespace

std::size_t CharacterWidth(char32_t character) {
  const LocaleBefore before = UseUnicode();
  const int width = wcwidth(static_cast<wchar_t>(character));
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

std::size_t ConsoleColumns() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool IsTerminal(std::FILE* stream) {
  return isatty(fileno(stream)) != 0;
}

}  // namespace app
