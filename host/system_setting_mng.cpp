#include "host/system_setting_mng.h"

#include <memory>

#include "host/ems_folder.h"
#include "host/folders.h"
#include "host/setting_row.h"
#include "logging/log.h"
#include "platform/crt.h"

namespace {

constexpr wchar_t kImageLogKey[] = L"500";

constexpr wchar_t kConstruct[] = L"CSystemSettingMng::CSystemSettingMng";
constexpr wchar_t kDestroy[] = L"CSystemSettingMng::~CSystemSettingMng";
constexpr wchar_t kLoadFile[] = L"CSystemSettingMng::LoadFile";
constexpr wchar_t kReadCsv[] = L"CSystemSettingMng::ReadCSV";
constexpr wchar_t kGetDataStr[] = L"CSystemSettingMng::GetDataStr";
constexpr wchar_t kGetDataNum[] = L"CSystemSettingMng::GetDataNum";
constexpr wchar_t kIsFunctionOn[] = L"SigilSettingManagement::IsWatermarkFuncSetting";

constexpr LogMessage kFileUnread = {5, 153100650, kIsFunctionOn,
                                    L"システム設定ファイルの読み込みに失敗しました"};
constexpr LogMessage kFunctionRead = {3, 153100660, kIsFunctionOn,
                                      L"透かし有効無効設定取得成功 透かし機能[%d](無：0 / 有：1)"};
constexpr LogMessage kThrown = {5, 153100670, kIsFunctionOn,
                                L"SystemSettingファイルの読み出しに失敗しました。"};
constexpr LogMessage kItemKey = {1, 152100010, kLoadFile, L"項目キー"};
constexpr LogMessage kWatermarkOption = {2, 152100020, kLoadFile,
                                         L"透かしオプション 有効/無効：%d"};
constexpr LogMessage kImageLogOption = {2, 152100050, kLoadFile,
                                        L"イメージログオプション 有効/無効：%d"};
constexpr LogMessage kNoMoreRows = {3, 152100030, kReadCsv, L"CSVデータはありません。"};
constexpr LogMessage kEmptyRow = {4, 152100040, kReadCsv, L"CSVデータのデータがありません。"};

/// The two lines around a regular run of an operation.
constexpr LogMessage Start(const wchar_t* function) {
  return {0, 0, function, L"START"};
}
constexpr LogMessage End(const wchar_t* function) {
  return {0, 0, function, L"END"};
}

}  // namespace

CSystemSettingMng::CSystemSettingMng(LPCWSTR path) : m_strFilePath(path) {
  Log(Start(kConstruct));
  Log(End(kConstruct));
}

CSystemSettingMng::~CSystemSettingMng() {
  Log(Start(kDestroy));
  Log(End(kDestroy));
}

int CSystemSettingMng::LoadFile() {
  Log(Start(kLoadFile));
  if (!Open(m_strFilePath, m_nOpenFlags, nullptr)) return -1;
  while (ReadCSV() == 1) {
    const CString key = GetDataStr(0);
    LogLabelled(kItemKey, key);
    if (key == kWatermarkKey) {
      m_nWatermarkOption = GetDataNum(1);
    } else if (key == kImageLogKey) {
      m_nImageLogOption = GetDataNum(1);
    }
  }
  Log(kWatermarkOption, m_nWatermarkOption);
  Log(kImageLogOption, m_nImageLogOption);
  Log(End(kLoadFile));
  return 0;
}

int CSystemSettingMng::ReadCSV() {
  Log(Start(kReadCsv));
  const RowRead row = ReadRow(*this, m_aryFields);
  if (row != RowRead::kFields) {
    Log(row == RowRead::kEnd ? kNoMoreRows : kEmptyRow);
    return 0;
  }
  Log(End(kReadCsv));
  return 1;
}

CString CSystemSettingMng::GetDataStr(int index) {
  Log(Start(kGetDataStr));
  if (!HasField(index)) return CString();
  CString text = m_aryFields[index];
  Log(End(kGetDataStr));
  return text;
}

int CSystemSettingMng::GetDataNum(int index) {
  Log(Start(kGetDataNum));
  if (!HasField(index)) return 0;
  const int number = _wtoi(m_aryFields[index]);
  Log(End(kGetDataNum));
  return number;
}

namespace SigilSettingManagement {

int IsWatermarkFuncSetting() {
  int result = 0;
  std::unique_ptr<CSystemSettingMng> file;
  try {
    CString folder;
    GetEMSFolderPath(folder);
    file = std::make_unique<CSystemSettingMng>(folder + kSystemSettingName);
    if (file->LoadFile() < 0) {
      file.reset();
      Log(kFileUnread);
      return -1;
    }
    result = file->WatermarkOption();
    Log(kFunctionRead, result);
  } catch (...) {
    Log(kThrown);
  }
  if (file) file->Close();
  return result;
}

}  // namespace SigilSettingManagement
