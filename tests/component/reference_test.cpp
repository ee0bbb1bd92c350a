#include "component/reference.h"

#include <gtest/gtest.h>

namespace tests {
namespace {

struct Thrown {};

struct Object {
  bool throws = false;
  int releases = 0;

  void Release() {
    ++releases;
    if (throws) throw Thrown();
  }
};

using Reference = Sigil::CReference<Object>;

TEST(Reference, GivesBackOnceWhatItHolds) {
  Object first, second;
  {
    Reference reference;
    *reference.Out() = &first;
    *reference.Out() = &second;
    EXPECT_EQ(first.releases, 1);
    const Reference taker(std::move(reference));
    EXPECT_EQ(second.releases, 0);
  }
  EXPECT_EQ(first.releases, 1);
  EXPECT_EQ(second.releases, 1);
}

TEST(Reference, HidesWhatReleaseThrowsOnlyBehindAnotherException) {
  Object object{.throws = true};
  const auto hold = [&object](bool fails) {
    Reference reference;
    *reference.Out() = &object;
    if (fails) throw 1;
  };
  EXPECT_THROW(hold(false), Thrown);
  EXPECT_THROW(hold(true), int);
  /// While an exception unwinds, what is begun and ended within is a scope like any other.
  struct Within {
    ~Within() { EXPECT_THROW(work(false), Thrown); }
    const decltype(hold)& work;
  };
  EXPECT_THROW(
      {
        const Within within{hold};
        throw 1;
      },
      int);
  EXPECT_EQ(object.releases, 3);
}

}  // namespace
}  // namespace tests
