#pragma once

namespace SigilSettingManagement {

/// Replaces what the Settings component holds for this machine's printers by what policy `policyId`
/// of the document `policyXml` says. 0 the registration ran through and the save was attempted,
/// whatever became of single entries; -1 no printer list; -2 no component instance; -3 an
/// exception; -4 the policy was not registered, with the exclude list and the individual settings
/// already cleared; -99 no mutex.
int UpdateWaterMarkSetting(int policyId, const wchar_t* policyXml);

}  // namespace SigilSettingManagement
