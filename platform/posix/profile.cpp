#include "platform/profile.h"

#include <algorithm>
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
constexpr char kGetString[] = "GetPrivateProfileStringW";

std::filesystem::path FileOf(LPCWSTR name) {
  const std::wstring_view file = name == nullptr ? L"win.ini" : name;
  const bool hasFolder = file.find_first_of(L"\\/:") != file.npos;
  return HostPath(hasFolder ? std::wstring(file) : LR"(C:\Windows\)" + std::wstring(file));
}

/// What cannot be read is like a missing file, but for the last error.
std::optional<IniFile> Read(LPCWSTR name, const char* operation) {
  if (IsToFail(operation)) return std::nullopt;
  try {
    const auto bytes = ReadWholeFile(FileOf(name));
    SetLastError(bytes ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    if (bytes) return IniFile(*bytes, kAnsi);
  } catch (const std::system_error& error) {
    SetLastError(ErrorOf(error.code().value()));
  }
  return std::nullopt;
}

/// Null, and the last error, when it is missing.
std::optional<std::wstring> ReadValue(LPCWSTR name, std::wstring_view section,
                                      std::wstring_view key, const char* operation) {
  const auto file = Read(name, operation);
  if (!file) return std::nullopt;
  const IniFile::Section* found = file->Find(Trim(section));
  const IniFile::Line* line = found == nullptr ? nullptr : found->Find(Trim(key));
  if (line != nullptr && line->value) return line->value;
  SetLastError(ERROR_FILE_NOT_FOUND);
  return std::nullopt;
}

/// Each name with its NUL.
std::wstring NamesOfSections(const IniFile& file) {
  std::wstring names;
  for (const IniFile::Section& section : file.Sections()) names += section.name + L'\0';
  return names;
}

std::wstring NamesOfKeys(const IniFile::Section& section) {
  std::wstring names;
  for (const IniFile::Line& line : section.lines)
    if (line.isEntry) names += line.key + L'\0';
  return names;
}

/// Null, and the last error, when file or section are missing.
std::optional<std::wstring> ReadNames(LPCWSTR name, LPCWSTR section) {
  const auto file = Read(name, kGetString);
  if (!file) return std::nullopt;
  if (section == nullptr) return NamesOfSections(*file);
  if (const IniFile::Section* found = file->Find(Trim(section))) return NamesOfKeys(*found);
  SetLastError(ERROR_FILE_NOT_FOUND);
  return std::nullopt;
}

enum class Form { kValue, kList };

/// Copies what fits with its end, which two NULs make for a list that is cut or empty. The number
/// of units copied.
DWORD Copy(std::wstring_view from, Form form, LPWSTR text, DWORD capacity) {
  const bool fits = from.size() < capacity;
  if (!fits) SetLastError(ERROR_MORE_DATA);
  const bool needsTwo = form == Form::kList && (!fits || from.empty());
  const DWORD nuls = std::min<DWORD>(needsTwo ? 2 : 1, capacity);
  const std::size_t length = from.copy(text, capacity - nuls);
  std::fill_n(text + length, nuls, L'\0');
  return static_cast<DWORD>(length);
}

std::wstring_view WithoutTrailingBlanks(std::wstring_view text) {
  return text.substr(0, text.find_last_not_of(L' ') + 1);
}

/// The number at the beginning of `text` modulo 2^32.
UINT ToNumber(std::wstring_view text) {
  const bool isNegative = text.starts_with(L'-');
  if (isNegative || text.starts_with(L'+')) text.remove_prefix(1);
  UINT number = 0;
  for (const wchar_t unit : text) {
    if (unit < L'0' || unit > L'9') break;
    number = number * 10 + static_cast<UINT>(unit - L'0');
  }
  return isNegative ? 0 - number : number;
}

std::optional<std::string> Change(const std::optional<std::string>& before,
                                  std::wstring_view section, LPCWSTR key, LPCWSTR value) {
  if (!before && (key == nullptr || value == nullptr)) return std::nullopt;
  IniFile file(before.value_or(""), kAnsi);
  if (key == nullptr)
    file.DeleteSection(section);
  else if (value == nullptr)
    file.DeleteKey(section, Trim(key));
  else
    file.Set(section, Trim(key), value);
  return file.Bytes();
}

}  // namespace

}  // namespace platform

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int fallback, LPCWSTR file) {
  const auto missing = static_cast<UINT>(fallback);
  if (section == nullptr || key == nullptr) return missing;
  const auto value = platform::ReadValue(file, section, key, "GetPrivateProfileIntW");
  return value ? platform::ToNumber(*value) : missing;
}

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR fallback, LPWSTR text,
                               DWORD capacity, LPCWSTR file) {
  if (text == nullptr || capacity == 0) return 0;
  using platform::Form;
  if (section == nullptr || key == nullptr) {
    const auto names = platform::ReadNames(file, section);
    return platform::Copy(names.value_or(L""), Form::kList, text, capacity);
  }
  const auto value = platform::ReadValue(file, section, key, platform::kGetString);
  const std::wstring_view missing = fallback == nullptr ? L"" : fallback;
  return platform::Copy(value ? *value : platform::WithoutTrailingBlanks(missing), Form::kValue,
                        text, capacity);
}

BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file) {
  if (platform::IsToFail("WritePrivateProfileStringW")) return FALSE;
  if (section == nullptr) return platform::FailWith(ERROR_INVALID_PARAMETER);
  const std::filesystem::path path = platform::FileOf(file);
  try {
    platform::ChangeWholeFile(path, [=](const std::optional<std::string>& before) {
      return platform::Change(before, platform::Trim(section), key, value);
    });
    return TRUE;
  } catch (const std::system_error& error) {
    std::error_code ignored;
    const bool hasFolder = std::filesystem::is_directory(path.parent_path(), ignored);
    return platform::FailWith(hasFolder ? platform::ErrorOf(error.code().value())
                                        : ERROR_PATH_NOT_FOUND);
  }
}
