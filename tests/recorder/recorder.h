#pragma once

// The recorder: one sequence of everything a pass does to the outside, and the script of what the
// outside answers. It is built as the logging component, so that log lines land in the sequence by
// themselves; the test component and the tests add the rest. A plain C interface with wide text,
// because on Windows each module may have a C++ library of its own. Safe from any thread.

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#define RECORDER_API __declspec(dllexport)
#else
#define RECORDER_API __attribute__((visibility("default")))
#endif

extern "C" {

/// Forgets lines, script, state and numbering. The live count stays: it tells what is still held.
RECORDER_API void RecorderReset();

RECORDER_API void RecorderAdd(const wchar_t* line);

/// The number of lines, and one of them; its text stays valid until the next reset.
RECORDER_API std::size_t RecorderCount();
RECORDER_API const wchar_t* RecorderLine(std::size_t index);

/// Adds `line` and asks the script, which may name the plain `operation` or the whole line. False:
/// the call is to throw. `*result` stays as it is where the script says nothing.
RECORDER_API bool RecorderCall(const wchar_t* operation, const wchar_t* line, std::int32_t* result);

/// The `nth` call from now on (1: the next, 0: every one) of `call` gives `result`, or throws. A
/// call is an operation ("Settings::Save") or a whole line ("Settings::Save(0)").
RECORDER_API void RecorderScript(const wchar_t* call, unsigned nth, std::int32_t result);
RECORDER_API void RecorderScriptThrow(const wchar_t* call, unsigned nth);

/// What the test component holds; the names stand in its source. Empty where nothing was set.
RECORDER_API void RecorderSetState(const wchar_t* name, const wchar_t* value);
RECORDER_API const wchar_t* RecorderState(const wchar_t* name);

/// 1, 2, 3, ... for each kind.
RECORDER_API unsigned RecorderNextNumber(const wchar_t* kind);

/// How many objects of the test component are alive, itself included, after this change.
RECORDER_API int RecorderLive(int change = 0);
}
