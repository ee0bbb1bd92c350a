#include <stdlib.h>

#include <fstream>
#include <thread>

#include "platform/posix/machine/machine.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {

namespace fs = std::filesystem;

void TestMachine::Open() {
  std::string name = (fs::temp_directory_path() / "sigil-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw fs::filesystem_error("mkdtemp", name, {});
  m_root = name;
  setenv("SIGIL_ROOT", m_root.c_str(), 1);
  SetPrinters({});
  fs::create_directories(Place(kSettingFolder));
}

void TestMachine::Close() {
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
  unsetenv("SIGIL_ROOT");
}

void TestMachine::SetPrinters(const std::vector<TestPrinter>& printers) {
  std::wstring text = L"[Machine]\nUser=tanaka\n\n[Accounts]\ntanaka=田中 太郎\n";
  for (const TestPrinter& printer : printers) {
    text += L"\n[Printer " + printer.name + L"]\nDriver=" + printer.driver + L"\n";
    if (printer.comment) text += L"Comment=" + *printer.comment + L"\n";
  }
  std::ofstream(m_root / "machine.ini", std::ios::binary) << platform::ToUtf8(text);
}

fs::path TestMachine::Place(std::wstring_view path) {
  return platform::HostPath(path);
}

bool IsWine() {
  return false;
}

bool CanComponentThrow() {
  return true;
}

void RunInThread(const std::function<void()>& work) {
  std::thread(work).join();
}

std::string SettingFile() {
  return R"(C:\Users\tanaka\AppData\LocalLow\KBR-LTD\HarborLedge!\HarborLedge!.cfg)";
}

}  // namespace tests
