#pragma once

// What the program knows of the home that it runs in, Linux or Windows, and of its own place there.

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/module.h"
#include "platform/owner.h"

namespace app {

/// What `main` is given, as UTF-8. Standard input gives its bytes as they are from now on, and a
/// console takes UTF-8.
std::vector<std::string> Arguments(int argc, char** argv);

/// True where a machine is a folder, and false where this process runs on the only one.
extern const bool kMachineIsFolder;
/// Makes the folder the machine of this process. Throws UsageError for an empty text.
void UseMachine(const std::string& folder);

/// UsageError when there is no machine to work on, or none that this account may work on.
void RequireMachine();

/// Returns the name of the computer.
std::string HostName();
/// The machine's folder, or its name.
std::string MachineName();

/// Where the file of a Windows path is.
std::filesystem::path HostPath(std::wstring_view windowsPath);

/// Reads the log's next bytes to a block and returns how many they are; 0 at the end.
using LogSource = std::function<std::size_t(char* block, std::size_t size)>;

/// Opens the file of the log that stands in for the closed one. Throws UsageError where there is no
/// log, or something else in its place.
LogSource OpenLog();

/// Returns a source that waits at the end for more, and goes on where another file takes the log's
/// place. Throws std::runtime_error.
LogSource FollowLog();

/// The last part of the help: the environment of the program.
extern const char kEnvironment[];

/// The steps against trouble with the mutex, the printers and the user's account.
extern const char kMendMutex[];
extern const char kMendPrinters[];
extern const char kMendAccount[];

/// The same of a delivered policy that is refused, of another key, or missing.
inline constexpr char kMendDelivery[] =
    "`sigilctl check` finds what is wrong with the text, `sigilctl seal` makes another";
inline constexpr char kMendKey[] = "seal it under this machine's key source";
inline constexpr char kMendMissing[] = "`sigilctl seal FILE` makes one";

// The libraries that lie beside the program.

/// Where a library of this file name has to be: in the folder of the program itself.
std::wstring BesideHost(const std::wstring& fileName);

/// The file names of the library and of its log.
extern const wchar_t kLibrary[];
extern const wchar_t kLog[];

inline void Unload(HMODULE module) {
  FreeLibrary(module);
}

struct Part {
  Owner<HMODULE, Unload> module;
  std::string fault;  ///< "is missing; put it beside sigilctl", ...; empty when it is loaded.
};

/// Loads the library of this file name. The log is loaded first and stays loaded, because the
/// others name it without a path. Each is loaded by its full path, because Windows would else look
/// in the current folder and along PATH too, and run a file that it finds there.
Part LoadPart(const std::wstring& fileName);

/// Returns null when the part has no such function.
template <class Operation>
Operation Function(const Part& part, const char* name) {
  // Cast through `void (*)()` to avoid the cast warning.
  return reinterpret_cast<Operation>(
      reinterpret_cast<void (*)()>(GetProcAddress(part.module.Get(), name)));
}

}  // namespace app
