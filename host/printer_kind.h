#pragma once

// The kind of a printer, by its driver and its comment. Nothing here logs, so that sigilctl can
// share it.

#include "platform/spooler.h"

namespace SigilSettingManagement {

/// The name of the suite's driver.
inline constexpr wchar_t kSuiteDriver[] = L"QuietMIMOSA Harbor Ledge Driver";

enum class PrinterKind {
  kSuite,      ///< It uses the suite's driver and has an entry.
  kNoComment,  ///< It has no comment and is excluded from watermarking.
  kNotMarked,  ///< Its comment lacks the mark; it is excluded.
  kMonitored,  ///< Its comment marks it as monitored: it goes by the default entry.
};

PrinterKind KindOf(const PRINTER_INFO_2W& printer);

}  // namespace SigilSettingManagement
