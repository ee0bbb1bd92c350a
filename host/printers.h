#pragma once

// The machine's printers, and which of them are excluded from watermarking.

#include <cstdlib>
#include <utility>

#include "logging/log.h"
#include "platform/spooler.h"

namespace SigilSettingManagement {

/// Lists the local and connected printers. `*list` becomes one block from malloc with `*count`
/// records and their strings, the caller's to free, also after a failure. 0, or -1 on any failure.
int GetPrinterInfoList(PRINTER_INFO_2W** list, DWORD* count);

/// A list of printers and its block.
class PrinterList {
 public:
  PrinterList() = default;
  PrinterList(const PrinterList&) = delete;
  PrinterList& operator=(const PrinterList&) = delete;
  ~PrinterList() { Reset(); }

  bool Read() { return GetPrinterInfoList(&m_pPrinters, &m_nCount) == 0; }

  void Reset() {
    std::free(std::exchange(m_pPrinters, nullptr));
    m_nCount = 0;
  }

  const PRINTER_INFO_2W* Records() const { return m_pPrinters; }
  DWORD Count() const { return m_nCount; }

 private:
  PRINTER_INFO_2W* m_pPrinters = nullptr;
  DWORD m_nCount = 0;
};

/// Whether the printer uses the suite's own driver.
bool IsSuitePrinter(const PRINTER_INFO_2W& printer);

/// How a pass logs the test of a printer that is not the suite's.
struct ExclusionMessages {
  LogMessage noComment;
  LogMessage notMonitored;
  LogMessage monitored;
};

/// A printer is excluded unless it uses the suite's own driver, which is not logged, or is marked
/// in its comment as monitored.
bool IsExcludedPrinter(const PRINTER_INFO_2W& printer, const ExclusionMessages& messages);

}  // namespace SigilSettingManagement
