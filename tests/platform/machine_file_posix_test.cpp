// Whose a machine is, and what may lie in it.

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <fstream>
#include <thread>

#include "platform/crt.h"
#include "platform/file.h"
#include "platform/netapi.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/profile.h"
#include "platform/shell.h"
#include "platform/spooler.h"
#include "platform/synch.h"
#include "platform/utf.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kOther = 54321;
constexpr wchar_t kFile[] = L"C:\\SigilTest\\Some.ini";

/// What each call that uses a file gives, in one line: 0 or its error.
std::string Use(LPCWSTR path) {
  std::FILE* stream = nullptr;
  std::string told = std::to_string(_wfopen_s(&stream, path, L"rb"));
  if (stream != nullptr) std::fclose(stream);
  wchar_t text[8];
  GetPrivateProfileStringW(L"User", L"A", L"none", text, 8, path);
  told += " " + platform::ToUtf8(text) + " " + std::to_string(GetLastError());
  return told + " " +
         std::to_string(ErrorOf(WritePrivateProfileStringW(L"User", L"A", L"2", path)));
}

class MachineFile : public testing::Test {
 protected:
  MachineFile() { m_machine.Write(kFile, "[User]\nA=1\n"); }
  ~MachineFile() override { fs::permissions(m_root, fs::perms(0700)); }

  TestMachine m_machine;
  const fs::path m_root = platform::MachineRoot();
  const fs::path m_path = platform::HostPath(kFile);
};

TEST_F(MachineFile, IsARegularOneOfItsOwnerAndNeverALink) {
  constexpr char kRefused[] = "13 none 5 5";
  const fs::path real = m_path.parent_path() / "Real.ini";
  EXPECT_EQ(Use(kFile), "0 1 0 0");
  fs::rename(m_path, real);
  fs::create_symlink("absent", m_path);
  EXPECT_EQ(Use(kFile), kRefused);
  EXPECT_TRUE(PathFileExistsW(kFile)) << "a link is something";
  fs::remove(m_path);
  if (geteuid() == 0) {
    fs::copy_file(real, m_path);
    ASSERT_EQ(chown(m_path.c_str(), kOther, kOther), 0);
    EXPECT_EQ(Use(kFile), kRefused) << "another's file";
    fs::create_directory(m_root / "C/Theirs");
    fs::copy_file(real, m_root / "C/Theirs/Real.ini");
    ASSERT_EQ(chown((m_root / "C/Theirs").c_str(), kOther, kOther), 0);
    EXPECT_EQ(Use(L"C:\\Theirs\\Real.ini"), kRefused) << "own file in another's folder";
  }
  EXPECT_EQ(m_machine.Read(L"C:\\SigilTest\\Real.ini"), "[User]\nA=2\r\n");

  // Nor does a link lead there; but the machine's account may name a path of Linux.
  fs::create_directory_symlink("SigilTest", m_root / "C/Link");
  EXPECT_EQ(Use(L"C:\\Link\\Real.ini"), kRefused);
  EXPECT_FALSE(PathIsDirectoryW(L"C:\\Link"));
  const fs::path met = m_path.parent_path();
  constexpr wchar_t kReal[] = L"C:\\SigilTest\\Real.ini";
  EXPECT_EQ(Use(kReal), "0 2 0 0");
  fs::rename(met, m_root / "C/Moved");
  fs::create_directory_symlink("Moved", met);
  EXPECT_EQ(Use(kReal), kRefused) << "a link in the place of a folder that was met before";
  fs::remove(met);
  fs::rename(m_root / "C/Moved", met);
  std::string outside = (fs::temp_directory_path() / "sigil-test-XXXXXX").string();
  ASSERT_NE(mkdtemp(outside.data()), nullptr);
  fs::create_symlink(real, outside + "/link");
  std::FILE* stream = nullptr;
  EXPECT_EQ(_wfopen_s(&stream, platform::FromUtf8(outside + "/link").c_str(), L"rb"), 0);
  std::fclose(stream);
  fs::rename(real, outside + "/file");
  fs::permissions(outside + "/file", fs::perms(0644));
  fs::remove(outside + "/link");
  fs::create_symlink("file", outside + "/link");
  EXPECT_EQ(Use(platform::FromUtf8(outside + "/link").c_str()), "0 2 0 0");
  platform::ChangeWholeFile(outside + "/link", [](const auto&) { return "new"; });
  EXPECT_EQ(*platform::ReadWholeFile(outside + "/file"), "new");
  EXPECT_EQ(fs::status(outside + "/file").permissions(), fs::perms(0644));
  ASSERT_EQ(mkfifo((outside + "/fifo").c_str(), 0600), 0);
  EXPECT_EQ(_wfopen_s(&stream, platform::FromUtf8(outside + "/fifo").c_str(), L"rb"), EACCES);
  fs::remove_all(outside);
}

