#pragma once

// The folders and names of the client's files. Each call finds the folders anew. Nothing here logs,
// so that sigilctl can share it; ems_folder.h adds the lines of a pass.

#include "platform/mfc.h"

/// The client's own folder, to be appended to the common data folder, and files below it.
constexpr wchar_t kClientFolder[] = L"\\KBR-LTD\\QuietMIMOSA\\HarborLedge";
constexpr wchar_t kClientIniName[] = L"\\config\\Client.ini";
constexpr wchar_t kKeySourceName[] = L"\\config\\data.dat";

/// Files of the delivery folder, to be appended to it.
constexpr wchar_t kPolicyFileName[] = L"\\WmPolicy.dat";
constexpr wchar_t kSystemSettingName[] = L"\\SystemSetting.csv";

/// Returns the machine-wide data folder, without a trailing backslash; "C:\ProgramData" when the
/// shell fails.
CString GetCommonDataPath();

/// How the delivery folder was found; EMS is the product's name for it.
enum class EMSFolder {
  kConfigured,   ///< It is the existing directory that Client.ini names.
  kNotSet,       ///< It is the default, since Client.ini names none.
  kBlank,        ///< It is the default, since Client.ini names only white space.
  kNoDirectory,  ///< It is the default, since Client.ini names no existing directory.
};

/// `folder` becomes the client's delivery folder, `value` the text in Client.ini.
EMSFolder FindEMSFolder(CString& folder, CString& value);
