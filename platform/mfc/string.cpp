#include <algorithm>
#include <cwchar>

#include "platform/crt.h"
#include "platform/mfc.h"
#include "platform/mfc/home.h"

void AfxThrowInvalidArgException() {
  throw CInvalidArgException();
}

wchar_t CString::operator[](int index) const {
  if (index < 0 || index > GetLength()) AfxThrowInvalidArgException();
  return m_text[static_cast<std::size_t>(index)];
}

LPWSTR CString::GetBuffer(int length) {
  if (length < 0) AfxThrowInvalidArgException();
  m_text.resize(std::max(m_text.size(), static_cast<std::size_t>(length)));
  return m_text.data();
}

void CString::ReleaseBuffer(int length) {
  if (length < 0 || length > GetLength()) AfxThrowInvalidArgException();
  m_text.resize(static_cast<std::size_t>(length));
}

CString& CString::operator+=(const CString& other) {
  m_text += other.m_text;
  return *this;
}

CString& CString::operator+=(wchar_t other) {
  m_text += other;
  return *this;
}

int CString::Compare(LPCWSTR other) const {
  if (other == nullptr) AfxThrowInvalidArgException();
  return std::wcscmp(m_text.c_str(), other);
}

int CString::CompareNoCase(LPCWSTR other) const {
  const int result = Compare(other);
  return result != 0 && platform::IsSameText(m_text.c_str(), other) ? 0 : result;
}

CString CString::Mid(int first) const {
  if (first < 0 || first > GetLength()) AfxThrowInvalidArgException();
  return CString(std::wstring_view(m_text).substr(static_cast<std::size_t>(first)));
}

int CString::Replace(LPCWSTR from, LPCWSTR to) {
  const std::wstring_view old(from == nullptr ? L"" : from);
  if (old.empty()) return 0;
  std::wstring result;
  int count = 0;
  std::size_t at = 0;
  for (std::size_t found; (found = m_text.find(old, at)) != std::wstring::npos; ++count) {
    result.append(m_text, at, found - at).append(to == nullptr ? L"" : to);
    at = found + old.size();
  }
  if (count > 0) m_text = result.append(m_text, at);
  return count;
}

CString& CString::Trim() {
  const auto isText = [](wchar_t unit) { return !crt::iswspace(static_cast<std::wint_t>(unit)); };
  m_text.erase(std::find_if(m_text.rbegin(), m_text.rend(), isText).base(), m_text.end());
  m_text.erase(m_text.begin(), std::find_if(m_text.begin(), m_text.end(), isText));
  return *this;
}

namespace {

/// One conversion of a format, without its percent sign.
struct Conversion {
  bool hasZeros = false;
  std::size_t width = 0;
  wchar_t type = 0;  ///< 0 when the text ends first.
};

/// Reads the conversion behind a percent sign; `at` ends behind it.
Conversion TakeConversion(LPCWSTR& at) {
  constexpr std::size_t kMostWidth = 0xFFFF;
  Conversion conversion;
  conversion.hasZeros = *at == L'0';
  for (; *at >= L'0' && *at <= L'9'; ++at)
    conversion.width =
        std::min(conversion.width * 10 + static_cast<std::size_t>(*at - L'0'), kMostWidth);
  conversion.type = *at;
  if (*at != L'\0') ++at;
  return conversion;
}

std::wstring Digits(std::uint32_t number, unsigned base) {
  std::wstring text;
  do {
    text.insert(text.begin(), L"0123456789ABCDEF"[number % base]);
    number /= base;
  } while (number != 0);
  return text;
}

std::wstring Pad(const Conversion& conversion, const std::wstring& sign, const std::wstring& body) {
  const std::size_t size = sign.size() + body.size();
  const std::size_t fill = conversion.width > size ? conversion.width - size : 0;
  if (conversion.hasZeros) return sign + std::wstring(fill, L'0') + body;
  return std::wstring(fill, L' ') + sign + body;
}

std::wstring FormatOne(const Conversion& conversion, const FormatArgument& argument) {
  if (argument.IsText())
    return Pad(conversion, L"", argument.Text() == nullptr ? L"(null)" : argument.Text());
  const std::uint32_t number = argument.Number();
  if (conversion.type == L'X') return Pad(conversion, L"", Digits(number, 16));
  const bool isNegative = static_cast<std::int32_t>(number) < 0;
  return Pad(conversion, isNegative ? L"-" : L"", Digits(isNegative ? 0U - number : number, 10));
}

}  // namespace

void CString::FormatList(LPCWSTR format, std::initializer_list<FormatArgument> arguments) {
  std::wstring result;
  const auto* argument = arguments.begin();
  while (*format != L'\0') {
    const wchar_t* const start = format;
    while (*format != L'\0' && *format != L'%') ++format;
    result.append(start, format);
    if (*format == L'\0') break;
    const wchar_t* const percent = format++;
    const Conversion conversion = TakeConversion(format);
    const bool isText = conversion.type == L's';
    const bool isKnown = isText || conversion.type == L'd' || conversion.type == L'X';
    if (!isKnown || argument == arguments.end() || argument->IsText() != isText)
      result.append(percent, format);
    else
      result += FormatOne(conversion, *argument);
    if (isKnown && argument != arguments.end()) ++argument;
  }
  m_text = std::move(result);  // only now: an argument may be this text
}
