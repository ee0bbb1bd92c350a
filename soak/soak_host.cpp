// The host process of the soak: makes a call for each line of standard input and answers each with
// the result.
//
//   update FILE | set | release | release-for-service | exclude | content-log 0 or 1

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "boundary/exports.h"
#include "platform/utf.h"

namespace {

std::wstring ReadText(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return platform::FromUtf8(text.str());
}

int Call(const std::string& operation, const std::string& argument) {
  if (operation == "update")
    return SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, ReadText(argument).c_str(), 0);
  if (operation == "set") return SigilSettingSetWaterMark();
  if (operation == "release") return SigilSettingReleaseWaterMark();
  if (operation == "release-for-service") return SigilSettingReleaseWaterMarkForService();
  if (operation == "exclude") return SigilSettingUpdateExcludePrinter();
  if (operation == "content-log") return SigilSettingSetUseContentLog(argument == "1");
  return 1;
}

}  // namespace

int main() {
  for (std::string line, operation, argument; std::getline(std::cin, line); argument.clear()) {
    std::istringstream(line) >> operation >> argument;
    std::cout << Call(operation, argument) << std::endl;
  }
}
