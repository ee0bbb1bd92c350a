#include <fcntl.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "app/text/input.h"
#include "platform/posix/machine/machine_file.h"

namespace app {
namespace {

[[noreturn]] void Refuse() {
  throw std::runtime_error(std::generic_category().message(errno));
}

}  // namespace

const std::size_t kGreatestSealedPolicy = platform::kLargestFile;

std::optional<std::string> ReadInput(const std::filesystem::path& file, std::size_t greatest) {
  const platform::Descriptor opened = platform::Open(file, O_RDONLY, 0);  // of any kind, told below
  if (!opened && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
  struct stat status = {};
  if (!opened || fstat(opened.Get(), &status) != 0) Refuse();
  if (!S_ISREG(status.st_mode)) throw std::runtime_error("not a regular file");
  std::string bytes;
  char block[0x10000];
  for (ssize_t step; (step = read(opened.Get(), block, sizeof block)) != 0;) {
    if (step < 0 && errno != EINTR) Refuse();
    if (step > 0) bytes.append(block, static_cast<std::size_t>(step));
    RequireSize(bytes.size(), greatest);
  }
  return bytes;
}

}  // namespace app
