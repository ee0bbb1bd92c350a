#include "platform/faults.h"

#include <atomic>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <utility>

namespace platform {

namespace {

struct Fault {
  unsigned goodCalls;
  DWORD error;
  bool isMet = false;
};

std::mutex g_guard;
std::map<std::string, Fault, std::less<>> g_faults;
std::string g_unmet;
std::atomic<void (*)(const char*)> g_observer = nullptr;

}  // namespace

void SetFault(const char* operation, unsigned goodCalls, DWORD error) {
  const std::lock_guard lock(g_guard);
  g_faults.insert_or_assign(operation, Fault{goodCalls, error});
}

void ClearFaults() {
  const std::lock_guard lock(g_guard);
  for (const auto& [operation, fault] : g_faults)
    if (!fault.isMet) g_unmet += operation + ' ';
  g_faults.clear();
}

std::string TakeUnmetFaults() {
  const std::lock_guard lock(g_guard);
  return std::exchange(g_unmet, {});
}

std::optional<DWORD> TakeFault(const char* operation) {
  if (const auto observer = g_observer.load()) observer(operation);
  const std::lock_guard lock(g_guard);
  const auto found = g_faults.find(std::string_view(operation));
  if (found == g_faults.end()) return std::nullopt;
  Fault& fault = found->second;
  if (fault.goodCalls > 0) {
    --fault.goodCalls;
    return std::nullopt;
  }
  fault.isMet = true;
  if (fault.error == kThrows) throw std::bad_alloc();
  return fault.error;
}

void SetObserver(void (*observer)(const char* operation)) {
  g_observer = observer;
}

}  // namespace platform
