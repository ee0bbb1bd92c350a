#pragma once

// Records of the SDK whose texts lie in the same block, as the system's listings hand them out.

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/base.h"

namespace platform {

/// A record's member and the text it is to point to. Members that are left out stay as they are.
template <typename Record>
struct RecordText {
  LPWSTR Record::*member;
  std::wstring_view text;
};

template <typename Record>
using RecordTexts = std::vector<RecordText<Record>>;

/// In bytes.
template <typename Record>
std::size_t TextSize(const RecordTexts<Record>& texts) {
  std::size_t length = 0;
  for (const auto& each : texts) length += each.text.size() + 1;
  return length * sizeof(wchar_t);
}

/// Copies the texts to `place`, which has TextSize bytes, and points the record at them. The place
/// behind them.
template <typename Record>
wchar_t* PutTexts(Record& record, const RecordTexts<Record>& texts, wchar_t* place) {
  for (const auto& [member, text] : texts) {
    record.*member = place;
    place += text.copy(place, text.size());
    *place++ = L'\0';
  }
  return place;
}

}  // namespace platform
