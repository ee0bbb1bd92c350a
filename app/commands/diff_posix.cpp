#include <algorithm>
#include <iostream>
#include <map>
#include <memory>

#include "app/commands/commands.h"
#include "app/rehearsal/fields.h"
#include "app/rehearsal/review.h"
#include "app/text/errors.h"
#include "app/text/input.h"
#include "app/text/table.h"

namespace app {
namespace {

constexpr std::size_t kNameWidth = 24;
constexpr std::size_t kFileWidth = 32;

/// An element that is listed again is another one.
using ElementKey = std::pair<std::string, int>;

struct Side {
  std::string file;
  Review review;
  std::vector<ElementKey> order;  ///< Of the watermarks.
  std::map<ElementKey, peers::WatermarkRecord> marks;
};

Side Rehearsed(const std::string& file, int policyId) {
  Side side{NameOf(file), ReviewFile(file, policyId), {}, {}};
  const Review& review = side.review;
  if (!review.emptied.empty()) throw UsageError(side.file + ": " + review.emptied);
  std::map<std::string, int> count;
  for (const ElementFate& fate : review.elements) {
    if (!fate.mark) continue;
    const ElementKey key = {fate.id, ++count[fate.id]};
    side.order.push_back(key);
    side.marks.insert({key, *fate.mark});
  }
  return side;
}

std::string NameOfElement(const ElementKey& key) {
  return OneLine(key.first, kNameWidth) +
         (key.second > 1 ? " (" + std::to_string(key.second) + ")" : "");
}

/// The elements of one side, in its order, that the other has not or has too.
std::vector<ElementKey> Select(const Side& side, const Side& other, bool areCommon) {
  std::vector<ElementKey> keys;
  for (const ElementKey& key : side.order)
    if (other.marks.contains(key) == areCommon) keys.push_back(key);
  return keys;
}

std::string Names(const std::vector<ElementKey>& keys) {
  std::string names;
  for (const ElementKey& key : keys) names += (names.empty() ? "" : " ") + NameOfElement(key);
  return OneLine(names, kFileWidth);
}

void AddChanges(const Side& left, const Side& right, std::vector<Row>& rows) {
  for (const ElementKey& key : Select(left, right, true)) {
    for (const Field& field : Fields()) {
      const FieldValue before = field.get(left.marks.at(key));
      const FieldValue after = field.get(right.marks.at(key));
      if (before != after)
        rows.push_back({NameOfElement(key), field.name, Shown(before), Shown(after)});
    }
  }
}

/// What the printers become, but for the number of watermarks, which the elements tell.
void AddSwitches(const Side& left, const Side& right, std::vector<Row>& rows) {
  const auto state = [](const peers::EntryRecord& entry) {
    return std::string(entry.lastSetting.enabled ? "on" : "off");
  };
  for (const peers::EntryRecord& before : left.review.records.entries)
    for (const peers::EntryRecord& after : right.review.records.entries)
      if (before.printer == after.printer && state(before) != state(after))
        rows.push_back(
            {before.printer == "*" ? "* (default entry)" : OneLine(before.printer, kNameWidth),
             "switch", state(before), state(after)});
}

struct Options {
  std::string first;
  std::string second;
  int policyId = 1;
};

/// Tells in what the records differ that two policies leave on this machine. Returns 0 when they
/// are the same, 1 when not. Throws UsageError for a policy that leaves none.
int Diff(const Options& options) {
  const Side left = Rehearsed(options.first, options.policyId);
  const Side right = Rehearsed(options.second, options.policyId);
  std::vector<Row> rows = {
      {"Element", "Field", OneLine(left.file, kFileWidth), OneLine(right.file, kFileWidth)}};
  for (const ElementKey& key : Select(left, right, false))
    rows.push_back({NameOfElement(key), "", "registered", "gone"});
  for (const ElementKey& key : Select(right, left, false))
    rows.push_back({NameOfElement(key), "", "not there", "registered"});
  AddChanges(left, right, rows);
  if (Select(left, right, true) != Select(right, left, true))
    rows.push_back(
        {"order", "", Names(Select(left, right, true)), Names(Select(right, left, true))});
  AddSwitches(left, right, rows);
  if (rows.size() == 1) return 0;
  PrintTable(std::cout, rows, "");
  return 1;
}

}  // namespace

void AddDiff(CommandLine& line) {
  const auto options = std::make_shared<Options>();
  CLI::App& command =
      line.Add("diff", "Tells in what two policies differ, as stored; changes nothing",
               [options] { return Diff(*options); });
  command.add_option("A", options->first, "A policy, as for check")->type_name("")->required();
  command.add_option("B", options->second, "Another")->type_name("")->required();
  AddPolicyId(command, options->policyId);
}

}  // namespace app
