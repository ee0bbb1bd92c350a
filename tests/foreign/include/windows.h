#pragma once

// Of Windows, what the shared headers and the foreign parts need.

using BYTE = unsigned char;
using WORD = unsigned short;
using DWORD = unsigned long;

struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];
};

inline bool operator==(const GUID& left, const GUID& right) {
  for (int i = 0; i < 8; ++i)
    if (left.Data4[i] != right.Data4[i]) return false;
  return left.Data1 == right.Data1 && left.Data2 == right.Data2 && left.Data3 == right.Data3;
}

extern "C" __declspec(dllimport) void __stdcall RaiseException(DWORD code, DWORD flags, DWORD count,
                                                               const DWORD* arguments);
extern "C" __declspec(dllimport) void* __stdcall GetProcessHeap();
extern "C" __declspec(dllimport) void* __stdcall HeapAlloc(void* heap, DWORD flags, unsigned bytes);
extern "C" __declspec(dllimport) int __stdcall HeapFree(void* heap, DWORD flags, void* block);
extern "C" [[noreturn]] __declspec(dllimport) void __stdcall ExitProcess(unsigned code);
