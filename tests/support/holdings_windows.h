#pragma once

// The holdings of this process, for tests that repeat an action and expect that nothing grows.

#include <gtest/gtest.h>

#include "platform/base.h"

namespace tests {

/// Returns the bytes that this process has for itself, as Windows keeps count of them. An
/// emulator's own memory is not among them.
inline std::size_t PrivateBytes() {
  std::size_t bytes = 0;
  MEMORY_BASIC_INFORMATION region;
  for (const char* place = nullptr; VirtualQuery(place, &region, sizeof region) != 0;
       place = static_cast<const char*>(region.BaseAddress) + region.RegionSize)
    if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
  return bytes;
}

/// The thread index and the handle that this process would be given next, and the memory it has.
struct Holdings {
  DWORD threadIndex = TlsAlloc();
  HANDLE handle = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  std::size_t bytes = PrivateBytes();

  Holdings() {
    TlsFree(threadIndex);
    CloseHandle(handle);
  }
};

/// Expects no thread index and no handle more than `before`, and less than a page of memory for
/// each of `count` passes, because the recorder's notes of a pass are some hundred bytes.
inline void ExpectNothingGrew(const Holdings& before, std::size_t count) {
  constexpr std::size_t kPage = 4096;
  const Holdings after;
  EXPECT_EQ(after.threadIndex, before.threadIndex);
  EXPECT_EQ(after.handle, before.handle);
  EXPECT_LT(after.bytes, before.bytes + count * kPage);
}

}  // namespace tests
