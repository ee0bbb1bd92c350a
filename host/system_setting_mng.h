#pragma once

// The system settings file, SystemSetting.csv in the delivery folder: one item in a row, its key in
// the first field and its value in the second. The first empty line ends it.

#include "platform/mfc.h"

class CSystemSettingMng : public CStdioFile {
 public:
  explicit CSystemSettingMng(LPCWSTR path);
  ~CSystemSettingMng() override;

  /// Reads the file to its end; the last row of an item counts. 0, or -1 when the file could not be
  /// opened. A read error throws CFileException.
  int LoadFile();

  /// Reads the next row. 1: its fields can be asked for; 0: there is none. A comma between double
  /// quotes belongs to its field, and a doubled quote there is one quote.
  int ReadCSV();

  /// Field `index` of the row read last, from 0; empty, or 0, when the row has no such field.
  CString GetDataStr(int index);
  int GetDataNum(int index);

  /// The item "63": above 0 the watermark function is on.
  int WatermarkOption() const { return m_nWatermarkOption; }

 private:
  bool HasField(int index) const { return index >= 0 && index < m_aryFields.GetSize(); }

  CString m_strFilePath;
  UINT m_nOpenFlags = typeText | modeRead;
  int m_nWatermarkOption = 0;
  int m_nImageLogOption = 0;
  CArray<CString> m_aryFields;
};

namespace SigilSettingManagement {

/// Whether the watermark function is on, read from the file anew. Above 0: it is on. 0: it is off
/// or not set, or an exception ended the read. Negative: the file could not be opened, or its item
/// 63 is negative.
int IsWatermarkFuncSetting();

}  // namespace SigilSettingManagement
