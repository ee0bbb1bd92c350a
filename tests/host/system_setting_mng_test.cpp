#include "host/system_setting_mng.h"

#include <gtest/gtest.h>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"

namespace tests {
namespace {

using SigilSettingManagement::IsWatermarkFuncSetting;

TEST(SystemSettings, ARowIsPartedAtItsCommas) {
  TestMachine machine;
  const std::pair<const char*, const char*> cases[] = {
      {R"(63,1)", R"(63|1)"},
      {R"("63","1")", R"(63|1)"},
      {R"(63,"1,2")", R"(63|1,2)"},
      {R"(63,"a""b")", R"(63|a"b)"},
      {R"(abc"d"e)", R"(abc"d"e)"},
      {R"(63,)", R"(63)"},
      {R"(63,"1)", R"(63|163,1)"},
      {R"(,,x)", R"(||x)"},
      {R"(a"b")", R"(ab)"},
      {R"(ab"c")", R"(abc)"},
      {R"(abcd"e")", R"(abcd"e)"},
      {R"(abc,"d")", R"(abc|d)"},
      {R"("""")", R"(")"},
      {R"(")", R"()"},
      {R"(x,"a,b"c,d)", R"(x|a,b"c|d)"},
      {R"(63 ,1)", R"(63 |1)"},
      {"", "no row"},
      {"\r\n63,1", "no row"},
  };
  for (const auto& [line, expected] : cases) {
    machine.Write(kSystemSetting, line);
    CSystemSettingMng file(kSystemSetting);
    EXPECT_TRUE(file.Open(kSystemSetting, CFile::modeRead | CFile::typeText));
    std::string fields = "no row";
    if (file.ReadCSV() == 1) {
      fields.clear();
      for (int i = 0; i < 9; ++i)
        fields += platform::ToUtf8(std::wstring_view(file.GetDataStr(i))) + "|";
      fields.erase(fields.find_last_not_of('|') + 1);
      EXPECT_EQ(file.GetDataNum(-1), 0);
    }
    EXPECT_EQ(fields, expected) << line;
  }
}

TEST(SystemSettings, TheLastRowOfTheItemCounts) {
  TestMachine machine;
  EXPECT_EQ(IsWatermarkFuncSetting(), -1);
  const struct {
    int function;
    std::vector<const char*> files;
  } cases[] = {
      {-1, {"63,-1\n"}},
      {0, {"", "500,1\r\n", "63,abc\n", "63\n", "63 ,1\n", "63,1\n63,0\n", "63,1\n63\n"}},
      {0,
       {"\n63,1\n",
        "\xEF\xBB\xBF"
        "63,1\n"}},
      {1, {"63,1\r\n", "63,1", "x,y\n63,\"1\"\n", "63, 1\n\n63,0\n"}},
      {2, {"63,2\n"}},
      {2147483647, {"63,99999999999\n"}},
  };
  for (const auto& test : cases) {
    for (const char* file : test.files) {
      machine.Write(kSystemSetting, file);
      EXPECT_EQ(IsWatermarkFuncSetting(), test.function) << file;
    }
  }
}

TEST(SystemSettings, EveryStepIsTraced) {
  const Transcript told({"host/transcripts/host"});
  TestMachine machine;
  machine.Write(kSystemSetting, "63,1\r\n500,3\r\n9\r\n\r\n63,0\r\n");
  EXPECT_EQ(IsWatermarkFuncSetting(), 1);
  ExpectRecord(told("settings read"), Hide::kNothing);
  if (!platform::kHasFaults) return;

  RecorderReset();
  platform::SetFault("CStdioFile::ReadString", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(IsWatermarkFuncSetting(), 0) << "the value read so far is not taken";
  ExpectRecord(told("settings not read to their end"), Hide::kNothing);

  RecorderReset();
  platform::ClearFaults();
  platform::SetFault("CStdioFile::Open", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(IsWatermarkFuncSetting(), -1);
  ExpectRecord(told("settings not opened"), Hide::kNothing);
}

}  // namespace
}  // namespace tests
