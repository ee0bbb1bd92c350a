#include <gtest/gtest.h>

#include "tests/app/host.h"

namespace {

/// The library, with its own cipher, finds the scope in what was sealed with OpenSSL.
TEST(PolicyFile, IsReadByTheLibraryUnderEachKey) {
  const tests::Host host;
  std::string filler;
  int scope = 10;
  // As printf takes them.
  for (const std::string source :
       {"k", "sixteen bytes of", "%031d", "%032d", "%033d", "ab\\0cd", "\\x8A\\xBF keys", "\\0"}) {
    // The last one takes three chunks, whose ends would cut characters.
    if (source == "\\0")
      while (filler.size() < 0x280000) filler += "墨";
    host.Write("policy.xml", tests::OneElement(std::to_wstring(++scope)) + "<!--" + filler + "-->");
    EXPECT_EQ(host.Run("printf '" + source +
                       "' > $client/config/data.dat\n"
                       "sigilctl seal policy.xml > sealed && sigilctl set > done\n"
                       "sigilctl log | grep -o 'プリンタ適応範囲値：.*' | tail -n 1"),
              "プリンタ適応範囲値：" + std::to_string(scope) + "\n")
        << source;
  }
}

TEST(PolicyFile, StaysAsItIsWithoutAKey) {
  EXPECT_EQ(tests::Host().Run("sigilctl seal machine/policy.xml > sealed\n"
                              "cp $client/EMS/WmPolicy.dat before\n"
                              "for source in '' %034d '\\0k'; do\n"
                              "  printf \"$source\" > $client/config/data.dat\n"
                              "  sigilctl seal machine/policy.xml 2> told; echo $?\n"
                              "  grep -c '^sigilctl: ' told; cmp $client/EMS/WmPolicy.dat before\n"
                              "done"),
            "2\n1\n2\n1\n2\n1\n");
}

/// The lines of docs/machine.md, which is what an administrator has at hand.
TEST(PolicyFile, IsOpenedByHand) {
  if (system("command -v openssl > /dev/null") != 0) GTEST_SKIP() << "there is no openssl here";
  EXPECT_EQ(tests::Host().Run(R"(
    set -e -o pipefail
    page=')" SIGIL_SOURCE_FOLDER R"(/docs/machine.md'
    sigilctl seal machine/policy.xml > sealed
    sed -n '/^```bash$/,/^```$/{/^```/d;p}' "$page" > byhand
    . ./byhand > opened
    cmp opened machine/policy.xml
    for value in $digits $dealt $key $vector; do grep -c "^|.*\`$value\`" "$page"; done)"),
            "1\n1\n1\n1\n");
}

}  // namespace
