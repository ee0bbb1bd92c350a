#pragma once

namespace SigilSettingManagement {

/// Tells the watermark control service over its pipe that the mode was released or set. `message`
/// is "Release" or "Setting". Its UTF-16 form with the terminator goes out in one write of 16
/// bytes; any other text is cut or filled with zeros to that. Nothing waits for the pipe or tries
/// twice.
///
/// Returns 0 when it was written, -1 without a security descriptor, -2 when there is no pipe or a
/// busy one, -3 when the write failed, -4 when it was written but closing failed, -5 for an empty
/// or null message. After an exception, which is logged, the result is 0, or -4 once closing has
/// failed; 0 does not mean then that anything was written.
int NotificationReleaseMode(const wchar_t* message);

}  // namespace SigilSettingManagement
