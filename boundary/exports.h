#pragma once

// The six operations of the library, under plain names and with the ordinals 1 to 6 in this order.
// Each stands alone: no order of calls is required, each may come from any thread of any process
// and be repeated. Text is NUL-terminated and read during the call only. Nothing is thrown. All
// passes over the setting file exclude each other, in all processes; a call waits up to 180 seconds
// for its turn.

#ifdef _WIN32
#define SIGIL_EXPORT __declspec(dllexport)
#else
#define SIGIL_EXPORT __attribute__((visibility("default")))
#endif

/// What an export gives back.
enum SigilSettingResult : int {
  SIGIL_SETTING_DONE = 0,
  /// The policy is applied, but the user's full name is still to be obtained.
  SIGIL_SETTING_NO_FULL_NAME = -99,
  /// The pass failed; the log tells where.
  SIGIL_SETTING_FAILED = -101,
  /// The watermark function is off in the system settings; nothing was done.
  SIGIL_SETTING_FUNCTION_OFF = -200,
  /// The system settings could not be read; nothing was done.
  SIGIL_SETTING_UNREADABLE = -201,
};

extern "C" {

/// Switches the watermarks off and tells the control service.
/// 0, -101, -200, -201; -1 to -5 when all is switched but telling the service failed: -1 no
/// security descriptor, -2 no pipe, -3 the write, -4 closing the pipe when it was told, -5 nothing
/// to say.
SIGIL_EXPORT int SigilSettingReleaseWaterMark();

/// Switches the watermarks on, as the delivered policy's scope says, and tells the control service.
/// 0, -101, -200, -201; a service that was not told changes nothing.
SIGIL_EXPORT int SigilSettingSetWaterMark();

/// Applies policy `policyId` of the document `policyXml` to the default entry and to every printer
/// of the suite's driver, and rebuilds the exclude list. A non-zero `resetFullName` has the user's
/// full name looked up anew. The first and third arguments have no effect; the third may be null.
/// 0, -99, -101.
SIGIL_EXPORT int SigilSettingUpdateWaterMarkSetting(unsigned int unused, int policyId,
                                                    const wchar_t* unusedText,
                                                    const wchar_t* policyXml, int resetFullName);

/// Switches the watermarks off and deletes them; asks for no system settings and tells nobody.
/// 0, -101.
SIGIL_EXPORT int SigilSettingReleaseWaterMarkForService();

/// Stores whether the Settings component calls its print-content log callback.
/// 0, -101.
SIGIL_EXPORT int SigilSettingSetUseContentLog(bool useContentLog);

/// Rebuilds the exclude list from the printers that exist now.
/// 0, -101.
SIGIL_EXPORT int SigilSettingUpdateExcludePrinter();
}
