#pragma once

// One line for the recorder, put together without a C or C++ library.

#include <windows.h>

#include <cstdint>

namespace foreign {

class Line {
 public:
  Line& operator<<(const wchar_t* text) {
    while (*text != L'\0') Add(*text++);
    return *this;
  }

  Line& operator<<(const char* text) {
    while (*text != '\0') Add(static_cast<wchar_t>(*text++));
    return *this;
  }

  Line& operator<<(unsigned number) {
    wchar_t digits[11];
    wchar_t* first = digits + 10;
    *first = L'\0';
    do *--first = static_cast<wchar_t>(L'0' + number % 10);
    while ((number /= 10) != 0);
    return *this << first;
  }

  Line& operator<<(int number) {
    if (number < 0) Add(L'-');
    return *this << (number < 0 ? 0U - static_cast<unsigned>(number)
                                : static_cast<unsigned>(number));
  }

  /// With as many decimals as it has, at most six, and at least one.
  Line& operator<<(double number) {
    if (number < 0) Add(L'-');
    if (number < 0) number = -number;
    const int whole = static_cast<int>(number);
    *this << whole << L".";
    number -= whole;
    int decimals = 0;
    do {
      number *= 10;
      const int digit = static_cast<int>(number);
      Add(static_cast<wchar_t>(L'0' + digit));
      number -= digit;
    } while (number != 0 && ++decimals < 6);
    return *this;
  }

  const wchar_t* Text() const { return m_text; }

 private:
  void Add(wchar_t unit) {
    if (m_length == sizeof m_text / sizeof *m_text - 1) return;
    m_text[m_length++] = unit;
    m_text[m_length] = L'\0';
  }

  wchar_t m_text[1024];
  unsigned m_length = 0;

 public:
  Line() { m_text[0] = L'\0'; }
};

}  // namespace foreign
