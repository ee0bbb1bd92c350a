#pragma once

namespace SigilSettingManagement {

/// Replaces what the Settings component holds for this machine's printers by what policy `policyId`
/// of the document `policyXml` says. Gives 0 when the registration ran through and the save was
/// attempted, whatever became of single entries; -1 without a printer list, -2 without a component
/// instance, -3 after an exception, -4 when the policy was not registered, -99 without the mutex.
/// After -4 the exclude list and the individual settings are cleared already.
int UpdateWaterMarkSetting(int policyId, const wchar_t* policyXml);

}  // namespace SigilSettingManagement
