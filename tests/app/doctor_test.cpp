#include <gtest/gtest.h>

#include "tests/app/host.h"

namespace {

struct Ill {
  const char* script;
  const char* reason;  ///< What the page must say of it.
};

const Ill kCases[] = {
    {"true", "the policy file: missing"},
    {"sigilctl seal machine/policy.xml", "nobody serves the pipe (error 2)"},
    {"sed -i s/Scope.0/Scope\\>1/ machine/policy.xml; sigilctl seal machine/policy.xml",
     "is 1: the default entry, not the suite's printers"},
    {"sed -i s/Scope.0/Scope\\>-1/ machine/policy.xml; sigilctl seal machine/policy.xml",
     "the policy's scope is -1"},
    {"sigilctl seal machine/policy.xml; echo other > $client/config/data.dat",
     "no well-formed XML"},
    {"sigilctl seal machine/policy.xml; rm $client/config/data.dat", "missing; the key is"},
    {"sigilctl seal machine/policy.xml; printf %034d 0 > $client/config/data.dat",
     "34 bytes; more than its digest"},
    {"echo '<QuietMIMOSA/>' > x; sigilctl seal x 2> /dev/null", "no element QuietMIMOSA/HLE"},
    {": > $client/EMS/WmPolicy.dat", "it holds no text"},
    {"echo 63,0 > $client/EMS/SystemSetting.csv", "off: item 63 is 0"},
    {"printf '\\n63,1\\n' > $client/EMS/SystemSetting.csv", "item 63 is 0"},
    {"printf '63,\"-1\\n' > $client/EMS/SystemSetting.csv", "item 63 is -163"},
    {"rm $client/EMS/SystemSetting.csv", "SystemSetting.csv cannot be opened"},
    {"mkdir $client/a; printf '[Setting]\\nEMSDir = "
     "C:/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge/a \\n' > $client/config/Client.ini",
     "EMSDir of Client.ini"},
    {"printf '[Setting]\\nEMSDir=D:\\\\a\\n' > $client/config/Client.ini",
     "the default: the EMSDir of Client.ini, D:\\a, is no folder"},
    {"rm $client/config/Client.ini", "the default: Client.ini names no EMSDir"},
    {"rm machine/machine.ini; mkdir machine/machine.ini", "cannot be listed"},
    {"sigilctl update machine/policy.xml", "full name 田中 太郎"},
};

TEST(Doctor, ForetellsEachExportAndChangesNothing) {
  for (const auto& [script, reason] : kCases) {
    const tests::Host host;
    host.Run(script);
    const std::string before = host.Snapshot();
    const std::string page = host.Run("sigilctl doctor | tee page");
    EXPECT_EQ(host.Snapshot(), before);
    EXPECT_NE(page.find(reason), page.npos) << page;
    EXPECT_EQ(host.Run(R"(
      sed '1,/^What an export would give now/d' page | awk 'NR > 1 { print $1 ": " $2 }' > foretold
      for each in set release release-for-service 'update machine/policy.xml' exclude \
          'content-log on'; do
        sigilctl $each 2> /dev/null | sed 's/\..*//'
      done | diff foretold -)"),
              "")
        << page;
  }
}

TEST(Doctor, TellsAll) {
  const tests::Host host;
  host.Run(R"(
    mkdir host; cp $programs/{sigilctl,libSigilSetting.so,liblog4cxx.so} host
    sed -i '0,/<ID>E5/s//<ID>E6/' machine/policy.xml; sigilctl seal machine/policy.xml
    folder='machine/C/Users/tanaka/AppData/LocalLow/KBR-LTD/HarborLedge!'
    mkdir -p "$folder"; echo no database > "$folder/HarborLedge!.cfg")");
  EXPECT_EQ(host.Run("host/sigilctl doctor | sed \"s|$PWD|HERE|\""), R"(Machine HERE/machine
  Part             State                                                         Place
  User             tanaka, full name not obtained yet
  Delivery folder  EMSDir of Client.ini                                          C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS
  Key source       32 bytes                                                      C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\config\data.dat
  Policy file      2160 bytes, readable                                          C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS\WmPolicy.dat
  Function switch  on: item 63 is 1                                              C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\EMS\SystemSetting.csv
  Component        cannot be loaded (error 126)                                  HERE/host/SigilUtil_x86.dll
  Setting file     no setting file; the component can neither read nor write it  C:\Users\tanaka\AppData\LocalLow\KBR-LTD\HarborLedge!\HarborLedge!.cfg
  Pipe             not served (error 2)                                          \\.\pipe\hlwatermark

Delivered policy; set goes by number 1, whose scope is 0: the default entry and the suite's printers
  Policy  Scope  Elements
  1       0      E1 E2 E3 E4 E6
  Element  Kind                         Name
  E1       header or footer             ヘッダー
  E2       header or footer             フッター
  E3       stamp                        印刷者
  E4       stamp                        地紋
  E5       unknown (7), not registered  未知の種類
  E6       missing, not registered

Printers
  Printer         Driver                           What becomes of it
  会議室プリンタ  QuietMIMOSA Harbor Ledge Driver  suite's driver: watermarks of its own
  受付プリンタ    QuietMIMOSA Harbor Ledge Driver  suite's driver: watermarks of its own
  経理部複合機    Generic PCL6                     monitored: goes by the default entry
  営業部プリンタ  Generic PCL6                     excluded: its comment has no mark
  Label Printer   Generic Label                    excluded: its comment has no mark
  PDF Writer      Generic PDF                      excluded: it has no comment

What an export would give now
  Command              Result  Reason
  set                  -101    the Settings component cannot be loaded (error 126)
  release              -101    the Settings component cannot be loaded (error 126)
  release-for-service  -101    the Settings component cannot be loaded (error 126)
  update               -101    the Settings component cannot be loaded (error 126)
  exclude              -101    the Settings component cannot be loaded (error 126)
  content-log          -101    the Settings component cannot be loaded (error 126)
)");
}

}  // namespace
