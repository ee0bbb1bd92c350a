#include "app/findings.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "app/function_switch.h"
#include "app/library.h"
#include "app/policy_file.h"
#include "peers/settings_component/setting_file.h"
#include "platform/crt.h"
#include "platform/file.h"
#include "platform/module.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/profile.h"
#include "platform/utf.h"

namespace app {
namespace {

namespace fs = std::filesystem;

std::string Bytes(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

/// Nothing, and `state` tells why, for a file that cannot be read.
std::optional<std::string> ReadFile(const std::wstring& path, std::string& state) {
  try {
    auto bytes = platform::ReadWholeFile(platform::HostPath(path));
    state = bytes ? Bytes(bytes->size()) : "missing";
    return bytes;
  } catch (const std::system_error& error) {
    state = "unreadable: " + error.code().message();
    return std::nullopt;
  }
}

/// The key that the passes use; nothing when they fail over it.
std::optional<PolicyKey> FindKey(std::string& state) {
  const auto source = ReadFile(kKeySource, state);
  if (!source || source->empty()) {
    state += "; the key is all zero then";
    return PolicyKey();
  }
  auto key = KeyOf(*source);
  if (!key) state += "; more than its digest has digits for, at most 33";
  return key;
}

/// The first scope that a policy with the number 1 gives; 0 without any, as the passes take it.
int ScopeOf(const PolicyText& policy) {
  for (const Policy& each : policy.policies)
    if (each.id == L"1" && each.scope) return _wtoi(each.scope->c_str());
  return 0;
}

void ExaminePolicy(Findings& findings) {
  const auto key = FindKey(findings.keySource);
  const auto bytes = ReadFile(findings.delivery.path + kPolicyFile, findings.policyFile);
  if (!bytes) return;
  if (!key) {
    findings.policyFile += "; without a key";
    return;
  }
  PolicyText policy = ReadPolicy(Unseal(*bytes, *key));
  if (!policy.refusal.empty()) {
    findings.policyFile += "; under this key, " + policy.refusal;
    return;
  }
  findings.policyFile += ", readable";
  findings.scope = ScopeOf(policy);
  findings.policy = std::move(policy);
}

std::string ExamineComponent() {
  const std::wstring path = BesideHost(L"SigilUtil_x86.dll");
  const HMODULE component = LoadLibraryW(path.c_str());
  if (component == nullptr)
    return "cannot be loaded (error " + std::to_string(GetLastError()) + ")";
  const bool hasEntry = GetProcAddress(component, "SigilCreateInstance") != nullptr;
  FreeLibrary(component);
  return hasEntry ? "" : "has no SigilCreateInstance";
}

/// By the head of the file: a connection to a database leaves files beside it.
bool IsSettingFile(const fs::path& file) {
  char head[100] = {};
  std::ifstream(file, std::ios::binary).read(head, sizeof head);
  const std::string_view text(head, sizeof head);
  return text.starts_with(std::string_view("SQLite format 3\0", 16)) &&
         text.substr(68, 4) == "SIGL";
}

std::string StateOfSettingFile(const fs::path& file) {
  std::error_code error;
  if (!fs::exists(file, error)) return "not there yet";
  return IsSettingFile(file) ? Bytes(static_cast<std::size_t>(fs::file_size(file, error)))
                             : "no setting file; the component can neither read nor write it";
}

void ExamineUser(Findings& findings, const std::wstring& settingFolder) {
  const std::wstring file = settingFolder + L"\\UserInfoWM.ini";
  findings.hasFullName = GetPrivateProfileIntW(L"User", L"GetUserState", 0, file.c_str()) != 0;
  wchar_t name[256] = {};
  GetPrivateProfileStringW(L"User", L"UserFullName", L"", name, 256, file.c_str());
  findings.user += findings.hasFullName ? ", full name " + platform::ToUtf8(name)
                                        : ", full name not obtained yet";
}

void ExamineMachine(Findings& findings) {
  try {
    platform::Machine machine = platform::LoadMachine();
    findings.user = platform::ToUtf8(machine.user);
    findings.printers = std::move(machine.printers);
  } catch (const std::system_error& error) {
    findings.user = "unknown: machine.ini is unreadable, " + error.code().message();
    findings.settingFile = "unknown, without a user";
    return;
  }
  const peers::SettingPlace setting = peers::FindSettingPlace();
  ExamineUser(findings, setting.folder);
  findings.settingFile = StateOfSettingFile(setting.file);
  findings.canSave = CanSave();
  findings.settingPath = platform::ToUtf8(setting.folder) + "\\" + setting.file.filename().string();
}

DWORD AskPipe() {
  const HANDLE pipe = CreateFileW(kPipe, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (pipe == INVALID_HANDLE_VALUE) return GetLastError();
  CloseHandle(pipe);
  return ERROR_SUCCESS;
}

/// A pass on a setting file that is none: the switches count the printers that they failed on.
Forecast Unsaved(const Findings& findings, const char* command, bool isSwitch) {
  const char* const reason = "nothing is saved: the setting file is none";
  if (isSwitch && findings.printers && std::ranges::any_of(*findings.printers, IsSuitePrinter))
    return {command, "-101", reason};
  return {command, "0", reason};
}

Forecast Pass(const Findings& findings, const char* command, bool readsPolicy, bool listsPrinters) {
  if (!findings.component.empty())
    return {command, "-101", "the Settings component " + findings.component};
  if (readsPolicy && !findings.scope)
    return {command, "-101", "the policy file: " + findings.policyFile};
  if (readsPolicy && *findings.scope == -1)
    return {command, "-101", "the policy's scope is -1, which stands for none"};
  if (listsPrinters && !findings.printers)
    return {command, "-101", "the printers cannot be listed"};
  if (!findings.canSave) return Unsaved(findings, command, readsPolicy);
  return {command, "0", ""};
}

/// A switch that asks the system settings first.
Forecast ClientSwitch(const Findings& findings, const char* command) {
  if (!findings.functionSwitch) return {command, "-201", "SystemSetting.csv cannot be opened"};
  if (*findings.functionSwitch < 0) return {command, "-201", "the function switch is negative"};
  if (*findings.functionSwitch == 0) return {command, "-200", "the function switch is off"};
  return Pass(findings, command, true, true);
}

std::string NotTold(DWORD error) {
  const char* const what = error == ERROR_PIPE_BUSY ? "the pipe is busy" : "nobody serves the pipe";
  return std::string(what) + " (error " + std::to_string(error) +
         "); the settings change all the same";
}

}  // namespace

Findings Examine() {
  Findings findings;
  findings.delivery = FindDeliveryFolder();
  ExaminePolicy(findings);
  findings.functionSwitch = ReadFunctionSwitch(findings.delivery.path + kSystemSetting);
  ExamineMachine(findings);
  findings.component = ExamineComponent();
  findings.pipeError = AskPipe();
  return findings;
}

bool CanSave() {
  const fs::path file = peers::FindSettingPlace().file;
  std::error_code error;
  return !fs::exists(file, error) || IsSettingFile(file);
}

bool IsSuitePrinter(const platform::Printer& printer) {
  return printer.driver == kSuiteDriver;
}

bool IsMonitored(const platform::Printer& printer) {
  return printer.comment && printer.comment->find(kMonitoredMark) != std::wstring::npos;
}

std::vector<Forecast> Foresee(const Findings& findings) {
  Forecast set = ClientSwitch(findings, "set");
  if (set.result == "0" && set.reason.empty() && findings.pipeError != 0)
    set.reason = NotTold(findings.pipeError);
  Forecast release = ClientSwitch(findings, "release");
  if (release.result == "0" && findings.pipeError != 0) {
    release.result = "-2";
    if (release.reason.empty()) release.reason = NotTold(findings.pipeError);
  }
  Forecast update = Pass(findings, "update", false, true);
  if (update.result == "0" && !findings.hasFullName) {
    update.result = "0 or -99";
    if (update.reason.empty())
      update.reason = "-99 when the user's full name is not found; a policy comes with the call";
  }
  return {set,
          release,
          Pass(findings, "release-for-service", true, true),
          update,
          Pass(findings, "exclude", false, true),
          Pass(findings, "content-log", false, false)};
}

}  // namespace app
