#include "app/machine/client.h"

#include <stdexcept>

#include "app/machine/home.h"
#include "app/text/input.h"
#include "host/folders.h"
#include "host/setting_row.h"
#include "platform/crt.h"
#include "platform/mfc.h"
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

bool IsReadable(const std::wstring& file) {
  try {
    return ReadInput(HostPath(file), kGreatestRowFile).has_value();
  } catch (const std::runtime_error&) {
    return false;
  }
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

std::optional<int> ReadFunctionSwitch(const std::wstring& file) {
  CStdioFile rows;
  if (!IsReadable(file) || !rows.Open(file.c_str(), CFile::modeRead | CFile::typeText))
    return std::nullopt;
  int value = 0;
  try {
    CArray<CString> fields;
    while (ReadRow(rows, fields) == RowRead::kFields)
      if (fields[0] == kWatermarkKey) value = fields.GetSize() > 1 ? _wtoi(fields[1]) : 0;
  } catch (const CFileException&) {
    return 0;
  }
  return value;
}

}  // namespace app
