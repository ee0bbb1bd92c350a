#include "app/machine/client.h"

#include <stdexcept>

#include "app/machine/home.h"
#include "app/machine/settings.h"
#include "app/text/files.h"
#include "app/text/wording.h"
#include "host/folders.h"
#include "host/setting_row.h"
#include "host/shared_names.h"
#include "platform/crt.h"
#include "platform/mfc.h"
#include "platform/profile.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr char kUtf16Mark[] = "\xFF\xFE";

std::wstring InClientFolder(const wchar_t* name) {
  return (GetCommonDataPath() + kClientFolder + name).GetString();
}

FunctionSwitch Meaning(const CString& text) {
  const int value = _wtoi(text);
  const std::string written = platform::ToUtf8(text.GetString());
  const std::string number = std::to_string(value);
  const std::string item = "item 63 is " + number;
  const std::string reading = NumberOf(written) ? "" : ", read from '" + written + "'";
  return {value, (value < 0 ? "unreadable: " : value == 0 ? "off: " : "on: ") + item + reading};
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

bool IsReadable(const std::wstring& file) {
  try {
    return ReadInput(HostPath(file), kGreatestRowFile).has_value();
  } catch (const std::runtime_error&) {
    return false;
  }
}

std::wstring FindUserFile() {
  const auto folder = SettingFolder();
  return folder ? *folder + kUserInformationName : L"";
}

std::string UserFileState(const std::wstring& file) try {
  const auto bytes = ReadInput(HostPath(file), kGreatestRowFile);
  if (!bytes) return "not there yet";
  if (bytes->starts_with(kUtf16Mark)) return "UTF-16";
  return "not UTF-16, so a name may lose letters; remove it";
} catch (const std::runtime_error& error) {
  return std::string("unreadable: ") + error.what();
}

}  // namespace

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
  return {InClientFolder(kClientIniName), KeySource(), delivery.PolicyFile(),
          delivery.SystemSetting()};
}

FunctionSwitch ReadFunctionSwitch(const std::wstring& file) {
  CStdioFile rows;
  if (!IsReadable(file) ||
      !rows.Open(file.c_str(), CFile::modeRead | CFile::shareDenyNone | CFile::typeText))
    return {-1, "unknown: the file cannot be opened"};
  std::optional<CString> value;
  std::wstring alike;
  try {
    CArray<CString> fields;
    while (ReadRow(rows, fields) == RowRead::kFields) {
      const std::wstring key = fields[0].GetString();
      if (key == kWatermarkKey)
        value = fields.GetSize() > 1 ? fields[1] : CString();
      else if (key.find(kWatermarkKey) != key.npos)
        alike = key;
    }
  } catch (const CFileException&) {
    return {0, "off: reading the file broke off"};
  }
  if (!value)
    return {
        0, "off: no row has the key 63" +
               (alike.empty() ? "" : ", though one begins with '" + platform::ToUtf8(alike) + "'")};
  return Meaning(*value);
}

void LayUserFile() try {
  if (const std::wstring file = FindUserFile(); !file.empty())
    BeginFile(HostPath(file), kUtf16Mark);
} catch (const std::exception&) {
  // Where the folder is unknown, there is nothing to lay.
}

UserFile ExamineUserFile() {
  UserFile user;
  user.path = FindUserFile();
  if (user.path.empty()) {
    user.state = "unknown, without the component";
    return user;
  }
  user.state = UserFileState(user.path);
  user.hasFullName = GetPrivateProfileIntW(kUserSection, kUserStateKey, 0, user.path.c_str()) != 0;
  wchar_t name[256] = {};
  GetPrivateProfileStringW(kUserSection, kUserFullNameKey, L"", name, 256, user.path.c_str());
  user.fullName = platform::ToUtf8(name);
  return user;
}

}  // namespace app
