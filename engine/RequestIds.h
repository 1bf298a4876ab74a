// The identifiers of the requests proxies send and the messages actors post.
#pragma once

#include "kit/Types.h"

namespace tvk {

// Request uids and tags.
namespace request {
// Any actor with features.
constexpr llk::u4 kFeature = 10;
constexpr llk::u4 kFeatureList = 10;
constexpr llk::u4 kFeatureInfo = 11;
constexpr llk::u4 kFeatureRange = 12;
constexpr llk::u4 kFeatureAccess = 13;
constexpr llk::u4 kFeaturePeek = 14;
constexpr llk::u4 kFeaturePoke = 15;
constexpr llk::u4 kFeatureEnumQuery = 16;
constexpr llk::u4 kFeatureEnumAsString = 17;
constexpr llk::u4 kFeatureCallback = 18;
constexpr llk::u4 kFeatureSize = 19;
constexpr llk::u4 kFeatureIncrement = 20;

// Camera.
constexpr llk::u4 kMemory = 11;    // tags kFeaturePeek, kFeaturePoke
constexpr llk::u4 kRegisters = 12; // tags kFeaturePeek, kFeaturePoke
constexpr llk::u4 kStreamStart = 241;
constexpr llk::u4 kStreamFrame = 242;
constexpr llk::u4 kStreamQueue = 243;
constexpr llk::u4 kCameraGo = 244;
constexpr llk::u4 kCameraShutDown = 245;
constexpr llk::u4 kTagSetStarted = 0, kTagGetStarted = 1;
constexpr llk::u4 kTagDeclare = 2, kTagDismiss = 3;
constexpr llk::u4 kTagEnqueue = 4, kTagDequeueAll = 5, kTagWait = 6;

// System.
constexpr llk::u4 kDiscoveryMode = 241; // tags 0 set, 1 get
constexpr llk::u4 kSystemReady = 242;
constexpr llk::u4 kForceIP = 243;
constexpr llk::u4 kDiscoveryDuration = 244; // tags 0 set, 1 get

// Interface.
constexpr llk::u4 kInterfaceInfo = 241;
constexpr llk::u4 kInterfaceOpen = 242;
constexpr llk::u4 kInterfaceClose = 243;
constexpr llk::u4 kDeviceList = 244;                 // tags 1 renew, 2 count, 3 query, 4 find
constexpr llk::u4 kInterfaceDiscoveryMode = 245;     // tag 5
constexpr llk::u4 kInterfaceDiscoveryDuration = 246; // tag 6

// Supervisor.
constexpr llk::u4 kSupervisorGo = 0x60186;
} // namespace request

// Message uids.
namespace message {
constexpr llk::u4 kStreamFeatureInvalidated = 13; // "name"
constexpr llk::u4 kDeviceFeatureInvalidated = 14; // "name"
constexpr llk::u4 kDeviceChanged = 257;           // "duid", "what", "data"
constexpr llk::u4 kInterfaceChanged = 258;        // "duid", "data"
constexpr llk::u4 kRemoteEvent = 259;             // "stamp", "frame"; tag: event id
constexpr llk::u4 kDeviceLost = 260;              // interface actor to an open camera of it
} // namespace message

} // namespace tvk
