#pragma once

// The Settings component beside the program.

#include <string>

#include "app/machine/parts.h"
#include "component/names.h"
#include "component/reference.h"
#include "component/sigil_interfaces.h"

namespace app {

/// The component and its root object. Its exceptions pass through the operations of this object.
struct Component {
  Component() : part(LoadPart(kComponentFile)), fault(part.fault) {
    if (!fault.empty()) return;
    const auto create = Function<Sigil::CreateInstanceFunction>(part, kCreateInstanceName);
    if (create == nullptr)
      fault = "has no SigilCreateInstance";
    else if (CallForeign(create, &Sigil::kSettingsFirstIdentity, &Sigil::kSettingsSecondIdentity,
                         reinterpret_cast<void**>(settings.Out())) != 0 ||
             !settings)
      fault = "gives no settings";
  }

  const Part part;
  std::string fault;  ///< Empty: there is a root object.
  Sigil::CReference<Sigil::Settings> settings;
};

}  // namespace app
