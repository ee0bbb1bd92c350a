// The guard that the compiler lays between a function's buffers and its return address. The
// compiler's own library would ask Windows' cryptography for the value while the loader's lock is
// held, which can hang a host.

#include <windows.h>

#include <cstdint>

extern "C" {

extern std::uintptr_t __stack_chk_guard;
std::uintptr_t __stack_chk_guard = 0;

/// Ends the process, whose memory cannot be trusted any more.
[[noreturn]] void __stack_chk_fail() {
  constexpr UINT kStackBufferOverrun = 0xC0000409;
  TerminateProcess(GetCurrentProcess(), kStackBufferOverrun);
  __builtin_trap();
}

/// Runs before any other code of its DLL or program; a function with a guard must not be under way.
__attribute__((constructor(101), no_stack_protector)) void SeedStackGuard() {
  FILETIME time;
  GetSystemTimeAsFileTime(&time);
  LARGE_INTEGER counter;
  QueryPerformanceCounter(&counter);
  __stack_chk_guard = time.dwLowDateTime ^ time.dwHighDateTime ^ GetCurrentProcessId() ^
                      GetCurrentThreadId() ^ GetTickCount() ^ counter.LowPart ^
                      reinterpret_cast<std::uintptr_t>(&counter);
}

}  // extern "C"
