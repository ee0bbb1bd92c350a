// The component lies beside the host executable, which is a copy of this program here, running a
// disabled test below.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "component/operation_sigil_settings.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

TEST(HostPath, DISABLED_HasTheComponent) {
  EXPECT_TRUE(OperationSigilSettings().CreateInstance());
}

TEST(HostPath, DISABLED_HasNone) {
  EXPECT_FALSE(OperationSigilSettings().CreateInstance());
}

TEST(HostPath, IsCutAt260Characters) {
  std::string name = (fs::temp_directory_path() / "sigil-test-XXXXXX").string();
  const fs::path root = mkdtemp(name.data());
  const fs::path own = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path folder = root / std::string(220 - root.native().size(), 'f');
  const fs::path longFolder = folder / std::string(60, 'g');
  fs::create_directories(longFolder);
  const auto run = [&](const fs::path& place, std::size_t length, const std::string& test) {
    const fs::path host = place / std::string(length - place.native().size() - 1, 'h');
    fs::copy_file("/proc/self/exe", host);
    const std::string command = "LD_LIBRARY_PATH='" + own.string() + "' '" + host.string() +
                                "' --gtest_also_run_disabled_tests --gtest_brief=1" +
                                " --gtest_filter=HostPath.DISABLED_" + test;
    return std::system(command.c_str());
  };
  const auto put = [&](const fs::path& place) {
    fs::create_symlink(own / "SigilUtil_x86.dll", place / "SigilUtil_x86.dll");
  };
  put(longFolder);
  EXPECT_EQ(run(longFolder, 300, "HasNone"), 0) << "its folder is cut off";
  put(folder);
  for (const std::size_t length : {259U, 260U, 300U})
    EXPECT_EQ(run(folder, length, "HasTheComponent"), 0) << "only the executable's name is cut";
  EXPECT_EQ(run(longFolder, 299, "HasTheComponent"), 0) << "it is found in the folder above";
  fs::remove_all(root);
}

}  // namespace
}  // namespace tests
