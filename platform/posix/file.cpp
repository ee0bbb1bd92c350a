#include "platform/file.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "platform/posix/handle.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"

namespace platform {

namespace {

/// The client end of a pipe. The socket keeps each write one message, also an empty one.
class Pipe : public Object {
 public:
  explicit Pipe(Descriptor socket) : m_socket(std::move(socket)) {}

  BOOL Write(const void* bytes, std::size_t count, DWORD& written) {
    ssize_t step;
    do {
      step = send(m_socket.Get(), bytes, count, MSG_NOSIGNAL);
    } while (step < 0 && errno == EINTR);
    if (step < 0) return FailWith(ErrorOf(errno));
    written = static_cast<DWORD>(step);
    return TRUE;
  }

 private:
  Descriptor m_socket;
};

/// INVALID_HANDLE_VALUE with this last error.
HANDLE NoHandle(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;
}

constexpr std::wstring_view kPipePrefix = L"\\\\.\\pipe\\";

/// The names of pipes know no case.
HANDLE OpenPipe(std::wstring_view name) {
  if (name.empty() || name.find_first_of(L"\\/") != name.npos) return NoHandle(ERROR_INVALID_NAME);
  const Descriptor found = Open(FindName(MachineRoot() / "pipe", name), O_PATH, S_IFSOCK);
  if (!found) return NoHandle(ErrorOf(errno));
  // By way of the descriptor, which no other file can take the place of; and an address has 107
  // bytes, less than a path.
  sockaddr_un address = {AF_UNIX, {}};
  ("/proc/self/fd/" + std::to_string(found.Get())).copy(address.sun_path, sizeof address.sun_path);

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

/// The mode of a file or folder; 0 and the last error when there is none.
mode_t ModeOf(LPCWSTR path) {
  struct stat status = {};
  if (path == nullptr || *path == L'\0') {
    SetLastError(ERROR_PATH_NOT_FOUND);
  } else if (const Descriptor found = Open(HostPath(path), O_PATH, 0);
             !found || fstat(found.Get(), &status) != 0) {
    SetLastError(ErrorOf(errno));
  }
  return status.st_mode;
}

/// The separator of pieces: a path that begins with `/` is one of Linux.
wchar_t SeparatorOf(std::wstring_view path) {
  return path.starts_with(L'/') ? L'/' : L'\\';
}

/// Returns the length of the root, which stays: `C:`, `C:\`, `\` or the two of a server's name.
std::size_t RootLength(std::wstring_view path) {
  const wchar_t separator = SeparatorOf(path);
  const std::size_t drive = path.size() >= 2 && path[1] == L':' ? 2 : 0;
  const std::size_t most = drive == 0 ? 2 : 3;
  std::size_t length = drive;
  while (length < most && length < path.size() && path[length] == separator) ++length;
  return length;
}

}  // namespace

}  // namespace platform

using platform::FailWith;
using platform::IsToFail;
using platform::NoHandle;

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, const SECURITY_ATTRIBUTES*, DWORD disposition,
                   DWORD flags, HANDLE) {
  if (IsToFail("CreateFileW")) return INVALID_HANDLE_VALUE;
  const std::wstring_view name = path == nullptr ? L"" : path;
  if (access != GENERIC_WRITE || disposition != OPEN_EXISTING || flags != 0 ||
      !platform::StartsWithName(name, platform::kPipePrefix))
    return NoHandle(ERROR_INVALID_PARAMETER);
  return platform::OpenPipe(name.substr(platform::kPipePrefix.size()));
}

BOOL WriteFile(HANDLE handle, const void* bytes, DWORD count, LPDWORD written, OVERLAPPED*) {
  DWORD ignored;
  DWORD& done = written == nullptr ? ignored : *written;
  done = 0;
  if (IsToFail("WriteFile")) return FALSE;
  const auto pipe = platform::FindObjectAs<platform::Pipe>(handle);
  if (pipe == nullptr) return FALSE;
  if (bytes == nullptr && count > 0) return FailWith(ERROR_INVALID_PARAMETER);
  return pipe->Write(bytes, count, done);
}

BOOL PathFileExistsW(LPCWSTR path) {
  return platform::ModeOf(path) != 0;
}

BOOL PathIsDirectoryW(LPCWSTR path) {
  constexpr BOOL kDirectoryAttribute = 0x10;
  return S_ISDIR(platform::ModeOf(path)) ? kDirectoryAttribute : FALSE;
}

BOOL PathRemoveFileSpecW(LPWSTR path) {
  const std::wstring_view text(path);
  const std::size_t root = platform::RootLength(text);
  const std::size_t last = text.rfind(platform::SeparatorOf(text));
  const std::size_t cut = last == text.npos ? root : std::max(root, last);
  path[cut] = L'\0';
  return cut < text.size();
}

BOOL PathAppendW(LPWSTR path, LPCWSTR more) {
  std::wstring result(path);
  const wchar_t separator = platform::SeparatorOf(result);
  if (!result.empty() && !result.ends_with(separator)) result += separator;
  for (; *more != L'\0'; ++more) result += *more == L'\\' ? separator : *more;
  const bool isFitting = result.size() < MAX_PATH;
  path[isFitting ? result.copy(path, result.size()) : 0] = L'\0';
  return isFitting;
}
