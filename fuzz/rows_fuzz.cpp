// The rows of the system settings file.

#include "fuzz/machine.h"
#include "host/system_setting_mng.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Machine machine;
  machine.Write("C/rows.csv", fuzz::Text(data, size));
  CSystemSettingMng file(L"C:\\rows.csv");
  file.LoadFile();
  file.Close();
  return 0;
}
