#include "app/text/input_file.h"

#include <stdexcept>

namespace app {

void RequireSize(std::size_t size, std::size_t greatest) {
  if (size > greatest)
    throw std::runtime_error("more than " + std::to_string(greatest / 1024) + " KiB");
}

}  // namespace app
