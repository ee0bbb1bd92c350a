#pragma once

// The recorder: one sequence of everything a pass does to the outside, and the script of what the
// outside answers. It is built as the logging component, so that log lines land in the sequence by
// themselves; the test component and the tests add the rest. A plain C interface with wide text,
// because on Windows each module may have a C++ library of its own, or none. Safe from any thread.
// The texts that it gives stay valid for good.

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#define RECORDER_API __declspec(dllexport)
#else
#define RECORDER_API __attribute__((visibility("default")))
#endif

/// A piece of a line.
struct RecorderPart {
  enum Kind : int { kWord, kQuoted, kWhole, kReal };
  Kind kind = kWord;
  const wchar_t* text = L"";  ///< Of a word, or in quotes.
  double number = 0;
};

extern "C" {

/// Forgets lines, script, state and numbering. The live count stays: it tells what is still held.
RECORDER_API void RecorderReset();

/// True while the recorder itself allocates, for a test in which memory ends for all others.
RECORDER_API bool RecorderIsWorking();

/// The parts as they stand in lines, with `between` between them.
RECORDER_API const wchar_t* RecorderText(const RecorderPart* parts, std::size_t count,
                                         const wchar_t* between);

RECORDER_API void RecorderAdd(const wchar_t* line);
RECORDER_API void RecorderAddLog(int level, int number, const wchar_t* function, int line,
                                 const RecorderPart* parts, std::size_t count);

/// The number of lines, and one of them.
RECORDER_API std::size_t RecorderCount();
RECORDER_API const wchar_t* RecorderLine(std::size_t index);

/// Adds the line of a call, `KIND[NAME]::OPERATION(ARGUMENTS)`, where `name` may be empty, and asks
/// the script, which may name the plain `KIND::OPERATION` or the whole line; without a kind there
/// is the operation alone. False: the call is to throw. `*result` stays as it is where the script
/// says nothing.
RECORDER_API bool RecorderCall(const wchar_t* kind, const wchar_t* name, const char* operation,
                               const RecorderPart* arguments, std::size_t count,
                               std::int32_t* result);

/// The `nth` call from now on (1: the next, 0: every one) of `call` gives `result`, or throws. A
/// call is an operation ("Settings::Save") or a whole line ("Settings::Save(0)").
RECORDER_API void RecorderScript(const wchar_t* call, unsigned nth, std::int32_t result);
RECORDER_API void RecorderScriptThrow(const wchar_t* call, unsigned nth);

/// What the test component holds; the names stand in its source. Empty where nothing was set, which
/// is the number 0 and no line.
RECORDER_API void RecorderSetState(const wchar_t* name, const wchar_t* value);
RECORDER_API const wchar_t* RecorderState(const wchar_t* name);
RECORDER_API std::int32_t RecorderStateNumber(const wchar_t* name);
/// Empty behind the last.
RECORDER_API const wchar_t* RecorderStateLine(const wchar_t* name, int index);

/// 1, 2, 3, ... for each kind.
RECORDER_API unsigned RecorderNextNumber(const wchar_t* kind);

/// How many objects of the test component are alive, itself included, after this change.
RECORDER_API int RecorderLive(int change = 0);
}
