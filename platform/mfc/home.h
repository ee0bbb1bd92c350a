#pragma once

// What the types of MFC need of the home that they run in.

#include <cstdio>
#include <optional>

#include "platform/base.h"

namespace platform {

/// Whether two texts are the same but for the case of their letters, in every locale.
bool IsSameText(LPCWSTR left, LPCWSTR right);

/// Opens a file for reading, as it is. Null on failure, and for a folder.
std::FILE* OpenToRead(LPCWSTR path);

/// The bytes of a file, 0 for a folder. Null when it is not there or cannot be asked.
std::optional<ULONGLONG> SizeOf(LPCWSTR path);

}  // namespace platform
