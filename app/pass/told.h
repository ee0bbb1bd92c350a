#pragma once

// What the library's messages tell of its work. Their numbers stand here alone.

#include <optional>
#include <string>

#include "app/pass/library.h"

namespace app {

/// An element that has become a watermark of an entry.
struct MadeMark {
  std::string elementId;
  std::string guid;
};

/// Nothing for a message that tells of something else.
std::optional<MadeMark> MadeMarkIn(const Message& message);

struct WorkDone {
  std::size_t entries = 0;  ///< That an update has rebuilt.
  std::size_t marks = 0;    ///< That it has made in them.
  std::size_t on = 0;       ///< Entries that were switched on, or off, and saved.
  std::size_t off = 0;
  std::size_t checked = 0;  ///< Printers looked at for the exclude list, and put on it.
  std::size_t excluded = 0;
  bool hasFailedDelivery = false;  ///< There is no delivered policy, or it is none.
};

WorkDone WorkDoneIn(const Outcome& outcome);

}  // namespace app
