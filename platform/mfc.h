#pragma once

// The types and functions of MFC that the system uses, with MFC's names and behaviour, written on
// the C++ library for both homes. Exceptions are thrown by value, so that a catch-all handler
// leaves nothing behind.

#include <concepts>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base.h"
#include "platform/owner.h"

class CException {
 public:
  virtual ~CException() = default;
};

/// An index outside of a string or an array.
class CInvalidArgException : public CException {};

[[noreturn]] void AfxThrowInvalidArgException();

/// One value for CString::Format.
class FormatArgument {
 public:
  template <std::integral Number>
  FormatArgument(Number number) : m_number(static_cast<std::uint32_t>(number)) {}
  FormatArgument(LPCWSTR text) : m_isText(true), m_text(text) {}

  bool IsText() const { return m_isText; }
  std::uint32_t Number() const { return m_number; }
  LPCWSTR Text() const { return m_text; }

 private:
  bool m_isText = false;
  std::uint32_t m_number = 0;
  LPCWSTR m_text = nullptr;
};

/// A wide string. Lengths and positions count UTF-16 units; a null pointer makes an empty text, but
/// compares with none (CInvalidArgException). [] takes the positions of the text and of its
/// terminator and raises CInvalidArgException for others.
class CString {
 public:
  CString() = default;
  CString(LPCWSTR text) : m_text(text == nullptr ? L"" : text) {}
  explicit CString(std::wstring_view text) : m_text(text) {}

  operator LPCWSTR() const { return m_text.c_str(); }
  LPCWSTR GetString() const { return m_text.c_str(); }
  int GetLength() const { return static_cast<int>(m_text.size()); }
  bool IsEmpty() const { return m_text.empty(); }
  void Empty() { m_text.clear(); }
  wchar_t operator[](int index) const;

  /// Room to write at least `length` units and a terminator, until the next other operation but
  /// ReleaseBuffer, which sets the length that counts.
  LPWSTR GetBuffer(int length);
  void ReleaseBuffer(int length);

  CString& operator+=(const CString& other);
  CString& operator+=(LPCWSTR other) { return *this += CString(other); }
  CString& operator+=(wchar_t other);

  /// Negative, 0 or positive, by the numbers of the units up to the first NUL.
  int Compare(LPCWSTR other) const;
  /// Returns 0 when the two differ at most in the case of their letters, in every locale.
  int CompareNoCase(LPCWSTR other) const;

  /// Returns the text from `first` on, which is from 0 to the length.
  CString Mid(int first) const;
  /// The number of places where `from` stood. An empty `from` stands nowhere.
  int Replace(LPCWSTR from, LPCWSTR to);
  /// Takes white space off both ends.
  CString& Trim();

  /// As wprintf of the Microsoft C run-time with the conversions %d, %X (32 bits) and %s (wide
  /// text), a width as a number and a 0 before it. A conversion that is another one, or finds no
  /// argument or one of the wrong kind, stands in the text as it is written.
  template <typename... Arguments>
  void Format(LPCWSTR format, const Arguments&... arguments) {
    FormatList(format, {FormatArgument(arguments)...});
  }

 private:
  void FormatList(LPCWSTR format, std::initializer_list<FormatArgument> arguments);

  std::wstring m_text;
};

inline CString operator+(CString left, const CString& right) {
  return left += right;
}
inline CString operator+(CString left, LPCWSTR right) {
  return left += right;
}
inline bool operator==(const CString& left, const CString& right) {
  return left.Compare(right) == 0;
}
inline bool operator==(const CString& left, LPCWSTR right) {
  return left.Compare(right) == 0;
}

/// A growing array, zero-filled for numbers. A bad index or size raises CInvalidArgException.
template <typename Type, typename Argument = const Type&>
class CArray {
 public:
  CArray() = default;
  CArray(const CArray&) = delete;
  CArray& operator=(const CArray&) = delete;

