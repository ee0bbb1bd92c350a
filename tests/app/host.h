#pragma once

// The host program as an administrator has it: run from a shell, in a folder of its own, on a
// sample machine `machine` below that.

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/utf.h"
#include "tests/support/policy.h"

namespace tests {

class Host {
 public:
  Host() { Run("sigilctl init machine"); }
  ~Host() { std::filesystem::remove_all(m_folder); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  /// What a bash script prints, on standard output and then on the error output, and "[N]" for an
  /// exit status that is not 0. `sigilctl` is the program, $programs its folder, $client that of
  /// the client's files on the machine.
  std::string Run(const std::string& script) const {
    Write("script", script);
    const std::string command =
        "cd '" + m_folder.string() + "' && export programs='" + m_programs.string() +
        "' client=machine/C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge SIGIL_ROOT=\"$PWD/machine\""
        " && PATH=\"$programs:$PATH\" bash script > out 2> err";
    const int status = system(command.c_str());
    const std::string result = Read("out") + Read("err");
    return status == 0 ? result : result + "[" + std::to_string(WEXITSTATUS(status)) + "]\n";
  }

  void Write(const std::string& file, const std::string& bytes) const {
    std::ofstream(m_folder / file, std::ios::binary) << bytes;
  }

  /// Every file and folder of the machine, with its content and the time of its last change.
  std::string Snapshot() const {
    return Run("find machine -printf '%p %T@\\n' -type f -exec md5sum {} + | sort");
  }

 private:
  std::string Read(const char* file) const {
    std::ifstream stream(m_folder / file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  const std::filesystem::path m_programs = std::filesystem::canonical(
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / SIGIL_BUILD_FOLDER);
  std::string m_name = (std::filesystem::temp_directory_path() / "sigil-app-XXXXXX").string();
  const std::filesystem::path m_folder = mkdtemp(m_name.data());
};

/// A policy with one element, for a scope.
inline std::string OneElement(const std::wstring& scope) {
  const Element element{L"E1",
                        {{L"Kind", L"0"}, {L"Name", L"題"}, {L"Text", L"社外秘\xD83D\xDE00\n印"}}};
  return platform::ToUtf8(Policy(1, scope.c_str(), {element}));
}

}  // namespace tests
