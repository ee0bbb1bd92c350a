#include "platform/module.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include "platform/owner.h"
#include "platform/posix/handle.h"
#include "platform/posix/module_refusal.h"
#include "platform/shell.h"
#include "platform/utf.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

/// A module's handle is that of the dynamic linker.
struct Module {
  std::wstring fileName;
  unsigned uses = 0;
};

std::mutex g_guard;

/// Under g_guard.
std::map<HMODULE, Module>& Modules() {
  static std::map<HMODULE, Module> modules;
  return modules;
}

/// The one library of Windows itself that is asked for at run time. It is no file.
constexpr wchar_t kShell[] = L"shell32.dll";

HMODULE ShellModule() {
  static char place;
  return reinterpret_cast<HMODULE>(&place);
}

void* FindInShell(std::string_view name) {
  return name == "SHGetKnownFolderPath" ? reinterpret_cast<void*>(&SHGetKnownFolderPath) : nullptr;
}

bool IsLoaded(HMODULE module) {
  const std::lock_guard lock(g_guard);
  return Modules().contains(module);
}

std::nullptr_t Nothing(DWORD error) {
  SetLastError(error);
  return nullptr;
}

DWORD LoadError(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return ERROR_MOD_NOT_FOUND;
  char start[SELFMAG] = {};
  std::ifstream(file, std::ios::binary).read(start, SELFMAG);
  return std::memcmp(start, ELFMAG, SELFMAG) == 0 ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

bool HasRefused(const void* handle) {
  const char* const refusal = getenv(kRefusalVariable);
  if (refusal == nullptr || RefusalOf(handle) != refusal) return false;
  unsetenv(kRefusalVariable);
  return true;
}

constexpr auto kClose = [](void* handle) { dlclose(handle); };
using Opened = Owner<void*, kClose>;

HMODULE CountUse(HMODULE module, std::wstring fileName) {
  const std::lock_guard lock(g_guard);
  Module& entry = Modules()[module];
  if (entry.uses++ == 0) entry.fileName = std::move(fileName);
  return module;
}

/// Code comes from where the host's does, never from a machine's folder, which holds data: a path
/// of drive C is refused.
HMODULE LoadFile(std::wstring_view path) {
  if (!path.starts_with(L'/')) return Nothing(ERROR_ACCESS_DENIED);
  const fs::path file = ToUtf8(path);
  Opened handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!handle) return Nothing(LoadError(file));
  if (HasRefused(handle.Get())) return Nothing(ERROR_DLL_INIT_FAILED);
  const HMODULE module =
      CountUse(static_cast<HMODULE>(handle.Get()), FromUtf8(file.filename().native()));
  handle.Release();
  return module;
}

/// Returns the address of the module's own export, else null; the dynamic linker alone would also
/// search the libraries that the module uses.
void* FindInFile(HMODULE module, const char* name) {
  void* const address = dlsym(module, name);
  link_map* own = nullptr;
  void* holder = nullptr;
  Dl_info info;
  const bool isOwn = address != nullptr && dlinfo(module, RTLD_DI_LINKMAP, &own) == 0 &&
                     dladdr1(address, &info, &holder, RTLD_DL_LINKMAP) != 0 && holder == own;
  return isOwn ? address : nullptr;
}

}  // namespace

}  // namespace platform

using platform::FailWith;
using platform::IsToFail;
using platform::Nothing;

HMODULE LoadLibraryW(LPCWSTR path) {
  if (IsToFail("LoadLibraryW")) return nullptr;
  try {
    if (std::wstring_view(path) == platform::kShell)
      return platform::CountUse(platform::ShellModule(), path);
    return platform::LoadFile(path);
  } catch (const std::bad_alloc&) {
    return Nothing(ERROR_NOT_ENOUGH_MEMORY);
  }
}

BOOL FreeLibrary(HMODULE module) {
  {
    const std::lock_guard lock(platform::g_guard);
    const auto found = platform::Modules().find(module);
    if (found == platform::Modules().end()) return FailWith(ERROR_INVALID_HANDLE);
    if (--found->second.uses == 0) platform::Modules().erase(found);
  }
  if (module != platform::ShellModule()) dlclose(module);
  return TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  if (IsToFail("GetProcAddress")) return nullptr;
  if (!platform::IsLoaded(module)) return Nothing(ERROR_INVALID_HANDLE);
  void* const address = module == platform::ShellModule() ? platform::FindInShell(name)
                                                          : platform::FindInFile(module, name);
  if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
  return reinterpret_cast<FARPROC>(address);
}

HMODULE GetModuleHandleW(LPCWSTR name) {
  const std::lock_guard lock(platform::g_guard);
  for (const auto& [handle, module] : platform::Modules())
    if (module.fileName == name) return handle;
  return Nothing(ERROR_MOD_NOT_FOUND);
}

DWORD GetModuleFileNameW(HMODULE, LPWSTR path, DWORD capacity) {
  if (IsToFail("GetModuleFileNameW")) return 0;
  try {
    char link[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", link, sizeof link);
    const std::wstring name =
        platform::FromUtf8({link, static_cast<std::size_t>(std::max(length, ssize_t{0}))});
    const bool isFitting = name.size() < capacity;
    path[name.copy(path, capacity - 1)] = L'\0';
    SetLastError(isFitting ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER);
    return isFitting ? static_cast<DWORD>(name.size()) : capacity;
  } catch (const std::bad_alloc&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
  }
}
