#include <gtest/gtest.h>

#include <sstream>

#include "tests/app/host.h"

namespace {

using namespace tests;

struct Ill {
  const char* name;
  const char* script;
  const char* reason;  ///< What the page must say of it.
};

const Ill kCases[] = {
    {"NothingDelivered", "true", "the policy file: missing"},
    {"Well", "sigilctl seal machine/policy.xml", "nobody serves the pipe (error 2)"},
    {"Scope1", "sed -i s/Scope.0/Scope\\>1/ machine/policy.xml; sigilctl seal machine/policy.xml",
     "is 1: the default entry, not the suite's printers"},
    {"NoScope", "sed -i s/Scope.0/Scope\\>-1/ machine/policy.xml; sigilctl seal machine/policy.xml",
     "the policy's scope is -1"},
    {"AnotherKey", "sigilctl seal machine/policy.xml; echo other > $client/config/data.dat",
     "no well-formed XML"},
    {"NoKey", "sigilctl seal machine/policy.xml; rm $client/config/data.dat",
     "missing; the key is"},
    {"TooLongAKey", "sigilctl seal machine/policy.xml; printf %034d 0 > $client/config/data.dat",
     "34 bytes; more than its digest"},
    {"NoPolicy", "echo '<QuietMIMOSA/>' > x; sigilctl seal x 2> /dev/null",
     "no element QuietMIMOSA/HLE"},
    {"AnEmptyFile", ": > $client/EMS/WmPolicy.dat", "it holds no text"},
    {"Off", "echo 63,0 > $client/EMS/SystemSetting.csv", "off: item 63 is 0"},
    {"BelowAnEmptyRow", "printf '\\n63,1\\n' > $client/EMS/SystemSetting.csv", "item 63 is 0"},
    {"AnOpenQuote", "printf '63,\"-1\\n' > $client/EMS/SystemSetting.csv", "item 63 is -163"},
    {"NoSettings", "rm $client/EMS/SystemSetting.csv", "SystemSetting.csv cannot be opened"},
    {"Moved",
     "mkdir $client/a; printf '[Setting]\\nEMSDir = "
     "C:/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge/a \\n' > $client/config/Client.ini",
     "EMSDir of Client.ini"},
    {"MovedNowhere", "printf '[Setting]\\nEMSDir=D:\\\\a\\n' > $client/config/Client.ini",
     "the default: the EMSDir of Client.ini, D:\\a, is no folder"},
    {"NotConfigured", "rm $client/config/Client.ini", "the default: Client.ini names no EMSDir"},
    {"NoMachine", "rm machine/machine.ini; mkdir machine/machine.ini", "cannot be listed"},
    {"Obtained", "sigilctl update machine/policy.xml", "full name 田中 太郎"},
};

/// "set: -101. ..." of each command, without what comes behind the number.
std::string Results(const Host& host) {
  return host.Run(
      "for each in set release release-for-service 'update machine/policy.xml' exclude"
      " 'content-log on'; do sigilctl $each 2> /dev/null | sed 's/\\..*//'; done");
}

/// The same as the page foretells them.
std::string Foretold(const std::string& page) {
  std::istringstream lines(page.substr(page.find("What an export would give now")));
  std::string line, results;
  std::getline(lines, line);
  std::getline(lines, line);
  while (std::getline(lines, line)) {
    std::istringstream cells(line);
    std::string command, result;
    cells >> command >> result;
    results += command + ": " + result + "\n";
  }
  return results;
}

class Doctor : public testing::TestWithParam<Ill> {};

TEST_P(Doctor, ForetellsEachExportAndChangesNothing) {
  const Host host;
  host.Run("client=" + kClient + "\n" + GetParam().script);
  const std::string before = host.Snapshot();
  const std::string page = host.Run("sigilctl doctor");
  EXPECT_EQ(host.Snapshot(), before);
  EXPECT_NE(page.find(GetParam().reason), page.npos) << page;
  EXPECT_EQ(Foretold(page), Results(host)) << page;
}

INSTANTIATE_TEST_SUITE_P(Cases, Doctor, testing::ValuesIn(kCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(DoctorPage, TellsAll) {
  Host host;
  host.UseHostWith({"sigilctl", "libSigilSetting.so", "liblog4cxx.so"});
  host.Run(
      "sed -i '0,/<ID>E5/s//<ID>E6/' machine/policy.xml; sigilctl seal machine/policy.xml\n"
      "mkdir -p 'machine/C/Users/tanaka/AppData/LocalLow/KBR-LTD/HarborLedge!'\n"
      "echo no database > "
      "'machine/C/Users/tanaka/AppData/LocalLow/KBR-LTD/HarborLedge!/HarborLedge!.cfg'");
  EXPECT_EQ(host.Run("sigilctl doctor | sed \"s|$PWD|HERE|\""), R"(Machine HERE/machine
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
