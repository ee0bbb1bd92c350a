#include <stdlib.h>

#include <fstream>
#include <iterator>

#include "platform/posix/machine.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {

namespace fs = std::filesystem;

void TestMachine::Open() {
  std::string name = (fs::temp_directory_path() / "sigil-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw fs::filesystem_error("mkdtemp", name, {});
  m_root = name;
  setenv("SIGIL_ROOT", m_root.c_str(), 1);
  WriteMachineFile();
  fs::create_directories(platform::HostPath(kSettingFolder));
}

void TestMachine::Close() {
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
  unsetenv("SIGIL_ROOT");
}

void TestMachine::SetPrinters(const std::vector<TestPrinter>& printers) {
  m_printers = printers;
  WriteMachineFile();
}

void TestMachine::WriteMachineFile() const {
  std::wstring text = L"[Machine]\nUser=tanaka\n\n[Accounts]\ntanaka=田中 太郎\n";
  for (const TestPrinter& printer : m_printers) {
    text += L"\n[Printer " + printer.name + L"]\nDriver=" + printer.driver + L"\n";
    if (printer.comment) text += L"Comment=" + *printer.comment + L"\n";
  }
  std::ofstream(m_root / "machine.ini", std::ios::binary) << platform::ToUtf8(text);
}

void TestMachine::Write(std::wstring_view path, std::string_view bytes) {
  const fs::path file = platform::HostPath(path);
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
}

std::string TestMachine::Read(std::wstring_view path) const {
  std::ifstream file(platform::HostPath(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void TestMachine::Remove(std::wstring_view path) {
  fs::remove(platform::HostPath(path));
}

bool IsWine() {
  return false;
}

std::string SettingFile() {
  return R"(C:\Users\tanaka\AppData\LocalLow\KBR-LTD\HarborLedge!\HarborLedge!.cfg)";
}

}  // namespace tests
