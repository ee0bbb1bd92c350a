#include "app/commands/commands.h"

namespace app {

Action OnLinux(const std::string& /*name*/) {
  return nullptr;
}

}  // namespace app
