// Sealed policies: made for delivery, and opened again.

#include <iostream>
#include <sstream>

#include "app/commands/command_line.h"
#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/text/errors.h"
#include "app/text/files.h"
#include "app/text/table.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

/// Throws UsageError when the output would take the place of its own source.
void RequireOther(const std::string& source, const std::string& output) {
  std::error_code error;
  if (std::filesystem::equivalent(PathOf(source), PathOf(output), error))
    throw UsageError(output + ": the output would replace its own source");
}

std::string SealedText(const std::wstring& text, const std::string& file) {
  std::string sealed = SealText(platform::ToUtf8(text));
  try {
    RequireSize(sealed.size(), kGreatestSealedPolicy);
  } catch (const std::runtime_error& error) {
    throw UsageError(file + ": sealed, " + error.what());
  }
  return sealed;
}

struct Options {
  std::string file;
  std::string output;  ///< Empty: WmPolicy.dat in the machine's delivery folder.
  Care care;
};

/// Makes a policy file of the policy text, under the machine's key. Throws UsageError when the text
/// or the key will not do, and for a policy that a rehearsal does not let through.
int Seal(const Options& options) {
  RequireOther(options.file, options.output);
  const std::wstring text = ReadTextFile(options.file);
  const std::string name = NameOf(options.file);
  if (const KeyState key = ExamineKey(); !key.isThere || !key.gives)
    throw UsageError(HostPath(KeySource()).string() + ": " + key.source);
  const std::string sealed = SealedText(text, name);
  const Verdict verdict =
      RefuseOrTell({text, kSwitchingPolicy}, name, Use::kDelivery, options.care);
  const DeliveryFolder delivery = FindDeliveryFolder();
  const bool isDelivered = options.output.empty();
  const auto place = isDelivered ? HostPath(delivery.PolicyFile()) : PathOf(options.output);
  WriteOutput(place, sealed);
  std::cout << "seal: " << sealed.size() << " bytes in "
            << platform::Visible(isDelivered ? place.string() + " (" + delivery.origin + ")"
                                             : options.output)
            << ".\n";
  for (const std::string& line : verdict.lines)
    std::cout << "  " << platform::Visible(line) << "\n";
  return 0;
}

void PrintVisible(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) line.pop_back();
    std::cout << platform::Visible(line) << "\n";
  }
}

struct UnsealOptions {
  std::string file;    ///< Empty: the delivered policy.
  std::string output;  ///< Empty: standard output.
};

/// Gives the policy text of a sealed file back, under the machine's key. At a terminal controls are
/// made visible. Throws UsageError when no text comes of the file.
int UnsealPolicy(const UnsealOptions& options) {
  const auto& [file, output] = options;
  RequireOther(file, output);
  const std::wstring text = ReadSealed(file).text;
  const std::string bytes = platform::ToUtf8(text);
  if (!output.empty()) {
    WriteOutput(PathOf(output), bytes);
    std::cout << "unseal: " << bytes.size() << " bytes in " << platform::Visible(output) << ".\n";
  } else if (IsTerminal(stdout)) {
    PrintVisible(bytes);
  } else {
    PrintBytes(bytes);
  }
  if (const std::string refusal = ReadPolicy(text).refusal; !refusal.empty())
    std::cerr << "sigilctl: warning: the passes refuse this policy: " << platform::Visible(refusal)
              << "\n";
  return 0;
}

}  // namespace

void AddSeal(CommandLine& line) {
  auto [command, options] = line.Add("seal", "Makes the delivered policy file of a policy", Seal);
  AddPolicyFile(command, options.file);
  AddOutput(command, options.output, "FILE", "Another place for it");
  AddCare(command, options.care);
}

void AddUnseal(CommandLine& line) {
  auto [command, options] =
      line.Add("unseal", "Gives the text of a delivered policy file back", UnsealPolicy);
  command.add_option("FILE", options.file, "The sealed file (the delivered one)")->type_name("");
  AddOutput(command, options.output, "FILE", "A file for the text");
}

}  // namespace app
