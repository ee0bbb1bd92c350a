#include "boundary/exports.h"
#include "tests/recorder/recorder.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

class Exclude : public testing::Test {
 protected:
  const Transcript m_told{{"management/transcripts/shared", "management/transcripts/exclude"}};
};

TEST_F(Exclude, ListsAreRebuiltFromThePrinters) {
  TestMachine machine;
  machine.SetPrinters({{L"他社", L"Other Driver", std::nullopt},
                       {L"会議室", kSuiteDriver, L"3F"},
                       {L"受付", L"Other Driver", L""},
                       {L"監視", L"Other Driver", L"2F [監視対象プリンタ] 東"},
                       {L"半角", L"Other Driver", L"[監視対象ﾌﾟﾘﾝﾀ]"}});
  RecorderSetState(L"excludes", L"3");
  RecorderSetState(L"second excludes", L"3");
  RecorderScript(L"Settings::GetExcludePrinter", 2, -1);
  RecorderScript(L"Settings::GetSecondExclude", 1, 1);
  RecorderScript(L"Settings::DeleteExcludePrinter", 0, -1);
  RecorderScript(L"Settings::AddExcludePrinter", 0, -1);
  EXPECT_EQ(SigilSettingUpdateExcludePrinter(), 0);
  ExpectRecord(m_told("rebuilt"));
}

TEST_F(Exclude, AMachineWithoutPrintersEmptiesTheLists) {
  TestMachine machine;
  EXPECT_EQ(SigilSettingUpdateExcludePrinter(), 0);
  ExpectRecord(m_told("no printers"));
}

TEST_F(Exclude, EachFailureHasItsRecord) {
  const auto prepare = [](TestMachine& machine) {
    machine.SetPrinters({{L"他社", L"Other Driver", std::nullopt}});
  };
  ExpectRows(m_told, prepare, SigilSettingUpdateExcludePrinter);
}

}  // namespace
}  // namespace tests
