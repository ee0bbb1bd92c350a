#pragma once

// What a policy's PrinterScope does, in an update and in the delivered policy.

#include <optional>
#include <string>

#include "app/pass/library.h"

namespace app {

/// The number that the scope counts as in an update: its own when it does something of its own,
/// else the first from 0 on that does the same. Nothing when there is none.
std::optional<int> ScopeMeaning(const std::string& scope);

/// Why the switching passes refuse the text as the delivered policy; empty when they do not.
std::string WhyNotDelivered(const std::wstring& text);

}  // namespace app
