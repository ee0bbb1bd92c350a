#include "host/setting_row.h"

namespace {

// Adds the fields that end in the row; `field` is the text behind the last of them. Returns true if
// a quote is open at the end.
bool Scan(const CString& row, bool inQuotes, CArray<CString>& fields, CString& field) {
  const int length = row.GetLength();
  for (int i = 0; i < length; ++i) {
    const wchar_t character = row[i];
    const wchar_t next = i + 1 < length ? row[i + 1] : L'\0';
    if (character == L'"' && inQuotes && next == L'"') {
      field += L'"';
      ++i;
    } else if (character == L'"') {
      inQuotes = !inQuotes;
      // A quote inside a field belongs to its text.
      if (i >= 3 && i + 1 < length && next != L',' && row[i - 1] != L',') field += L'"';
    } else if (character == L',' && !inQuotes) {
      fields.Add(field);
      field.Empty();
    } else {
      field += character;
    }
  }
  return inQuotes;
}

}  // namespace

void SplitRow(const CString& row, CArray<CString>& fields) {
  // A quote left open does not reach into the next row: the same row is scanned again, and its odd
  // number of quotes closes it.
  CString field;
  if (Scan(row, false, fields, field)) Scan(row, true, fields, field);
  fields.Add(field);
}

RowRead ReadRow(CStdioFile& file, CArray<CString>& fields) {
  fields.RemoveAll();
  CString row;
  if (!file.ReadString(row)) return RowRead::kEnd;
  if (row.IsEmpty()) return RowRead::kEmpty;
  SplitRow(row, fields);
  return RowRead::kFields;
}
