#pragma once

// The six operations of SigilSetting for a host process, in C11 or C++. Installed, this is
// <sigil/sigil_setting.h>.
//
// Each stands alone: no order of calls is required, and each may be repeated. Each may come from
// any thread of any process: a call runs on the calling thread alone, and all passes over the
// setting file, in all processes, exclude each other. A call waits up to 180 seconds for its turn.
//
// Text is NUL-terminated UTF-16, one unit in each wchar_t (on Linux too, where it has 32 bits), and
// is read during the call only. Nothing is held between two calls.
//
// Nothing is thrown, not even when memory ends. An exception of the Settings component ends in one
// of the results, mostly -101: on Linux, where component and library share one C++ run-time, and on
// Windows from a component of the platform's usual compiler. A component that GCC built for Windows
// with a run-time of its own must let nothing out, because that run-time would end the host
// process.
//
// A pass loads the Settings component, SigilUtil_x86.dll, for itself, from the folder of the host's
// own executable (on Linux, of the file that symbolic links lead to). Without it the pass fails and
// the result is -101; SigilSettingReleaseWaterMark and SigilSettingSetWaterMark, which ask the
// system settings first, can give -200 or -201 before they look for it.
//
// The names are undecorated, with the ordinals 1 to 6 in the order below; the calling convention is
// that of C, __cdecl on 32-bit Windows.

#ifndef __cplusplus
#include <stdbool.h>
#include <stddef.h>
#endif

#ifndef _WIN32
#define SIGIL_SETTING_API __attribute__((visibility("default")))
#define SIGIL_SETTING_CALL
#else
#ifdef SIGIL_SETTING_IMPLEMENTATION  // the library's own source
#define SIGIL_SETTING_API __declspec(dllexport)
#else
#define SIGIL_SETTING_API __declspec(dllimport)
#endif
#define SIGIL_SETTING_CALL __cdecl
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The results of the exports.
enum SigilSettingResult {
  /// The pass ran to its end. It may not have saved: a failed save of the setting file, a failed
  /// switch of the default entry and an entry that could not be had stand in the log alone, and in
  /// an update a failed save of one entry stands nowhere.
  SIGIL_SETTING_DONE = 0,
  /// The policy is applied, but the user's full name is still to be obtained.
  SIGIL_SETTING_NO_FULL_NAME = -99,
  /// The pass failed; the log tells where.
  SIGIL_SETTING_FAILED = -101,
  /// The watermark function is off in the system settings, or reading them broke off; nothing was
  /// done.
  SIGIL_SETTING_FUNCTION_OFF = -200,
  /// The system settings could not be opened, or their switch is negative; nothing was done.
  SIGIL_SETTING_UNREADABLE = -201
};

/// Switches the watermarks off and tells the control service. Needs the delivered policy file: when
/// it is missing or unreadable, or its scope is -1, nothing is changed and the result is -101. A
/// policy that states no scope counts as one of scope 0.
///
/// 0, -101, -200, -201; -1 to -5 when all is switched but telling the service failed: -1 no
/// security descriptor, -2 no pipe, -3 the write failed, -4 the message was written but closing the
/// pipe failed, -5 the message was empty, which does not happen here.
SIGIL_SETTING_API int SIGIL_SETTING_CALL SigilSettingReleaseWaterMark(void);

/// Switches the watermarks on, as the delivered policy's scope says, and tells the control service.
/// Needs the delivered policy file as SigilSettingReleaseWaterMark does.
/// 0, -101, -200, -201; a failed notification of the service does not change the result.
SIGIL_SETTING_API int SIGIL_SETTING_CALL SigilSettingSetWaterMark(void);

/// Applies policy `policyId` of the document `policyXml` to the default entry and to every printer
/// of the suite's driver, and rebuilds the exclude list. A non-zero `resetFullName` has the user's
/// full name looked up anew. The first and third arguments have no effect; the third may be null.
/// A `policyXml` that is null, empty or no policy document gives -101, but only after the exclude
/// list and the settings of single printers and drivers were cleared.
/// 0, -99, -101.
SIGIL_SETTING_API int SIGIL_SETTING_CALL
SigilSettingUpdateWaterMarkSetting(unsigned int unused, int policyId, const wchar_t* unusedText,
                                   const wchar_t* policyXml, int resetFullName);

/// Switches the watermarks off and deletes them; asks for no system settings and tells nobody.
/// Needs the delivered policy file as SigilSettingReleaseWaterMark does.
/// 0, -101.
SIGIL_SETTING_API int SIGIL_SETTING_CALL SigilSettingReleaseWaterMarkForService(void);

/// Stores whether the Settings component calls its print-content log callback.
/// 0, -101.
SIGIL_SETTING_API int SIGIL_SETTING_CALL SigilSettingSetUseContentLog(bool useContentLog);

/// Rebuilds the exclude list from the printers that exist now.
/// 0, -101.
SIGIL_SETTING_API int SIGIL_SETTING_CALL SigilSettingUpdateExcludePrinter(void);

#ifdef __cplusplus
}  // extern "C"
#endif
