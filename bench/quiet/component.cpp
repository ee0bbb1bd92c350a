// A Settings component that does nothing well: what a pass costs by itself. Every object is one and
// the same for all its owners.

#include <cwchar>
#include <iterator>

#include "component/sigil_interfaces.h"

namespace {

using namespace Sigil;
using Result = std::int32_t;

template <typename Interface>
struct Shared : Interface {
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
};

struct QuietWatermark : Shared<Watermark> {
  Result GetId(GUID* guid) override { return *guid = {}, 0; }
  Result SetName(const wchar_t*) override { return 0; }
  Result SetText(const wchar_t*) override { return 0; }
  Result SetFontName(const wchar_t*) override { return 0; }
  Result SetFontSize(double) override { return 0; }
  Result SetBold(Result) override { return 0; }
  Result SetItalic(Result) override { return 0; }
  Result SetUnderLine(Result) override { return 0; }
  Result SetFit(Result) override { return 0; }
  Result SetRepeatFirstAxis(Result) override { return 0; }
  Result SetRepeatSecondAxis(Result) override { return 0; }
  Result SetColor(Result) override { return 0; }
  Result SetXOffset(double) override { return 0; }
  Result SetYOffset(double) override { return 0; }
  Result SetRotate(Result) override { return 0; }
  Result SetPrintPos(Result) override { return 0; }
  Result SetOpacity(Result) override { return 0; }
  Result SetPositionOption(Result) override { return 0; }
  Result SetRepeatVSpace(Result) override { return 0; }
  Result SetRepeatHSpace(Result) override { return 0; }
} g_watermark;

struct QuietLastSetting : Shared<LastSetting> {
  Result SetName(const wchar_t*) override { return 0; }
  Result SetEnable(Result) override { return 0; }
  Result SetWatermarks(const GUID*, std::uint32_t) override { return 0; }
} g_lastSetting;

struct QuietPrinterSettings : Shared<PrinterSettings> {
  Result Save(Result) override { return 0; }
  Result Commit() override { return 0; }
  Result GetLastSetting(LastSetting** out) override { return *out = &g_lastSetting, 0; }
  Result GetCustomSetting(const wchar_t*, LastSetting** out) override {
    return *out = &g_lastSetting, 0;
  }
  Result CreateCustomSetting(LastSetting** out) override { return *out = &g_lastSetting, 0; }
  Result GetWatermarkInfo(Result, GUID*, wchar_t*, std::uint32_t) override { return -1; }
  Result GetWatermarkCount() override { return 0; }
  Result DeleteWatermark(const GUID*) override { return 0; }
  Result CreateWatermark(Watermark** out) override { return *out = &g_watermark, 0; }
} g_printerSettings;

constexpr wchar_t kFolder[] = L"C:\\Bench";

struct QuietSettings : Shared<Settings> {
  Result Save(Result) override { return 0; }
  Result Commit() override { return 0; }
  Result GetSettingFileDir(wchar_t* buffer, std::uint32_t* length) override {
    if (buffer != nullptr) std::wmemcpy(buffer, kFolder, std::size(kFolder));
    return *length = static_cast<std::uint32_t>(std::size(kFolder)), 0;
  }
  Result GetPrinterSettingCount() override { return 0; }
  Result GetPrinterSettingName(Result, wchar_t*, std::uint32_t*) override { return -1; }
  Result GetDriverSettingCount() override { return 0; }
  Result GetDriverSettingName(Result, wchar_t*, std::uint32_t*) override { return -1; }
  Result GetPrinterSettings(const wchar_t*, PrinterSettings** out) override {
    return *out = &g_printerSettings, 0;
  }
  Result DeletePrinterSetting(const wchar_t*, const wchar_t*) override { return 0; }
  Result DeleteDriverSetting(const wchar_t*, const wchar_t*) override { return 0; }
  Result GetExcludePrinterCount() override { return 0; }
  Result GetExcludePrinter(Result, GUID*, wchar_t*, std::uint32_t*) override { return -1; }
  Result AddExcludePrinter(const wchar_t*, GUID*) override { return 0; }
  Result DeleteExcludePrinter(const GUID*) override { return 0; }
  Result GetSecondExcludeCount() override { return 0; }
  Result GetSecondExclude(Result, GUID*, wchar_t*, std::uint32_t*) override { return -1; }
  Result DeleteSecondExclude(const GUID*) override { return 0; }
  Result Lock() override { return 0; }
  Result UnLock() override { return 0; }
  Result SetUseContentLog(BYTE) override { return 0; }
} g_settings;

}  // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t SigilCreateInstance(const GUID*,
                                                                                   const GUID*,
                                                                                   void** out) {
  return *out = static_cast<Settings*>(&g_settings), 0;
}
