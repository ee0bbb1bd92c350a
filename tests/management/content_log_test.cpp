#include "boundary/exports.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

class ContentLog : public testing::Test {
 protected:
  const Transcript m_told{{"management/transcripts/shared", "management/transcripts/content_log"}};
};

TEST_F(ContentLog, StoresBothValuesAndSavesEachTime) {
  TestMachine machine;
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
  EXPECT_EQ(SigilSettingSetUseContentLog(false), 0);
  EXPECT_EQ(SigilSettingSetUseContentLog(false), 0);
  ExpectRecord(m_told("pass", {"1"}) + m_told("pass", {"0"}) + m_told("pass", {"0"}));
}

TEST_F(ContentLog, EachFailureHasItsRecord) {
  ExpectRows(
      m_told, [](TestMachine&) {}, [] { return SigilSettingSetUseContentLog(true); });
}

TEST_F(ContentLog, AnAbandonedMutexCostsOnePass) {
  TestMachine machine;
  const HANDLE mutex = AbandonMutex();
  EXPECT_EQ(SigilSettingSetUseContentLog(true), -101);
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
  ExpectRecord(m_told("abandoned mutex") + m_told("pass", {"1"}));
  CloseHandle(mutex);
}

}  // namespace
}  // namespace tests
