#include "component/sigil_string.h"

#include <gtest/gtest.h>

#include "component/operation_sigil_settings.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

TEST(SigilString, IsAnObjectOfTheLoadedComponentAndSoIsEachCopy) {
  TestMachine machine;
  EXPECT_THROW(Sigil::CSigilString(L"甲"), Sigil::SigilResult) << "nobody has loaded it";
  {
    const OperationSigilSettings handle;
    const Sigil::CSigilString text(L"甲");
    const Sigil::CSigilString copy(text);
  }
  ExpectRecord(R"(
component loaded
SigilCreateInstance(String)
String[1]::SetKind(0)
String[1]::SetText("甲")
SigilCreateInstance(String)
String[1]::GetKind()
String[2]::SetKind(0)
String[1]::GetText()
String[2]::SetText("甲")
String[2]::Release()
String[1]::Release()
component unloaded
)",
               Hide::kNothing);
}

}  // namespace
}  // namespace tests
