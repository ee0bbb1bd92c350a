// Sessions of an administrator with the host program, as they stand in the files of `sessions`. A
// line with "$ " is typed into a shell, and so are those with "> " behind it; what follows is the
// answer, with "[N]" for an exit status that is not 0. Lines with "# " are remarks, blank ones
// don't count.
//
// Each session has a folder of its own with a sample machine in `machine`, and what `prelude.sh`
// tells.

#include "tests/app/desk.h"

namespace tests {
namespace {

const fs::path kSource(SIGIL_SOURCE_FOLDER);

/// A shell script that ends in the session's text, when all goes as it is written.
std::string Script(const fs::path& session) {
  std::ifstream lines(session);
  std::string script = ". '" + (kSource / "tests/app/prelude.sh").string() + "'\n", text, commands;
  const auto flush = [&] {
    script += "cat << 'END_OF_TEXT'\n" + text + "END_OF_TEXT\n" + commands;
    if (!commands.empty()) script += "tell_status $?\n";
    text.clear();
    commands.clear();
  };
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("> ")) flush();
    const bool isTyped = line.starts_with("$ ") || line.starts_with("> ");
    if (isTyped || line.starts_with("# ")) text += line + "\n";
    if (isTyped) commands += line.substr(2) + "\n";
  }
  flush();
  return script;
}

std::string WithoutBlankLines(const fs::path& file) {
  std::ifstream lines(file);
  std::string text;
  for (std::string line; std::getline(lines, line);) text += line.empty() ? "" : line + "\n";
  return text;
}

class Session : public testing::TestWithParam<fs::directory_entry> {};

TEST_P(Session, GoesAsItIsWritten) {
  if (GetParam().path().stem() == "accounts" && geteuid() != 0)
    GTEST_SKIP() << "acts as several accounts, which only root can";
  const Folder folder;
  std::ofstream(folder.path / "script") << Script(GetParam());
  setenv("source_folder", kSource.c_str(), 1);
  EXPECT_EQ(folder.Run("bash script > answer 2>&1"), 0);
  EXPECT_EQ(WithoutBlankLines(GetParam()), WithoutBlankLines(folder.path / "answer"));
}

INSTANTIATE_TEST_SUITE_P(App, Session,
                         testing::ValuesIn(fs::directory_iterator(kSource / "tests/app/sessions"),
                                           fs::directory_iterator()),
                         [](const auto& each) { return each.param.path().stem().string(); });

}  // namespace
}  // namespace tests
