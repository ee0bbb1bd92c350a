// All operations at once, from many threads of one host, on one machine, with the real component
// and log. Built with ThreadSanitizer this also tells whether anything is shared without a lock;
// nothing of the tests' own stands between.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "boundary/exports.h"
#include "peers/settings_component/setting_file.h"
#include "platform/utf.h"
#include "tests/support/policy.h"
#include "tests/support/seal.h"

namespace {

namespace fs = std::filesystem;

const std::wstring kPolicy =
    tests::Policy(1, L"0", {{L"E1", {{L"Kind", L"0"}, {L"Name", L"題"}, {L"Text", L"社外秘"}}}});

/// A machine with a policy delivered, for the life of this.
class SampleMachine {
 public:
  SampleMachine() {
    setenv("SIGIL_ROOT", m_root.c_str(), 1);
    unsetenv("SIGIL_LOG");
    std::ofstream(m_root / "machine.ini")
        << "[Machine]\nUser=tanaka\n[Accounts]\ntanaka=Tanaka Taro\n[Printer Other]\n"
           "[Printer Suite]\nDriver=QuietMIMOSA Harbor Ledge Driver\n";
    const fs::path delivery = m_root / "C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge/EMS";
    fs::create_directories(delivery);
    std::ofstream(delivery / "SystemSetting.csv") << "63,1\r\n";
    std::string policy = platform::ToUtf8(kPolicy);
    policy.resize((policy.size() + 15) / 16 * 16);
    std::ofstream(delivery / "WmPolicy.dat") << tests::Seal(policy, tests::Key());
  }
  ~SampleMachine() { fs::remove_all(m_root); }
  SampleMachine(const SampleMachine&) = delete;
  SampleMachine& operator=(const SampleMachine&) = delete;

 private:
  static fs::path MakeFolder() {
    std::string name = (fs::temp_directory_path() / "sigil-threads-XXXXXX").string();
    return mkdtemp(name.data());
  }
  const fs::path m_root = MakeFolder();
};

int Update() {
  return SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, kPolicy.c_str(), 1);
}
int SwitchContentLog() {
  return SigilSettingSetUseContentLog(true);
}

bool IsDone(int (*operation)(), int result) {
  // Between an update and its question for the name, another has the name looked up anew.
  if (operation == Update)
    return result == SIGIL_SETTING_DONE || result == SIGIL_SETTING_NO_FULL_NAME;
  // Nobody serves the pipe: all is switched, but the control service is not told.
  if (operation == SigilSettingReleaseWaterMark) return result == -2;
  return result == SIGIL_SETTING_DONE;
}

/// ThreadSanitizer does not know the dynamic linker's lock, which orders the end of a library in
/// one thread and its next load in another: for it the component stays loaded.
void KeepComponent() {
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
  const fs::path beside = fs::read_symlink("/proc/self/exe").parent_path();
  ASSERT_NE(dlopen((beside / "SigilUtil_x86.dll").c_str(), RTLD_NOW), nullptr);
#endif
#endif
}

TEST(Threads, EightOfThemMakeEveryCallAtOnce) {
  const SampleMachine machine;
  KeepComponent();
  constexpr std::array kOperations = {Update,
                                      SigilSettingSetWaterMark,
                                      SigilSettingReleaseWaterMark,
                                      SigilSettingReleaseWaterMarkForService,
                                      SigilSettingUpdateExcludePrinter,
                                      SwitchContentLog};
  constexpr std::size_t kThreads = 8;
  constexpr std::size_t kRounds = 3;
  // Of each thread, for each operation.
  std::array<std::array<std::set<int>, kOperations.size()>, kThreads> results;
  std::vector<std::thread> threads;
  for (std::size_t own = 0; own < kThreads; ++own)
    threads.emplace_back([&, own] {
      for (std::size_t call = 0; call < kRounds * kOperations.size(); ++call) {
        const std::size_t operation = (own + call) % kOperations.size();
        results[own][operation].insert(kOperations[operation]());
      }
    });
  for (std::thread& thread : threads) thread.join();

  for (const auto& own : results)
    for (std::size_t operation = 0; operation < kOperations.size(); ++operation)
      for (const int result : own[operation])
        EXPECT_TRUE(IsDone(kOperations[operation], result)) << operation << ": " << result;
  EXPECT_EQ(Update(), SIGIL_SETTING_DONE);
  const auto content = peers::ReadSettingFile(peers::FindSettingPlace().file);
  EXPECT_EQ(content.excluded.size(), 1U);
  EXPECT_EQ(content.entries.size(), 2U) << "the default entry and the suite's printer";
  for (const auto& entry : content.entries) EXPECT_EQ(entry.watermarks.size(), 1U);
}

}  // namespace
