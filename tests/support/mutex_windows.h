#pragma once

// The two locks of the C++ library that GoogleTest takes for granted. With the thread model of this
// home the library leaves them out; each compilation of the tests begins with this header instead.

#include <windows.h>

#include <mutex>

namespace std {

class mutex {
 public:
  void lock() { AcquireSRWLockExclusive(&m_lock); }
  void unlock() { ReleaseSRWLockExclusive(&m_lock); }
  SRWLOCK* native_handle() { return &m_lock; }

 private:
  SRWLOCK m_lock = SRWLOCK_INIT;
};

class condition_variable {
 public:
  void notify_all() { WakeAllConditionVariable(&m_variable); }

  template <typename Predicate>
  void wait(unique_lock<mutex>& lock, Predicate isTrue) {
    while (!isTrue())
      SleepConditionVariableSRW(&m_variable, lock.mutex()->native_handle(), INFINITE, 0);
  }

 private:
  CONDITION_VARIABLE m_variable = CONDITION_VARIABLE_INIT;
};

}  // namespace std
