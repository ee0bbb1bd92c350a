#include "host/folders.h"

#include <gtest/gtest.h>

#include "host/ems_folder.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"

namespace tests {
namespace {

constexpr char kUsual[] = R"(C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS)";

TEST(Folders, ClientIniMovesTheDeliveryFolder) {
  const Transcript told({"host/transcripts/host"});
  TestMachine machine;
  machine.Write(L"C:\\配信 先\\file", "x");
  const std::wstring longName = L"C:\\" + std::wstring(1100, L'x');
  const struct {
    std::wstring value;
    const char* section;
    std::string shown;  // As the value was read, or the folder that it gives.
  } cases[] = {
      {L"", "folder not set", ""},  // No file at all.
      {L"EMSDir=", "folder not set", ""},
      {L"EMSDir=   ", "folder not set", ""},
      {L"Other=C:\\配信 先", "folder not set", ""},
      {L"EMSDir=\"  \"", "folder blank", "  "},
      {L"EMSDir=\x3000\x3000", "folder blank", "　　"},
      {L"EMSDir=C:\\none", "no folder", R"(C:\none)"},
      {L"EMSDir=\" C:\\配信 先\\file \"", "no folder", R"( C:\配信 先\file )"},
      {L"EMSDir=" + longName, "no folder", platform::ToUtf8(longName.substr(0, 1023))},
      {L"EMSDir=C:\\配信 先", "folder set", R"(C:\配信 先)"},
      {L"emsdir =  C:\\配信 先\\  ", "folder set", R"(C:\配信 先\)"},
      {L"EMSDir=\"  C:\\配信 先\x3000\"", "folder set", R"(C:\配信 先)"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(platform::ToUtf8(test.value));
    RecorderReset();
    if (!test.value.empty())
      machine.WriteProfile(kClientIni, L"[Setting]\r\n" + test.value + L"\r\n");
    const bool isSet = test.section == std::string("folder set");
    CString folder = L"before";
    EXPECT_EQ(SigilSettingManagement::GetEMSFolderPath(folder), isSet);
    EXPECT_EQ(platform::ToUtf8(std::wstring_view(folder)), isSet ? test.shown : kUsual);
    ExpectRecord(told(test.section, {test.shown}));
  }
}

TEST(Folders, TheShellThatDoesNotTellIsPassedOver) {
  if (!platform::kHasFaults) GTEST_SKIP() << "the shell of this home cannot be made to fail";
  TestMachine machine;
  for (const char* call : {"SHGetMalloc", "SHGetSpecialFolderLocation", "SHGetPathFromIDListW"}) {
    platform::SetFault(call, 0, static_cast<DWORD>(E_FAIL));
    EXPECT_STREQ(GetCommonDataPath(), L"C:\\ProgramData") << call;
    platform::ClearFaults();
  }
  ExpectRecord("");
  platform::SetFault("GetPrivateProfileStringW", 0, platform::kThrows);
  CString folder;
  EXPECT_FALSE(SigilSettingManagement::GetEMSFolderPath(folder));
  ExpectRecord(Transcript({"host/transcripts/host"})("folder not asked"));
}

}  // namespace
}  // namespace tests
