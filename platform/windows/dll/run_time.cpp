// The compiler's run-time as a guest. A DLL of the Windows home has the C++ and GCC run-times
// linked in. By themselves they behave as in their own program: they hand their unwind tables to
// any other GCC run-time of the process, set the floating-point state of every new thread, and keep
// what they have allocated when the DLL is unloaded. This source is linked into each DLL and
// replaces the parts that do so. A thread of the host meets nothing of it, and when the DLL is
// unloaded while the process lives on, everything is given back.

#include <cxxabi.h>
#include <windows.h>

#include <cstdlib>
#include <iterator>
#include <utility>

/// Of the C++ library: frees the memory that it keeps for exceptions.
namespace __gnu_cxx {
void __freeres();
}

// --- What the run-time holds

namespace {

/// For each thread that calls this DLL, the state of exceptions that the C++ ABI wants. Their heap
/// holds nothing else, so its end is the end of all of them.
class ThreadStates {
 public:
  bool Open() {
    m_index = TlsAlloc();
    m_heap = HeapCreate(0, 0, 0);
    return m_index != TLS_OUT_OF_INDEXES && m_heap != nullptr;
  }

  void Close() {
    if (m_index != TLS_OUT_OF_INDEXES) TlsFree(std::exchange(m_index, TLS_OUT_OF_INDEXES));
    if (m_heap != nullptr) HeapDestroy(std::exchange(m_heap, nullptr));
  }

  /// The calling thread's, made when it is first asked for. Without memory for it the process ends,
  /// as it does with the library's own states.
  void* Get() {
    const DWORD error = GetLastError();  // the host may still want to know it
    void* state = TlsGetValue(m_index);
    if (state == nullptr) {
      state = HeapAlloc(m_heap, HEAP_ZERO_MEMORY, sizeof(State));
      if (state == nullptr || !TlsSetValue(m_index, state)) std::abort();
    }
    SetLastError(error);
    return state;
  }

  void FreeOwn() {
    if (void* const state = TlsGetValue(m_index)) HeapFree(m_heap, 0, state);
  }

 private:
  struct State {
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
  };

  DWORD m_index = TLS_OUT_OF_INDEXES;
  HANDLE m_heap = nullptr;
};

constinit ThreadStates g_states;

/// Every lock that the run-time makes. It gives some back and forgets others, so all are closed
/// here.
class Locks {
 public:
  void Add(HANDLE lock) {
    const LONG place = InterlockedIncrement(&m_count) - 1;
    if (place < static_cast<LONG>(std::size(m_locks))) m_locks[place] = lock;
  }

  void Close() {
    for (HANDLE& lock : m_locks)
      if (lock != nullptr) CloseHandle(std::exchange(lock, nullptr));
  }

 private:
  LONG m_count = 0;
  HANDLE m_locks[16] = {};
};

constinit Locks g_locks;

HANDLE WINAPI CreateLock(SECURITY_ATTRIBUTES* attributes, LONG count, LONG most, LPCWSTR /*name*/) {
  const HANDLE lock = CreateSemaphoreA(attributes, count, most, nullptr);
  g_locks.Add(lock);
  return lock;
}

/// The start code looks for a GCC run-time in a DLL of its own and leaves our unwind tables to it.
/// That one belongs to another part of the process, and with the tables there no throw of ours
/// would find its catch.
HMODULE WINAPI FindModule(LPCSTR name) {
  HMODULE module = nullptr;
  if (name == nullptr || lstrcmpiA(name, "libgcc_s_dw2-1.dll") != 0)
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, name, &module);
  return module;
}

}  // namespace

// --- In place of the run-time's own

extern "C" {

// The pointers through which the run-time's objects call Windows.
extern HMODULE(WINAPI* const theFindModule)(LPCSTR) __asm__("__imp__GetModuleHandleA@4");
HMODULE(WINAPI* const theFindModule)(LPCSTR) = FindModule;

using CreateLockFunction = HANDLE WINAPI(SECURITY_ATTRIBUTES*, LONG, LONG, LPCWSTR);
extern CreateLockFunction* const theCreateLock __asm__("__imp__CreateSemaphoreW@16");
CreateLockFunction* const theCreateLock = CreateLock;

/// The linker sends here what the run-time asks of __gthr_win32_mutex_destroy.
int __wrap___gthr_win32_mutex_destroy(void* /*mutex*/) {
  return 0;
}

/// No callback of the run-time for the threads of the host.
extern const PIMAGE_TLS_CALLBACK __dyn_tls_init_callback;
const PIMAGE_TLS_CALLBACK __dyn_tls_init_callback = nullptr;

/// Where the run-time's own start code begins.
BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved);

/// Where Windows enters the DLL. With `reserved` at a process detach the whole process ends.
BOOL WINAPI EnterDll(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  BOOL isLoaded = TRUE;
  if (reason == DLL_PROCESS_ATTACH) {
    isLoaded = g_states.Open() && DllMainCRTStartup(instance, reason, reserved);
  } else if (reason == DLL_PROCESS_DETACH) {
    DllMainCRTStartup(instance, reason, reserved);
    isLoaded = reserved != nullptr;
  } else if (reason == DLL_THREAD_DETACH) {
    g_states.FreeOwn();
  }
  if (!isLoaded) {
    __gnu_cxx::__freeres();
    g_locks.Close();
    g_states.Close();
  }
  return reason != DLL_PROCESS_ATTACH || isLoaded;
}

}  // extern "C"

namespace __cxxabiv1 {

__cxa_eh_globals* __cxa_get_globals() noexcept {
  return static_cast<__cxa_eh_globals*>(g_states.Get());
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
  return static_cast<__cxa_eh_globals*>(g_states.Get());
}

}  // namespace __cxxabiv1

namespace __gnu_cxx {

/// The library's own writes the exception's name to the host's error output, and is as large as a
/// third of the DLL.
void __verbose_terminate_handler() {
  std::abort();
}

}  // namespace __gnu_cxx
