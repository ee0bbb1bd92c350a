#include <gtest/gtest.h>

#include "tests/app/host.h"

namespace {

using tests::Host;
using tests::OneElement;

TEST(Commands, LeadThroughASession) {
  const Host host;
  EXPECT_EQ(host.Run("rm -r machine; sigilctl init machine; sigilctl update machine/policy.xml\n"
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
  host.Write("scope1.xml", OneElement(L"1"));
  EXPECT_EQ(host.Run(R"(
    brief() { sigilctl show --brief | grep -v custom | sed '/^Exclude list/,/^  Entry/d'; }
    sigilctl set; echo $?  # before any policy is delivered
    sigilctl seal scope1.xml; sigilctl set; sigilctl content-log on; brief
    sigilctl release; echo $?  # without a server
    sed -i 's/Warehouse/[監視対象プリンタ]/' machine/machine.ini; sigilctl exclude
    sigilctl release-for-service; sigilctl content-log off --root machine; brief
    sigilctl show | sed '/^Entries/,$d')"),
            R"(set: -101. The pass failed; the log tells where.
1
seal: 320 bytes in C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS\WmPolicy.dat (EMSDir of Client.ini).
set: 0. The watermarks are on where the scope wants them.
content-log: 0. The content log is on.
Content log: on
  * (default entry)  last                   on      4 of 4
  会議室プリンタ     last                   off     4 of 4
  受付プリンタ       last                   off     4 of 4
release: -2. The watermarks are off, but the control service was not told: nobody serves its pipe.
1
exclude: 0. The exclude list is rebuilt.
release-for-service: 0. The watermarks are off and deleted.
content-log: 0. The content log is off.
Content log: off
  * (default entry)  last                   off     0 of 0
  会議室プリンタ     last                   off     0 of 0
  受付プリンタ       last                   off     0 of 0
Content log: off
Exclude list:
  営業部プリンタ
  PDF Writer
)");
}

TEST(Commands, WarnOfAFullNameToCome) {
  EXPECT_EQ(Host().Run(R"(
    sed -i 's/^tanaka=.*/tanaka=/' machine/machine.ini; sigilctl update machine/policy.xml 2>&1
    sed -i 's/^tanaka=.*/tanaka=T/' machine/machine.ini
    sigilctl update --reset-name --policy-id 1 machine/policy.xml
    sigilctl show | grep -c 'T が印刷')"),
            "update: -99. The policy is applied, but the user's full name has not been obtained "
            "yet.\nsigilctl: warning: the login name stands in for the user's full name.\n"
            "update: 0. The policy is applied.\n3\n");
}

TEST(Commands, ShowOneJsonObject) {
  const Host host;
  host.Write("policy.xml", OneElement(L"0"));
  host.Write("machine/machine.ini", "[Printer A]\nDriver=B\n");
  EXPECT_EQ(host.Run("sigilctl update policy.xml > done; sigilctl show --json | tr -d ' \\n' | "
                     "sed -E 's/[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}/GUID/g'"),
            R"({"contentLog":false,"excluded":["A"],"entries":[{"printer":"*",)"
            R"("lastSetting":{"name":"","enabled":true,"watermarks":["GUID"]},"customSettings":)"
            R"([{"name":"HLMimosaOption","enabled":true,"watermarks":["GUID"]}],"watermarks":[)"
            R"({"id":"GUID","name":"E1_題","text":"社外秘😀\n印","fontSize":1.0,"fontName":"",)"
            R"("color":0,"bold":false,"italic":false,"underLine":false,"fit":false,"opacity":0,)"
            R"("rotate":0,"printPos":0,"positionOption":0,"xOffset":0.0,"yOffset":0.0,)"
            R"("repeatFirstAxis":false,"repeatSecondAxis":false,"repeatHSpace":0,)"
            R"("repeatVSpace":0}]}]})");
}

TEST(Commands, RefuseWhatIsWrongAndChangeNothing) {
  const Host host;
  host.Write("sjis.xml", "<a>\x8E\xD0</a>");
  const std::string before = host.Snapshot();
  EXPECT_EQ(host.Run(R"(
    : > empty.xml
    for arguments in '' apply 'init machine' 'init machine/machine.ini' init update \
        'update missing.xml' 'update machine' 'update sjis.xml' 'update empty.xml' \
        'update --policy-id one machine/policy.xml' 'update machine/policy.xml more' \
        'update --policy-id 4294967296 machine/policy.xml' content-log 'content-log maybe' \
        'seal missing.xml' 'seal sjis.xml' 'set --hard' '--root missing set' "--root '' set" log
    do
      eval sigilctl $arguments > output 2> told
      result=$?,$(wc -c < output),$(wc -l < told),$(grep -c '^sigilctl: .' told)
      [ $result = 2,0,1,1 ] || echo "$arguments: $result"
    done
    mkdir alone; cp $programs/sigilctl alone; alone/sigilctl set 2> told; echo $?
    sed 's|/.*/||' told)"),
            "1\nsigilctl: libSigilSetting.so: the library cannot be loaded (error 126)\n");
  EXPECT_EQ(host.Snapshot(), before);
}

TEST(Commands, TakeTextInEitherEncoding) {
  const Host host;
  host.Write("text", OneElement(L"0"));
  EXPECT_EQ(host.Run(R"(
    iconv -f utf-8 -t utf-16le text > little; iconv -f utf-8 -t utf-16be text > big
    for make in 'cat text' 'printf "\xEF\xBB\xBF"; cat text' 'cat little' 'cat big' \
        'printf "\xFF\xFE"; cat little' 'printf "\xFE\xFF"; cat big' \
        'cat text; printf "\0"' 'cat text; printf "\xED\xA0\x80"' 'cat text; printf "\xC0\xAF"' \
        'printf "\xFF\xFE"; cat little; printf "\0"' 'cat little; printf "\x3D\xD8"' \
        'printf "\xFF\xFE"; cat little; printf "\0\0"' 'cat text; printf "\0\0x"'; do
      eval "$make" > made
      sigilctl update made 2>&1 > done && sigilctl show | grep -c 'E1_題  社外秘😀\\n印'
    done | uniq -c)"),
            "      6 3\n      7 sigilctl: made: neither UTF-8 nor UTF-16 text\n");
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
    for state in on off; do
      sigilctl content-log $state
      until grep -q 153000150 followed; do sleep 0.01; done
      sigilctl log | cmp - followed
      : > followed; rm $client/log/SigilSetting.log
    done
    kill $follower)"),
            "content-log: 0. The content log is on.\ncontent-log: 0. The content log is off.\n");
}

}  // namespace
