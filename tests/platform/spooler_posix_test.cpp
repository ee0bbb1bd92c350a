#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/faults.h"
#include "platform/spooler.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

const std::vector<TestPrinter> kPrinters = {
    {L"会議室プリンタ", kSuiteDriver, L"2F [監視対象プリンタ]"},
    {L"Plain [A]", L"Other Driver", std::nullopt},
    {L"\\\\SERVER\\Far", L"Other Driver", L""},
};

/// What the records tell, one line for each. Every text must lie in the block.
std::string Listed(const std::vector<BYTE>& block, DWORD count) {
  const auto* record = reinterpret_cast<const PRINTER_INFO_2W*>(block.data());
  const auto text = [&block](const wchar_t* at) -> std::string {
    if (at == nullptr) return "(null)";
    const auto* end = reinterpret_cast<const BYTE*>(at + std::wcslen(at) + 1);
    EXPECT_TRUE(reinterpret_cast<const BYTE*>(at) >= block.data() &&
                end <= block.data() + block.size());
    return platform::ToUtf8(at);
  };
  std::string lines;
  for (; count != 0; --count, ++record) {
    for (const wchar_t* each : {record->pServerName, record->pPrinterName, record->pDriverName,
                                record->pComment, record->pShareName, record->pDatatype})
      lines += text(each) + "|";
    lines += std::to_string(record->Attributes) + "\n";
  }
  return lines;
}

TEST(Spooler, ListsThePrintersOfTheKindsAskedFor) {
  TestMachine machine;
  machine.SetPrinters(kPrinters);
  const std::string local =
      "(null)|会議室プリンタ|QuietMIMOSA Harbor Ledge Driver|2F [監視対象プリンタ]||RAW|64\n"
      "(null)|Plain [A]|Other Driver|(null)||RAW|64\n";
  const std::string connected = "\\\\SERVER|\\\\SERVER\\Far|Other Driver|||RAW|16\n";
  const struct {
    DWORD flags;
    std::string expected;
  } kCases[] = {
      {PRINTER_ENUM_LOCAL, local},
      {PRINTER_ENUM_CONNECTIONS, connected},
      {PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, local + connected},
      {0, ""},
  };
  for (const auto& each : kCases) {
    DWORD needed = 0, count = 9;
    const BOOL fits = EnumPrintersW(each.flags, nullptr, 2, nullptr, 0, &needed, &count);
    EXPECT_EQ(fits, needed == 0);
    EXPECT_EQ(count, 0U);
    std::vector<BYTE> block(needed);
    EXPECT_TRUE(EnumPrintersW(each.flags, nullptr, 2, block.data(), needed, &needed, &count));
    EXPECT_EQ(Listed(block, count), each.expected);
  }
}

TEST(Spooler, FailuresAreTold) {
  TestMachine machine;
  machine.SetPrinters(kPrinters);
  wchar_t server[] = L"\\\\OTHER";
  DWORD needed = 0, count = 0;
  EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 2, nullptr, 0, &needed, &count);
  std::vector<BYTE> block(needed);
  const struct {
    LPWSTR server;
    DWORD level;
    BYTE* block;
    DWORD size;
    DWORD error;
    DWORD needed;
  } kCases[] = {
      {nullptr, 2, nullptr, 0, ERROR_INSUFFICIENT_BUFFER, needed},
      {nullptr, 2, block.data(), needed - 1, ERROR_INSUFFICIENT_BUFFER, needed},
      {nullptr, 2, nullptr, needed, ERROR_INVALID_USER_BUFFER, needed},
      {nullptr, 4, block.data(), needed, ERROR_INVALID_LEVEL, 0},
      {server, 2, block.data(), needed, ERROR_INVALID_NAME, 0},
  };
  for (const auto& each : kCases) {
    DWORD told = 1;
    EXPECT_FALSE(EnumPrintersW(PRINTER_ENUM_LOCAL, each.server, each.level, each.block, each.size,
                               &told, &count));
    EXPECT_EQ(GetLastError(), each.error);
    EXPECT_EQ(told, each.needed);
    EXPECT_EQ(count, 0U);
  }
  platform::SetFault("EnumPrintersW", 0, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(
      EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 2, block.data(), needed, &needed, &count));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

}  // namespace
}  // namespace tests
