#include "boundary/exports.h"
#include "platform/posix/machine/machine.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

/// The exports refuse to work in a machine that is not the caller's alone, as another account's is
/// not, and each tells it in its own rows.
TEST(ClosedMachine, EndsEveryPassInItsRow) {
  const Transcript told{{"management/transcripts/shared", "management/transcripts/closed_machine"}};
  const struct {
    const char* name;
    int (*run)();
    int result;
  } cases[] = {
      {"set", SigilSettingSetWaterMark, -201},
      {"release", SigilSettingReleaseWaterMark, -201},
      {"release for service", SigilSettingReleaseWaterMarkForService, -101},
      {"exclude", SigilSettingUpdateExcludePrinter, -101},
      {"content log", [] { return SigilSettingSetUseContentLog(true); }, -101},
      {"update", [] { return SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, L"<a/>", 0); },
       -101}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    TestMachine machine;
    machine.Write(kSystemSetting, "63,1\r\n");
    const auto root = platform::MachineRoot();
    permissions(root, std::filesystem::perms(0720));
    EXPECT_EQ(test.run(), test.result);
    permissions(root, std::filesystem::perms(0700));
    ExpectRecord(told(test.name));
  }
}

}  // namespace
}  // namespace tests
