#pragma once

#include <cstdlib>

#include "platform/owner.h"
#include "platform/spooler.h"

namespace SigilSettingManagement {

/// Lists the local and connected printers. `*list` becomes one block from malloc with `*count`
/// records and their strings, which the caller has to free, after a failure too. Returns 0, or -1
/// on any failure, which is logged.
int GetPrinterInfoList(PRINTER_INFO_2W** list, DWORD* count);

inline void FreePrinters(PRINTER_INFO_2W* list) {
  std::free(list);
}

/// The machine's printers as Read found them, in the spooler's order, and the block that they lie
/// in. Empty before Read and after Reset.
class CPrinterList {
 public:
  /// Returns false on a failure, with the list empty.
  bool Read() {
    if (GetPrinterInfoList(m_pPrinters.Out(), &m_nCount) == 0) return true;
    Reset();
    return false;
  }

  void Reset() {
    m_pPrinters.Reset();
    m_nCount = 0;
  }

  const PRINTER_INFO_2W* begin() const { return m_pPrinters.Get(); }
  const PRINTER_INFO_2W* end() const { return begin() + m_nCount; }
  DWORD Count() const { return m_nCount; }

 private:
  Owner<PRINTER_INFO_2W*, FreePrinters> m_pPrinters;
  DWORD m_nCount = 0;
};

}  // namespace SigilSettingManagement
