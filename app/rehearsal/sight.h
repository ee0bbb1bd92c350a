#pragma once

// Which of a policy's watermarks a reader of the page sees, and which lie wrong on the paper. The
// same layout as the picture's tells of the paper.

#include <string>

#include "app/page/page.h"
#include "app/rehearsal/review.h"

namespace app {

/// Returns why nobody sees the watermark, wherever it lies: "its opacity is 0"; empty where one
/// does.
std::string WhyUnseen(const peers::WatermarkRecord& mark);

/// Adds the elements that nobody sees, that lie off the paper, run off it, or lie in one place with
/// another to the findings, and what else the picture tells to the notes. Each element counts once,
/// because an update registers the same on every entry.
void ReviewSight(const page::Paper& paper, Review& review);

}  // namespace app
