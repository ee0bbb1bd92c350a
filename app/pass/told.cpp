#include "app/pass/told.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace app {
namespace {

constexpr int kEntryEmptied = 153100200;
constexpr int kHeaderFooterMade = 153100270;
constexpr int kStampMade = 153100310;
constexpr int kDeliveryFailed[] = {153100540, 153100560, 153100570};
constexpr int kPrinterChecked = 153100760;
constexpr int kPrinterExcluded = 153400150;
constexpr int kSwitchedOn = 153400060;
constexpr int kSwitchedOff = 153400100;  // also that an entry is cleared, which the function tells
constexpr std::string_view kClears = "OperationSigilSettings::ClearWatermark";

// "...　ElementID：ID → GUID：GUID"
constexpr std::string_view kBeforeId = "ElementID：";
constexpr std::string_view kBeforeGuid = " → GUID：";
constexpr std::size_t kGuidLength = 36;

}  // namespace

std::optional<MadeMark> MadeMarkIn(const Message& message) {
  if (message.number != kHeaderFooterMade && message.number != kStampMade) return std::nullopt;
  const std::string& text = message.text;
  const std::size_t id = text.find(kBeforeId);
  const std::size_t guid = text.rfind(kBeforeGuid);
  if (id == text.npos || guid == text.npos || guid < id + kBeforeId.size() ||
      text.size() != guid + kBeforeGuid.size() + kGuidLength)
    return std::nullopt;
  const std::size_t start = id + kBeforeId.size();
  return MadeMark{text.substr(start, guid - start), text.substr(text.size() - kGuidLength)};
}

WorkDone WorkDoneIn(const Outcome& outcome) {
  WorkDone done;
  for (const Message& message : outcome.messages) {
    if (message.number == kEntryEmptied) ++done.entries;
    if (MadeMarkIn(message)) ++done.marks;
    if (message.number == kPrinterChecked) ++done.checked;
    if (message.number == kPrinterExcluded) ++done.excluded;
    if (message.number == kSwitchedOn) ++done.on;
    if (message.number == kSwitchedOff && message.function != kClears) ++done.off;
    if (std::ranges::find(kDeliveryFailed, message.number) != std::end(kDeliveryFailed))
      done.hasFailedDelivery = true;
  }
  return done;
}

}  // namespace app
