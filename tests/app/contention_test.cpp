#include <gtest/gtest.h>

#include "tests/app/host.h"

// Two processes at a time rebuild every record; neither may fail, and neither may leave anything of
// the other's: four watermarks in each of three entries.
TEST(Contention, HundredRoundsOfTwoUpdatesLeaveTheFileWhole) {
  EXPECT_EQ(tests::Host().Run("for round in {1..100}; do\n"
                              "  sigilctl update machine/policy.xml > other & update=$!\n"
                              "  sigilctl update machine/policy.xml && wait $update && cat other\n"
                              "  sigilctl show --json | grep -c '\"fontSize\"'\n"
                              "done | sort | uniq -c | sed 's/^ *//'"),
            "100 12\n200 update: 0. The policy is applied.\n");
}
