// The machine is the one this runs on. It is emptied before and after each test, so it must be one
// that nobody uses: a Wine prefix.

#include <shlobj.h>

#include <cstdlib>
#include <iostream>

#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

void SetText(HKEY key, const wchar_t* name, const std::wstring& text) {
  RegSetKeyValueW(key, nullptr, name, REG_SZ, text.c_str(),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

void TestMachine::Open() {
  if (!IsWine()) {
    std::cerr << "These tests empty the machine's printers and folders. They are for Wine only.\n";
    std::exit(1);
  }
  Close();
  fs::create_directories(kSettingFolder);
}

void TestMachine::Close() {
  SetPrinters({});
  std::error_code ignored;
  fs::remove_all(kSettingFolder, ignored);
  fs::remove_all(L"C:\\ProgramData\\KBR-LTD", ignored);
}

// As the spooler of Wine keeps them. It lists the keys in the order of their names and takes what a
// printer is called from the value, so the keys are numbers.
void TestMachine::SetPrinters(const std::vector<TestPrinter>& printers) {
  constexpr wchar_t kPrinters[] = L"System\\CurrentControlSet\\Control\\Print\\Printers";
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPrinters);
  HKEY all = nullptr;
  RegCreateKeyW(HKEY_LOCAL_MACHINE, kPrinters, &all);
  wchar_t number = L'a';
  for (const TestPrinter& printer : printers) {
    HKEY key = nullptr;
    RegCreateKeyW(all, std::wstring(1, number++).c_str(), &key);
    SetText(key, L"Name", printer.name);
    SetText(key, L"Printer Driver", printer.driver);
    SetText(key, L"Port", L"LPT1:");
    if (printer.comment) SetText(key, L"Description", *printer.comment);
    RegCloseKey(key);
  }
  RegCloseKey(all);
}

fs::path TestMachine::Place(std::wstring_view path) {
  return path;
}

bool IsWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

bool CanComponentThrow() {
  return GetModuleHandleW(L"recorder.dll") != nullptr;
}

void RunInThread(const std::function<void()>& work) {
  const auto run = [](void* given) -> DWORD WINAPI {
    (*static_cast<const std::function<void()>*>(given))();
    return 0;
  };
  const HANDLE thread =
      CreateThread(nullptr, 0, run, const_cast<std::function<void()>*>(&work), 0, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}

std::string SettingFile() {
  LPWSTR folder = nullptr;
  SHGetKnownFolderPath(FOLDERID_LocalAppDataLow, 0, nullptr, &folder);
  const std::string path = platform::ToUtf8(folder) + R"(\KBR-LTD\HarborLedge!\HarborLedge!.cfg)";
  CoTaskMemFree(folder);
  return path;
}

}  // namespace tests
