#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/faults.h"
#include "platform/synch.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/seal.h"

namespace tests {

constexpr wchar_t kMutex[] = L"Global\\MIMOSA_HLE_SIGIL_SETTING";

TestMachine::TestMachine() {
  Open();
  RecorderReset();
  RecorderSetState(L"setting folder", kSettingFolder);
  platform::ClearFaults();
  WatchMachine();
}

TestMachine::~TestMachine() {
  platform::ClearFaults();
  for (const wchar_t* kind : {L"Settings", L"PrinterSettings", L"LastSetting", L"CustomSetting",
                              L"Watermark", L"String", L"Library"})
    EXPECT_EQ(RecorderLive(kind), 0) << platform::ToUtf8(kind);
  EXPECT_TRUE(MutexIsFree());
  Close();
}

void TestMachine::WriteProfile(std::wstring_view path, std::wstring_view text) {
  Write(path, "\xFF\xFE" + platform::ToUtf16LeBytes(text));
}

void TestMachine::RememberFullName(std::wstring_view fullName) {
  WriteProfile(kUserInfo,
               L"[User]\r\nGetUserState=1\r\nUserFullName=" + std::wstring(fullName) + L"\r\n");
}

bool MutexIsFree() {
  DWORD wait = WAIT_FAILED;
  std::thread([&wait] {
    HANDLE mutex = CreateMutexW(nullptr, FALSE, kMutex);
    wait = WaitForSingleObject(mutex, 0);
    if (wait == WAIT_OBJECT_0) ReleaseMutex(mutex);
    CloseHandle(mutex);
  }).join();
  return wait == WAIT_OBJECT_0;
}

HANDLE AbandonMutex() {
  HANDLE mutex = nullptr;
  std::thread([&mutex] {
    mutex = CreateMutexW(nullptr, FALSE, kMutex);
    WaitForSingleObject(mutex, INFINITE);
  }).join();
  return mutex;
}

std::string SealPolicy(std::string_view clear) {
  std::string ended(clear);
  ended.append(16 - ended.size() % 16, '\0');  // At least one NUL ends the text.
  return Seal(ended, Key());
}

}  // namespace tests
