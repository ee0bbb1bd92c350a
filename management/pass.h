#pragma once

// What a pass over the setting file holds of the machine. Every pass has the same frame: take the
// mutex; open a component handle and get its instance; lock; work; save what went well; unlock;
// release the instance; give back what is held; destroy the handle. Nothing of it outlives the
// pass, on no path.

#include "component/security_attributes.h"
#include "component/setting_mutex.h"
#include "host/printers.h"
#include "logging/log.h"

namespace SigilSettingManagement {

/// The result of a pass that did not get the mutex.
constexpr int kNoMutexResult = -99;

class PassHoldings {
 public:
  /// Builds the attributes of the mutex; without them the mutex is asked for all the same.
  PassHoldings() = default;

  bool TakeMutex() { return m_mutex.Take(m_attributes.Get()); }

  PrinterList& Printers() { return m_printers; }

  void GiveBack() {
    m_mutex.Reset();
    m_attributes.Reset();
    m_printers.Reset();
  }

  /// Ends the pass: only when all is given back does the log hear of it.
  int Stop(const LogCall& why, int result) {
    GiveBack();
    Log(why);
    return result;
  }

 private:
  OpenSecurityAttributes m_attributes;
  SettingMutex m_mutex;
  PrinterList m_printers;
};

}  // namespace SigilSettingManagement