/// The kernel's guards of links and files in sticky folders, whatever its own settings are.
TEST_F(MachineFile, IsNotGotAtByALinkThatAnotherAccountPlanted) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be two accounts";
  constexpr mode_t kSticky = 01777, kShared = 0777, kClosed = 0755;
  const struct {
    mode_t folder;
    uid_t owner;
    const char* way;  ///< From the folder.
    bool isFollowed;
  } cases[] = {{kSticky, kOther, "link", false},       {kSticky, 0, "link", true},
               {kShared, kOther, "link", false},       {kClosed, kOther, "link", true},
               {kSticky, kOther, "folder/new", false}, {kSticky, 0, "folder/new", true},
               {kSticky, kOther, "file", false},       {kShared, kOther, "file", true}};
  const auto replace = [](const fs::path& file) { platform::ReplaceWholeFile(file, "new"); };
  const auto append = [](const fs::path& file) {
    if (!platform::Open(file, O_WRONLY | O_APPEND | O_CREAT)) throw std::errc{errno};
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(std::string(test.way) + " " + std::to_string(test.folder + test.owner));
    std::string root = (fs::temp_directory_path() / "sigil-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(root.data()), nullptr);
    const fs::path folder = fs::path(root) / "shared", victim = fs::path(root) / "victim";
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms(test.folder));
    std::ofstream(victim) << "old";
    std::ofstream(folder / "file") << "old";
    fs::permissions(folder / "file", fs::perms(0666));
    fs::create_symlink(victim, folder / "link");
    fs::create_symlink(root, folder / "folder");
    for (const char* name : {"file", "link", "folder"})
      ASSERT_EQ(lchown((folder / name).c_str(), test.owner, test.owner), 0);
    const auto refuses = [&](const auto& write) {
      try {
        write(folder / test.way);
        return false;
      } catch (...) {
        return true;
      }
    };
    EXPECT_EQ(refuses(append), !test.isFollowed);
    EXPECT_EQ(refuses(replace), !test.isFollowed);
    const bool isLink = std::string_view(test.way) == "link";
    EXPECT_EQ(platform::ReadWholeFile(victim), test.isFollowed && isLink ? "new" : "old");
    EXPECT_EQ(fs::exists(fs::path(root) / "new"),
              test.isFollowed && std::string_view(test.way) == "folder/new");
    if (test.folder == kShared && !isLink) {
      EXPECT_EQ(fs::status(folder / "file").permissions() & fs::perms(022), fs::perms::none);
    }
    fs::remove_all(root);
  }
}

TEST_F(MachineFile, IsNoStandardStreamOfAHostThatHasNone) {
  const pid_t child = fork();
  if (child == 0) {
    for (int stream = 0; stream <= 2; ++stream) close(stream);
    const platform::Descriptor file = platform::Open(m_path, O_RDWR);
    const platform::Descriptor folder = platform::OpenFolder(m_root, platform::Missing::kFails);
    _exit(file.Get() > 2 && folder.Get() > 2 && fcntl(file.Get(), F_GETFD) == FD_CLOEXEC ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST_F(MachineFile, IsAsItWasWhereTheSizeOfFilesIsLimited) {
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit less = {4, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &less);
  const DWORD error = ErrorOf(WritePrivateProfileStringW(L"User", L"A", L"2", kFile));
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Global\\TEST");
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(error, ERROR_DISK_FULL);
  EXPECT_EQ(mutex, nullptr);
  EXPECT_EQ(m_machine.Read(kFile), "[User]\nA=1\n");
}

TEST_F(MachineFile, HasAGreatestSize) {
  std::FILE* stream = nullptr;
  fs::resize_file(m_path, platform::kLargestFile);
  EXPECT_EQ(_wfopen_s(&stream, kFile, L"rb"), 0);
  std::fclose(stream);
  EXPECT_EQ(platform::ReadWholeFile(m_path)->size(), platform::kLargestFile);
  fs::resize_file(m_path, platform::kLargestFile + 1);
  EXPECT_EQ(_wfopen_s(&stream, kFile, L"rb"), EFBIG);
  EXPECT_THROW(platform::ReadWholeFile(m_path), std::system_error);
}

TEST_F(MachineFile, IsMadeForItsAccountAloneWhateverTheUmask) {
  for (const mode_t mask : {0, 0277}) {
    const mode_t before = umask(mask);
    const fs::path file = m_root / "D" / std::to_string(mask) / "file";
    EXPECT_TRUE(platform::Open(file, O_WRONLY | O_CREAT));
    const std::wstring value = std::to_wstring(mask);  // a change, so that the file is made anew
    EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"A", value.c_str(), kFile));
    umask(before);
    for (const fs::path& made : {file, m_path})
      EXPECT_EQ(fs::status(made).permissions(), fs::perms(0600)) << made;
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms(0700));
  }
  const mode_t before = umask(0);
  setenv("SIGIL_ROOT", (m_root / "above/its/root").c_str(), 1);
  EXPECT_TRUE(platform::OpenFolder(platform::MachineRoot() / "C", platform::Missing::kIsMade));
  umask(before);
  setenv("SIGIL_ROOT", m_root.c_str(), 1);
  for (const char* made : {"above", "above/its", "above/its/root"})
    EXPECT_EQ(fs::status(m_root / made).permissions(), fs::perms(0700)) << made;
  // What an older version or another program left open to others is closed when it is met.
  fs::permissions(m_path.parent_path(), fs::perms(0777));
  EXPECT_EQ(Use(kFile), "0 191 0 0");
  EXPECT_EQ(fs::status(m_path.parent_path()).permissions(), fs::perms(0700));
}

