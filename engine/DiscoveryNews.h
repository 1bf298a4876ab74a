// What the system and interface actors tell the Supervisor: interfaces and
// devices that came, went or changed. Without a Supervisor in the handle
// table the news goes nowhere.
#pragma once

#include "engine/Global.h"

namespace tvk {

// Message 258: an interface is available (or not).
void TellInterfaceChanged(cGlobal* aGlobal, const char* aIdentifier, bool aAvailable);
// Message 257: what happened to a device, as its interface reported it.
void TellDeviceChanged(cGlobal* aGlobal, const char* aIdentifier, llk::u4 aWhat, llk::u4 aData);

} // namespace tvk