  INT_PTR GetSize() const { return static_cast<INT_PTR>(m_items.size()); }
  void SetSize(INT_PTR size) {
    if (size < 0) AfxThrowInvalidArgException();
    m_items.resize(static_cast<std::size_t>(size));
  }
  void RemoveAll() { m_items.clear(); }

  /// The index of the new element.
  INT_PTR Add(Argument item) {
    m_items.push_back(item);
    return GetSize() - 1;
  }

  const Type& operator[](INT_PTR index) const { return m_items[Checked(index)]; }
  Type& operator[](INT_PTR index) { return m_items[Checked(index)]; }
  const Type* GetData() const { return m_items.data(); }
  Type* GetData() { return m_items.data(); }

 private:
  std::size_t Checked(INT_PTR index) const {
    if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
    return static_cast<std::size_t>(index);
  }

  std::vector<Type> m_items;
};

using CByteArray = CArray<BYTE, BYTE>;

/// A read error, or a file that is not open.
class CFileException : public CException {};

struct CFileStatus {
  ULONGLONG m_size = 0;  ///< Bytes; 0 for a folder.
};

/// A file that is read. Closed at the end of its life.
class CFile {
 public:
  enum OpenFlags : UINT { modeRead = 0, shareDenyNone = 0x40, typeText = 0x4000 };

  CFile() = default;
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  virtual ~CFile() = default;

  /// FALSE when the file or folder is not there or cannot be asked.
  static BOOL GetStatus(LPCWSTR path, CFileStatus& status);

  /// Returns FALSE when the file cannot be opened. Without shareDenyNone the file is this object's
  /// alone on Windows: it does not open while another has it open, and none can open it until it is
  /// closed. `error` is null: nobody asks why.
  virtual BOOL Open(LPCWSTR path, UINT flags, CFileException* error = nullptr);

  /// The number of bytes read, less than `count` at the end of the file only. Raises
  /// CFileException.
  UINT Read(void* buffer, UINT count);
  void Close() { m_stream.Reset(); }

 protected:
  /// The stream of an open file; else raises CFileException.
  std::FILE* Stream() const;
  /// Raises CFileException after a read error.
  void CheckStream() const;
  bool OpenStream(LPCWSTR path, UINT flags);

 private:
  static void CloseStream(std::FILE* stream) { std::fclose(stream); }

  Owner<std::FILE*, CloseStream> m_stream;
};

/// A file that can be read line by line. With typeText CR LF is one line end and Ctrl-Z ends the
/// text, as in the Microsoft C run-time.
class CStdioFile : public CFile {
 public:
  BOOL Open(LPCWSTR path, UINT flags, CFileException* error = nullptr) override;

  /// The next line without its line end, of any length, widened by the ANSI code page. FALSE at the
  /// end of the file. Raises CFileException. A NUL hides what follows it in the same stretch of 128
  /// units; a line that starts with one reads as none.
  BOOL ReadString(CString& line);

 private:
  int NextByte();
  void ReadLine();
  std::wstring_view TakeStretch();

  bool m_isText = false;
  bool m_ended = false;         ///< Ctrl-Z was seen.
  std::wstring m_line;          ///< The line of the file that is being handed out,
  std::size_t m_handedOut = 0;  ///< up to here.
};

/// An extension library's record with the framework.
struct AFX_EXTENSION_MODULE {
  BOOL bInitialized = FALSE;
  HMODULE hModule = nullptr;
};

/// Notes the module in the record. FALSE would end the load of the library.
BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module);

/// Empties the record and deletes the CDynLinkLibrary objects made on it. `all` is FALSE.
void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all);

/// A library in the framework's list, which owns it from its construction on. `new` gives null
/// when there is no memory.
class CDynLinkLibrary {
 public:
  explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL isSystem);
  CDynLinkLibrary(const CDynLinkLibrary&) = delete;
  CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

  static void* operator new(std::size_t size) noexcept;
  static void operator delete(void* block) noexcept;

 private:
  friend void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all);

  AFX_EXTENSION_MODULE& m_module;
  CDynLinkLibrary* m_next;
};
