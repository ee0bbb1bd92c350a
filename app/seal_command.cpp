#include "app/seal_command.h"

#include <iostream>
#include <stdexcept>

#include "app/client.h"
#include "app/policy_file.h"
#include "app/policy_text.h"
#include "app/text_file.h"
#include "app/usage_error.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/utf.h"

namespace app {
namespace {

PolicyKey MachineKey() {
  const auto path = platform::HostPath(kKeySource);
  const auto source = platform::ReadWholeFile(path);
  if (!source || source->empty()) throw UsageError(path.string() + ": there is no key source");
  const auto key = KeyOf(*source);
  if (!key) throw UsageError(path.string() + ": no key comes of it; see `sigilctl doctor`");
  return *key;
}

}  // namespace

void SealPolicy(const std::filesystem::path& file) {
  const std::wstring text = ReadTextFile(file);
  std::string sealed = Seal(platform::ToUtf8(text), MachineKey());
  const DeliveryFolder delivery = FindDeliveryFolder();
  const auto target = platform::HostPath(delivery.path + kPolicyFile);
  platform::ChangeWholeFile(target, [&](const auto&) { return sealed; });
  std::cout << "seal: " << sealed.size() << " bytes in " << platform::ToUtf8(delivery.path)
            << platform::ToUtf8(kPolicyFile) << " (" << delivery.origin << ").\n";
  if (const PolicyText policy = ReadPolicy(text); !policy.refusal.empty())
    std::cerr << "sigilctl: warning: the passes will refuse this policy: " << policy.refusal
              << "\n";
}

}  // namespace app
