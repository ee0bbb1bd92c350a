#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/faults.h"

namespace {

using platform::ClearFaults;
using platform::SetFault;
using platform::TakeFault;

TEST(Faults, ComeAfterTheGoodCalls) {
  SetFault("A", 2, 5);
  SetFault("B", 0, 6);
  std::vector<DWORD> answers;
  for (int i = 0; i < 4; ++i) answers.push_back(TakeFault("A").value_or(0));
  EXPECT_EQ(answers, (std::vector<DWORD>{0, 0, 5, 5}));
  EXPECT_EQ(TakeFault("B"), 6U);
  SetFault("B", 1, 7);
  EXPECT_EQ(TakeFault("B"), std::nullopt);
  EXPECT_EQ(TakeFault("B"), 7U);
  ClearFaults();
  EXPECT_EQ(TakeFault("A"), std::nullopt);

  static std::string observed;
  platform::SetObserver([](const char* operation) { observed += operation; });
  TakeFault("A");
  TakeFault("C");
  platform::SetObserver(nullptr);
  TakeFault("D");
  EXPECT_EQ(observed, "AC");
}

}  // namespace
