#include "management/switch_walk.h"

#include "host/printer_kind.h"
#include "logging/log.h"
#include "management/printer_scope.h"

namespace SigilSettingManagement {
namespace {

constexpr LogMessage kPrinterFailed = {
    4, 153100090, L"SigilSettingManagement::SetWatermarkAllPrinter",
    L"アサギリプリンタドライバの透かし設定に失敗しました。プリンタ：%s　設定：%d"};

/// Returns true if the switch was saved. A failed ClearWatermark does not count; it logs itself.
bool SwitchEntry(OperationSigilSettings& settings, const wchar_t* name, bool enable, bool service) {
  if (enable) return settings.EnableWatermark(name);
  const bool disabled = settings.DisableWatermark(name);
  if (service) settings.ClearWatermark(name);
  return disabled;
}

}  // namespace

int SwitchEntries(OperationSigilSettings& settings, const CPrinterList& printers, int scope,
                  bool enable, bool service) {
  SwitchEntry(settings, kDefaultEntry, enable && IsDefaultEntryInScope(scope), service);
  int failures = 0;
  for (const PRINTER_INFO_2W& printer : printers) {
    if (KindOf(printer) != PrinterKind::kSuite) continue;
    if (!SwitchEntry(settings, printer.pPrinterName, enable && AreSuitePrintersInScope(scope),
                     service)) {
      Log(kPrinterFailed, printer.pPrinterName, enable);
      ++failures;
    }
  }
  return failures;
}

}  // namespace SigilSettingManagement
