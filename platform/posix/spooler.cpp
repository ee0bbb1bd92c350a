#include "platform/spooler.h"

#include <new>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/record_block.h"

namespace platform {

namespace {

/// A connection is named after its server: `\\SERVER\NAME`.
bool IsConnection(const Printer& printer) {
  return printer.name.starts_with(LR"(\\)");
}

std::vector<Printer> PrintersOf(DWORD flags) {
  std::vector<Printer> printers = LoadMachine().printers;
  std::erase_if(printers, [flags](const Printer& printer) {
    return (flags & (IsConnection(printer) ? PRINTER_ENUM_CONNECTIONS : PRINTER_ENUM_LOCAL)) == 0;
  });
  return printers;
}

RecordTexts<PRINTER_INFO_2W> TextsOf(const Printer& printer) {
  using Info = PRINTER_INFO_2W;
  RecordTexts<Info> texts = {
      {&Info::pPrinterName, printer.name},   {&Info::pShareName, L""},   {&Info::pPortName, L""},
      {&Info::pDriverName, printer.driver},  {&Info::pLocation, L""},    {&Info::pSepFile, L""},
      {&Info::pPrintProcessor, L"winprint"}, {&Info::pDatatype, L"RAW"}, {&Info::pParameters, L""},
  };
  if (printer.comment) texts.push_back({&Info::pComment, *printer.comment});
  if (IsConnection(printer)) {
    const std::wstring_view name = printer.name;
    texts.push_back({&Info::pServerName, name.substr(0, name.find(L'\\', 2))});
  }
  return texts;
}

DWORD SizeOf(const std::vector<Printer>& printers) {
  std::size_t size = 0;
  for (const Printer& printer : printers)
    size += sizeof(PRINTER_INFO_2W) + TextSize(TextsOf(printer));
  return static_cast<DWORD>(size);
}

void Fill(BYTE* block, const std::vector<Printer>& printers) {
  auto* place = reinterpret_cast<wchar_t*>(block + printers.size() * sizeof(PRINTER_INFO_2W));
  for (const Printer& printer : printers) {
    PRINTER_INFO_2W& record = *new (block) PRINTER_INFO_2W{};
    block += sizeof record;
    record.Attributes = IsConnection(printer) ? PRINTER_ATTRIBUTE_NETWORK : PRINTER_ATTRIBUTE_LOCAL;
    place = PutTexts(record, TextsOf(printer), place);
  }
}

BOOL Enumerate(DWORD flags, BYTE* block, DWORD size, DWORD& needed, DWORD& returned) {
  const std::vector<Printer> printers = PrintersOf(flags);
  needed = SizeOf(printers);
  if (block == nullptr && size != 0) return FailWith(ERROR_INVALID_USER_BUFFER);
  if (size < needed) return FailWith(ERROR_INSUFFICIENT_BUFFER);
  Fill(block, printers);
  returned = static_cast<DWORD>(printers.size());
  return TRUE;
}

}  // namespace

}  // namespace platform

BOOL EnumPrintersW(DWORD flags, LPWSTR server, DWORD level, BYTE* block, DWORD size, LPDWORD needed,
                   LPDWORD returned) {
  if (needed == nullptr || returned == nullptr) return platform::FailWith(ERROR_INVALID_PARAMETER);
  *needed = *returned = 0;
  if (platform::IsToFail("EnumPrintersW")) return FALSE;
  if (server != nullptr && *server != L'\0') return platform::FailWith(ERROR_INVALID_NAME);
  if (level != 2) return platform::FailWith(ERROR_INVALID_LEVEL);
  try {
    return platform::Enumerate(flags, block, size, *needed, *returned);
  } catch (const std::system_error& error) {
    return platform::FailWith(platform::ErrorOf(error.code().value()));
  }
}
