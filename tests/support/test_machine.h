#pragma once

// A machine of a test's own: printers, the user, and the files of a client. On Linux a temporary
// machine folder, on Windows the machine itself, cleaned before and after.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base.h"

namespace tests {

constexpr wchar_t kSuiteDriver[] = L"QuietMIMOSA Harbor Ledge Driver";
constexpr wchar_t kMarker[] = L"[監視対象プリンタ]";

constexpr wchar_t kSettingFolder[] = L"C:\\SigilTest";
constexpr wchar_t kUserInfo[] = L"C:\\SigilTest\\UserInfoWM.ini";
constexpr wchar_t kClientIni[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\config\\Client.ini";
constexpr wchar_t kKeySource[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\config\\data.dat";
constexpr wchar_t kSystemSetting[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS\\SystemSetting.csv";
constexpr wchar_t kPolicyFile[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS\\WmPolicy.dat";

struct TestPrinter {
  std::wstring name;
  std::wstring driver;
  std::optional<std::wstring> comment;
};

/// A fresh machine: no printers, none of the files, a user with a full name, no domain; a setting
/// folder that the recorder's state names. The recorder is reset and watches.
class TestMachine {
 public:
  TestMachine();
  /// Ends the faults and expects that nothing is held.
  ~TestMachine();
  TestMachine(const TestMachine&) = delete;
  TestMachine& operator=(const TestMachine&) = delete;

  /// Expects that no component object, no library and no mutex is held.
  void ExpectNothingHeld() const;

  void SetPrinters(const std::vector<TestPrinter>& printers);

  /// Makes folders as needed. Paths are Windows paths.
  void Write(std::wstring_view path, std::string_view bytes);
  /// Profile text, in the form that keeps every character.
  void WriteProfile(std::wstring_view path, std::wstring_view text);
  /// Empty when the file is absent.
  std::string Read(std::wstring_view path) const;
  void Remove(std::wstring_view path);

  /// Leaves UserInfoWM.ini as after a lookup that found `fullName`.
  void RememberFullName(std::wstring_view fullName);

 private:
  // What each home does in its own way.
  void Open();
  void Close();
  static std::filesystem::path Place(std::wstring_view path);

  std::filesystem::path m_root;
};

/// On Wine, whose limits some cases cannot pass. They say which.
bool IsWine();

/// Whether an exception of the component reaches the library: on Linux, where the modules share
/// their C++ library, and on Windows from the component that another compiler built.
bool CanComponentThrow();

/// Has another thread do `work`, and waits for its end. The C++ library of the Windows home has
/// none.
void RunInThread(const std::function<void()>& work);

/// A thread takes the mutex of the setting file and ends. The handle keeps the mutex in being.
HANDLE AbandonMutex();

/// The component's setting file, as UTF-8.
std::string SettingFile();

/// The bytes of a policy file with this clear text, for a machine without key source.
std::string SealPolicy(std::string_view clear);

}  // namespace tests
