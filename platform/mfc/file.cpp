#include <utility>

#include "platform/codepage.h"
#include "platform/faults.h"
#include "platform/mfc.h"
#include "platform/mfc/home.h"

using platform::TakeFault;

BOOL CFile::GetStatus(LPCWSTR path, CFileStatus& status) {
  if (TakeFault("CFile::GetStatus")) return FALSE;
  const auto size = platform::SizeOf(path);
  status.m_size = size.value_or(0);
  return size.has_value();
}

BOOL CFile::Open(LPCWSTR path, UINT flags, CFileException*) {
  return !TakeFault("CFile::Open") && OpenStream(path, flags);
}

bool CFile::OpenStream(LPCWSTR path, UINT flags) {
  const bool isShared = (flags & shareDenyNone) != 0;
  m_stream = Owner<std::FILE*, CloseStream>(platform::OpenToRead(path, isShared));
  return static_cast<bool>(m_stream);
}

std::FILE* CFile::Stream() const {
  if (!m_stream) throw CFileException();
  return m_stream.Get();
}

void CFile::CheckStream() const {
  if (std::ferror(Stream()) != 0) throw CFileException();
}

UINT CFile::Read(void* buffer, UINT count) {
  if (TakeFault("CFile::Read")) throw CFileException();
  const std::size_t read = std::fread(buffer, 1, count, Stream());
  CheckStream();
  return static_cast<UINT>(read);
}

BOOL CStdioFile::Open(LPCWSTR path, UINT flags, CFileException*) {
  m_isText = (flags & typeText) != 0;
  m_ended = false;
  m_line.clear();
  m_handedOut = 0;
  return !TakeFault("CStdioFile::Open") && OpenStream(path, flags);
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
  CheckStream();
  const int size = static_cast<int>(bytes.size());
  m_line.resize(bytes.size());  // no character has more units than bytes
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, m_line.data(), size);
  m_line.resize(static_cast<std::size_t>(length));
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
  if (TakeFault("CStdioFile::ReadString")) throw CFileException();
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
