#include "boundary/exports.h"
#include "tests/management/rows.h"

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
  const std::vector<Row> rows = {
      {"no mutex", Fault("CreateMutexW"), -101},
      {"failed wait", Fault("WaitForSingleObject"), -101},
      {"no library", Fault("LoadLibraryW"), -101},
      {"no library", Fault("GetModuleFileNameW"), -101},
      {"no entry point", Fault("GetProcAddress"), -101},
      {"only the entry point that is used", Fault("GetProcAddress", 1), 0},
      {"instance refused", Gives(L"SigilCreateInstance", 1, -5), -101},
      {"instance with a positive result", Gives(L"SigilCreateInstance", 1, 1), -101},
      {"not saved at the end", Gives(L"Settings::Save", 1, -1), 0},
      {"saved with a positive result", Gives(L"Settings::Save", 1, 7), 0},
      {"results that nobody reads",
       Gives(L"Settings::Lock", 0, -1) + Gives(L"Settings::UnLock", 0, -1) +
           Gives(L"Settings::Commit", 0, -1) + Gives(L"Settings::SetUseContentLog", 0, -1),
       0},
      {"no memory for the descriptor", Fault("LocalAlloc"), 0},
      {"descriptor not initialised", Fault("InitializeSecurityDescriptor"), 0},
      {"no access list", Fault("SetSecurityDescriptorDacl"), 0},
      {"exception while creating the instance", Throws(L"SigilCreateInstance"), -101},
      {"exception while locking", Throws(L"Settings::Lock"), -101},
      {"exception while saving", Throws(L"Settings::Save"), -101},
      {"exception while saving", Throws(L"Settings::Save") + Throws(L"Settings::Release"), -101},
      {"exception while releasing", Throws(L"Settings::Release"), -101},
      {"exception after an early end",
       Gives(L"SigilCreateInstance", 1, 1) + Throws(L"Settings::Release"), -101}};
  ExpectRows(
      m_told, rows, [](TestMachine&) {}, [] { return SigilSettingSetUseContentLog(true); });
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
