#pragma once

struct IUnknown;

namespace platform {

/// An object of the class DOMDocument60, with one reference. Throws std::bad_alloc.
IUnknown* NewXmlDocument();

}  // namespace platform
