#include <gtest/gtest.h>

#include "platform/utf.h"
#include "tests/app/host.h"

namespace {

using tests::Host;
using tests::Policy;

TEST(Commands, LeadThroughASession) {
  const Host host(Host::Machine::kNone);
  EXPECT_EQ(host.Run("sigilctl init machine\n"
                     "sigilctl update machine/policy.xml\n"
                     "sigilctl show | sed '/^Watermarks of 会議室プリンタ:/,$d'"),
            R"(init: the sample machine is in machine
update: 0. The policy is applied.
Content log: off
Exclude list:
  営業部プリンタ
  Label Printer
  PDF Writer
Entries:
  Entry              Setting                Switch  Active watermarks
  * (default entry)  last                   on      4 of 4
                     custom HLMimosaOption  on      4 of 4
  会議室プリンタ     last                   on      4 of 4
                     custom HLMimosaOption  on      4 of 4
  受付プリンタ       last                   on      4 of 4
                     custom HLMimosaOption  on      4 of 4

Watermarks of * (default entry):
  Name         Text              Font         Size  Color   Style   Opacity  Rotate  Position  Offset   Repeat
  E1_ヘッダー  社外秘            MS ゴシック  14    FF0000  bold    80       0       1         0, 5.5
  E2_フッター  複製を禁じます    MS 明朝      9     000000          100      0       8         -10, -5
  E3_印刷者    田中 太郎 が印刷  MS ゴシック  48    808080  fitted  30       45      4         0, 0
  E4_地紋      COPY              Arial        24    C0C0C0  italic  15       30      4         0, 0     both axes 40, 60

)");
  // Before any policy is delivered, and then without a server.
  EXPECT_EQ(host.Run("sigilctl set"), "set: -101. The pass failed; the log tells where.\n[1]\n");
  host.Write("scope1.xml", Policy("1"));
  EXPECT_EQ(
      host.Run("sigilctl seal scope1.xml\n"
               "sigilctl set; sigilctl content-log on\n"
               "sigilctl show --brief | grep -v custom\n"
               "sigilctl release"),
      R"(seal: 304 bytes in C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS\WmPolicy.dat (EMSDir of Client.ini).
set: 0. The watermarks are on where the scope wants them.
content-log: 0. The content log is on.
Content log: on
Exclude list:
  営業部プリンタ
  Label Printer
  PDF Writer
Entries:
  Entry              Setting                Switch  Active watermarks
  * (default entry)  last                   on      4 of 4
  会議室プリンタ     last                   off     4 of 4
  受付プリンタ       last                   off     4 of 4
release: -2. The watermarks are off, but the control service was not told: nobody serves its pipe.
[1]
)");
  EXPECT_EQ(host.Run("sed -i 's/Warehouse/[監視対象プリンタ]/' machine/machine.ini\n"
                     "sigilctl exclude; sigilctl release-for-service; sigilctl content-log off "
                     "--root machine\n"
                     "sigilctl show | grep -v custom"),
            R"(exclude: 0. The exclude list is rebuilt.
release-for-service: 0. The watermarks are off and deleted.
content-log: 0. The content log is off.
Content log: off
Exclude list:
  営業部プリンタ
  PDF Writer
Entries:
  Entry              Setting                Switch  Active watermarks
  * (default entry)  last                   off     0 of 0
  会議室プリンタ     last                   off     0 of 0
  受付プリンタ       last                   off     0 of 0

Watermarks of * (default entry): none

Watermarks of 会議室プリンタ: none

Watermarks of 受付プリンタ: none
)");
}

TEST(Commands, WarnOfAFullNameToCome) {
  const Host host;
  EXPECT_EQ(host.Run("sed -i 's/^tanaka=.*/tanaka=/' machine/machine.ini\n"
                     "sigilctl update machine/policy.xml"),
            "update: -99. The policy is applied, but the user's full name has not been obtained "
            "yet.\nsigilctl: warning: the login name stands in for the user's full name.\n");
  EXPECT_EQ(host.Run("sed -i 's/^tanaka=.*/tanaka=T/' machine/machine.ini\n"
                     "sigilctl update --reset-name --policy-id 1 machine/policy.xml\n"
                     "sigilctl show | grep -c 'T が印刷'"),
            "update: 0. The policy is applied.\n3\n");
}

TEST(Commands, ShowOneJsonObject) {
  const Host host;
  host.Write("policy.xml", Policy("0"));
  host.Write("machine/machine.ini", "[Printer A]\nDriver=B\n");
  EXPECT_EQ(
      host.Run("sigilctl update policy.xml > done\n"
               "sigilctl show --json | sed -E 's/[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}/GUID/'"),
      R"({
  "contentLog": false,
  "excluded": [
    "A"
  ],
  "entries": [
    {
      "printer": "*",
      "lastSetting": {
        "name": "",
        "enabled": true,
        "watermarks": [
          "GUID"
        ]
      },
      "customSettings": [
        {
          "name": "HLMimosaOption",
          "enabled": true,
          "watermarks": [
            "GUID"
          ]
        }
      ],
      "watermarks": [
        {
          "id": "GUID",
          "name": "E1_題",
          "text": "社外秘😀\n印",
          "fontSize": 1.0,
          "fontName": "",
          "color": 0,
          "bold": false,
          "italic": false,
          "underLine": false,
          "fit": false,
          "opacity": 0,
          "rotate": 0,
          "printPos": 0,
          "positionOption": 0,
          "xOffset": 0.0,
          "yOffset": 0.0,
          "repeatFirstAxis": false,
          "repeatSecondAxis": false,
          "repeatHSpace": 0,
          "repeatVSpace": 0
        }
      ]
    }
  ]
}
)");
}

