#include "platform/spooler.h"

#include <new>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"

namespace platform {

namespace {

DWORD SizeOf(const std::vector<Printer>& printers) {
  std::size_t size = 0;
  for (const Printer& printer : printers) {
    std::size_t units = printer.name.size() + 1 + printer.driver.size() + 1;
    if (printer.comment) units += printer.comment->size() + 1;
    size += sizeof(PRINTER_INFO_2W) + units * sizeof(wchar_t);
  }
  return static_cast<DWORD>(size);
}

/// The records come first, then the texts.
void Fill(BYTE* block, const std::vector<Printer>& printers) {
  auto* place = reinterpret_cast<wchar_t*>(block + printers.size() * sizeof(PRINTER_INFO_2W));
  const auto put = [&place](std::wstring_view text) {
    wchar_t* const start = place;
    place += text.copy(place, text.size());
    *place++ = L'\0';
    return start;
  };
  for (const Printer& printer : printers) {
    new (block) PRINTER_INFO_2W{put(printer.name), put(printer.driver),
                                printer.comment ? put(*printer.comment) : nullptr};
    block += sizeof(PRINTER_INFO_2W);
  }
}

BOOL Enumerate(BYTE* block, DWORD size, DWORD& needed, DWORD& returned) {
  const std::vector<Printer> printers = LoadMachine().printers;
  needed = SizeOf(printers);
  if (block == nullptr && size != 0) return FailWith(ERROR_INVALID_USER_BUFFER);
  if (size < needed) return FailWith(ERROR_INSUFFICIENT_BUFFER);
  Fill(block, printers);
  returned = static_cast<DWORD>(printers.size());
  return TRUE;
}

}  // namespace

}  // namespace platform

BOOL EnumPrintersW(DWORD, LPWSTR, DWORD, BYTE* block, DWORD size, LPDWORD needed,
                   LPDWORD returned) {
  *needed = *returned = 0;
  if (platform::IsToFail("EnumPrintersW")) return FALSE;
  try {
    return platform::Enumerate(block, size, *needed, *returned);
  } catch (const std::system_error& error) {
    return platform::FailWith(platform::ErrorOf(error.code().value()));
  }
}
