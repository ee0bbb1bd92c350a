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

TEST(HostPath, IsNoneWhenItWouldBeCut) {
  std::string name = (fs::temp_directory_path() / "sigil-test-XXXXXX").string();
  const fs::path root = mkdtemp(name.data());
  const fs::path own = fs::read_symlink("/proc/self/exe").parent_path();
  // Each folder on the way has the component, so that one further up would be found.
  fs::path folder = root;
  while (folder.native().size() < 200) {
    folder /= std::string(20, 'f');
    fs::create_directory(folder);
    fs::create_symlink(own / "SigilUtil_x86.dll", folder / "SigilUtil_x86.dll");
  }
  const auto run = [&](std::size_t length, const std::string& test) {
    const fs::path host = folder / std::string(length - folder.native().size() - 1, 'h');
    fs::copy_file("/proc/self/exe", host);
    const std::string command = "LD_LIBRARY_PATH='" + own.string() + "' '" + host.string() +
                                "' --gtest_also_run_disabled_tests --gtest_brief=1" +
                                " --gtest_filter=HostPath.DISABLED_" + test;
    return std::system(command.c_str());
  };
  EXPECT_EQ(run(259, "HasTheComponent"), 0);
  EXPECT_EQ(run(260, "HasNone"), 0);
  EXPECT_EQ(run(300, "HasNone"), 0);
  fs::remove_all(root);
}

}  // namespace
}  // namespace tests
