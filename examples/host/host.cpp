// A host in C++: applies a policy of one watermark to the default entry and all printers.
//
// Exit status 0 when the policy is applied, also while the user's full name is still to come.

#include <sigil/sigil_setting.h>

#include <iostream>

int main() {
  const wchar_t policy[] =
      L"<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID='1'>"
      L"<PrinterScope>0</PrinterScope><ElementIDs><ID>E1</ID></ElementIDs>"
      L"</PolicyInfo></PolicyInfos><Elements><Element ID='E1'>"
      L"<Kind>0</Kind><Name>Header</Name><Text>Confidential</Text><FontSize>14</FontSize>"
      L"</Element></Elements></Watermark></HLE></QuietMIMOSA>";
  const int result = SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, policy, 0);
  std::cout << "host in C++: " << result << "\n";
  return result == SIGIL_SETTING_DONE || result == SIGIL_SETTING_NO_FULL_NAME ? 0 : 1;
}
