// Memory that ends, at each allocation of a whole call in turn: the call gives one of its results,
// lets nothing out, and leaves nothing held. On Linux alone, where every allocation of the process
// can be made to fail: those of C++, and those of the XML library.

#include <libxml/xmlmemory.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"
#include "tests/support/rows.h"

namespace {

// The number of the allocation, from 1, that fails, and whether all after it fail too. 0: none.
std::atomic<unsigned> theCount = 0, theFirstToFail = 0;
std::atomic<bool> isForGood = false;

bool HasMemory() {
  if (RecorderIsWorking()) return true;
  const unsigned number = ++theCount;
  return theFirstToFail == 0 || number < theFirstToFail || (number > theFirstToFail && !isForGood);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = HasMemory() ? std::malloc(size) : nullptr;
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace tests {
namespace {

TEST(OutOfMemory, EndsEachExportInAResult) {
  const auto allocate = [](std::size_t size) { return HasMemory() ? std::malloc(size) : nullptr; };
  xmlMemSetup(
      std::free, allocate,
      [](void* block, std::size_t size) {
        return HasMemory() ? std::realloc(block, size) : nullptr;
      },
      [](const char* text) { return HasMemory() ? strdup(text) : nullptr; });

  static const std::wstring policy = Policy(1, L"1", {{L"E", {{L"Text", L"{WinUser}"}}}});
  const struct {
    const char* name;
    int (*run)();
    unsigned step;  // Of the allocations; where another export makes the same pass, not each fails.
    std::initializer_list<int> results;
  } exports[] = {
      {"content log", [] { return SigilSettingSetUseContentLog(true); }, 1, {0, -101}},
      {"exclude", SigilSettingUpdateExcludePrinter, 1, {0, -101}},
      {"service", SigilSettingReleaseWaterMarkForService, 13, {0, -101}},
      // Nobody serves the pipe.
      {"release", SigilSettingReleaseWaterMark, 1, {0, -1, -2, -101, -200, -201}},
      {"set", SigilSettingSetWaterMark, 13, {0, -101, -200, -201}},
      {"update",
       [] { return SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, policy.c_str(), 1); },
       1,
       {0, -99, -101}}};
  for (const auto& [name, run, step, results] : exports) {
    TestMachine machine;
    machine.Write(kSystemSetting, "63,1\r\n");
    machine.Write(kPolicyFile, SealPolicy("\xEF\xBB\xBF" + platform::ToUtf8(policy)));
    machine.SetPrinters({{L"会議室", kSuiteDriver, std::nullopt}, {L"他社", L"Other", L""}});
    platform::SetObserver(nullptr);
    bool hasFailed = true;
    for (unsigned first = 1; hasFailed; first += step) {
      SCOPED_TRACE(name + (", allocation " + std::to_string(first)));
      RecorderReset();
      RecorderSetState(L"setting folder", kSettingFolder);
      isForGood = first % 2 == 0;
      theCount = 0;
      theFirstToFail = first;
      const int result = run();  // an exception ends the test program
      hasFailed = theCount >= first;
      theFirstToFail = 0;
      EXPECT_NE(std::ranges::find(results, result), results.end()) << result;
      machine.ExpectNothingHeld();
    }
  }
}

}  // namespace
}  // namespace tests
