#include "tests/test_component/run_time.h"

#include "tests/recorder/recorder.h"

namespace {

/// What a scripted throw throws. It counts as alive, so one that never ends shows.
class Thrown {
 public:
  Thrown() { RecorderLive(+1); }
  Thrown(const Thrown&) : Thrown() {}
  Thrown& operator=(const Thrown&) = delete;
  ~Thrown() { RecorderLive(-1); }
};

/// Made and destroyed as the library comes and goes.
struct Library {
  Library() {
    RecorderLive(+1);
    RecorderAdd(L"component loaded");
  }
  ~Library() {
    RecorderLive(-1);
    RecorderAdd(L"component unloaded");
  }
} theLibrary;

}  // namespace

void ThrowScripted() {
  throw Thrown();
}
