#include <iostream>

#include "app/commands/command_line.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/rehearsal/compare.h"
#include "app/text/errors.h"
#include "app/text/table.h"

namespace app {
namespace {

struct Options {
  std::string file;  ///< Empty: the delivered policy.
  int policyId = 1;
  bool isJson = false;
};

Json ToJson(const Force& force) {
  Json differences = Json::array();
  for (const Difference& each : force.differences)
    differences.push_back({{"entries", each.entries},
                           {"element", each.subject},
                           {"field", each.field},
                           {"record", each.left},
                           {"policy", each.right}});
  return differences;
}

void PrintAsJson(const Options& options, const PolicySource& source, const Force& force) {
  PrintJson(std::cout, {{"file", source.name},
                        {"policyId", options.policyId},
                        {"sha256", ChecksumOf(source.text)},
                        {"inForce", force.unknown.empty() ? Json(force.IsIn()) : Json()},
                        {"reason", force.unknown},
                        {"entries", force.entries},
                        {"excluded", force.excluded},
                        {"differences", ToJson(force)}});
}

/// Tells whether the policy is what the entries hold. Returns 0 when it is in force and 1 when not.
/// Where nobody can tell, it throws UsageError, or by --json prints the reason and returns 2.
int Verify(const Options& options) try {
  const PolicySource source = ReadPolicySource(options.file);
  const Review review = ReviewPolicy({source.text, options.policyId});
  const Force force = ForceOf(review);
  const int status = !force.unknown.empty() ? 2 : force.IsIn() ? 0 : 1;
  if (options.isJson) {
    PrintAsJson(options, source, force);
    return status;
  }
  if (!force.unknown.empty()) throw UsageError(source.name + ": " + Sentence(force));
  std::cout << "verify: " << OneLine(source.name) << ", policy " << options.policyId << ", is "
            << Sentence(force) << ".\n  SHA-256 " << ChecksumOf(source.text) << "\n";
  if (!review.emptied.empty())
    std::cout << "  The policy registers nothing: " << review.emptied << ".\n";
  if (!kReadsValues) std::cout << "  " << kUnreadValues << "\n";
  if (!force.differences.empty()) PrintTable(std::cout, RowsOf(force), "");
  return status;
} catch (const UsageError&) {
  throw;
} catch (const std::exception& error) {
  throw UsageError("verify: cannot be told: " + CauseOf(error));
}

}  // namespace

void AddVerify(CommandLine& line) {
  auto [command, options] = line.Add(
      "verify", "Tells whether a policy is what the entries hold; changes nothing", Verify);
  AddPolicySource(command, options.file);
  AddPolicyId(command, options.policyId);
  AddJson(command, options.isJson);
}

}  // namespace app
