// The engine's own register descriptions, built in as text: the system's
// features, chunk data, and what is added to cameras.
#pragma once

namespace tvk {

extern const char g_XMLChunkData[];  // "ChunkData", port "ChunkPort"
extern const char g_XMLCEvents[];    // "TavikEvents", port "CameraPort"
extern const char g_XMLCIPConf[];    // "TavikGigEIPConfig", port "CameraPort"
extern const char g_XMLCIPRead[];    // the same, all read-only, without the apply command
extern const char g_XMLTLPatch[];    // stream packet size of GigE Vision cameras
extern const char g_XMLTLParam[];    // "TLParamsLocked", where a camera lacks it
extern const char g_XMLSupervisor[]; // "TavikSystem", port "Pseudo"

} // namespace tvk
