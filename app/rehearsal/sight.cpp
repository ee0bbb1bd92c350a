// Which of a policy's watermarks a reader of the page sees, and which lie wrong on the paper, by
// the same layout as the picture's.

#include <tuple>

#include "app/rehearsal/review.h"
#include "app/text/table.h"
#include "app/text/wording.h"

namespace app {
namespace {

constexpr std::int32_t kWhite = 0xFFFFFF;

/// Returns why nobody sees the watermark, wherever it lies: "its opacity is 0"; empty where one
/// does.
std::string WhyUnseen(const peers::WatermarkRecord& mark) {
  if (IsBlank(mark.text)) return "its text is empty";
  if (mark.opacity == 0) return "its opacity is 0";
  return mark.color == kWhite ? "it is white on white paper" : "";
}

/// The elements that a reader sees, one of each ID, with their watermarks.
using SeenElements = std::vector<std::pair<const ElementFate*, const peers::WatermarkRecord*>>;

void ReviewPage(const page::Paper& paper, const SeenElements& seen, Review& review) {
  // An entry that prints these, named by their numbers.
  peers::EntryRecord entry;
  entry.lastSetting.enabled = true;
  for (const auto& [fate, seenMark] : seen) {
    peers::WatermarkRecord& mark = entry.watermarks.emplace_back(*seenMark);
    mark.name = std::to_string(entry.watermarks.size() - 1);
    entry.lastSetting.watermarks.push_back(mark.id);
  }
  const bool isLandscape = paper.size.width > paper.size.height;
  const std::string on = "on " + paper.name + (isLandscape ? " landscape " : " ");
  for (const page::Note& note : page::LayOut(entry, paper, page::MeasureText).notes) {
    if (note.watermark.empty()) {
      review.notes.Add({"page", on + note.text});
      continue;
    }
    const ElementFate& fate = *seen.at(std::stoul(note.watermark)).first;
    (note.isOffPage ? review.findings : review.notes)
        .Add({"page", on + "it " + note.text, fate.line, fate.id});
  }
}

auto PlaceOf(const peers::WatermarkRecord& mark) {
  return std::tuple(mark.printPos, mark.xOffset, mark.yOffset, mark.rotate, mark.repeatFirstAxis,
                    mark.repeatSecondAxis, mark.repeatHSpace, mark.repeatVSpace);
}

void ReviewPlaces(const SeenElements& seen, Remarks& findings) {
  std::map<decltype(PlaceOf({})), const ElementFate*> places;
  for (const auto& [fate, mark] : seen) {
    const auto [first, isNew] = places.emplace(PlaceOf(*mark), fate);
    if (!isNew && findings.HasRoom("place"))
      findings.Add({"place",
                    "it lies in the place of " + OneLine(first->second->id, kTextWidth) +
                        ", line " + std::to_string(first->second->line),
                    fate->line, fate->id});
  }
}

}  // namespace

void ReviewSight(const page::Paper& paper, Review& review) {
  SeenElements seen;
  for (const ElementFate& fate : review.elements) {
    if (!fate.isFirst || !fate.mark) continue;
    const std::string why = WhyUnseen(*fate.mark);
    if (why.empty()) {
      seen.emplace_back(&fate, &*fate.mark);
      continue;
    }
    // An ID without an element has a finding already.
    if (fate.isThere && review.findings.HasRoom("invisible"))
      review.findings.Add({"invisible", "invisible: " + why, fate.line, fate.id});
    if (review.unseen.empty())
      review.unseen = "no watermark can be seen; " + OneLine(fate.id, kTextWidth) + ": " + why;
  }
  if (!seen.empty()) review.unseen.clear();
  ReviewPage(paper, seen, review);
  ReviewPlaces(seen, review.findings);
}

}  // namespace app
