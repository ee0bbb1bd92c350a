#pragma once

// The interfaces of the Settings component, `SigilUtil_x86.dll`, in its own order of operations.
//
// Text is NUL-terminated wide text and is copied during the call. `out` receives an object with one
// reference, which the caller releases. A negative result is a failure; the operations whose every
// result except 0 is a failure say so. `length` counts wide characters: the buffer's capacity
// before the call, the length of the text with its terminator after it. One object is not safe for
// concurrent use.
//
// An object begins with a table of its operations: AddRef and Release, then those below in the
// order in which they stand, and no slot for a destructor, which is why none is virtual. On Windows
// operations have C++'s own convention for 32-bit x86, thiscall, and the entry point has C's,
// cdecl; both are the default of GCC and of the platform's usual compiler.

#include <cstdint>

#include "platform/base.h"

namespace Sigil {

enum SigilResult : std::int32_t {
  kSuccess = 0,
  kCannotCreate = static_cast<std::int32_t>(0x80000001U),
  kTargetTooSmall = static_cast<std::int32_t>(0x80000005U),
};

constexpr bool Failed(std::int32_t result) {
  return result < 0;
}

/// The reference-counting base of every object.
struct Object {
  virtual std::uint32_t AddRef() = 0;
  virtual std::uint32_t Release() = 0;

 protected:
  ~Object() = default;
};

struct Watermark : Object {
  virtual std::int32_t GetId(GUID* guid) = 0;
  virtual std::int32_t SetName(const wchar_t* text) = 0;
  virtual std::int32_t SetText(const wchar_t* text) = 0;
  virtual std::int32_t SetFontName(const wchar_t* text) = 0;
  virtual std::int32_t SetFontSize(double size) = 0;
  virtual std::int32_t SetBold(std::int32_t flag) = 0;
  virtual std::int32_t SetItalic(std::int32_t flag) = 0;
  virtual std::int32_t SetUnderLine(std::int32_t flag) = 0;
  virtual std::int32_t SetFit(std::int32_t flag) = 0;
  virtual std::int32_t SetRepeatFirstAxis(std::int32_t flag) = 0;
  virtual std::int32_t SetRepeatSecondAxis(std::int32_t flag) = 0;
  virtual std::int32_t SetColor(std::int32_t color) = 0;
  virtual std::int32_t SetXOffset(double offset) = 0;
  virtual std::int32_t SetYOffset(double offset) = 0;
  virtual std::int32_t SetRotate(std::int32_t degrees) = 0;
  virtual std::int32_t SetPrintPos(std::int32_t position) = 0;
  virtual std::int32_t SetOpacity(std::int32_t percent) = 0;
  virtual std::int32_t SetPositionOption(std::int32_t option) = 0;
  virtual std::int32_t SetRepeatVSpace(std::int32_t space) = 0;
  virtual std::int32_t SetRepeatHSpace(std::int32_t space) = 0;

 protected:
  ~Watermark() = default;
};

/// Which watermarks of a record are active: its last setting, and its named custom settings.
struct LastSetting : Object {
  virtual std::int32_t SetName(const wchar_t* text) = 0;
  virtual std::int32_t SetEnable(std::int32_t flag) = 0;
  /// Copies `count` records from `first` during the call.
  virtual std::int32_t SetWatermarks(const GUID* first, std::uint32_t count) = 0;

 protected:
  ~LastSetting() = default;
};

/// The record of one printer, or of the default entry "*".
struct PrinterSettings : Object {
  virtual std::int32_t Save(std::int32_t mode) = 0;
  virtual std::int32_t Commit() = 0;
  /// The switches take every result except 0 for a failure, the registration a negative one.
  virtual std::int32_t GetLastSetting(LastSetting** out) = 0;
  virtual std::int32_t GetCustomSetting(const wchar_t* name, LastSetting** out) = 0;
  virtual std::int32_t CreateCustomSetting(LastSetting** out) = 0;
  /// `capacity` counts the characters of `buffer` without the terminator.
  virtual std::int32_t GetWatermarkInfo(std::int32_t index, GUID* guid, wchar_t* buffer,
                                        std::uint32_t capacity) = 0;
  virtual std::int32_t GetWatermarkCount() = 0;
  virtual std::int32_t DeleteWatermark(const GUID* guid) = 0;
  /// The new watermark belongs to the record at once and has its GUID.
  virtual std::int32_t CreateWatermark(Watermark** out) = 0;

