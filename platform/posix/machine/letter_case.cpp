#include "platform/posix/machine/letter_case.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>

#include "platform/owner.h"

namespace platform {

namespace {

wchar_t Upper(wchar_t unit) {
  if (unit >= L'a' && unit <= L'z') return static_cast<wchar_t>(unit - L'a' + L'A');
  if (unit < 0x80) return unit;
  static const Owner<locale_t, freelocale> unicode(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr));
  if (!unicode) return unit;
  const auto upper = static_cast<wchar_t>(towupper_l(static_cast<wint_t>(unit), unicode.Get()));
  return upper < 0x80 ? unit : upper;  // Windows never folds a letter into ASCII
}

}  // namespace

bool SameName(std::wstring_view left, std::wstring_view right) {
  return left.size() == right.size() && StartsWithName(left, right);
}

bool StartsWithName(std::wstring_view text, std::wstring_view start) {
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(),
                    [](wchar_t one, wchar_t other) { return Upper(one) == Upper(other); });
}

std::wstring Folded(std::wstring_view name) {
  std::wstring folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), Upper);
  return folded;
}

}  // namespace platform
