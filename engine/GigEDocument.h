// What the engine changes in a GigE Vision camera's documents on their way
// into its feature tree: a timestamp and a frame id feature for each event
// the camera's own document can send, served by the camera port, and the
// camera's packet size bounds handed to the stream module's document.
#pragma once

#include <string>

#include "kit/Types.h"

class TiXmlElement;

namespace tvk {

// Remote device events of ids kEventFirst up to kEventRows more are kept.
constexpr llk::u4 kEventRows = 32;
constexpr llk::u4 kEventFirst = 40000;
// Where the camera port keeps them: a 16-byte slot each, the timestamp (8
// bytes) and the frame id (4), big-endian.
constexpr llk::u4 kEventSlots = 0x38;
constexpr llk::u4 kEventSlotSize = 16;

// What the camera's own document told.
struct tGigEDocument {
    bool hasPacketLimits = false;
    llk::i8 packetMin = 0, packetMax = 0;
    // "Event" and the entry's name, for each event id from kEventFirst; empty
    // where the camera has none.
    std::string events[kEventRows];
};

// The camera's own document: keeps GevSCPSPacketSize's bounds, and adds the
// category "EventData" under "EventControl" with the features of each
// entry of "EventSelector" in the kept range.
void TweakGigEDeviceDocument(TiXmlElement* aDescription, tGigEDocument& aFound);
// The stream module's document: GVSPPacketSizeMin and GVSPPacketSizeMax take
// the camera's bounds, when it had both.
void PatchGigEStreamDocument(TiXmlElement* aDescription, const tGigEDocument& aFound);

} // namespace tvk
