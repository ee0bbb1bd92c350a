#pragma once

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Tells the watermark control service over its pipe that the mode was released or set. `message`
/// is "Release" or "Setting"; 16 bytes go out in one write, its UTF-16 form with the terminator,
/// and any other text is cut or filled with zeros to that. 0 written; -1 no security descriptor; -2
/// no pipe, or a busy one: there is no wait; -3 the write failed; -4 written, but closing failed;
/// -5 no message.
int NotificationReleaseMode(CString message);

}  // namespace SigilSettingManagement
