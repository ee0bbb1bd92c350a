#pragma once

// Calls into a module that another compiler may have built, with exceptions of its own. In each
// home such an exception leaves the call as an exception of this library, so that frames are
// unwound and a catch-all handler catches it. A 64-bit build for Windows meets no
// such module, because it has only tests, and calls as Linux does.

#if defined(_WIN32) && !defined(_WIN64)

#include <type_traits>

// The Windows half is in windows/foreign.cpp. Exceptions of the platform's usual compiler arrive as
// ForeignException. Those of a GCC run-time of the module's own do not: that run-time finds no
// catch in its own module and ends the process.

struct ForeignException {};

extern "C" {
extern const void* const theGuardedOperations[];
void CallGuarded();
}

/// The one pointer to an object of such a module, and a stand-in for the object: the stand-in has
/// its operations, in the same slots, and each passes the call on under a guard.
template <typename Interface>
class ForeignObject {
 public:
  /// The object as the library calls it; null when there is none. Valid as long as this.
  Interface* Get() const {
    static_assert(std::is_polymorphic_v<Interface>, "there is nothing to stand in for");
    return m_object == nullptr ? nullptr
                               : reinterpret_cast<Interface*>(const_cast<ForeignObject*>(this));
  }

  /// Where the module puts the object.
  Interface** Place() { return &m_object; }

 private:
  using Operations __attribute__((may_alias)) = const void* const*;

  Operations m_operations = theGuardedOperations;
  Interface* m_object = nullptr;
};

/// Calls a function of the module that takes words (pointers, 32-bit numbers), eight at most.
template <typename Result, typename... Arguments>
Result CallForeign(Result (*function)(Arguments...), Arguments... arguments) {
  using Call = Result (*)(Result(*)(Arguments...), Arguments...);
  return reinterpret_cast<Call>(CallGuarded)(function, arguments...);
}

#else

// The modules share the C++ library, and exceptions pass from one to the other.

template <typename Interface>
class ForeignObject {
 public:
  Interface* Get() const { return m_object; }
  Interface** Place() { return &m_object; }

 private:
  Interface* m_object = nullptr;
};

template <typename Result, typename... Arguments>
Result CallForeign(Result (*function)(Arguments...), Arguments... arguments) {
  return function(arguments...);
}

#endif
