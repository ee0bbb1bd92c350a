#pragma once

// What the other compiler leaves to a run-time in each library.

#include <windows.h>

#include <cstddef>

void* operator new(std::size_t bytes) {
  return HeapAlloc(GetProcessHeap(), 0, bytes);
}
void* operator new[](std::size_t bytes) {
  return operator new(bytes);
}
void operator delete(void* block) noexcept {
  HeapFree(GetProcessHeap(), 0, block);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept {
  operator delete(block);
}
void operator delete[](void* block) noexcept {
  operator delete(block);
}

extern "C" int _fltused;
int _fltused;