/// The last error of everything that asks the machine, or that it was not refused.
std::string AskAll() {
  std::string told = Use(kFile);
  const auto add = [&](DWORD error) { told += " " + std::to_string(error); };
  add(ErrorOf(CreateMutexW(nullptr, FALSE, L"Global\\TEST")));
  add(ErrorOf(
      CreateFileW(L"\\\\.\\pipe\\p", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
  add(ErrorOf(PathIsDirectoryW(L"C:\\SigilTest")));
  DWORD needed = 0, count = 0;
  add(ErrorOf(EnumPrintersW(6, nullptr, 2, nullptr, 0, &needed, &count)));
  wchar_t name[16], *folder = nullptr;
  DWORD capacity = 16;
  add(ErrorOf(GetUserNameW(name, &capacity)));
  add(SHGetKnownFolderPath(FOLDERID_LocalAppDataLow, 0, nullptr, &folder) == E_FAIL ? 5 : 0);
  return told;
}

std::string Snapshot(const fs::path& root) {
  std::string all;
  for (const auto& each : fs::recursive_directory_iterator(root))
    all += each.path().string() + " " +
           std::to_string(each.last_write_time().time_since_epoch().count()) + "\n";
  return all;
}

// With the modes of an account that lets others look.
TEST_F(MachineFile, IsClosedToEveryOtherAccountRootIncluded) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be two accounts";
  fs::permissions(m_root, fs::perms(0755));
  for (const auto& each : fs::recursive_directory_iterator(m_root))
    fs::permissions(each.path(), fs::perms(0755));
  const std::string before = Snapshot(m_root);
  const pid_t child = fork();
  if (child == 0) {
    const bool isOther = setgroups(0, nullptr) == 0 && setresgid(kOther, kOther, kOther) == 0 &&
                         setresuid(kOther, kOther, kOther) == 0;
    EXPECT_TRUE(isOther);
    EXPECT_EQ(AskAll(), "13 none 5 5 5 5 5 5 5 5");
    _exit(testing::Test::HasFailure());
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(chown(m_root.c_str(), kOther, kOther), 0);
  EXPECT_EQ(AskAll(), "13 none 5 5 5 5 5 5 5 5") << "root in another's machine";
  ASSERT_EQ(chown(m_root.c_str(), 0, 0), 0);
  EXPECT_EQ(Snapshot(m_root), before);
}

TEST_F(MachineFile, IsNotWaitedForWithoutEnd) {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Global\\TEST");
  const platform::Descriptor folder(open(m_path.parent_path().c_str(), O_RDONLY | O_DIRECTORY));
  const platform::Descriptor file(open((m_root / "mutex/Global+TEST").c_str(), O_RDWR));
  CloseHandle(mutex);
  ASSERT_EQ(flock(folder.Get(), LOCK_EX) | flock(file.Get(), LOCK_EX), 0);
  DWORD inThread = 0;
  std::thread writer(
      [&] { inThread = ErrorOf(WritePrivateProfileStringW(L"User", L"A", L"2", kFile)); });
  EXPECT_EQ(ErrorOf(CreateMutexW(nullptr, FALSE, L"Global\\TEST")), ERROR_LOCK_VIOLATION);
  writer.join();
  EXPECT_EQ(inThread, ERROR_LOCK_VIOLATION);
}

}  // namespace
}  // namespace tests
