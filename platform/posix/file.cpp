#include "platform/file.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

class File : public Object {
 public:
  explicit File(Descriptor descriptor) : m_descriptor(std::move(descriptor)) {}

  BOOL Write(const char* bytes, std::size_t count, DWORD& written) {
    do {
      const ssize_t step = WriteOnce(bytes + written, count - written);
      if (step >= 0)
        written += static_cast<DWORD>(step);
      else if (errno != EINTR)
        return FailWith(errno == EBADF ? ERROR_ACCESS_DENIED : ErrorOf(errno));
    } while (written < count);
    return TRUE;
  }

 protected:
  virtual ssize_t WriteOnce(const char* bytes, std::size_t count) {
    return write(m_descriptor.Get(), bytes, count);
  }

  Descriptor m_descriptor;
};

/// The client end of a pipe. The socket keeps each write one message, also an empty one.
class Pipe : public File {
  using File::File;

  ssize_t WriteOnce(const char* bytes, std::size_t count) override {
    return send(m_descriptor.Get(), bytes, count, MSG_NOSIGNAL);
  }
};

/// INVALID_HANDLE_VALUE with this last error.
HANDLE NoHandle(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;
}

wchar_t Lower(wchar_t unit) {
  return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

std::wstring Lower(std::wstring_view text) {
  std::wstring lower;
  for (const wchar_t unit : text) lower.push_back(Lower(unit));
  return lower;
}

constexpr std::wstring_view kPipePrefix = L"\\\\.\\pipe\\";

/// `name` in lower case: the names of pipes know no case.
HANDLE OpenPipe(const std::wstring& name) {
  if (name.empty() || name.find_first_of(L"\\/") != name.npos) return NoHandle(ERROR_INVALID_NAME);
  const Descriptor folder(open((MachineRoot() / "pipe").c_str(), O_PATH | O_CLOEXEC));
  if (!folder) return NoHandle(ErrorOf(errno));
  // By way of the folder's descriptor: an address takes 107 bytes, which a root alone may have.
  const std::string path = "/proc/self/fd/" + std::to_string(folder.Get()) + "/" + ToUtf8(name);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return NoHandle(ERROR_FILENAME_EXCED_RANGE);
  path.copy(address.sun_path, path.size());

  Descriptor pipe(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!pipe) return NoHandle(ErrorOf(errno));
  if (connect(pipe.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    if (errno == EAGAIN) return NoHandle(ERROR_PIPE_BUSY);
    return NoHandle(errno == ECONNREFUSED || errno == EPROTOTYPE ? ERROR_FILE_NOT_FOUND
                                                                 : ErrorOf(errno));
  }
  fcntl(pipe.Get(), F_SETFL, 0);  // from here on it waits
  return AddObject(std::make_shared<Pipe>(std::move(pipe)));
}

HANDLE OpenFile(LPCWSTR path, DWORD access) {
  const fs::path file = HostPath(path);
  const bool writes = (access & GENERIC_WRITE) != 0;
  const bool reads = (access & GENERIC_READ) != 0 || !writes;
  const int flags = writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY;
  Descriptor descriptor(open(file.c_str(), flags | O_CLOEXEC | O_NOCTTY));
  if (!descriptor) {
    const int error = errno;
    std::error_code ignored;
    const bool hasFolder = error != ENOENT || fs::is_directory(file.parent_path(), ignored);
    return NoHandle(hasFolder ? ErrorOf(error) : ERROR_PATH_NOT_FOUND);
  }
  struct stat status = {};
  if (fstat(descriptor.Get(), &status) != 0 || S_ISDIR(status.st_mode))
    return NoHandle(ERROR_ACCESS_DENIED);
  return AddObject(std::make_shared<File>(std::move(descriptor)));
}

/// The mode of a file or folder; 0 and the last error when there is none.
mode_t ModeOf(LPCWSTR path) {
  struct stat status = {};
  if (path == nullptr || *path == L'\0') {
    SetLastError(ERROR_PATH_NOT_FOUND);
  } else if (stat(HostPath(path).c_str(), &status) != 0) {
    SetLastError(ErrorOf(errno));
  }
  return status.st_mode;
}

/// What parts the pieces: a path that begins with `/` is one of Linux.
wchar_t SeparatorOf(std::wstring_view path) {
  return path.starts_with(L'/') ? L'/' : L'\\';
}

bool HasDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':';
}

/// The length of what no piece is taken off: `C:`, `C:\`, `\` or the two of a server's name.
std::size_t RootLength(std::wstring_view path) {
  const wchar_t separator = SeparatorOf(path);
  const std::size_t drive = HasDrive(path) ? 2 : 0;
  const std::size_t most = drive == 0 ? 2 : 3;
  std::size_t length = drive;
  while (length < most && length < path.size() && path[length] == separator) ++length;
  return length;
}

/// Resolves the pieces "." and ".."; the root stays. Of a relative path that starts with one, the
/// backslash behind it stays.
std::wstring Resolved(std::wstring_view path) {
  const wchar_t separator = SeparatorOf(path);
  const std::size_t rootLength = RootLength(path);
  std::wstring result(path.substr(0, rootLength));
  std::vector<std::wstring_view> pieces;
  for (std::size_t at = rootLength, end; at <= path.size(); at = end + 1) {
    end = std::min(path.find(separator, at), path.size());
    const std::wstring_view piece = path.substr(at, end - at);
    if (piece != L"." && piece != L"..") {
      pieces.push_back(piece);
    } else if (pieces.empty()) {
      if (result.empty()) result = separator;
    } else if (piece == L"..") {
      pieces.pop_back();
    }
  }
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (i > 0) result += separator;
    result += pieces[i];
  }
  const bool isDriveAlone = HasDrive(result) && result.size() == 2;
  if (result.empty() || isDriveAlone) result += separator;
  return result;
}

