#include "platform/profile.h"

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/ini_file.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"

namespace platform {

namespace {

constexpr auto kAnsi = IniFile::Encoding::kAnsi;

/// Returns an empty file for one that cannot be read, and sets the last error.
std::optional<IniFile> Read(LPCWSTR name) {
  try {
    const auto bytes = ReadWholeFile(HostPath(name));
    SetLastError(bytes ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    if (bytes) return IniFile(*bytes, kAnsi);
  } catch (const std::system_error& error) {
    SetLastError(ErrorOf(error.code().value()));
  }
  return std::nullopt;
}

/// Null, and the last error, when it is missing.
std::optional<std::wstring> ReadValue(LPCWSTR name, std::wstring_view section,
                                      std::wstring_view key) {
  const auto file = Read(name);
  if (!file) return std::nullopt;
  const IniFile::Section* found = file->Find(Trim(section));
  const IniFile::Line* line = found == nullptr ? nullptr : found->Find(Trim(key));
  if (line != nullptr && line->value) return line->value;
  SetLastError(ERROR_FILE_NOT_FOUND);
  return std::nullopt;
}

std::wstring_view WithoutTrailingBlanks(std::wstring_view text) {
  return text.substr(0, text.find_last_not_of(L' ') + 1);
}

/// The number of the digit in any base; 36 for another character.
UINT DigitOf(wchar_t unit) {
  if (unit >= L'0' && unit <= L'9') return static_cast<UINT>(unit - L'0');
  if (unit >= L'a' && unit <= L'z') return static_cast<UINT>(unit - L'a') + 10;
  if (unit >= L'A' && unit <= L'Z') return static_cast<UINT>(unit - L'A') + 10;
  return 36;
}

/// Takes the sign of a base off `text`, as in 0x1F.
UINT TakeBase(std::wstring_view& text) {
  for (const auto& [sign, base] : {std::pair(L"0x", 16U), {L"0o", 8U}, {L"0b", 2U}})
    if (text.starts_with(sign)) {
      text.remove_prefix(2);
      return base;
    }
  return 10;
}

/// The number at the beginning of `text` modulo 2^32.
UINT ToNumber(std::wstring_view text) {
  const bool isNegative = text.starts_with(L'-');
  if (isNegative || text.starts_with(L'+')) text.remove_prefix(1);
  const UINT base = TakeBase(text);
  UINT number = 0;
  for (const wchar_t unit : text) {
    if (DigitOf(unit) >= base) break;
    number = number * base + DigitOf(unit);
  }
  return isNegative ? 0 - number : number;
}

}  // namespace

}  // namespace platform

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int fallback, LPCWSTR file) {
  const auto value = platform::ReadValue(file, section, key);
  return value && !value->empty() ? platform::ToNumber(*value) : static_cast<UINT>(fallback);
}

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR fallback, LPWSTR text,
                               DWORD capacity, LPCWSTR file) {
  if (capacity == 0) return 0;
  const bool isToFail = platform::IsToFail("GetPrivateProfileStringW");
  const auto value = isToFail ? std::nullopt : platform::ReadValue(file, section, key);
  const std::wstring_view found = value ? *value : platform::WithoutTrailingBlanks(fallback);
  if (found.size() >= capacity) SetLastError(ERROR_MORE_DATA);
  const std::size_t length = found.copy(text, capacity - 1);
  text[length] = L'\0';
  return static_cast<DWORD>(length);
}

BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file) {
  if (platform::IsToFail("WritePrivateProfileStringW")) return FALSE;
  try {
    platform::ChangeWholeFile(platform::HostPath(file),
                              [=](const std::optional<std::string>& before) {
                                platform::IniFile changed(before.value_or(""), platform::kAnsi);
                                changed.Set(platform::Trim(section), platform::Trim(key), value);
                                return changed.Bytes();
                              });
    return TRUE;
  } catch (const std::system_error& error) {
    // Only the folder can be missing.
    const DWORD number = platform::ErrorOf(error.code().value());
    return platform::FailWith(number == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : number);
  }
}
