#include <gtest/gtest.h>

#include <filesystem>

#include "tests/app/host.h"

namespace {

using tests::Host;
using tests::kDataDat;
using tests::kDelivered;
using tests::Policy;

/// The library, with its own cipher, finds the scope in what was sealed with OpenSSL.
TEST(PolicyFile, IsReadByTheLibraryUnderEachKey) {
  const Host host;
  std::string filler;
  int scope = 10;
  for (const std::string& source :
       {std::string("k"), std::string("sixteen bytes of"), std::string(31, 'a'),
        std::string(32, 'b'), std::string(33, 'c'), std::string("ab\0cd", 5),
        std::string("\x8A\xBF\x8E\x9A keys"), std::string("\0", 1)}) {
    // The last one takes three chunks, whose ends would cut characters.
    if (source.front() == '\0')
      while (filler.size() < 0x280000) filler += "墨";
    const std::string number = std::to_string(++scope);
    host.Write(kDataDat, source);
    host.Write("policy.xml", Policy(number, filler));
    EXPECT_EQ(host.Run("sigilctl seal policy.xml > sealed && sigilctl set > done\n"
                       "sigilctl log | grep -o 'プリンタ適応範囲値：.*' | tail -n 1"),
              "プリンタ適応範囲値：" + number + "\n")
        << source;
  }
  EXPECT_GT(host.Read(kDelivered).size(), 0x200000U);
}

TEST(PolicyFile, StaysAsItIsWithoutAKey) {
  const Host host;
  host.Run("sigilctl seal machine/policy.xml");
  const std::string sealed = host.Read(kDelivered);
  for (const std::string& source : {std::string(), std::string(34, 'd'), std::string("\0k", 2)}) {
    host.Write(kDataDat, source);
    const std::string told = host.Run("sigilctl seal machine/policy.xml");
    EXPECT_TRUE(told.starts_with("sigilctl: ") && told.ends_with("\n[2]\n")) << told;
    EXPECT_EQ(host.Read(kDelivered), sealed);
  }
}

/// The lines of docs/machine.md, which is what an administrator has at hand.
TEST(PolicyFile, IsOpenedByHand) {
  if (system("command -v openssl > /dev/null") != 0) GTEST_SKIP() << "there is no openssl here";
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  const Host host;
  const std::string script =
      "set -e -o pipefail\n"
      "page='" +
      (root / "docs/machine.md").string() +
      "'\n"
      "sigilctl seal machine/policy.xml > sealed\n"
      "sed -n '/^```bash$/,/^```$/{/^```/d;p}' \"$page\" > byhand\n"
      ". ./byhand > opened\n"
      "cmp opened machine/policy.xml\n"
      "for value in $digits $dealt $key $vector; do grep -c \"^|.*\\`$value\\`\" \"$page\"; done\n";
  EXPECT_EQ(host.Run(script), "1\n1\n1\n1\n");
}

}  // namespace
