#include "management/set_watermark_all_printer.h"

#include "component/operation_sigil_settings.h"
#include "host/ems_folder.h"
#include "host/folders.h"
#include "management/pass.h"
#include "platform/crt.h"
#include "platform/file.h"
#include "policy/policy_file_cipher.h"
#include "policy/watermark_policy_xml_parser.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kDefaultEntry[] = L"*";
constexpr int kPolicyId = 1;

constexpr int kNoScope = -1;
constexpr int kNotSuitePrinters = 1;
constexpr int kNotDefaultEntry = 2;

constexpr wchar_t kPass[] = L"SigilSettingManagement::SetWatermarkAllPrinter";

constexpr LogMessage kNoMutex = {5, 153100860, kPass,
                                 L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kNoInstance = {
    5, 153100050, kPass,
    L"Sigilインスタンス取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"};
constexpr LogMessage kNoPolicyFile = {5, 153100570, kPass,
                                      L"暗号化のポリシー（DAT）ファイルは存在しない。"};
constexpr LogMessage kNotDecrypted = {5, 153100560, kPass,
                                      L"ポリシーファイルの復号化に失敗しました。"};
constexpr LogMessage kRefused = {5, 153100540, kPass,
                                 L"ポリシーXML解析処理に失敗　エラーコード：%d"};
constexpr LogMessage kScopeRead = {3, 153100550, kPass,
                                   L"ポリシーファイルのプリンタ適応範囲値：%d"};
constexpr LogMessage kScopeless = {
    5, 153100110, kPass,
    L"プリンタ適応範囲が取得できないため、全プリンタ透かし有効無効設定処理を中断"};
constexpr LogMessage kNoPrinters = {
    5, 153100040, kPass, L"プリンタ情報取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"};
constexpr LogMessage kPrinterFailed = {
    4, 153100090, kPass,
    L"アサギリプリンタドライバの透かし設定に失敗しました。プリンタ：%s　設定：%d"};
constexpr LogMessage kThrown = {5, 153100100, kPass,
                                L"全プリンタ透かし有効無効設定処理に失敗しました"};

/// The scope that the delivered policy file gives, or kNoScope after a line that says why.
int ReadScope() {
  CString path;
  GetEMSFolderPath(path);
  path += kPolicyFileName;
  if (!PathFileExistsW(path)) {
    Log(kNoPolicyFile);
    return kNoScope;
  }
  CString text;
  if (CPolicyFileCipher().DecryptFile(path, text) != 0) {
    Log(kNotDecrypted);
    return kNoScope;
  }
  constexpr wchar_t kByteOrderMark = 0xFEFF;
  if (!text.IsEmpty() && text[0] == kByteOrderMark) text = text.Mid(1);

  CWatermarkPolicyXMLParser* const parser = CWatermarkPolicyXMLParser::GetInstance();
  if (const int refused = parser->SetXmlData(text); refused != 0) {
    Log(kRefused, refused);
    CWatermarkPolicyXMLParser::DeleteInstance();
    return kNoScope;
  }
  const int scope = _wtoi(parser->GetPrinterScope(kPolicyId));
  Log(kScopeRead, scope);
  CWatermarkPolicyXMLParser::DeleteInstance();
  return scope;
}

/// The result is that of the switch; a failed deletion does not count.
bool SwitchEntry(OperationSigilSettings& settings, const wchar_t* name, bool enable, bool service) {
  if (enable) return settings.EnableWatermark(name);
  const bool disabled = settings.DisableWatermark(name);
  if (service) settings.ClearWatermark(name);
  return disabled;
}

/// The number of printers whose switch failed.
int SwitchEntries(OperationSigilSettings& settings, const PrinterList& printers, int scope,
                  bool enable, bool service) {
  SwitchEntry(settings, kDefaultEntry, enable && scope != kNotDefaultEntry, service);
  int failures = 0;
  for (DWORD index = 0; index < printers.Count(); ++index) {
    const PRINTER_INFO_2W& printer = printers.Records()[index];
    if (!IsSuitePrinter(printer)) continue;
    if (!SwitchEntry(settings, printer.pPrinterName, enable && scope != kNotSuitePrinters,
                     service)) {
      Log(kPrinterFailed, printer.pPrinterName, enable);
      ++failures;
    }
  }
  return failures;
}

}  // namespace

int SetWatermarkAllPrinter(bool enable, bool service) {
  PassHoldings held;
  try {
    if (!held.TakeMutex()) return held.Stop(kNoMutex, kNoMutexResult);
    OperationSigilSettings settings;
    if (!settings.CreateInstance()) return held.Stop(kNoInstance, -2);

    const int scope = ReadScope();
    if (scope == kNoScope) return held.Stop(kScopeless, -4);
    if (!held.Printers().Read()) {
      held.Printers().Reset();
      return held.Stop(kNoPrinters, -1);
    }

    settings.SigilLock();
    const int failures = SwitchEntries(settings, held.Printers(), scope, enable, service);
    settings.SaveCfg();
    settings.SigilUnLock();
    settings.ReleaseInstance();

    held.Printers().Reset();
    held.GiveBack();
    return failures;
  } catch (...) {
    return held.Stop(kThrown, -3);
  }
}

}  // namespace SigilSettingManagement
