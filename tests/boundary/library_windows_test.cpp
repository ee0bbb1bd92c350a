// The library as Windows hosts meet it: loading, the export table, and what it hands to Windows.

#include <gtest/gtest.h>

#include <set>

#include "boundary/exports.h"
#include "tests/boundary/replacement_windows.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

/// Where the client's files lie. (Below the user's folder Wine links to the whole of his home.)
std::vector<fs::path> Files() {
  std::vector<fs::path> files;
  for (const wchar_t* folder : {L"C:\\ProgramData", kSettingFolder})
    for (const auto& entry : fs::recursive_directory_iterator(folder))
      files.push_back(entry.path());
  return files;
}

TEST(Library, TellsItsVersionUnloadedAsItsFellowsDo) {
  for (const char* file : {"SigilSetting.dll", "log4cxx.dll", "sigilctl.exe"}) {
    SCOPED_TRACE(file);
    const fs::path path = fs::absolute(SIGIL_BUILD_FOLDER) / file;
    const HMODULE library = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const HRSRC found = FindResourceW(library, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    ASSERT_NE(found, nullptr) << GetLastError();
    const auto* const text =
        static_cast<const wchar_t*>(LockResource(LoadResource(library, found)));
    const std::wstring_view resource(text, SizeofResource(library, found) / sizeof *text);
    for (const wchar_t* name : {L"FileVersion", L"ProductVersion"}) {
      const std::size_t place = resource.find(name);
      ASSERT_NE(place, resource.npos);
      EXPECT_NE(resource.substr(place, 24).find(L"" SIGIL_VERSION), resource.npos);
    }
    FreeLibrary(library);
  }
}

TEST(Library, LoadingAndUnloadingTouchesNoFileAndLogsNothing) {
  TestMachine machine;
  RecorderReset();
  const fs::path copy = fs::path(kSettingFolder) / L"Copy.dll";  // This process has the original.
  fs::copy_file(L"SigilSetting.dll", copy);
  const auto before = Files();
  for (int i = 0; i < 2; ++i) {
    const HMODULE library = LoadLibraryW(copy.c_str());
    ASSERT_NE(library, nullptr) << GetLastError();
    const char* const exports[] = {
        "SigilSettingReleaseWaterMark",       "SigilSettingSetWaterMark",
        "SigilSettingUpdateWaterMarkSetting", "SigilSettingReleaseWaterMarkForService",
        "SigilSettingSetUseContentLog",       "SigilSettingUpdateExcludePrinter"};
    for (WORD ordinal = 1; ordinal <= 6; ++ordinal)
      EXPECT_EQ(GetProcAddress(library, MAKEINTRESOURCEA(ordinal)),
                GetProcAddress(library, exports[ordinal - 1]))
          << ordinal;
    EXPECT_EQ(GetProcAddress(library, MAKEINTRESOURCEA(7)), nullptr);
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetModuleHandleW(L"Copy.dll"), nullptr);
  }
  EXPECT_EQ(Files(), before);
  EXPECT_EQ(RecorderCount(), 0U);
}

TEST(Library, AThreadInTheOtherApartmentGetsWhatNeedsNoDocument) {
  TestMachine machine;
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, SealPolicy("<QuietMIMOSA><HLE/></QuietMIMOSA>"));
  EXPECT_EQ(SigilSettingSetWaterMark(), 0);
  RunInThread([] {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    EXPECT_EQ(SigilSettingSetWaterMark(), -101);
    EXPECT_EQ(SigilSettingUpdateExcludePrinter(), 0);
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier;
    CoGetApartmentType(&type, &qualifier);
    EXPECT_EQ(type, APTTYPE_MTA) << "it was closed for the thread";
    CoUninitialize();
  });
}

TEST(Library, APassWaitsForTheMutex) {
  TestMachine machine;
  const HANDLE mutex = CreateMutexW(nullptr, TRUE, L"Global\\MIMOSA_HLE_SIGIL_SETTING");
  const auto pass = [](void*) -> DWORD WINAPI { return SigilSettingSetUseContentLog(true) == 0; };
  const HANDLE thread = CreateThread(nullptr, 0, pass, nullptr, 0, nullptr);
  constexpr DWORD kPassesEnd = 300;  // Milliseconds; a slow machine makes the look weaker, no more.
  EXPECT_EQ(WaitForSingleObject(thread, kPassesEnd), static_cast<DWORD>(WAIT_TIMEOUT));
  ReleaseMutex(mutex);
  WaitForSingleObject(thread, INFINITE);
  DWORD isDone = 0;
  GetExitCodeThread(thread, &isDone);
  EXPECT_EQ(isDone, 1U);
  for (const HANDLE handle : {mutex, thread}) CloseHandle(handle);
}

const std::wstring kPolicy = Policy(1, L"0", {{L"E1", {{L"Kind", L"0"}, {L"Text", L"社外秘"}}}});

