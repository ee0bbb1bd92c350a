// The test component by another compiler, which gives it nothing of a run-time: what it needs of
// one stands here, and what it needs of the C++ library in include/. So one transcript is the
// record of both. A scripted throw is what that compiler makes of a C++ throw.

#include "tests/foreign/heap.h"
#include "tests/test_component/test_component.cpp"

void ThrowScripted() {
  constexpr DWORD kThrow = 0xE06D7363, kFinal = 1;
  constexpr DWORD kWhat[] = {0x19930520, 0, 0};
  for (;;) RaiseException(kThrow, kFinal, 3, kWhat);
}

extern "C" {

int _purecall() {
  return 0;
}

int __stdcall DllMain(void* /*instance*/, DWORD reason, void* /*reserved*/) {
  constexpr DWORD kDetach = 0, kAttach = 1;
  if (reason != kDetach && reason != kAttach) return 1;
  RecorderLive(reason == kAttach ? +1 : -1);
  RecorderAdd(reason == kAttach ? L"component loaded" : L"component unloaded");
  return 1;
}

}  // extern "C"
