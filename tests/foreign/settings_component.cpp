// The test component by another compiler, which gives it nothing of a run-time: what it needs of
// one stands here. So one transcript is the record of both. A scripted throw is what that compiler
// makes of a C++ throw.

#include "tests/test_component/test_component.cpp"

void* operator new(std::size_t bytes) {
  return HeapAlloc(GetProcessHeap(), 0, bytes);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept {
  HeapFree(GetProcessHeap(), 0, block);
}

void ThrowScripted() {
  constexpr DWORD kThrow = 0xE06D7363, kFinal = 1;
  constexpr DWORD kWhat[] = {0x19930520, 0, 0};
  for (;;) RaiseException(kThrow, kFinal, 3, kWhat);
}

extern "C" {

int _fltused;

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