std::wstring Joined(std::wstring path, std::wstring more) {
  if (more.starts_with(L"\\\\") || HasDrive(more)) return more;
  const wchar_t separator = SeparatorOf(path);
  std::replace(more.begin(), more.end(), L'\\', separator);
  if (more.starts_with(separator)) more.erase(0, 1);
  if (!more.empty() && !path.empty() && !path.ends_with(separator)) path += separator;
  return path + more;
}

}  // namespace

}  // namespace platform

using platform::FailWith;
using platform::IsToFail;
using platform::NoHandle;

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, const SECURITY_ATTRIBUTES*, DWORD disposition,
                   DWORD flags, HANDLE) {
  if (IsToFail("CreateFileW")) return INVALID_HANDLE_VALUE;
  if (path == nullptr || *path == L'\0') return NoHandle(ERROR_PATH_NOT_FOUND);
  if (disposition != OPEN_EXISTING || flags != 0) return NoHandle(ERROR_INVALID_PARAMETER);
  const std::wstring name = platform::Lower(path);
  if (!name.starts_with(platform::kPipePrefix)) return platform::OpenFile(path, access);
  return platform::OpenPipe(name.substr(platform::kPipePrefix.size()));
}

BOOL WriteFile(HANDLE handle, const void* bytes, DWORD count, LPDWORD written, OVERLAPPED*) {
  DWORD ignored;
  DWORD& done = written == nullptr ? ignored : *written;
  done = 0;
  if (IsToFail("WriteFile")) return FALSE;
  const auto file = platform::FindObjectAs<platform::File>(handle);
  if (file == nullptr) return FALSE;
  if (bytes == nullptr && count > 0) return FailWith(ERROR_INVALID_PARAMETER);
  return file->Write(static_cast<const char*>(bytes), count, done);
}

BOOL PathFileExistsW(LPCWSTR path) {
  return !IsToFail("PathFileExistsW") && platform::ModeOf(path) != 0;
}

BOOL PathIsDirectoryW(LPCWSTR path) {
  constexpr BOOL kDirectoryAttribute = 0x10;
  if (IsToFail("PathIsDirectoryW") || !S_ISDIR(platform::ModeOf(path))) return FALSE;
  return kDirectoryAttribute;
}

BOOL PathRemoveFileSpecW(LPWSTR path) {
  if (path == nullptr) return FALSE;
  const std::wstring_view text(path);
  const std::size_t root = platform::RootLength(text);
  const std::size_t last = text.rfind(platform::SeparatorOf(text));
  const std::size_t cut = last == text.npos ? root : std::max(root, last);
  path[cut] = L'\0';
  return cut < text.size();
}

BOOL PathAppendW(LPWSTR path, LPCWSTR more) {
  if (path == nullptr || more == nullptr) return FALSE;
  const std::wstring result = platform::Resolved(platform::Joined(path, more));
  if (result.size() >= MAX_PATH) {
    *path = L'\0';
    return FALSE;
  }
  path[result.copy(path, result.size())] = L'\0';
  return TRUE;
}
