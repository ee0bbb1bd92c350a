#include <iostream>

#include "app/commands/command_line.h"
#include "app/machine/policy_file.h"
#include "app/rehearsal/compare.h"
#include "app/text/errors.h"
#include "app/text/table.h"

namespace app {
namespace {

struct Options {
  std::string first;
  std::string second;  ///< Empty: the first is compared with the delivered policy.
  int policyId = 1;
};

struct Side {
  std::string name;
  Review review;
};

Side Rehearsed(const std::string& file, int policyId) {
  constexpr std::size_t kFileWidth = 32;
  const PolicySource source = ReadPolicySource(file);
  Side side{OneLine(source.name, kFileWidth), ReviewSource(source, policyId)};
  if (!side.review.emptied.empty()) throw UsageError(source.name + ": " + side.review.emptied);
  return side;
}

/// Tells in what the records differ that two policies leave on this machine. Returns 0 when they
/// are the same, 1 when not. Throws UsageError for a policy that leaves none.
int Diff(const Options& options) {
  const bool isAlone = options.second.empty();
  const Side left = Rehearsed(isAlone ? "" : options.first, options.policyId);
  const Side right = Rehearsed(isAlone ? options.first : options.second, options.policyId);
  const auto differences = Compare(left.review, right.review);
  if (differences.empty()) return 0;
  PrintTable(std::cout,
             RowsOf(differences, right.review.records.entries.size(), left.name, right.name), "");
  return 1;
}

}  // namespace

void AddDiff(CommandLine& line) {
  auto [command, options] =
      line.Add("diff", "Tells in what two policies differ, as stored; changes nothing", Diff);
  command.add_option("A", options.first, "A policy, text or sealed")->type_name("")->required();
  command.add_option("B", options.second, "Another (else the delivered one goes before A)")
      ->type_name("");
  AddPolicyId(command, options.policyId);
}

}  // namespace app
