#pragma once

// The parts of the MFC types that differ by home.

#include <cstdio>
#include <optional>

#include "platform/base.h"

namespace platform {

/// Returns whether two texts differ at most in the case of their letters, in every locale.
bool IsSameText(LPCWSTR left, LPCWSTR right);

/// Opens a file for reading, as it is. Null on failure, and for a folder.
std::FILE* OpenToRead(LPCWSTR path);

/// The bytes of a file, 0 for a folder. Null when it is not there or cannot be asked.
std::optional<ULONGLONG> SizeOf(LPCWSTR path);

}  // namespace platform
