#pragma once

// Records of watermarks, to be laid out and drawn.

#include <string>
#include <vector>

#include "app/page/page.h"

namespace tests {

using namespace app::page;
using peers::EntryRecord;
using peers::WatermarkRecord;

/// Opaque and in the middle of the page.
inline WatermarkRecord Record(const std::string& text, double fontSize, int printPos = 4) {
  WatermarkRecord record;
  record.id = record.name = record.text = text;
  record.fontSize = fontSize;
  record.opacity = 100;
  record.printPos = printPos;
  return record;
}

/// An entry that prints them all.
inline EntryRecord Entry(const std::vector<WatermarkRecord>& records) {
  EntryRecord entry;
  entry.watermarks = records;
  entry.lastSetting.enabled = true;
  for (const WatermarkRecord& record : records) entry.lastSetting.watermarks.push_back(record.id);
  return entry;
}

}  // namespace tests
