#include "host/printer_kind.h"

#include <cwchar>

#include "platform/mfc.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kMonitoredMark[] = L"[監視対象プリンタ]";

}  // namespace

PrinterKind KindOf(const PRINTER_INFO_2W& printer) {
  if (CString(printer.pDriverName).Compare(kSuiteDriver) == 0) return PrinterKind::kSuite;
  if (printer.pComment == nullptr) return PrinterKind::kNoComment;
  return std::wcsstr(printer.pComment, kMonitoredMark) == nullptr ? PrinterKind::kNotMarked
                                                                  : PrinterKind::kMonitored;
}

}  // namespace SigilSettingManagement
