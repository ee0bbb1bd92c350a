// The test component by another compiler. The system's msvcrt.dll throws and catches for it; the
// rest of a run-time that it needs stands here. So one transcript is the record of both.

#include "tests/test_component/test_component.cpp"

void* operator new(std::size_t bytes) {
  return HeapAlloc(GetProcessHeap(), 0, bytes);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept {
  HeapFree(GetProcessHeap(), 0, block);
}

// msvcrt.dll has one handler for the frames of every version of that compiler, and keeps the table
// of operations of type_info, which it does not call, to itself.
#pragma comment(linker, "/alternatename:___CxxFrameHandler3=___CxxFrameHandler")
#pragma comment(linker, "/alternatename:??_7type_info@@6B@=_theTypeOperations")

namespace {

/// Lives in a frame that a throw passes. It counts as alive, so one that never ends shows.
struct Passed {
  Passed() { RecorderLive(+1); }
  Passed(const Passed&) = delete;
  Passed& operator=(const Passed&) = delete;
  ~Passed() { RecorderLive(-1); }
};

/// Its destructor shows in the record when it runs for the same object once more.
struct Thrown {
  Thrown() = default;
  Thrown(const Thrown&) = delete;
  Thrown& operator=(const Thrown&) = delete;
  ~Thrown() {
    if (m_isOver) RecorderAdd(L"a thrown object destroyed twice");
    m_isOver = true;
  }

 private:
  volatile bool m_isOver = false;
};

void Throw() {
  const Passed passed[3];
  throw Thrown();
}

void ThrowAgain() {
  const Passed passed;
  try {
    Throw();
  } catch (const Thrown&) {
    const Passed passedToo;
    throw;
  }
}

/// A throw as it arrives without its object.
void Raise() {
  constexpr DWORD kThrow = 0xE06D7363, kFinal = 1;
  constexpr DWORD kWhat[] = {0x19930520, 0, 0};
  RaiseException(kThrow, kFinal, 3, kWhat);
}

}  // namespace

void ThrowScripted() {
  constexpr void (*kThrows[])() = {ThrowAgain, Throw, Raise};
  for (;;) kThrows[RecorderStateNumber(L"throw")]();
}

extern "C" {

int _fltused;
const void* theTypeOperations[1];

void __std_terminate() {
  ExitProcess(3);
}

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
