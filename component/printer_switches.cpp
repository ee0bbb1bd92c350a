#include "component/operation_sigil_settings.h"
#include "component/watermark_list.h"
#include "logging/log.h"

namespace {

constexpr wchar_t kEnable[] = L"OperationSigilSettings::EnableWatermark";
constexpr wchar_t kDisable[] = L"OperationSigilSettings::DisableWatermark";
constexpr wchar_t kClear[] = L"OperationSigilSettings::ClearWatermark";

struct SwitchMessages {
  LogMessage noRecord;
  LogMessage noLastSetting;
  LogMessage saved;
  LogMessage notSaved;
};

constexpr SwitchMessages kEnabling = {
    {4, 153400040, kEnable,
     L"PrinterSettingインターフェイス取得にに失敗しました。EnableWatermark処理を中断。Printer:[%"
     L"s]"},
    {4, 153400050, kEnable,
     L"LastSettingインターフェイス取得にに失敗しました。EnableWatermark処理を中断。Printer:[%s]"},
    {1, 153400060, kEnable, L"透かし有効として設定ファイルに保存しました。Printer:[%s]"},
    {4, 153400070, kEnable, L"設定ファイルの保存に失敗しました。Printer:[%s]"},
};

constexpr SwitchMessages kDisabling = {
    {4, 153400080, kDisable,
     L"PrinterSettingインターフェイス取得にに失敗しました。DisableWatermark処理を中断。Printer:[%"
     L"s]"},
    {4, 153400090, kDisable,
     L"LastSettingインターフェイス取得にに失敗しました。DisableWatermark処理を中断。Printer:[%s]"},
    {1, 153400100, kDisable, L"透かし無効として設定ファイルに保存しました。Printer:[%s]"},
    {4, 153400110, kDisable, L"設定ファイルの保存に失敗しました。Printer:[%s]"},
};

constexpr LogMessage kNothingToClear = {
    4, 153400080, kClear,
    L"PrinterSettingインターフェイス取得に失敗しました。ClearWatermark処理を中断。Printer:[%s]"};
constexpr LogMessage kCleared = {1, 153400310, kClear, L"個別プリンタ透かし情報設定クリア処理完了"};
constexpr LogMessage kClearedSaved = {
    1, 153400100, kClear, L"透かし情報を削除して設定ファイルに保存しました。Printer:[%s]"};
constexpr LogMessage kClearedNotSaved = {4, 153400110, kClear,
                                         L"設定ファイルの保存に失敗しました。Printer:[%s]"};

bool OpenRecord(Sigil::Settings& settings, const wchar_t* printer,
                Sigil::CReference<Sigil::PrinterSettings>& record) {
  return settings.GetPrinterSettings(printer, record.Out()) == 0 && record;
}

bool Save(Sigil::PrinterSettings& record) {
  record.Commit();
  return !Sigil::Failed(record.Save(0));
}

bool Switch(Sigil::Settings& settings, const wchar_t* printer, std::int32_t flag,
            const SwitchMessages& messages) {
  Sigil::CReference<Sigil::PrinterSettings> record;
  if (!OpenRecord(settings, printer, record)) {
    Log(messages.noRecord, printer);
    return false;
  }
  Sigil::CReference<Sigil::LastSetting> lastSetting;
  if (record->GetLastSetting(lastSetting.Out()) != 0 || !lastSetting) {
    Log(messages.noLastSetting, printer);
    return false;
  }
  lastSetting->SetEnable(flag);
  lastSetting.Reset();

  const bool saved = Save(*record);
  Log(saved ? messages.saved : messages.notSaved, printer);
  return saved;
}

}  // namespace

bool OperationSigilSettings::EnableWatermark(const wchar_t* printer) {
  return Switch(*m_pSettings, printer, 1, kEnabling);
}

bool OperationSigilSettings::DisableWatermark(const wchar_t* printer) {
  return Switch(*m_pSettings, printer, 0, kDisabling);
}

bool OperationSigilSettings::ClearWatermark(const wchar_t* printer) {
  Sigil::CReference<Sigil::PrinterSettings> record;
  if (!OpenRecord(*m_pSettings, printer, record)) {
    Log(kNothingToClear, printer);
    return false;
  }
  DeleteWatermarks(*record);
  Log(kCleared);

  const bool saved = Save(*record);
  Log(saved ? kClearedSaved : kClearedNotSaved, printer);
  return saved;
}
