#include "platform/mfc.h"

#include <algorithm>
#include <cerrno>
#include <cwctype>
#include <filesystem>
#include <tuple>
#include <utility>

#include "platform/codepage.h"
#include "platform/crt.h"
#include "platform/faults.h"

#ifndef _WIN32
#include "platform/posix/ansi.h"
#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"
#endif

namespace {

#ifdef _WIN32
std::filesystem::path NativePath(LPCWSTR path) {
  return path;
}
std::FILE* OpenToRead(const std::filesystem::path& path) {
  return _wfopen(path.c_str(), L"rb");
}
std::wstring FromAnsi(const std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'\0');  // no character has more units than bytes
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), size);
  text.resize(static_cast<std::size_t>(length));
  return text;
}
#else
std::filesystem::path NativePath(LPCWSTR path) {
  return platform::HostPath(path);
}
std::FILE* OpenToRead(const std::filesystem::path& path) {
  return platform::OpenToRead(path.c_str());
}
using platform::FromAnsi;
#endif

using platform::TakeFault;

constexpr LONG kNoOsError = -1;

/// A number of units of a text that has `length` of them.
std::size_t Clamp(int count, std::size_t length) {
  return count < 0 ? 0 : std::min(static_cast<std::size_t>(count), length);
}

}  // namespace

void AfxThrowInvalidArgException() {
  throw CInvalidArgException();
}

void AfxThrowFileException(int cause, LONG osError, LPCWSTR fileName) {
  throw CFileException(cause, osError, fileName);
}

// CString

CString::CString(LPCWSTR text, int length) {
  if (length < 0 || (text == nullptr && length > 0)) AfxThrowInvalidArgException();
  if (length > 0) m_text.assign(text, static_cast<std::size_t>(length));
}

wchar_t CString::GetAt(int index) const {
  if (index < 0 || index > GetLength()) AfxThrowInvalidArgException();
  return m_text[static_cast<std::size_t>(index)];
}

LPWSTR CString::GetBuffer(int length) {
  if (length < 0) AfxThrowInvalidArgException();
  m_text.resize(std::max(m_text.size(), static_cast<std::size_t>(length)));
  return m_text.data();
}

void CString::ReleaseBuffer(int length) {
  if (length > GetLength()) AfxThrowInvalidArgException();
  m_text.resize(length < 0 ? std::wcslen(m_text.c_str()) : static_cast<std::size_t>(length));
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
  if (other == nullptr) AfxThrowInvalidArgException();
  const wchar_t* own = m_text.c_str();
  for (;; ++own, ++other) {
    const std::wint_t left = std::towlower(static_cast<std::wint_t>(*own));
    const std::wint_t right = std::towlower(static_cast<std::wint_t>(*other));
    if (left != right) return left < right ? -1 : 1;
    if (left == 0) return 0;
  }
}

CString CString::Mid(int first) const {
  return CString(std::wstring_view(m_text).substr(Clamp(first, m_text.size())));
}

