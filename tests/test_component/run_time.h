#pragma once

/// Leaves the component as an exception that the library knows nothing of.
[[noreturn]] void ThrowScripted();
