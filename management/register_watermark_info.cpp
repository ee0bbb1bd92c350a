#include "management/register_watermark_info.h"

#include <span>

#include "host/printer_kind.h"
#include "logging/log.h"
#include "management/printer_scope.h"
#include "management/set_watermark_info.h"
#include "platform/crt.h"
#include "policy/watermark_policy_xml_parser.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kRegister[] = L"SigilSettingManagement::RegisterWatermarkInfo";

constexpr LogMessage kNoPrinters = {
    5, 153100110, kRegister, L"プリンタ情報取得に失敗したため、全プリンタ透かし情報設定処理を中断"};
constexpr LogMessage kRefused = {5, 153100170, kRegister,
                                 L"ポリシーXML解析処理に失敗　エラーコード：%d"};
constexpr LogMessage kNoDefaultEntry = {4, 153100580, kRegister,
                                        L"共通透かし情報設定に失敗しました。"};
constexpr LogMessage kNoPrinter = {5, 153100590, kRegister,
                                   L"アサギリドライバへの透かし情報設定に失敗しました。→%s"};
constexpr LogMessage kThrown = {5, 153100600, kRegister,
                                L"透かし情報登録処理に異常が発生しました。"};
constexpr LogMessage kEnd = {1, 153100610, kRegister, L"透かし情報登録処理終了"};

/// Returns false when the component gives no record for the entry.
bool RegisterEntry(int policyId, OperationSigilSettings& settings, const wchar_t* name,
                   bool outOfScope) {
  Sigil::CReference<Sigil::PrinterSettings> record;
  if (!settings.GetPrinterSettingsOpe(name, record.Out())) return false;
  SetWatermarkInfo(policyId, *record, outOfScope);
  record->Commit();
  record->Save(0);
  return true;
}

void RegisterEntries(int policyId, OperationSigilSettings& settings,
                     std::span<const PRINTER_INFO_2W> printers) {
  const int scope = _wtoi(CWatermarkPolicyXMLParser::GetInstance()->GetPrinterScope(policyId));
  if (!RegisterEntry(policyId, settings, kDefaultEntry, !IsDefaultEntryInScope(scope)))
    Log(kNoDefaultEntry);
  for (const PRINTER_INFO_2W& printer : printers) {
    if (KindOf(printer) != PrinterKind::kSuite) continue;
    if (!RegisterEntry(policyId, settings, printer.pPrinterName, !AreSuitePrintersInScope(scope)))
      Log(kNoPrinter, printer.pPrinterName);
  }
}

}  // namespace

int RegisterWatermarkInfo(int policyId, const wchar_t* policyXml, OperationSigilSettings& settings,
                          const PRINTER_INFO_2W* printers, DWORD printerCount) {
  CWatermarkPolicyXMLParser* const parser = CWatermarkPolicyXMLParser::GetInstance();
  int result = 0;
  try {
    if (printers == nullptr) {
      Log(kNoPrinters);
      return -1;
    }
    if (const int refused = parser->SetXmlData(policyXml); refused != 0) {
      Log(kRefused, refused);
      CWatermarkPolicyXMLParser::DeleteInstance();
      return -2;
    }
    RegisterEntries(policyId, settings, {printers, printerCount});
  } catch (...) {
    Log(kThrown);
    result = -3;
  }
  CWatermarkPolicyXMLParser::DeleteInstance();
  Log(kEnd);
  return result;
}

}  // namespace SigilSettingManagement
