#pragma once

// The library's messages, for people who do not read its log: trouble in English, and the work that
// they report. A number that has a sentence stands here alone.

#include <optional>

#include "app/pass/pass.h"

namespace app {

/// What a message of level 4 or 5 means for the work that was asked for.
enum class Weight {
  kTrace,    ///< Nothing, whatever its level says.
  kWarning,  ///< The work is done; something beside it is not as it should be.
  kFailure,  ///< Work is lost: not done or not saved.
  kUnsaved,  ///< The same, because the setting file could not be written.
};

struct Meaning {
  Weight weight;
  std::string sentence;
  std::string next;  ///< What to do about it; may be empty.
};

/// Never fails: a number that is not known here is a warning in the library's own words.
Meaning MeaningOf(const Message& message);

/// The level from which on messages tell of trouble.
inline constexpr int kTroubleLevel = 4;
/// The messages from that level on that mean something, each once, in the order of their first.
std::vector<Message> Troubles(const std::vector<Message>& messages);

/// Returns the meaning of the first failure in the library's own order: why a pass failed.
Meaning FirstFailure(const std::vector<Message>& messages);

/// An element that has become a watermark of an entry.
struct MadeMark {
  std::string guid;
  bool isStamp = false;
};

/// Nothing for a message that tells of something else.
std::optional<MadeMark> MadeMarkIn(const Message& message);

/// What a message tells of an update's walk over the policy's list. An update walks it once for
/// each entry, and of each ID on the list one message tells that it is made or dropped.
enum class Step {
  kEntry,  ///< An entry is emptied; its walk begins.
  kMade,   ///< An element has become a watermark.
  kDropped,
  kUnread,  ///< The reader could not answer; the text counts as empty.
  kOther,
};
Step StepOf(const Message& message);

/// True for the message of a pass that did not get the mutex: it waited in vain, or the mutex was
/// abandoned.
bool MissesMutex(const Message& message);

/// True for a message with which set or release refuses a delivered policy for its text.
bool RefusesDelivery(const Message& message);

/// The meaning of the message with which they refuse one whose scope stands for none.
std::string MeaningOfNoScope();

struct WorkDone {
  std::size_t entries = 0;  ///< That an update has rebuilt.
  std::size_t marks = 0;    ///< That it has made in them.
  std::size_t on = 0;       ///< Entries that were switched on, or off, and saved.
  std::size_t off = 0;
  std::size_t checked = 0;  ///< Printers looked at for the exclude list, and put on it.
  std::size_t excluded = 0;
};

WorkDone WorkDoneIn(const Outcome& outcome);

}  // namespace app
