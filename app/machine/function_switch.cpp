#include "app/machine/function_switch.h"

#include <stdexcept>

#include "app/machine/home.h"
#include "app/text/input_file.h"
#include "host/setting_row.h"
#include "platform/crt.h"
#include "platform/mfc.h"

namespace app {
namespace {

bool IsReadable(const std::wstring& file) {
  try {
    return ReadInput(HostPath(file), kGreatestRowFile).has_value();
  } catch (const std::runtime_error&) {
    return false;
  }
}

}  // namespace

std::optional<int> ReadFunctionSwitch(const std::wstring& file) {
  CStdioFile rows;
  if (!IsReadable(file) || !rows.Open(file.c_str(), CFile::modeRead | CFile::typeText))
    return std::nullopt;
  int value = 0;
  try {
    CArray<CString> fields;
    while (ReadRow(rows, fields) == RowRead::kFields)
      if (fields[0] == kWatermarkKey) value = fields.GetSize() > 1 ? _wtoi(fields[1]) : 0;
  } catch (const CFileException&) {
    return 0;
  }
  return value;
}

}  // namespace app
