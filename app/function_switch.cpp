#include "app/function_switch.h"

#include "platform/crt.h"
#include "platform/mfc.h"

namespace app {

std::vector<std::wstring> RowFields(std::wstring_view row) {
  std::vector<std::wstring> fields(1);
  bool isQuoted = false;
  const auto at = [row](std::size_t i) { return i < row.size() ? row[i] : L'\0'; };
  const auto scan = [&] {
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (row[i] == L'"' && isQuoted && at(i + 1) == L'"') {
        fields.back() += row[i++];
      } else if (row[i] == L'"') {
        isQuoted = !isQuoted;
        const bool isInside =
            i >= 3 && i + 1 < row.size() && at(i + 1) != L',' && at(i - 1) != L',';
        if (isInside) fields.back() += L'"';
      } else if (row[i] == L',' && !isQuoted) {
        fields.emplace_back();
      } else {
        fields.back() += row[i];
      }
    }
  };
  scan();
  if (isQuoted) scan();
  return fields;
}

std::optional<int> ReadFunctionSwitch(const std::wstring& file) {
  CStdioFile rows;
  if (!rows.Open(file.c_str(), CFile::modeRead | CFile::typeText)) return std::nullopt;
  int value = 0;
  try {
    for (CString row; rows.ReadString(row) && !row.IsEmpty();) {
      const auto fields = RowFields(row.GetString());
      if (fields[0] == L"63") value = fields.size() > 1 ? _wtoi(fields[1].c_str()) : 0;
    }
  } catch (const CFileException&) {
    return 0;
  }
  return value;
}

}  // namespace app
