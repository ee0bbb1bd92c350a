#include "management/exclusion_walk.h"

#include "host/printer_kind.h"

namespace SigilSettingManagement {
namespace {

bool IsExcludedPrinter(const PRINTER_INFO_2W& printer, const ExclusionWalkMessages& messages) {
  switch (KindOf(printer)) {
    case PrinterKind::kSuite:
      return false;
    case PrinterKind::kNoComment:
      Log(messages.noComment);
      return true;
    case PrinterKind::kNotMarked:
      Log(messages.notMonitored);
      return true;
    case PrinterKind::kMonitored:
      Log(messages.monitored);
      return false;
  }
  return false;
}

}  // namespace

void ExcludePrinters(const CPrinterList& printers, const ExclusionWalkMessages& messages,
                     OperationSigilSettings& settings) {
  DWORD index = 0;
  for (const PRINTER_INFO_2W& printer : printers) {
    Log(messages.checking, index++, printer.pPrinterName);
    settings.AddExcludePrinter(printer.pPrinterName, IsExcludedPrinter(printer, messages));
  }
}

}  // namespace SigilSettingManagement
