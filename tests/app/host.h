#pragma once

// The host program as an administrator has it: run from a shell, in a folder of its own, on a
// machine `machine` below that.

#include <filesystem>
#include <string>
#include <string_view>

namespace tests {

class Host {
 public:
  /// With a sample machine, or with none.
  enum class Machine { kSample, kNone };
  explicit Host(Machine machine = Machine::kSample);
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  /// What a bash script prints, on standard output and then on the error output, and "[N]" for an
  /// exit status that is not 0. `sigilctl` is the program.
  std::string Run(const std::string& script) const;

  /// Paths are relative to the folder.
  void Write(const std::string& path, std::string_view bytes) const;
  std::string Read(const std::string& path) const;

  /// Every file and folder of the machine, with its content and the time of its last change.
  std::string Snapshot() const;

  /// Runs the program from a folder with these of its files alone.
  void UseHostWith(std::initializer_list<const char*> files);

  const std::filesystem::path& Folder() const { return m_folder; }

 private:
  std::filesystem::path m_folder;
  std::filesystem::path m_programs;
};

// Below the folder.
inline const std::string kClient = "machine/C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge/";
inline const std::string kDataDat = kClient + "config/data.dat";
inline const std::string kClientIniFile = kClient + "config/Client.ini";
inline const std::string kDelivered = kClient + "EMS/WmPolicy.dat";
inline const std::string kSystemSettingFile = kClient + "EMS/SystemSetting.csv";

/// A policy text with one element, for a scope.
std::string Policy(const std::string& scope, const std::string& filler = "");

}  // namespace tests
