#include "management/exclusion_walk.h"

#include "host/printer_kind.h"

namespace SigilSettingManagement {
namespace {

bool IsExcludedPrinter(const PRINTER_INFO_2W& printer, const ExclusionWalkMessages& messages) {
  const PrinterKind kind = KindOf(printer);
  if (kind == PrinterKind::kNoComment) Log(messages.noComment);
  if (kind == PrinterKind::kNotMarked) Log(messages.notMonitored);
  if (kind == PrinterKind::kMonitored) Log(messages.monitored);
  return kind == PrinterKind::kNoComment || kind == PrinterKind::kNotMarked;
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
