#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/seal.h"

namespace tests {

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

std::string SealPolicy(std::string_view clear) {
  std::string ended(clear);
  ended.append(16 - ended.size() % 16, '\0');  // At least one NUL ends the text.
  return Seal(ended, Key());
}

}  // namespace tests