/// How many of a thread's calls, which begin with another one in each thread, gave what they may.
DWORD WINAPI CallAll(void* own) {
  const std::pair<int (*)(), std::set<int>> calls[] = {
      {[] { return SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, kPolicy.c_str(), 1); },
       {0, -99}},
      {SigilSettingUpdateExcludePrinter, {0}},
      {[] { return SigilSettingSetUseContentLog(true); }, {0}},
      // -201: another call has SystemSetting.csv open at this moment
      {SigilSettingSetWaterMark, {0, -201}}};
  DWORD good = 0;
  for (std::size_t i = 0; i < 3 * std::size(calls); ++i) {
    const auto& [call, results] =
        calls[(i + reinterpret_cast<std::size_t>(own)) % std::size(calls)];
    good += results.contains(call()) ? 1U : 0U;
  }
  return good;
}

void ExpectEightGoodThreads() {
  std::vector<HANDLE> threads;
  for (std::size_t i = 0; i < 8; ++i)
    threads.push_back(CreateThread(nullptr, 0, CallAll, reinterpret_cast<void*>(i), 0, nullptr));
  for (const HANDLE thread : threads) {
    DWORD good = 0;
    WaitForSingleObject(thread, INFINITE);
    GetExitCodeThread(thread, &good);
    EXPECT_EQ(good, 12U);
    CloseHandle(thread);
  }
}

// Run by the next one as another process.
TEST(Library, DISABLED_EightThreadsOfTheOtherProcess) {
  ExpectEightGoodThreads();
}

TEST(Library, TwoProcessesOfEightThreadsCallAtOnce) {
  TestMachine machine;
  machine.SetPrinters({{L"Suite", kSuiteDriver, {}}, {L"Other", L"Driver", {}}});
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, SealPolicy("<QuietMIMOSA><HLE/></QuietMIMOSA>"));
  wchar_t command[] =
      L"boundary_tests.exe --gtest_brief=1 --gtest_also_run_disabled_tests "
      L"--gtest_filter=Library.DISABLED_EightThreadsOfTheOtherProcess";
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  PROCESS_INFORMATION other;
  ASSERT_TRUE(CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                             &other));
  ExpectEightGoodThreads();
  DWORD status = 1;
  WaitForSingleObject(other.hProcess, INFINITE);
  GetExitCodeProcess(other.hProcess, &status);
  EXPECT_EQ(status, 0U);
  for (const HANDLE handle : {other.hProcess, other.hThread}) CloseHandle(handle);
}

std::vector<std::string> g_attributes;

void Note(const char* operation, const SECURITY_ATTRIBUTES* attributes) {
  BOOL present = FALSE, defaulted = TRUE;
  ACL* list = reinterpret_cast<ACL*>(-1);
  GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &present, &list, &defaulted);
  const bool open = present && list == nullptr && !defaulted;
  g_attributes.push_back(std::string(operation) + " " + std::to_string(attributes->nLength) +
                         (attributes->bInheritHandle ? " inherited" : "") + (open ? " open" : ""));
}

HANDLE WINAPI NoteMutex(SECURITY_ATTRIBUTES* attributes, BOOL owned, LPCWSTR name) {
  Note("mutex", attributes);
  return CreateMutexW(attributes, owned, name);
}

HANDLE WINAPI NotePipe(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes,
                       DWORD disposition, DWORD flags, HANDLE templateFile) {
  if (attributes != nullptr) Note("pipe", attributes);
  return CreateFileW(path, access, share, attributes, disposition, flags, templateFile);
}

TEST(Library, TheServiceReceivesSixteenBytesAndTheSharedObjectsAreOpenToAll) {
  using namespace std::string_literals;
  TestMachine machine;
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, SealPolicy("<QuietMIMOSA><HLE/></QuietMIMOSA>"));
  g_attributes.clear();
  const HMODULE library = GetModuleHandleW(L"SigilSetting.dll");
  const Replacement mutex(library, "CreateMutexW", reinterpret_cast<void*>(NoteMutex));
  const Replacement file(library, "CreateFileW", reinterpret_cast<void*>(NotePipe));
  const std::pair<int (*)(), std::string> cases[] = {
      {SigilSettingReleaseWaterMark, "R\0e\0l\0e\0a\0s\0e\0\0\0"s},
      {SigilSettingSetWaterMark, "S\0e\0t\0t\0i\0n\0g\0\0\0"s}};
  for (const auto& [operation, message] : cases) {
    const HANDLE pipe =
        CreateNamedPipeW(L"\\\\.\\pipe\\hlwatermark", PIPE_ACCESS_INBOUND,
                         PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 4096, 0, nullptr);
    EXPECT_EQ(operation(), 0);
    // The client has come, written and gone; what it wrote waits.
    char bytes[64];
    DWORD size = 0;
    EXPECT_TRUE(ReadFile(pipe, bytes, sizeof bytes, &size, nullptr));
    EXPECT_EQ(std::string(bytes, size), message);
    EXPECT_FALSE(ReadFile(pipe, bytes, sizeof bytes, &size, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
    CloseHandle(pipe);
  }
  const std::vector<std::string> both = {"mutex 12 inherited open", "pipe 12 inherited open"};
  EXPECT_EQ(g_attributes, (std::vector{both[0], both[1], both[0], both[1]}));
}

}  // namespace
}  // namespace tests
