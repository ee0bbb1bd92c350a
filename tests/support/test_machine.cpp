#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "platform/faults.h"
#include "platform/synch.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/seal.h"

namespace tests {

namespace {

/// Another thread takes the mutex of the setting file, since it lets its owner in again; what
/// became of its wait.
DWORD TakeMutex(HANDLE& mutex, bool givesBack) {
  DWORD wait = WAIT_FAILED;
  RunInThread([&] {
    mutex = CreateMutexW(nullptr, FALSE, L"Global\\MIMOSA_HLE_SIGIL_SETTING");
    wait = WaitForSingleObject(mutex, 0);
    if (givesBack) ReleaseMutex(mutex);
  });
  return wait;
}

}  // namespace

TestMachine::TestMachine() {
  Open();
  RecorderReset();
  RecorderSetState(L"setting folder", kSettingFolder);
  platform::ClearFaults();
  WatchMachine();
}

TestMachine::~TestMachine() {
  platform::ClearFaults();
  EXPECT_EQ(platform::TakeUnmetFaults(), "") << "these faults failed no call";
  ExpectNothingHeld();
  Close();
}

void TestMachine::ExpectNothingHeld() const {
  EXPECT_EQ(RecorderLive(), 0) << "component objects and libraries are still there";
  HANDLE mutex = nullptr;
  EXPECT_EQ(TakeMutex(mutex, true), WAIT_OBJECT_0) << "the mutex is still held";
  CloseHandle(mutex);
}

void TestMachine::Write(std::wstring_view path, std::string_view bytes) {
  const std::filesystem::path file = Place(path);
  create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
}

void TestMachine::WriteProfile(std::wstring_view path, std::wstring_view text) {
  Write(path, "\xFF\xFE" + platform::ToUtf16LeBytes(text));
}

std::string TestMachine::Read(std::wstring_view path) const {
  std::ifstream file(Place(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void TestMachine::Remove(std::wstring_view path) {
  std::filesystem::remove(Place(path));
}

void TestMachine::RememberFullName(std::wstring_view fullName) {
  WriteProfile(kUserInfo,
               L"[User]\r\nGetUserState=1\r\nUserFullName=" + std::wstring(fullName) + L"\r\n");
}

HANDLE AbandonMutex() {
  HANDLE mutex = nullptr;
  TakeMutex(mutex, false);
  return mutex;
}

std::string SealPolicy(std::string_view clear) {
  std::string ended(clear);
  ended.append(16 - ended.size() % 16, '\0');  // At least one NUL ends the text.
  return Seal(ended, Key());
}

}  // namespace tests
