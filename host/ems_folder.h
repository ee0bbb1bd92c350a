#pragma once

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Finds the client's delivery folder. Returns true when `folder` is the existing directory that
/// Client.ini names; false when it is the default folder, and logs why.
bool GetEMSFolderPath(CString& folder);

}  // namespace SigilSettingManagement
