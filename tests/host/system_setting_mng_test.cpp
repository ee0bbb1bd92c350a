#include "host/system_setting_mng.h"

#include <gtest/gtest.h>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

using SigilSettingManagement::IsWatermarkFuncSetting;

std::string FieldsOf(TestMachine& machine, const std::string& line) {
  machine.Write(kSystemSetting, line);
  CSystemSettingMng file(kSystemSetting);
  EXPECT_TRUE(file.Open(kSystemSetting, CFile::modeRead | CFile::typeText));
  std::string fields;
  if (file.ReadCSV() != 1) return "no row";
  constexpr int kMore = 9;
  for (int i = 0; i < kMore; ++i)
    fields += platform::ToUtf8(std::wstring_view(file.GetDataStr(i).GetString())) + "|";
  EXPECT_EQ(file.GetDataNum(-1), 0);
  fields.erase(fields.find_last_not_of('|') + 1);
  return fields;
}

TEST(SystemSettings, ARowIsPartedAtItsCommas) {
  TestMachine machine;
  const struct {
    const char *line, *fields;
  } kCases[] = {
      {"63,1", "63|1"},
      {"\"63\",\"1\"", "63|1"},
      {"63,\"1,2\"", "63|1,2"},
      {"63,\"a\"\"b\"", "63|a\"b"},
      {"abc\"d\"e", "abc\"d\"e"},
      {"63,", "63"},
      {"63,\"1", "63|163,1"},
      {",,x", "||x"},
      {"a\"b\"", "ab"},
      {"abcd\"e\"", "abcd\"e"},
      {"abc,\"d\"", "abc|d"},
      {"\"\"\"\"", "\""},
      {"\"", ""},
      {"x,\"a,b\"c,d", "x|a,b\"c|d"},
      {"", "no row"},
      {"\r\n63,1", "no row"},
      {"63 ,1", "63 |1"},
  };
  for (const auto& one : kCases) EXPECT_EQ(FieldsOf(machine, one.line), one.fields) << one.line;
}

TEST(SystemSettings, TheLastRowOfTheItemCounts) {
  TestMachine machine;
  const struct {
    const char* file;
    int function;
  } kCases[] = {
      {"", 0},
      {"500,1\r\n", 0},
      {"63,1\r\n", 1},
      {"63,1", 1},
      {"63,2\n", 2},
      {"63,-1\n", -1},
      {"63,abc\n", 0},
      {"63\n", 0},
      {"63 ,1\n", 0},
      {"63,1\n63,0\n", 0},
      {"63,1\n63\n", 0},
      {"\n63,1\n", 0},
      {"63,99999999999\n", 2147483647},
      {"x,y\n63,\"1\"\n", 1},
      {"\xEF\xBB\xBF"
       "63,1\n",
       0},
      {"63, 1\n\n63,0\n", 1},
  };
  for (const auto& one : kCases) {
    machine.Write(kSystemSetting, one.file);
    EXPECT_EQ(IsWatermarkFuncSetting(), one.function) << one.file;
  }
  machine.Remove(kSystemSetting);
  EXPECT_EQ(IsWatermarkFuncSetting(), -1);
}

TEST(SystemSettings, EveryStepIsTraced) {
  TestMachine machine;
  machine.Write(kSystemSetting, "63,1\r\n500,3\r\n9\r\n\r\n63,0\r\n");
  const auto row = [](const std::string& key, const std::string& rest) {
    return Fill(R"(
0 0 CSystemSettingMng::ReadCSV "START"
0 0 CSystemSettingMng::ReadCSV "END"
0 0 CSystemSettingMng::GetDataStr "START"
0 0 CSystemSettingMng::GetDataStr "END"
1 152100010 CSystemSettingMng::LoadFile "項目キー" "$1"
)",
                {key}) +
           rest;
  };
  const std::string number = R"(
0 0 CSystemSettingMng::GetDataNum "START"
0 0 CSystemSettingMng::GetDataNum "END"
)";
  const std::string folder = R"(
4 153100320 SigilSettingManagement::GetEMSFolderPath "配信先ディレクトリが、設定されていません。"
)";
  const std::string begin = folder + R"(
0 0 CSystemSettingMng::CSystemSettingMng "START"
0 0 CSystemSettingMng::CSystemSettingMng "END"
0 0 CSystemSettingMng::LoadFile "START"
)";
  const std::string destroyed = R"(
0 0 CSystemSettingMng::~CSystemSettingMng "START"
0 0 CSystemSettingMng::~CSystemSettingMng "END"
)";
  EXPECT_EQ(IsWatermarkFuncSetting(), 1);
  ExpectRecord(begin + row("63", number) + row("500", number) + row("9", "") + R"x(
0 0 CSystemSettingMng::ReadCSV "START"
4 152100040 CSystemSettingMng::ReadCSV "CSVデータのデータがありません。"
2 152100020 CSystemSettingMng::LoadFile "透かしオプション 有効/無効：1"
2 152100050 CSystemSettingMng::LoadFile "イメージログオプション 有効/無効：3"
0 0 CSystemSettingMng::LoadFile "END"
3 153100660 SigilSettingManagement::IsWatermarkFuncSetting "透かし有効無効設定取得成功 透かし機能[1](無：0 / 有：1)"
)x" + destroyed,
               Hide::kNothing);
  if (!platform::kHasFaults) return;

  // A read error after the first row: the value read so far is not taken.
  RecorderReset();
  platform::SetFault("CStdioFile::ReadString", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(IsWatermarkFuncSetting(), 0);
  ExpectRecord(begin + row("63", number) + R"(
0 0 CSystemSettingMng::ReadCSV "START"
5 153100670 SigilSettingManagement::IsWatermarkFuncSetting "SystemSettingファイルの読み出しに失敗しました。"
)" + destroyed,
               Hide::kNothing);
  platform::ClearFaults();

  RecorderReset();
  platform::SetFault("CStdioFile::Open", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(IsWatermarkFuncSetting(), -1);
  ExpectRecord(begin + destroyed + R"(
5 153100650 SigilSettingManagement::IsWatermarkFuncSetting "システム設定ファイルの読み込みに失敗しました"
)",
               Hide::kNothing);
}

}  // namespace
}  // namespace tests
