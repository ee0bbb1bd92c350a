#pragma once

// The parts of the MFC types that differ by home.

#include <cstdio>
#include <optional>

#include "platform/base.h"

namespace platform {

/// Returns whether two texts differ at most in the case of their letters, in every locale.
bool IsSameText(LPCWSTR left, LPCWSTR right);

/// Opens a file for reading, as it is. Returns null on failure, and for a folder. Unless it is
/// shared, a file that another has open is a failure on Windows; Linux knows no such claim.
std::FILE* OpenToRead(LPCWSTR path, bool isShared);

/// The bytes of a file, 0 for a folder. Null when it is not there or cannot be asked.
std::optional<ULONGLONG> SizeOf(LPCWSTR path);

}  // namespace platform