 protected:
  ~PrinterSettings() = default;
};

/// The root: the setting file with its records, lists and switches.
struct Settings : Object {
  virtual std::int32_t Save(std::int32_t mode) = 0;
  virtual std::int32_t Commit() = 0;
  /// With a null buffer it only writes the length.
  virtual std::int32_t GetSettingFileDir(wchar_t* buffer, std::uint32_t* length) = 0;
  virtual std::int32_t GetPrinterSettingCount() = 0;
  virtual std::int32_t GetPrinterSettingName(std::int32_t index, wchar_t* buffer,
                                             std::uint32_t* length) = 0;
  virtual std::int32_t GetDriverSettingCount() = 0;
  virtual std::int32_t GetDriverSettingName(std::int32_t index, wchar_t* buffer,
                                            std::uint32_t* length) = 0;
  /// 0 is success, everything else a failure.
  virtual std::int32_t GetPrinterSettings(const wchar_t* name, PrinterSettings** out) = 0;
  /// Deletes at once from the setting file `path`.
  virtual std::int32_t DeletePrinterSetting(const wchar_t* path, const wchar_t* text) = 0;
  virtual std::int32_t DeleteDriverSetting(const wchar_t* path, const wchar_t* text) = 0;
  virtual std::int32_t GetExcludePrinterCount() = 0;
  /// A null buffer leaves the name out. 0 is success, everything else a failure.
  virtual std::int32_t GetExcludePrinter(std::int32_t index, GUID* guid, wchar_t* buffer,
                                         std::uint32_t* length) = 0;
  virtual std::int32_t AddExcludePrinter(const wchar_t* name, GUID* guid) = 0;
  virtual std::int32_t DeleteExcludePrinter(const GUID* guid) = 0;
  virtual std::int32_t GetSecondExcludeCount() = 0;
  /// As GetExcludePrinter.
  virtual std::int32_t GetSecondExclude(std::int32_t index, GUID* guid, wchar_t* buffer,
                                        std::uint32_t* length) = 0;
  virtual std::int32_t DeleteSecondExclude(const GUID* guid) = 0;
  /// Returns when the caller alone may change settings, until UnLock.
  virtual std::int32_t Lock() = 0;
  virtual std::int32_t UnLock() = 0;
  virtual std::int32_t SetUseContentLog(BYTE flag) = 0;

 protected:
  ~Settings() = default;
};

/// A text object. The texts it gives stay valid until it is changed or released.
struct String : Object {
  virtual const wchar_t* GetDisplayText() = 0;
  virtual std::int32_t SetKind(std::int32_t kind) = 0;
  virtual std::int32_t GetKind() = 0;
  virtual std::int32_t SetText(const wchar_t* text) = 0;
  virtual const wchar_t* GetText() = 0;

 protected:
  ~String() = default;
};

/// The component's entry point: creates the object of the two identities. 0 is success, everything
/// else a failure.
using CreateInstanceFunction = std::int32_t (*)(const GUID* first, const GUID* second, void** out);

constexpr GUID kSettingsFirstIdentity = {
    0x939D0FE0, 0x3386, 0x466D, {0xA1, 0x45, 0xE3, 0x07, 0xA9, 0xAA, 0x5D, 0xC9}};
constexpr GUID kSettingsSecondIdentity = {
    0x8CB443F7, 0xE498, 0x4A02, {0xA5, 0x0A, 0x66, 0x75, 0x47, 0x38, 0xD1, 0x24}};
constexpr GUID kStringFirstIdentity = {
    0x9195CE54, 0x518B, 0x48F8, {0x87, 0xC8, 0xBA, 0x2F, 0xFC, 0x92, 0xBC, 0x9E}};
constexpr GUID kStringSecondIdentity = {
    0xFB2A1FC4, 0x6B0F, 0x4C8C, {0x89, 0x0B, 0x61, 0x0A, 0x9E, 0x43, 0x29, 0xC3}};

}  // namespace Sigil
