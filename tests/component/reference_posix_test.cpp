// On Linux alone: the guard of the Windows home serves objects of another module, and these throw
// as only an object of this one can. Its tests are the rows of the passes beside tests/foreign.

#include <gtest/gtest.h>

#include "component/reference.h"

namespace tests {
namespace {

struct Object {
  int releases = 0;
  bool throws = false;

  void Release() {
    ++releases;
    if (throws) throw this;
  }
};

TEST(Reference, GivesBackOnceWhatItHolds) {
  Object first, second, thrower{.throws = true};
  struct AtTheEnd {
    ~AtTheEnd() noexcept(false) {
      const auto scope = [this] { *Sigil::CReference<Object>().Out() = object; };
      EXPECT_THROW(scope(), Object*) << "its own scope fails, though another is ending too";
    }
    Object* object;
  };
  const auto work = [&] {
    const AtTheEnd end{&thrower};
    Sigil::CReference<Object> reference;
    *reference.Out() = &first;
    *reference.Out() = &second;
    EXPECT_EQ(first.releases, 1);
    const Sigil::CReference<Object> taker(std::move(reference));
    EXPECT_EQ(second.releases, 0);
    throw 1;
  };
  EXPECT_THROW(work(), int);
  for (const Object& object : {first, second, thrower}) EXPECT_EQ(object.releases, 1);
}

}  // namespace
}  // namespace tests
