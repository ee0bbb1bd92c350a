#pragma once

#include <memory>

#include "peers/settings_component/settings_component.h"
#include "peers/settings_component/store.h"

namespace peers {

/// Returns the object of `entry`, with one reference.
Sigil::PrinterSettings* CreatePrinterSettings(std::shared_ptr<Store> store, EntryRecord entry);

}  // namespace peers
