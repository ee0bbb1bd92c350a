#include "tests/app/host.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace tests {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

Host::Host(Machine machine)
    : m_programs(
          fs::canonical(fs::read_symlink("/proc/self/exe").parent_path() / SIGIL_BUILD_FOLDER)) {
  std::string name = (fs::temp_directory_path() / "sigil-app-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error(name);
  m_folder = name;
  if (machine == Machine::kSample) Run("sigilctl init machine");
}

Host::~Host() {
  std::error_code ignored;
  fs::remove_all(m_folder, ignored);
}

std::string Host::Run(const std::string& script) const {
  Write("script", script);
  const std::string command = "cd '" + m_folder.string() +
                              "' && SIGIL_ROOT=\"$PWD/machine\" PATH='" + m_programs.string() +
                              "':\"$PATH\" bash script > out 2> err";
  const int status = system(command.c_str());
  std::string result = Read("out") + Read("err");
  if (status != 0) result += "[" + std::to_string(WEXITSTATUS(status)) + "]\n";
  return result;
}

void Host::Write(const std::string& path, std::string_view bytes) const {
  fs::create_directories((m_folder / path).parent_path());
  std::ofstream(m_folder / path, std::ios::binary) << bytes;
}

std::string Host::Read(const std::string& path) const {
  return ReadFile(m_folder / path);
}

std::string Host::Snapshot() const {
  std::set<std::string> lines;
  for (const auto& each : fs::recursive_directory_iterator(m_folder / "machine")) {
    const auto time = each.last_write_time().time_since_epoch().count();
    lines.insert(each.path().string() + " " + std::to_string(time) + " " +
                 (each.is_regular_file() ? ReadFile(each.path()) : "") + "\n");
  }
  std::string all;
  for (const std::string& line : lines) all += line;
  return all;
}

void Host::UseHostWith(std::initializer_list<const char*> files) {
  const fs::path programs = m_folder / "host";
  fs::create_directories(programs);
  for (const char* file : files) fs::copy(m_programs / file, programs / file);
  m_programs = programs;
}

std::string Policy(const std::string& scope, const std::string& filler) {
  return "<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID=\"1\"><PrinterScope>" + scope +
         "</PrinterScope><ElementIDs><ID>E1</ID></ElementIDs></PolicyInfo></PolicyInfos><Elements>"
         "<Element ID=\"E1\"><Kind>0</Kind><Name>題</Name><Text>社外秘😀\n印</Text></Element>"
         "</Elements></Watermark></HLE><!--" +
         filler + "--></QuietMIMOSA>";
}

}  // namespace tests
