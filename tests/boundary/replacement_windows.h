#pragma once

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tests {

/// Stands in place of a call of kernel32 that a library makes, for the life of this.
class Replacement {
 public:
  Replacement(HMODULE library, const char* name, void* function) : m_place(PlaceOf(library, name)) {
    Swap(function);
  }
  ~Replacement() { Swap(m_original); }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

 private:
  static void** PlaceOf(HMODULE library, const char* name) {
    const auto function =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
    auto* const base = reinterpret_cast<char*>(library);
    const LONG offset = reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew;
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + offset);
    const auto& table = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    const auto first = reinterpret_cast<void**>(base + table.VirtualAddress);
    void** const end = first + table.Size / sizeof *first;
    void** const place = std::find(first, end, function);
    if (place == end) throw std::runtime_error(name);
    return place;
  }

  void Swap(void* function) {
    DWORD before = 0;
    VirtualProtect(m_place, sizeof *m_place, PAGE_READWRITE, &before);
    m_original = std::exchange(*m_place, function);
    VirtualProtect(m_place, sizeof *m_place, before, &before);
  }

  void** m_place;
  void* m_original = nullptr;
};

}  // namespace tests
