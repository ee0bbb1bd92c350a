#include "platform/module.h"

#include <dlfcn.h>
#include <link.h>
#include <stdlib.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/posix/handle.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/module_refusal.h"
#include "platform/shell.h"
#include "platform/utf.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

/// A module's handle is that of the dynamic linker.
struct Module {
  std::wstring path;
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
constexpr wchar_t kShellPath[] = L"C:\\Windows\\System32\\shell32.dll";

HMODULE ShellModule() {
  static char place;
  return reinterpret_cast<HMODULE>(&place);
}

void* FindInShell(std::string_view name) {
  return name == "SHGetKnownFolderPath" ? reinterpret_cast<void*>(&SHGetKnownFolderPath) : nullptr;
}

HMODULE HostModule() {
  static void* const handle = dlopen(nullptr, RTLD_NOW);
  return static_cast<HMODULE>(handle);
}

std::wstring HostModulePath() {
  std::error_code error;
  return FromUtf8(fs::read_symlink("/proc/self/exe", error).string());
}

bool HasFolder(std::wstring_view name) {
  return name.find_first_of(L"\\/") != name.npos;
}

std::wstring_view FileNameOf(std::wstring_view path) {
  return path.substr(path.find_last_of(L"\\/") + 1);
}

/// A file name without extension means a `.dll`; a point at its end, none.
std::wstring WithExtension(std::wstring name) {
  if (name.ends_with(L'.'))
    name.pop_back();
  else if (FileNameOf(name).find(L'.') == std::wstring_view::npos)
    name += L".dll";
  return name;
}

/// The loaded module of this file name or path, or null.
HMODULE FindLoaded(const std::wstring& name) {
  const std::lock_guard lock(g_guard);
  for (const auto& [handle, module] : Modules()) {
    const std::wstring_view path = module.path;
    if (SameName(HasFolder(name) ? path : FileNameOf(path), name)) return handle;
  }
  return nullptr;
}

/// The path of the module; empty for a handle that is none.
std::wstring PathOf(HMODULE module) {
  if (module == HostModule()) return HostModulePath();
  const std::lock_guard lock(g_guard);
  const auto found = Modules().find(module);
  return found == Modules().end() ? std::wstring() : found->second.path;
}

/// Where a library lies that is asked for by its file name alone.
std::wstring SearchPath(const std::wstring& name) {
  if (const HMODULE loaded = FindLoaded(name)) return PathOf(loaded);
  const std::wstring host = HostModulePath();
  return host.substr(0, host.size() - FileNameOf(host).size()) + name;
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

HMODULE CountUse(HMODULE module, std::wstring path) {
  const std::lock_guard lock(g_guard);
  Module& entry = Modules()[module];
  if (entry.uses++ == 0) entry.path = std::move(path);
  return module;
}

/// Code comes from where the host's does, never from a machine's folder, which holds data: a path
/// of drive C is refused.
HMODULE LoadFile(std::wstring path) {
  if (!path.starts_with(L'/')) return Nothing(ERROR_ACCESS_DENIED);
  const fs::path file = ToUtf8(path);
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return Nothing(LoadError(file));
  if (!HasRefused(handle)) return CountUse(static_cast<HMODULE>(handle), std::move(path));
  dlclose(handle);
  return Nothing(ERROR_DLL_INIT_FAILED);
}

/// The address of what the module itself exports: the dynamic linker also looks into the libraries
/// that it uses.
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
  if (path == nullptr || *path == L'\0') return Nothing(ERROR_INVALID_PARAMETER);
  const std::wstring name = platform::WithExtension(path);
  if (platform::SameName(name, platform::kShell))
    return platform::CountUse(platform::ShellModule(), platform::kShellPath);
  return platform::LoadFile(platform::HasFolder(name) ? name : platform::SearchPath(name));
}

BOOL FreeLibrary(HMODULE module) {
  if (module == platform::HostModule()) return TRUE;
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
  if (platform::PathOf(module).empty()) return Nothing(ERROR_INVALID_HANDLE);
  if (name == nullptr) return Nothing(ERROR_PROC_NOT_FOUND);
  void* const address = module == platform::ShellModule() ? platform::FindInShell(name)
                                                          : platform::FindInFile(module, name);
  if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
  return reinterpret_cast<FARPROC>(address);
}

HMODULE GetModuleHandleW(LPCWSTR name) {
  if (name == nullptr) return platform::HostModule();
  const HMODULE module = platform::FindLoaded(platform::WithExtension(name));
  if (module == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
  return module;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity) {
  if (IsToFail("GetModuleFileNameW")) return 0;
  const std::wstring name = platform::PathOf(module == nullptr ? platform::HostModule() : module);
  if (name.empty() || (path == nullptr && capacity > 0)) {
    SetLastError(name.empty() ? ERROR_MOD_NOT_FOUND : ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (capacity > name.size()) {
    path[name.copy(path, name.size())] = L'\0';
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(name.size());
  }
  if (capacity > 0) path[name.copy(path, capacity - 1)] = L'\0';
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return capacity;
}
