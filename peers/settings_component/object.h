#pragma once

// The common parts of the component's objects.

#include <algorithm>
#include <cwchar>
#include <string>
#include <utility>
#include <vector>

#include "peers/settings_component/settings_component.h"
#include "platform/utf.h"

namespace peers {

using Result = std::int32_t;

/// An object of `Interface` that lives until its last reference is released.
template <class Interface>
class Counted : public Interface {
 public:
  Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  virtual ~Counted() = default;

  std::uint32_t AddRef() override { return ++m_references; }
  std::uint32_t Release() override {
    const std::uint32_t left = --m_references;
    if (left == 0) delete this;
    return left;
  }

 private:
  std::uint32_t m_references = 1;
};

/// Returns the result of `action`, or kFailed if it throws: no exception leaves the component.
template <class Action>
Result Guarded(Action action) noexcept {
  try {
    return action();
  } catch (...) {
    return kFailed;
  }
}

/// Returns the element at `index`, or null.
template <class List>
auto* At(List& list, std::int32_t index) {
  const auto place = static_cast<std::size_t>(index);
  return index >= 0 && place < list.size() ? &list[place] : nullptr;
}

/// Copies `text` with its terminator to a buffer of `*length` characters; a longer text is not
/// copied. `*length` becomes the length with the terminator. `buffer` may be null.
inline Result GiveText(const std::wstring& text, wchar_t* buffer, std::uint32_t* length) {
  const auto needed = static_cast<std::uint32_t>(text.size() + 1);
  const std::uint32_t capacity = std::exchange(*length, needed);
  if (buffer == nullptr) return Sigil::kSuccess;
  if (capacity < needed) return Sigil::kTargetTooSmall;
  std::wmemcpy(buffer, text.c_str(), needed);
  return Sigil::kSuccess;
}

}  // namespace peers
