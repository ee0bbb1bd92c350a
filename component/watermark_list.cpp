#include "component/watermark_list.h"

#include <vector>

void DeleteWatermarks(Sigil::PrinterSettings& record) {
  std::vector<GUID> watermarks;
  const std::int32_t count = record.GetWatermarkCount();
  for (std::int32_t index = 0; index < count; ++index) {
    constexpr std::uint32_t kNameCapacity = 255;
    wchar_t name[kNameCapacity + 1] = {};
    GUID guid = {};
    if (!Sigil::Failed(record.GetWatermarkInfo(index, &guid, name, kNameCapacity)))
      watermarks.push_back(guid);
  }
  for (const GUID& guid : watermarks) record.DeleteWatermark(&guid);
}
