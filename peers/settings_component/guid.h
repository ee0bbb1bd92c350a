#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base.h"

namespace peers {

/// Returns a random GUID (RFC 4122, version 4) as text.
std::string NewGuid();

/// Returns "01234567-89ab-cdef-0123-456789abcdef".
std::string GuidText(const GUID& guid);

/// Returns null for a text of another form.
std::optional<GUID> ParseGuid(std::string_view text);

}  // namespace peers
