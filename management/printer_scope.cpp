#include "management/printer_scope.h"

#include "host/ems_folder.h"
#include "host/folders.h"
#include "logging/log.h"
#include "platform/crt.h"
#include "platform/file.h"
#include "policy/policy_file_cipher.h"
#include "policy/watermark_policy_xml_parser.h"

namespace SigilSettingManagement {
namespace {

constexpr int kPolicyId = 1;
constexpr int kNoScope = -1;

constexpr wchar_t kPass[] = L"SigilSettingManagement::SetWatermarkAllPrinter";

constexpr LogMessage kNoPolicyFile = {5, 153100570, kPass,
                                      L"暗号化のポリシー（DAT）ファイルは存在しない。"};
constexpr LogMessage kNotDecrypted = {5, 153100560, kPass,
                                      L"ポリシーファイルの復号化に失敗しました。"};
constexpr LogMessage kRefused = {5, 153100540, kPass,
                                 L"ポリシーXML解析処理に失敗　エラーコード：%d"};
constexpr LogMessage kScopeRead = {3, 153100550, kPass,
                                   L"ポリシーファイルのプリンタ適応範囲値：%d"};

}  // namespace

std::optional<int> ReadDeliveredScope() {
  CString path;
  GetEMSFolderPath(path);
  path += kPolicyFileName;
  if (!PathFileExistsW(path)) {
    Log(kNoPolicyFile);
    return std::nullopt;
  }
  CString text;
  if (CPolicyFileCipher().DecryptFile(path, text) != 0) {
    Log(kNotDecrypted);
    return std::nullopt;
  }
  // Only the first byte order mark belongs to the file; the reader refuses a second one.
  constexpr wchar_t kByteOrderMark = 0xFEFF;
  if (!text.IsEmpty() && text[0] == kByteOrderMark) text = text.Mid(1);

  CWatermarkPolicyXMLParser* const parser = CWatermarkPolicyXMLParser::GetInstance();
  if (const int refused = parser->SetXmlData(text); refused != 0) {
    Log(kRefused, refused);
    CWatermarkPolicyXMLParser::DeleteInstance();
    return std::nullopt;
  }
  const int scope = _wtoi(parser->GetPrinterScope(kPolicyId));
  Log(kScopeRead, scope);
  CWatermarkPolicyXMLParser::DeleteInstance();
  if (scope == kNoScope) return std::nullopt;
  return scope;
}

}  // namespace SigilSettingManagement