TEST(Commands, RefuseWhatIsWrongAndChangeNothing) {
  const Host host;
  host.Write("sjis.xml", "<a>\x8E\xD0</a>");
  host.Write("empty.xml", "");
  const std::string before = host.Snapshot();
  for (const char* arguments : {"",
                                "apply",
                                "init machine",
                                "init machine/machine.ini",
                                "init",
                                "update",
                                "update missing.xml",
                                "update machine",
                                "update sjis.xml",
                                "update empty.xml",
                                "update --policy-id one machine/policy.xml",
                                "update --policy-id 4294967296 machine/policy.xml",
                                "update machine/policy.xml more",
                                "content-log",
                                "content-log maybe",
                                "seal missing.xml",
                                "seal sjis.xml",
                                "set --hard",
                                "--root missing set",
                                "--root '' set",
                                "log"}) {
    EXPECT_EQ(host.Run("sigilctl " + std::string(arguments) +
                       " > output 2> told; echo $?\n"
                       "wc -c < output; wc -l < told; grep -c '^sigilctl: .' told"),
              "2\n0\n1\n1\n")
        << arguments << host.Read("told");
    EXPECT_EQ(host.Snapshot(), before) << arguments;
  }
}

TEST(Commands, TakeTextInEitherEncoding) {
  const Host host;
  const std::string utf8 = Policy("0");
  const std::string little = platform::ToUtf16LeBytes(platform::FromUtf8(utf8));
  std::string big = little;
  for (std::size_t i = 1; i < big.size(); i += 2) std::swap(big[i - 1], big[i]);
  const std::string nul(1, '\0');
  const std::string loneHalf = "\x3D\xD8";
  const struct {
    std::string bytes;
    bool isText;
  } cases[] = {{utf8, true},
               {"\xEF\xBB\xBF" + utf8, true},
               {little, true},
               {"\xFF\xFE" + little, true},
               {big, true},
               {"\xFE\xFF" + big, true},
               {utf8 + nul, false},
               {utf8 + "\xED\xA0\x80", false},
               {utf8 + "\xC0\xAF", false},
               {"\xFF\xFE" + little + nul, false},
               {"\xFF\xFE" + little + nul + nul, false},
               {little + loneHalf, false},
               {"\xFE\xFF" + utf8, false}};
  for (const auto& [bytes, isText] : cases) {
    host.Write("policy.xml", bytes);
    const std::string told = host.Run("sigilctl update policy.xml && sigilctl show");
    if (isText) {
      EXPECT_NE(told.find("E1_題  社外秘😀\\n印"), told.npos) << told;
    } else {
      EXPECT_EQ(told, "sigilctl: policy.xml: neither UTF-8 nor UTF-16 text\n[2]\n");
    }
  }
}

TEST(Commands, MissALibraryInOneLine) {
  Host host;
  host.UseHostWith({"sigilctl"});
  EXPECT_EQ(host.Run("sigilctl set 2> told; echo $?; sed 's|/.*/||' told"),
            "1\nsigilctl: libSigilSetting.so: the library cannot be loaded (error 126)\n");
}

TEST(Commands, ServeThePipeUntilTold) {
  const Host host;
  for (const char* signal : {"INT", "TERM"}) {
    host.Write("signal", signal);
    EXPECT_EQ(host.Run(R"(
      sigilctl seal machine/policy.xml > sealed
      rm -f events; sigilctl serve > events & server=$!
      until [ -s events ]; do sleep 0.01; done
      sigilctl serve 2> refusal; echo $? $(wc -l < refusal)
      sigilctl doctor | grep -E '^  (Pipe|release) '
      sigilctl set; sigilctl release
      kill -$(cat signal) $server; wait $server; echo $?
      sed -E 's/^[0-9-]{10} [0-9:]{8}\.[0-9]{3}/TIME/' events
      ls machine/pipe)"),
              R"(1 1
  Pipe             served                              \\.\pipe\hlwatermark
  release              0
set: 0. The watermarks are on where the scope wants them.
release: 0. The watermarks are off and the control service knows.
0
The control service listens; SIGINT or SIGTERM stops it.
TIME Setting
TIME Release
The control service has stopped.
hlwatermark.lock
)");
  }
}

TEST(Commands, FollowTheLog) {
  const Host host;
  EXPECT_EQ(host.Run(R"(
    sigilctl log --follow >> followed & follower=$!
    log=machine/C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge/log/SigilSetting.log
    for state in on off; do
      sigilctl content-log $state
      until grep -q 153000150 followed; do sleep 0.01; done
      sigilctl log | cmp - followed
      : > followed; rm $log
    done
    kill $follower)"),
            "content-log: 0. The content log is on.\ncontent-log: 0. The content log is off.\n");
}

}  // namespace
