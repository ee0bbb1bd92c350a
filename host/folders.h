#pragma once

// Where the client's files lie. Both folders are found anew at every call.

#include "platform/mfc.h"

/// The client's own folder, to be appended to the common data folder.
constexpr wchar_t kClientFolder[] = L"\\KBR-LTD\\QuietMIMOSA\\HarborLedge";

/// The machine-wide data folder, without a trailing backslash; "C:\ProgramData" when the shell does
/// not tell.
CString GetCommonDataPath();

namespace SigilSettingManagement {

/// The client's delivery folder. True: `folder` is the existing directory that Client.ini names.
/// False: it is the default folder, and the log says why.
bool GetEMSFolderPath(CString& folder);

}  // namespace SigilSettingManagement
