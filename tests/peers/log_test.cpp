#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

#include "peers/logging/log_watch.h"
#include "platform/posix/machine/machine.h"
#include "tests/support/test_machine.h"

namespace {

constexpr wchar_t kLogFile[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";

/// The real logging component, by the names that its callers' object files have: in this program
/// the recorder stands under the plain ones.
class Log : public testing::Test {
 protected:
  Log() {
    const auto folder =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / SIGIL_BUILD_FOLDER;
    void* library = dlopen((folder / "liblog4cxx.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    const auto find = [&](const char* name) { return dlsym(library, name); };
    plain = reinterpret_cast<Plain*>(find("_ZN10Log4cxxMgr12LogOutDetailEiiPKwiS1_"));
    withCode = reinterpret_cast<WithCode*>(find("_ZN10Log4cxxMgr12LogOutDetailEiiPKwiiS1_"));
    withLabel = reinterpret_cast<WithLabel*>(find("_ZN10Log4cxxMgr12LogOutDetailEiiPKwiS1_S1_"));
    watch = reinterpret_cast<SigilWatchLogFunction*>(find("SigilWatchLog"));
  }
  ~Log() override {
    unsetenv("SIGIL_LOG");
    unsetenv("SIGIL_LOG_LEVEL");
  }

  /// The log, with the time and this process of each line put as "STAMP".
  std::string Lines() const {
    const std::regex stamp("(^|\n)\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} " +
                           std::to_string(getpid()) + " ");
    return std::regex_replace(machine.Read(kLogFile), stamp, "$1STAMP ");
  }

  using Plain = void(int, int, const wchar_t*, int, const wchar_t*);
  using WithCode = void(int, int, const wchar_t*, int, int, const wchar_t*);
  using WithLabel = void(int, int, const wchar_t*, int, const wchar_t*, const wchar_t*);
  Plain* plain;
  WithCode* withCode;
  WithLabel* withLabel;
  SigilWatchLogFunction* watch;
  tests::TestMachine machine;
};

std::wstring g_watched;

TEST_F(Log, KeepsEachCallInOneLineAndTellsAWatcherAlsoWhatTheFileDoesNotGet) {
  plain(3, 153100270, L"A::B", 87, L"設定処理完了 {} %s \U0001F600");
  withCode(5, 153100420, L"A::C", 9, -2, L"パイプ");
  withLabel(0, 0, L"A::D", 1, L"500", L"1");
  plain(9, -1, nullptr, -3,
        L"1\r\n2\t\x1B[2J\x7F\x85\x2028\x202E\x2066\xFEFF\xD83D \\n\x200B\x200E\x061C");
  plain(0, 0, L"A::E", 1, L"\xDB40\xDC41\U000E0100\U0001F600\xFE0F\x200C\x2060\xFDD0");
  EXPECT_EQ(Lines(),
            "STAMP 3 153100270 A::B(87) 設定処理完了 {} %s \U0001F600\n"
            "STAMP 5 153100420 A::C(9) パイプ (code -2)\n"
            "STAMP 0 0 A::D(1) 500=1\n"
            "STAMP 9 -1 (null)(-3) "
            "1\\r\\n2\\t\\u001B[2J\\u007F\\u0085\\u2028\\u202E\\u2066\\uFEFF\xEF\xBF\xBD "
            "\\n\\u200B\\u200E\\u061C\n"
            "STAMP 0 0 A::E(1) "
            "\\uDB40\\uDC41\U000E0100\U0001F600\uFE0F\\u200C\\u2060\xEF\xB7\x90\n");

  setenv("SIGIL_LOG_LEVEL", "9", 1);
  const std::string before = Lines();
  watch([](int level, int number, const wchar_t* function, const wchar_t* text) {
    g_watched += std::to_wstring(level + number) + L' ' + function + L' ' + text + L'\n';
  });
  plain(3, 10, L"A", 1, L"a\tb");
  withCode(5, 20, nullptr, 2, -2, L"c");
  withLabel(0, 30, L"C", 3, L"d", nullptr);
  watch(nullptr);
  plain(5, 40, L"D", 4, L"unseen");
  EXPECT_EQ(g_watched, L"13 A a\tb\n25 (null) c (code -2)\n30 C d=(null)\n");
  EXPECT_EQ(Lines(), before);
}

TEST_F(Log, TakesItsFileAndLevelFromTheEnvironmentAndDropsWhatItCannotWrite) {
  setenv("SIGIL_LOG_LEVEL", "4", 1);
  for (int level = 0; level < 6; ++level) plain(level, level, L"F", 1, L"t");
  setenv("SIGIL_LOG_LEVEL", "none", 1);
  const std::string root = platform::MachineRoot(), pipe = root + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  for (const std::string& file :
       {root, pipe, std::string("/proc/none/file"), std::string("/dev/full"),
        std::string(10000, 'x'), root + "/deep/file.log"}) {
    setenv("SIGIL_LOG", file.c_str(), 1);
    plain(1, 1, L"F", 1, L"elsewhere");
  }
  unsetenv("SIGIL_LOG");
  plain(0, 0, L"F", 1, L"back");
  EXPECT_EQ(Lines(), "STAMP 4 4 F(1) t\nSTAMP 5 5 F(1) t\nSTAMP 0 0 F(1) back\n");
  EXPECT_GT(std::filesystem::file_size(root + "/deep/file.log"), 0u);
  char byte;
  EXPECT_EQ(read(reader, &byte, 1), 0);
  close(reader);
}

TEST_F(Log, FollowsItsPath) {
  const auto file = platform::HostPath(kLogFile);
  plain(1, 1, L"F", 1, L"first");
  std::filesystem::rename(file, file.string() + ".old");
  plain(1, 1, L"F", 1, L"moved");
  std::filesystem::remove(file);
  plain(1, 1, L"F", 1, L"deleted");
  EXPECT_EQ(Lines(), "STAMP 1 1 F(1) deleted\n");
}

TEST_F(Log, TakesAwayWhatAKilledProcessLeftOfItsLineAndNoOtherText) {
  const struct {
    std::string before, kept;
  } cases[] = {{"2025-03-31 09:12:45.678 4711 3 153", ""},
               {"whole\n2025-03", "whole\n"},
               {"notes\nlast line", "notes\nlast line\n"},
               {std::string(2 << 20, 'x'), std::string(2 << 20, 'x') + "\n"}};
  for (const auto& [before, kept] : cases) {
    machine.Write(kLogFile, before);
    for (int i = 0; i < 2; ++i) plain(1, 2, L"Function", 3, L"text");
    EXPECT_TRUE(Lines() == kept + "STAMP 1 2 Function(3) text\nSTAMP 1 2 Function(3) text\n")
        << before.substr(0, 99);
  }
  const auto file = platform::HostPath(kLogFile);
  std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
  plain(1, 2, L"Function", 3, L"a file without end");
  EXPECT_GT(std::filesystem::file_size(file), std::uintmax_t{1} << 40);
}

TEST_F(Log, WritesALineWholeOrNotAtAllWhereRoomEnds) {
  constexpr rlim_t kRoom = 0x4000;
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit less = {kRoom, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &less);
  const std::wstring text(90, L'x');
  for (int i = 0; i < 500; ++i) plain(1, 1, L"F", 1, text.c_str());
  setrlimit(RLIMIT_FSIZE, &before);
  plain(1, 1, L"F", 1, L"again");
  EXPECT_GT(machine.Read(kLogFile).size(), kRoom / 4);
  EXPECT_TRUE(std::regex_match(Lines(), std::regex("(STAMP 1 1 F\\(1\\) x{90}\n)+"
                                                   "STAMP 1 1 F\\(1\\) again\n")));
}

}  // namespace
