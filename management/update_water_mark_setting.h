#pragma once

namespace SigilSettingManagement {

/// Replaces the component's entries and exclude list by policy `policyId` of the document
/// `policyXml`. Returns 0 when the registration ran through and the save was attempted, also where
/// single entries failed; -1 without a printer list, -2 without a component
/// instance, -3 after an exception, -4 when the policy was not registered, -99 without the mutex.
/// After -4 the exclude list and the individual settings are cleared already.
int UpdateWaterMarkSetting(int policyId, const wchar_t* policyXml);

}  // namespace SigilSettingManagement
