#pragma once

// The calls of the Microsoft C run-time that the C++ library has no equal of. They follow its
// documentation on every input and take no notice of the process's locale.

#include "platform/base.h"

#ifdef _WIN32

#include <share.h>

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <cwctype>

namespace crt {

using ::iswspace;
using ::wcstol;

/// As the run-time's own, which came with Windows Vista.
inline errno_t _wfopen_s(std::FILE** file, const wchar_t* path, const wchar_t* mode) {
  *file = _wfsopen(path, mode, _SH_DENYWR);
  return *file == nullptr ? errno : 0;
}

}  // namespace crt

#else

#include <cstdio>

using errno_t = int;

/// Returns the number at the start of `text`: white space, a sign, decimal digits (also those of
/// other scripts) up to the first other character. 0 when there is none or `text` is null; INT_MAX
/// or INT_MIN for a number beyond the range.
int _wtoi(const wchar_t* text);

/// Returns the same for a real number with decimal point and exponent (e, E, d or D), correctly
/// rounded: 0.0 when there is none or `text` is null, +-HUGE_VAL beyond the range. Nothing else is
/// a number: no hexadecimal form, no infinity.
double _wtof(const wchar_t* text);

/// Opens a file for reading. `path` is a Windows path, `mode` "rb". 0, or an error of <cerrno>, and
/// then `*file` is null.
errno_t _wfopen_s(std::FILE** file, const wchar_t* path, const wchar_t* mode);

// In a namespace, because the C library has functions of these names. Here `long` has 32 bits, and
// white space is that of Unicode in every locale.
namespace crt {

using ::_wfopen_s;

/// `base` is 10, or 16, which takes a prefix 0x. `*end`, unless `end` is null, is set behind the
/// number, or to `text` when there is none. LONG_MAX or LONG_MIN (32 bits) and ERANGE beyond the
/// range.
LONG wcstol(const wchar_t* text, wchar_t** end, int base);

int iswspace(wchar_t character);

}  // namespace crt

#endif
