#pragma once

// The program as an administrator has it: a folder of its own, where it runs, with a sample
// machine.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tests {

namespace fs = std::filesystem;
using Json = nlohmann::json;

inline std::string Read(const fs::path& file) {
  std::ifstream bytes(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(bytes), {}};
}

/// A folder for the life of this.
class Folder {
 public:
  explicit Folder(const fs::path& parent = fs::temp_directory_path()) {
    std::string name = parent / "sigil-app-XXXXXX";
    path = mkdtemp(name.data());
  }
  ~Folder() { fs::remove_all(path); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  /// Runs a command of the shell there, which finds the programs; its exit status.
  int Run(const std::string& command) const {
    const fs::path own = fs::read_symlink("/proc/self/exe").parent_path();
    setenv("programs", fs::canonical(own / SIGIL_BUILD_FOLDER).c_str(), 1);
    return system(("cd '" + path.string() + "' && PATH=$programs:$PATH\n" + command).c_str());
  }

  fs::path path;
};

class Desk {
 public:
  Desk() { Answer("init machine"); }

  void Write(const std::string& policy) const {
    std::ofstream(m_folder.path / "policy.xml") << policy;
  }

  std::string Answer(const std::string& arguments) const {
    m_folder.Run("SIGIL_ROOT=machine sigilctl " + arguments + " > answer");
    return Read(m_folder.path / "answer");
  }

  /// Applies the policy, whatever a rehearsal finds; what the machine holds then.
  Json Apply() const {
    const std::string answer = Answer("update --force policy.xml");
    EXPECT_TRUE(answer.starts_with("update: 0. The policy is applied.")) << answer;
    return Json::parse(Answer("show --json"), nullptr, false);
  }

 private:
  // In memory where that is possible, since every save of the component waits for the disk.
  const Folder m_folder{access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path()};
};

/// A policy of such elements, one with the ID 0, one with 1, and so on. `scope` is the node.
inline std::string Policy(const std::vector<std::string>& elements, const std::string& scope = "") {
  std::string ids, nodes;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const std::string id = std::to_string(i);
    ids += "<ID>" + id + "</ID>";
    nodes += "<Element ID='" + id + "'>" + elements[i] + "</Element>\n";
  }
  return "<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID='1'>" + scope + "<ElementIDs>" +
         ids + "</ElementIDs></PolicyInfo></PolicyInfos><Elements>" + nodes +
         "</Elements></Watermark></HLE></QuietMIMOSA>";
}

}  // namespace tests
