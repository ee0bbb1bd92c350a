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

namespace {

namespace fs = std::filesystem;

constexpr wchar_t kPolicy[] =
    L"<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID='1'><PrinterScope>0</PrinterScope>"
    L"<ElementIDs><ID>E1</ID></ElementIDs></PolicyInfo></PolicyInfos><Elements><Element ID='E1'>"
    L"<Kind>0</Kind><Name>題</Name><Text>社外秘</Text></Element></Elements></Watermark></HLE>"
    L"</QuietMIMOSA>";

/// Where this program lies, and all others.
fs::path Programs() {
  return fs::read_symlink("/proc/self/exe").parent_path();
}

/// A sample machine with a delivered policy, for the life of this.
class SampleMachine {
 public:
  SampleMachine() {
    setenv("SIGIL_ROOT", (m_folder / "machine").c_str(), 1);
    unsetenv("SIGIL_LOG");
    Run("init \"$SIGIL_ROOT\"");
    Run("seal \"$SIGIL_ROOT/policy.xml\"");
  }
  ~SampleMachine() { fs::remove_all(m_folder); }
  SampleMachine(const SampleMachine&) = delete;
  SampleMachine& operator=(const SampleMachine&) = delete;

  /// Runs sigilctl and gives what it prints.
  std::string Run(const std::string& arguments) const {
    const fs::path output = m_folder / "output";
    const std::string command = "'" + (Programs() / "sigilctl").string() + "' " + arguments +
                                " > '" + output.string() + "'";
    EXPECT_EQ(system(command.c_str()), 0) << arguments;
    std::ifstream text(output);
    return {std::istreambuf_iterator<char>(text), {}};
  }

 private:
  static fs::path MakeFolder() {
    std::string name = (fs::temp_directory_path() / "sigil-threads-XXXXXX").string();
    return mkdtemp(name.data());
  }
  const fs::path m_folder = MakeFolder();
};

std::size_t Count(const std::string& text, const std::string& piece) {
  std::size_t count = 0;
  for (auto place = text.find(piece); place != text.npos; place = text.find(piece, place + 1))
    ++count;
  return count;
}

int Update() {
  return SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, kPolicy, 1);
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
  ASSERT_NE(dlopen((Programs() / "SigilUtil_x86.dll").c_str(), RTLD_NOW), nullptr);
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
  const std::string shown = machine.Run("show --json");
  EXPECT_EQ(Count(shown, "\"printer\""), 3U) << shown;  // the default entry and two printers
  EXPECT_EQ(Count(shown, "\"fontSize\""), 3U) << shown;
}

}  // namespace
