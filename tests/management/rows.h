#pragma once

// The failures of a pass as a table. Each row meets a fresh machine, and the pass leaves the record
// that stands in the transcript under the row's name.

#include <gtest/gtest.h>

#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"
#include "tests/support/twist.h"

namespace tests {

struct Row {
  const char* name;
  Twists twists;
  int result;
};

template <class Prepare, class Pass>
void ExpectRows(const Transcript& told, const std::vector<Row>& rows, Prepare prepare, Pass pass) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestMachine machine;
    prepare(machine);
    if (!Apply(row.twists)) continue;
    EXPECT_EQ(pass(), row.result);
    ExpectRecord(told(row.name));
  }
}

}  // namespace tests
