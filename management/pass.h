#pragma once

// What the four passes over the setting file share. Every pass has the same frame: take the mutex;
// open a component handle and get its instance; lock; work; save, except after a failed
// registration; unlock; release the instance; give back what is held; destroy the handle. On every
// path all of it is given back before the pass returns.

#include <memory>

#include "component/operation_sigil_settings.h"
#include "component/security_attributes.h"
#include "component/setting_mutex.h"
#include "host/printers.h"
#include "logging/log.h"

namespace SigilSettingManagement {

/// The results of a pass that did not get the mutex, and of one that an exception has ended.
constexpr int kNoMutexResult = -99;
constexpr int kThrownResult = -3;

/// What a pass holds of the machine beside its handle. It stands outside of the pass's try block.
/// Each path of the pass calls GiveBack or Stop once. If anything throws, before or after that,
/// Abandon follows; its line is then the last one, and its result the one that counts.
class CPassHoldings {
 public:
  /// Builds the attributes of the mutex; without them the mutex is asked for all the same.
  CPassHoldings() = default;

  bool TakeMutex() {
    m_hMutex = CSettingMutex(GetMutex_SigilSetting(m_saAttributes.Get()));
    return static_cast<bool>(m_hMutex);
  }

  /// Keeps the handle's component loaded until an exception that it has thrown has been destroyed,
  /// since the code for that may lie in the component.
  void Keep(const OperationSigilSettings& settings) { m_pComponent = settings.Component(); }

  CPrinterList& Printers() { return m_aryPrinters; }

  /// The regular end, with the instance released.
  void GiveBack() {
    m_pComponent.reset();
    GiveBackMachine();
  }

  /// An early end. The handle is destroyed after this and may still throw, so the component stays
  /// loaded. The log hears of the end when all else has been given back.
  int Stop(const LogCall& why, int result) {
    GiveBackMachine();
    Log(why);
    return result;
  }

  /// The end after an exception. The handle is destroyed already, so the component is unloaded
  /// here, first of all; that is why this stands behind the catch clause and not in it.
  int Abandon(const LogCall& why) {
    GiveBack();
    Log(why);
    return kThrownResult;
  }

 private:
  void GiveBackMachine() {
    m_hMutex.Reset();
    m_saAttributes.Reset();
    m_aryPrinters.Reset();
  }

  COpenSecurityAttributes m_saAttributes;
  CSettingMutex m_hMutex;
  CPrinterList m_aryPrinters;
  std::shared_ptr<const ComponentRecord> m_pComponent;
};

}  // namespace SigilSettingManagement
