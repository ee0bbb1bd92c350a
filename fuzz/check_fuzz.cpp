// Any text as a policy, from its rehearsal to the findings: the review in this process, on the real
// library, component and log.
//
// A rehearsal that the review calls incomplete is a fault: the desk and the library then read the
// text in two ways.

#include "app/machine/policy_file.h"
#include "app/rehearsal/review.h"
#include "app/text/errors.h"
#include "fuzz/machine.h"
#include "platform/module.h"

namespace {

constexpr char kMachine[] =
    "[Machine]\nUser=u\n[Accounts]\nu=Full Name\n"
    "[Printer P]\nDriver=QuietMIMOSA Harbor Ledge Driver\n[Printer Q]\nDriver=Other\n";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Machine machine;
  static const std::string root = getenv("SIGIL_ROOT");
  // An update unloads the component at its end; the fuzzer's counters must stay.
  static const HMODULE component = LoadLibraryW(
      (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "SigilUtil_x86.dll")
          .wstring()
          .c_str());
  if (component == nullptr) abort();
  setenv("SIGIL_ROOT", root.c_str(), 1);
  machine.Write("machine.ini", kMachine);
  const std::wstring text = fuzz::Wide(fuzz::Text(data, size));
  if (!app::ReadPolicy(text).refusal.empty()) return 0;
  const app::PolicyDocument document = app::ReadDocument(platform::ToUtf8(text));
  const app::PolicyCall call = {text};
  const app::ScratchMachine scratch;
  const std::string answer = app::AnswerOf(scratch, call);
  app::Rehearsal rehearsal = app::TakeIn(answer, scratch);
  setenv("SIGIL_ROOT", root.c_str(), 1);
  app::ReviewOf(call, document, std::move(rehearsal));
  return 0;
}
