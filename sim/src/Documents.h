// The register description documents the simulator serves, embedded at
// build time from src/documents/.
#pragma once

namespace sim {

extern const char kRemoteDeviceDocument[];    // a camera's, on its remote port "Device"
extern const char kSystemModuleDocument[];    // the transport layer's, "TLPort"
extern const char kInterfaceModuleDocument[]; // an interface's, "InterfacePort"
extern const char kDeviceModuleDocument[];    // a device module's, "DevicePort"
extern const char kStreamModuleDocument[];    // a data stream's, "StreamPort"

} // namespace sim
