#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "app/commands/commands.h"
#include "app/machine/client.h"
#include "app/machine/output_file.h"
#include "app/machine/policy_file.h"
#include "app/machine/policy_text.h"
#include "app/text/usage_error.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

Unsealed Read(const std::wstring& path, const std::string& name) {
  const KeyState key = ExamineKey();
  if (!key.gives) throw UsageError(platform::ToUtf8(KeySource()) + ": " + key.source);
  std::optional<Unsealed> unsealed;
  try {
    unsealed = Unseal(path);
  } catch (const std::runtime_error& error) {
    throw UsageError(name + ": " + error.what());
  }
  if (!unsealed) throw UsageError(name + ": no such file");
  return std::move(*unsealed);
}

void PrintVisible(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) line.pop_back();
    std::cout << platform::Visible(line) << "\n";
  }
}

/// Gives the policy text of a sealed file back, under the machine's key: of `file`, or of the
/// delivered one where that is empty; to the file `output`, or to standard output where that is
/// empty. At a terminal controls are made visible. Throws UsageError when no text comes of the
/// file.
int UnsealPolicy(const std::string& file, const std::string& output) {
  const std::wstring path = file.empty()
                                ? FindDeliveryFolder().PolicyFile()
                                : platform::FromUtf8(std::filesystem::absolute(file).string());
  const std::string name = file.empty() ? platform::ToUtf8(path) : file;
  const std::wstring text = Read(path, name).text;
  const PolicyText policy = ReadPolicy(text);
  if (IsNoise(text, policy)) throw UsageError(name + ": " + kOtherKey);
  const std::string bytes = platform::ToUtf8(text);
  if (!output.empty()) {
    WriteOutput(output, bytes);
    std::cout << "unseal: " << bytes.size() << " bytes in " << platform::Visible(output) << ".\n";
  } else if (isatty(STDOUT_FILENO) != 0) {
    PrintVisible(bytes);
  } else {
    std::cout << bytes;
  }
  if (!policy.refusal.empty())
    std::cerr << "sigilctl: warning: the passes refuse this policy: "
              << platform::Visible(policy.refusal) << "\n";
  return 0;
}

}  // namespace

void AddUnseal(CommandLine& line) {
  struct Options {
    std::string file;
    std::string output;
  };
  const auto options = std::make_shared<Options>();
  CLI::App& command = line.Add("unseal", "Gives the text of a delivered policy file back",
                               [options] { return UnsealPolicy(options->file, options->output); });
  command.add_option("FILE", options->file, "The sealed file (the delivered one)")->type_name("");
  AddOutput(command, options->output, "FILE", "A file for the text");
}

}  // namespace app
