#include <iterator>
#include <vector>

#include "component/operation_sigil_settings.h"
#include "component/setting_file_path.h"
#include "component/sigil_string.h"
#include "logging/log.h"

namespace {

constexpr wchar_t kClear[] = L"OperationSigilSettings::AllDeletePrinterSetting";

constexpr LogMessage kPrinterNotDeleted = {
    4, 153400210, kClear, L"設定ファイルからプリンタ個別設定の削除に失敗しました[%s]"};
constexpr LogMessage kPrinterDeleted = {1, 153400220, kClear,
                                        L"設定ファイルからプリンタ個別設定を削除しました[%s]"};
constexpr LogMessage kDriverNotDeleted = {
    4, 153400230, kClear, L"設定ファイルからドライバ個別設定の削除に失敗しました[%s]"};
constexpr LogMessage kDriverDeleted = {1, 153400240, kClear,
                                       L"設定ファイルからドライバ個別設定を削除しました[%s]"};
constexpr LogMessage kNoPath = {4, 153400250, kClear, L"設定ファイルパスの取得に失敗しました。"};
constexpr LogMessage kThrown = {
    5, 153400260, kClear, L"登録済みプリンタ個別設定情報オール削除処理に異常が発生しました。"};
constexpr LogMessage kEnd = {1, 153400270, kClear,
                             L"登録済みプリンタ個別設定情報オール削除処理完了"};

/// One kind of individual settings, by the component's operations and our messages.
struct Kind {
  std::int32_t (Sigil::Settings::*pfnCount)();
  std::int32_t (Sigil::Settings::*pfnName)(std::int32_t, wchar_t*, std::uint32_t*);
  std::int32_t (Sigil::Settings::*pfnDelete)(const wchar_t*, const wchar_t*);
  const LogMessage& deleted;
  const LogMessage& notDeleted;
};

constexpr Kind kPrinters = {
    &Sigil::Settings::GetPrinterSettingCount, &Sigil::Settings::GetPrinterSettingName,
    &Sigil::Settings::DeletePrinterSetting, kPrinterDeleted, kPrinterNotDeleted};
constexpr Kind kDrivers = {
    &Sigil::Settings::GetDriverSettingCount, &Sigil::Settings::GetDriverSettingName,
    &Sigil::Settings::DeleteDriverSetting, kDriverDeleted, kDriverNotDeleted};

using Names = std::vector<Sigil::CSigilString>;

void ListNames(Sigil::Settings& settings, const Kind& kind, Names& names) {
  const std::int32_t count = (settings.*kind.pfnCount)();
  for (std::int32_t index = 0; index < count; ++index) {
    wchar_t buffer[256] = {};
    auto length = static_cast<std::uint32_t>(std::size(buffer));
    if (Sigil::Failed((settings.*kind.pfnName)(index, buffer, &length))) continue;
    buffer[std::size(buffer) - 1] = L'\0';
    Sigil::CSigilString name(buffer);
    names.push_back(name);
    name.Release();
  }
}

void DeleteNamed(Sigil::Settings& settings, const Kind& kind, const wchar_t* path,
                 const Names& names) {
  for (const Sigil::CSigilString& listed : names) {
    Sigil::CSigilString name(listed);
    const std::int32_t result = (settings.*kind.pfnDelete)(path, name.GetText());
    Log(Sigil::Failed(result) ? kind.notDeleted : kind.deleted, name.GetDisplayText());
    name.Release();
  }
}

// All names of both kinds are known before the first is deleted.
void DeleteIndividualSettings(Sigil::Settings& settings, Names& printers, Names& drivers) {
  ListNames(settings, kPrinters, printers);
  ListNames(settings, kDrivers, drivers);
  wchar_t path[MAX_PATH] = {};
  auto length = static_cast<std::uint32_t>(std::size(path));
  if (Sigil::Failed(GetSettingFilePath(path, &length))) {
    Log(kNoPath);
    return;
  }
  DeleteNamed(settings, kPrinters, path, printers);
  DeleteNamed(settings, kDrivers, path, drivers);
}

}  // namespace

bool OperationSigilSettings::AllDeletePrinterSetting() {
  bool result = true;
  Names printers;
  Names drivers;
  try {
    DeleteIndividualSettings(*m_pSettings, printers, drivers);
  } catch (...) {
    Log(kThrown);
    result = false;
  }
  Log(kEnd);
  for (Names* names : {&printers, &drivers})
    for (Sigil::CSigilString& name : *names) name.Release();
  return result;
}
