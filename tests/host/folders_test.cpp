#include "host/folders.h"

#include <gtest/gtest.h>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

constexpr char kDefault[] = R"(C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS)";

std::string EmsFolder(bool result) {
  RecorderReset();
  CString folder = L"before";
  EXPECT_EQ(SigilSettingManagement::GetEMSFolderPath(folder), result);
  return platform::ToUtf8(std::wstring_view(folder.GetString()));
}

const std::string kNotSet = R"(
4 153100320 SigilSettingManagement::GetEMSFolderPath "配信先ディレクトリが、設定されていません。"
)";
const std::string kBlank = R"(
4 153100330 SigilSettingManagement::GetEMSFolderPath "設定値が異常です。[配信先ディレクトリ] 設定値:[$1]"
)";
const std::string kNoDirectory = R"(
5 153100340 SigilSettingManagement::GetEMSFolderPath "ディレクトリの存在確認及び、作成処理に失敗しました。[配信先ディレクトリ] 設定値:[$1]"
)";

TEST(Folders, ClientIniMovesTheDeliveryFolder) {
  TestMachine machine;
  EXPECT_EQ(EmsFolder(false), kDefault);
  ExpectRecord(kNotSet);

  machine.Write(L"C:\\配信 先\\file", "x");
  const std::wstring longName = L"C:\\" + std::wstring(1100, L'x');
  const std::string cut = platform::ToUtf8(longName.substr(0, 1023));
  const struct {
    std::wstring value;
    bool result;
    const char* folder;
    std::string record;
  } kCases[] = {
      {L"EMSDir=", false, kDefault, kNotSet},
      {L"EMSDir=   ", false, kDefault, kNotSet},
      {L"Other=C:\\配信 先", false, kDefault, kNotSet},
      {L"EMSDir=\"  \"", false, kDefault, Fill(kBlank, {"  "})},
      {L"EMSDir=\x3000\x3000", false, kDefault, Fill(kBlank, {"　　"})},
      {L"EMSDir=C:\\none", false, kDefault, Fill(kNoDirectory, {R"(C:\none)"})},
      {L"EMSDir=\" C:\\配信 先\\file \"", false, kDefault,
       Fill(kNoDirectory, {R"( C:\配信 先\file )"})},
      {L"EMSDir=" + longName, false, kDefault, Fill(kNoDirectory, {cut})},
      {L"EMSDir=C:\\配信 先", true, R"(C:\配信 先)", ""},
      {L"emsdir =  C:\\配信 先\\  ", true, R"(C:\配信 先\)", ""},
      {L"EMSDir=\"  C:\\配信 先\x3000\"", true, R"(C:\配信 先)", ""},
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(platform::ToUtf8(one.value));
    machine.WriteProfile(kClientIni, L"[Setting]\r\n" + one.value + L"\r\n");
    EXPECT_EQ(EmsFolder(one.result), one.folder);
    ExpectRecord(one.record);
  }
}

TEST(Folders, TheShellThatDoesNotTellIsPassedOver) {
  if (!platform::kHasFaults) GTEST_SKIP() << "the shell of this home cannot be made to fail";
  TestMachine machine;
  for (const char* call : {"SHGetMalloc", "SHGetSpecialFolderLocation", "SHGetPathFromIDListW"}) {
    RecorderReset();
    platform::SetFault(call, 0, static_cast<DWORD>(E_FAIL));
    EXPECT_STREQ(GetCommonDataPath(), L"C:\\ProgramData") << call;
    platform::ClearFaults();
  }
  ExpectRecord("");
}

}  // namespace
}  // namespace tests
