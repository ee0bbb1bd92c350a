#pragma once

// The client's installation on the machine, as its administrator finds it: where its files are, and
// what marks a printer.

#include <string>

namespace app {

inline constexpr wchar_t kClientIni[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\config\\Client.ini";
inline constexpr wchar_t kKeySource[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\config\\data.dat";
inline constexpr wchar_t kDefaultDelivery[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS";
inline constexpr wchar_t kLogFile[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";
inline constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\hlwatermark";

// Below the delivery folder.
inline constexpr wchar_t kPolicyFile[] = L"\\WmPolicy.dat";
inline constexpr wchar_t kSystemSetting[] = L"\\SystemSetting.csv";

inline constexpr wchar_t kSuiteDriver[] = L"QuietMIMOSA Harbor Ledge Driver";
inline constexpr wchar_t kMonitoredMark[] = L"[監視対象プリンタ]";

struct DeliveryFolder {
  std::wstring path;
  std::string origin;  ///< Where the path comes from, and why from there.
};

DeliveryFolder FindDeliveryFolder();

}  // namespace app
