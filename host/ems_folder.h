#pragma once

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// The client's delivery folder. True: `folder` is the existing directory that Client.ini names.
/// False: it is the default folder, and the log says why.
bool GetEMSFolderPath(CString& folder);

}  // namespace SigilSettingManagement
