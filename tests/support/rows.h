#pragma once

// The failures of a pass, as they stand in a transcript.

#include <gtest/gtest.h>

#include "tests/support/causes.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"

namespace tests {

/// For each row of `told` a fresh machine, on which `prepare` is called, and `pass`, which gives
/// the row's result and leaves its record.
template <class Prepare, class Pass>
void ExpectRows(const Transcript& told, Prepare prepare, Pass pass) {
  EXPECT_FALSE(told.Rows().empty());
  for (const Transcript::Row& row : told.Rows()) {
    SCOPED_TRACE(row.section + ", when " + row.causes);
    TestMachine machine;
    prepare(machine);
    if (!Arrange(row.causes)) continue;
    EXPECT_EQ(pass(), row.result);
    ExpectRecord(told(row.section));
  }
}

}  // namespace tests
