// The policy file and the key source that opens it.

#include "fuzz/machine.h"
#include "policy/policy_file_cipher.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Machine machine;
  const fuzz::Parts parts = fuzz::Split(fuzz::Text(data, size));
  machine.Write("C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge/config/data.dat", parts.first);
  machine.Write("C/WmPolicy.dat", parts.second);
  try {
    CString text;
    CPolicyFileCipher().DecryptFile(L"C:\\WmPolicy.dat", text);
  } catch (const CException&) {
    // A key source that is too long is refused this way.
  }
  return 0;
}
