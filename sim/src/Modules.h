// The ports of the transport layer's modules: each one's registers, as its
// document in src/documents/ describes them.
#pragma once

#include <memory>

#include "Port.h"

namespace sim {

class System;
class Interface;
class Device;
class Stream;

std::unique_ptr<ModulePort> SystemModule(System& aSystem);
std::unique_ptr<ModulePort> InterfaceModule(Interface& aInterface);
std::unique_ptr<ModulePort> DeviceModule(Device& aDevice);
std::unique_ptr<ModulePort> StreamModule(Stream& aStream);

} // namespace sim
