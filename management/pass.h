#pragma once

// The frame of the four passes over the setting file: take the mutex; open a component handle and
// get its instance; lock; work; save, except after a failed registration; unlock; release the
// instance; give back the mutex, the attributes and the printer list; destroy the handle. On every
// path all of it is given back before the pass returns; after an exception only the component's
// lock is left to the component.

#include <memory>

#include "component/operation_sigil_settings.h"
#include "component/security_attributes.h"
#include "component/setting_mutex.h"
#include "host/printers.h"
#include "logging/log.h"

namespace SigilSettingManagement {

/// The results of a pass without the mutex, and of a pass that an exception has ended.
constexpr int kNoMutexResult = -99;
constexpr int kThrownResult = -3;

/// The mutex, the attributes and the printer list of a pass. Declared outside of the pass's try
/// block. Each path of the pass calls GiveBack or Stop once. After an exception Abandon is called;
/// it logs last and gives the result.
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

  /// The regular end. The instance is released already.
  void GiveBack() {
    m_pComponent.reset();
    GiveBackMachine();
  }

  /// An early end; returns `result`. The component stays loaded, because the handle is destroyed
  /// later and may still throw. Logs last.
  int Stop(const LogCall& why, int result) {
    GiveBackMachine();
    Log(why);
    return result;
  }

  /// The end after an exception; returns kThrownResult. Unloads the component first, so the caller
  /// has to leave the catch clause before.
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
