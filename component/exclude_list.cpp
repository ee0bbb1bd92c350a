#include <vector>

#include "component/operation_sigil_settings.h"
#include "logging/log.h"

namespace {

constexpr wchar_t kEmpty[] = L"OperationSigilSettings::AllDeleteExclude";
constexpr wchar_t kAdd[] = L"OperationSigilSettings::AddExcludePrinter";

constexpr LogMessage kEmptied = {1, 153400120, kEmpty,
                                 L"除外プリンタの全削除して設定ファイルに保存しました。"};
constexpr LogMessage kNotSaved = {4, 153400130, kEmpty, L"設定ファイルの保存に失敗しました。"};
constexpr LogMessage kNotExcluded = {1, 153400140, kAdd,
                                     L"除外対象ではないため無処理。Printer:[%s]"};
constexpr LogMessage kAdded = {3, 153400150, kAdd, L"除外プリンタ追加実施。Printer:[%s]"};

/// One of the component's two lists, by its operations.
struct ExcludeList {
  std::int32_t (Sigil::Settings::*pfnCount)();
  std::int32_t (Sigil::Settings::*pfnGet)(std::int32_t, GUID*, wchar_t*, std::uint32_t*);
  std::int32_t (Sigil::Settings::*pfnDelete)(const GUID*);
};

constexpr ExcludeList kPrinters = {&Sigil::Settings::GetExcludePrinterCount,
                                   &Sigil::Settings::GetExcludePrinter,
                                   &Sigil::Settings::DeleteExcludePrinter};
constexpr ExcludeList kSecond = {&Sigil::Settings::GetSecondExcludeCount,
                                 &Sigil::Settings::GetSecondExclude,
                                 &Sigil::Settings::DeleteSecondExclude};

void Empty(Sigil::Settings& settings, const ExcludeList& list) {
  std::vector<GUID> entries;
  const std::int32_t count = (settings.*list.pfnCount)();
  for (std::int32_t index = 0; index < count; ++index) {
    GUID guid = {};
    std::uint32_t length = 0;
    if ((settings.*list.pfnGet)(index, &guid, nullptr, &length) == 0) entries.push_back(guid);
  }
  for (const GUID& guid : entries) (settings.*list.pfnDelete)(&guid);
}

}  // namespace

bool OperationSigilSettings::AllDeleteExclude() {
  Empty(*m_pSettings, kPrinters);
  Empty(*m_pSettings, kSecond);
  m_pSettings->Commit();
  const bool saved = !Sigil::Failed(m_pSettings->Save(0));
  Log(saved ? kEmptied : kNotSaved);
  return saved;
}

void OperationSigilSettings::AddExcludePrinter(const wchar_t* printer, bool exclude) {
  if (!exclude) {
    Log(kNotExcluded, printer);
    return;
  }
  GUID guid = {};
  m_pSettings->AddExcludePrinter(printer, &guid);
  m_pSettings->Commit();
  Log(kAdded, printer);
}
