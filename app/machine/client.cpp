#include "app/machine/client.h"

#include "host/folders.h"
#include "platform/utf.h"

namespace app {
namespace {

std::wstring InClientFolder(const wchar_t* name) {
  return (GetCommonDataPath() + kClientFolder + name).GetString();
}

std::string Origin(EMSFolder found, const CString& value) {
  switch (found) {
    case EMSFolder::kConfigured:
      return "EMSDir of Client.ini";
    case EMSFolder::kNotSet:
      return "the default: Client.ini names no EMSDir";
    case EMSFolder::kBlank:
      return "the default: the EMSDir of Client.ini is blank";
    case EMSFolder::kNoDirectory:
      break;
  }
  return "the default: the EMSDir of Client.ini, " + platform::ToUtf8(value.GetString()) +
         ", is no folder";
}

}  // namespace

std::wstring ClientIni() {
  return InClientFolder(kClientIniName);
}

std::wstring KeySource() {
  return InClientFolder(kKeySourceName);
}

std::wstring DeliveryFolder::PolicyFile() const {
  return path + kPolicyFileName;
}

std::wstring DeliveryFolder::SystemSetting() const {
  return path + kSystemSettingName;
}

DeliveryFolder FindDeliveryFolder() {
  CString folder;
  CString value;
  const EMSFolder found = FindEMSFolder(folder, value);
  return {folder.GetString(), Origin(found, value)};
}

std::vector<std::wstring> ClientFiles() {
  const DeliveryFolder delivery = FindDeliveryFolder();
  return {ClientIni(), KeySource(), delivery.PolicyFile(), delivery.SystemSetting()};
}

}  // namespace app
