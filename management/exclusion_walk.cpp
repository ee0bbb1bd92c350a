#include "management/exclusion_walk.h"

namespace SigilSettingManagement {

void ExcludePrinters(const PrinterList& printers, const ExclusionWalkMessages& messages,
                     OperationSigilSettings& settings) {
  for (DWORD index = 0; index < printers.Count(); ++index) {
    const PRINTER_INFO_2W& printer = printers.Records()[index];
    Log(messages.checking, index, printer.pPrinterName);
    settings.AddExcludePrinter(printer.pPrinterName, IsExcludedPrinter(printer, messages.test));
  }
}

}  // namespace SigilSettingManagement
