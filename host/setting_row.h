#pragma once

// A row of SystemSetting.csv: the item's key in the first field, its value in the second. Nothing
// here logs, so that sigilctl can share it.

#include "platform/mfc.h"

/// The item that switches the watermark function.
constexpr wchar_t kWatermarkKey[] = L"63";

/// Adds the row's fields to `fields`, at least one. A comma between double quotes belongs to its
/// field, and a doubled quote there is one quote; a quote between other characters, from the fourth
/// on, stays.
void SplitRow(const CString& row, CArray<CString>& fields);

enum class RowRead { kFields, kEnd, kEmpty };

/// The fields of the file's next row, if it has one with text; the first row without ends its data.
RowRead ReadRow(CStdioFile& file, CArray<CString>& fields);