CString CString::Mid(int first, int count) const {
  const std::size_t start = Clamp(first, m_text.size());
  return CString(std::wstring_view(m_text).substr(start, Clamp(count, m_text.size() - start)));
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

// CString::Format

namespace {

/// One conversion of a format, without its percent sign.
struct Conversion {
  bool left = false;
  bool zeros = false;
  bool prefix = false;
  wchar_t plus = 0;  ///< What stands before a number that is not negative.
  std::size_t width = 0;
  std::size_t precision = std::wstring::npos;
  wchar_t type = 0;
};

/// The flag was one.
bool TakeFlag(wchar_t flag, Conversion& conversion) {
  switch (flag) {
    case L'-':
      return conversion.left = true;
    case L'0':
      return conversion.zeros = true;
    case L'#':
      return conversion.prefix = true;
    case L'+':
      conversion.plus = L'+';
      return true;
    case L' ':
      if (conversion.plus == 0) conversion.plus = L' ';
      return true;
    default:
      return false;
  }
}

/// Wider than any field that means something; what a hostile width may cost.
constexpr std::size_t kMostWidth = 0xFFFF;

std::size_t TakeNumber(const wchar_t*& at) {
  std::size_t number = 0;
  for (; *at >= L'0' && *at <= L'9'; ++at)
    number = std::min(number * 10 + static_cast<std::size_t>(*at - L'0'), kMostWidth);
  return number;
}

/// Reads what follows a percent sign, `at` ends behind it. The type is 0 when the text ends first.
Conversion TakeConversion(const wchar_t*& at) {
  Conversion conversion;
  while (TakeFlag(*at, conversion)) ++at;
  conversion.width = TakeNumber(at);
  if (*at == L'.') conversion.precision = TakeNumber(++at);
  if (*at == L'l') ++at;
  conversion.type = *at;
  if (*at != L'\0') ++at;
  return conversion;
}

std::wstring Digits(std::uint32_t number, unsigned base, bool upper) {
  const wchar_t* const digits = upper ? L"0123456789ABCDEF" : L"0123456789abcdef";
  std::wstring text;
  for (; number != 0; number /= base) text.insert(text.begin(), digits[number % base]);
  return text;
}

std::wstring Pad(const Conversion& conversion, const std::wstring& sign, const std::wstring& body,
                 bool zeros) {
  const std::size_t size = sign.size() + body.size();
  const std::size_t fill = conversion.width > size ? conversion.width - size : 0;
  if (conversion.left) return sign + body + std::wstring(fill, L' ');
  if (zeros) return sign + std::wstring(fill, L'0') + body;
  return std::wstring(fill, L' ') + sign + body;
}

std::wstring FormatNumber(const Conversion& conversion, std::uint32_t number) {
  std::wstring sign;
  const bool hex = conversion.type == L'x' || conversion.type == L'X';
  if (conversion.type == L'd' || conversion.type == L'i') {
    const bool negative = static_cast<std::int32_t>(number) < 0;
    if (negative) number = 0U - number;
    if (negative)
      sign = L"-";
    else if (conversion.plus != 0)
      sign = conversion.plus;
  } else if (hex && conversion.prefix && number != 0) {
    sign = {L'0', conversion.type};
  }
  const bool hasPrecision = conversion.precision != std::wstring::npos;
  std::wstring digits = Digits(number, hex ? 16 : 10, conversion.type == L'X');
  const std::size_t least = hasPrecision ? conversion.precision : 1;
  if (digits.size() < least) digits.insert(0, least - digits.size(), L'0');
  return Pad(conversion, sign, digits, conversion.zeros && !hasPrecision);
}

std::wstring FormatText(const Conversion& conversion, LPCWSTR text) {
  const std::wstring_view whole(text == nullptr ? L"(null)" : text);
  return Pad(conversion, L"", std::wstring(whole.substr(0, conversion.precision)),
             conversion.zeros);
}

enum class Kind { kNone, kNumber, kCharacter, kText };

Kind KindOf(wchar_t type) {
  switch (type) {
    case L'd':
    case L'i':
    case L'u':
    case L'x':
    case L'X':
      return Kind::kNumber;
    case L'c':
      return Kind::kCharacter;
    case L's':
      return Kind::kText;
    default:
      return Kind::kNone;
  }
}

std::wstring FormatOne(const Conversion& conversion, const FormatArgument& argument) {
  switch (KindOf(conversion.type)) {
    case Kind::kText:
      return FormatText(conversion, argument.Text());
    case Kind::kCharacter:
      return Pad(conversion, L"", {static_cast<wchar_t>(argument.Number() & 0xFFFF)},
                 conversion.zeros);
    default:
      return FormatNumber(conversion, argument.Number());
  }
}

}  // namespace

void CString::FormatList(LPCWSTR format, std::initializer_list<FormatArgument> arguments) {
  if (format == nullptr) AfxThrowInvalidArgException();
  std::wstring result;
  const auto* argument = arguments.begin();
  while (*format != L'\0') {
    const wchar_t* const start = format;
    if (*format++ != L'%') {
      result += *start;
      continue;
    }
    const Conversion conversion = TakeConversion(format);
    const Kind kind = KindOf(conversion.type);
    if (conversion.type == L'%') {
      result += L'%';
    } else if (kind == Kind::kNone || argument == arguments.end()) {
      result.append(start, format);
    } else if (argument->IsText() != (kind == Kind::kText)) {
      result.append(start, format);
      ++argument;
    } else {
      result += FormatOne(conversion, *argument++);
    }
  }
  m_text = std::move(result);  // only now: an argument may be this text
}

// CFile

BOOL CFile::GetStatus(LPCWSTR path, CFileStatus& status) {
  if (TakeFault("CFile::GetStatus") || path == nullptr || *path == L'\0') return FALSE;
  std::error_code error;
  const std::filesystem::path file = NativePath(path);
  const auto type = std::filesystem::status(file, error).type();
  if (error || type == std::filesystem::file_type::not_found) return FALSE;
  const bool hasSize = type == std::filesystem::file_type::regular;
  status.m_size = hasSize ? std::filesystem::file_size(file, error) : 0;
  return !error;
}

BOOL CFile::Open(LPCWSTR path, UINT flags, CFileException* error) {
  return OpenAs("CFile::Open", path, flags, error);
}

namespace {

/// The cause and the system's error for a number of <cerrno>.
std::pair<int, LONG> CauseOf(int number) {
  switch (number) {
    case ENOENT:
      return {CFileException::fileNotFound, ERROR_FILE_NOT_FOUND};
    case ENOTDIR:
      return {CFileException::badPath, ERROR_PATH_NOT_FOUND};
    case EACCES:
    case EPERM:
      return {CFileException::accessDenied, ERROR_ACCESS_DENIED};
    default:
      return {CFileException::genericException, kNoOsError};
  }
}

}  // namespace

BOOL CFile::OpenAs(const char* operation, LPCWSTR path, UINT flags, CFileException* error) {
  constexpr UINT kKnown = shareDenyNone | typeText | typeBinary;
  m_stream.reset();
  m_path = path;
  int cause = CFileException::none;
  LONG osError = kNoOsError;
  if (const auto fault = TakeFault(operation)) {
    cause = CFileException::genericException;
    osError = static_cast<LONG>(*fault);
  } else if ((flags & ~kKnown) != 0) {
    cause = CFileException::accessDenied;
  } else if (m_path.IsEmpty()) {
    cause = CFileException::badPath;
  } else if (m_stream.reset(OpenToRead(NativePath(path))); m_stream == nullptr) {
    std::tie(cause, osError) = CauseOf(errno);
  }
  if (error != nullptr && cause != CFileException::none)
    *error = CFileException(cause, osError, path);
  return cause == CFileException::none;
}

void CFile::ThrowReadError(LONG osError) const {
  AfxThrowFileException(CFileException::genericException, osError, m_path);
}

UINT CFile::Read(void* buffer, UINT count) {
  if (const auto fault = TakeFault("CFile::Read")) ThrowReadError(static_cast<LONG>(*fault));
  if (m_stream == nullptr) ThrowReadError(kNoOsError);
  const std::size_t read = std::fread(buffer, 1, count, m_stream.get());
  if (std::ferror(m_stream.get()) != 0) ThrowReadError(kNoOsError);
  return static_cast<UINT>(read);
}

ULONGLONG CFile::GetLength() const {
  if (m_stream == nullptr) ThrowReadError(kNoOsError);
  const long position = std::ftell(m_stream.get());
  std::fseek(m_stream.get(), 0, SEEK_END);
  const long length = std::ftell(m_stream.get());
  if (length < 0 || std::fseek(m_stream.get(), position, SEEK_SET) != 0) ThrowReadError(kNoOsError);
  return static_cast<ULONGLONG>(length);
}

void CFile::Close() {
  m_stream.reset();
}

// CStdioFile

BOOL CStdioFile::Open(LPCWSTR path, UINT flags, CFileException* error) {
  m_isText = (flags & typeText) != 0;
  m_ended = false;
  m_line.clear();
  m_handedOut = 0;
  return OpenAs("CStdioFile::Open", path, flags, error);
}

void CStdioFile::Close() {
  m_line.clear();
  m_handedOut = 0;
  CFile::Close();
}

int CStdioFile::NextByte() {
  if (m_ended) return EOF;
  int byte = std::getc(Stream());
  if (byte == '\r' && m_isText) {
    const int next = std::getc(Stream());
    if (next == '\n') return next;
    if (next != EOF) std::ungetc(next, Stream());
  }
  constexpr int kCtrlZ = 0x1A;
  m_ended = byte == kCtrlZ && m_isText;
  return m_ended ? EOF : byte;
}

void CStdioFile::ReadLine() {
  std::string bytes;
  int byte;
  while ((byte = NextByte()) != EOF && byte != '\n') bytes.push_back(static_cast<char>(byte));
  if (std::ferror(Stream()) != 0) ThrowReadError(kNoOsError);
  m_line = FromAnsi(bytes);
  if (byte == '\n') m_line += L'\n';
  m_handedOut = 0;
}

// The framework reads into a buffer of this many units and looks for the terminator in it.
constexpr std::size_t kStretch = 128;

std::wstring_view CStdioFile::TakeStretch() {
  if (m_handedOut == m_line.size()) ReadLine();
  const std::wstring_view stretch = std::wstring_view(m_line).substr(m_handedOut, kStretch);
  m_handedOut += stretch.size();
  return stretch.substr(0, stretch.find(L'\0'));
}

BOOL CStdioFile::ReadString(CString& line) {
  line.Empty();
  if (const auto fault = TakeFault("CStdioFile::ReadString"))
    ThrowReadError(static_cast<LONG>(*fault));
  if (Stream() == nullptr) ThrowReadError(kNoOsError);
  std::wstring text;
  for (;;) {
    const std::wstring_view stretch = TakeStretch();
    text += stretch;
    if (stretch.size() < kStretch || stretch.ends_with(L'\n')) break;
  }
  const bool isLine = !text.empty();
  if (text.ends_with(L'\n')) text.pop_back();
  line = CString(text);
  return isLine;
}

// Extension modules

namespace {

// No destructor: the record of the library is closed after static objects are gone.
constinit CDynLinkLibrary* g_firstLibrary = nullptr;

}  // namespace

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module) {
  if (TakeFault("AfxInitExtensionModule")) return FALSE;
  if (state.bInitialized) return TRUE;
  state.bInitialized = TRUE;
  state.hModule = module;
  state.hResource = module;
  return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all) {
  for (CDynLinkLibrary* each = g_firstLibrary; each != nullptr;) {
    CDynLinkLibrary* const next = each->m_next;
    if (all || &each->m_module == &state) delete each;
    each = next;
  }
  state = {};
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL)
    : m_module(state), m_next(g_firstLibrary) {
  g_firstLibrary = this;
}

CDynLinkLibrary::~CDynLinkLibrary() {
  CDynLinkLibrary** link = &g_firstLibrary;
  while (*link != this) link = &(*link)->m_next;
  *link = m_next;
}

void* CDynLinkLibrary::operator new(std::size_t size) noexcept {
  return TakeFault("CDynLinkLibrary") ? nullptr : ::operator new(size, std::nothrow);
}

void CDynLinkLibrary::operator delete(void* block) noexcept {
  ::operator delete(block);
}
