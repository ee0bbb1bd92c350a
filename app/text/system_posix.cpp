// What the room asks of Linux: files as a whole, and the terminal.

#include <fcntl.h>
#include <glib.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <iostream>
#include <system_error>

#include "app/text/files.h"
#include "app/text/table.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/whole_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse() {
  throw std::runtime_error(std::generic_category().message(errno));
}

}  // namespace

const std::size_t kGreatestSealedPolicy = platform::kLargestFile;

std::optional<std::string> ReadInput(const fs::path& file, std::size_t greatest) {
  const platform::Descriptor opened = platform::Open(file, O_RDONLY, 0);  // of any kind, told below
  if (!opened && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
  struct stat status = {};
  if (!opened || fstat(opened.Get(), &status) != 0) Refuse();
  if (!S_ISREG(status.st_mode)) throw std::runtime_error(kNotRegular);
  std::string bytes;
  char block[0x10000];
  for (ssize_t step; (step = read(opened.Get(), block, sizeof block)) != 0;) {
    if (step < 0 && errno != EINTR) Refuse();
    if (step > 0) bytes.append(block, static_cast<std::size_t>(step));
    RequireSize(bytes.size(), greatest);
  }
  return bytes;
}

void ReplaceOutput(const fs::path& file, std::string_view bytes) {
  platform::ReplaceWholeFile(fs::absolute(file), bytes);
}

void BeginFile(const fs::path& file, std::string_view bytes) {
  const platform::Descriptor opened = platform::Open(file, O_WRONLY | O_CREAT);
  struct stat status = {};
  if (!opened || fstat(opened.Get(), &status) != 0 || status.st_size != 0) return;
  // A failure leaves the file empty, as it was.
  [[maybe_unused]] const ssize_t written = write(opened.Get(), bytes.data(), bytes.size());
}

void PrintBytes(std::string_view bytes) {
  std::cout << bytes;
}

std::size_t CharacterWidth(char32_t character) {
  if (g_unichar_iszerowidth(character)) return 0;
  return g_unichar_iswide(character) ? 2 : 1;
}

std::size_t ConsoleColumns() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool IsTerminal(std::FILE* stream) {
  return isatty(fileno(stream)) != 0;
}

}  // namespace app
