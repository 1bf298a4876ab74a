#include "engine/DiscoveryNews.h"

#include <cstring>

#include "engine/RequestIds.h"

namespace tvk {

namespace {

// A pooled message for the Supervisor, with the identifier as "duid".
llk::cMessage* NewsFor(cGlobal* aGlobal, llk::u4 aUid, const char* aIdentifier) {
    llk::cMessage* message = aGlobal->NewMessage(aUid, 0);
    // The terminator travels with the text.
    if (!message ||
        !message->StoreBlock("duid", aIdentifier, static_cast<llk::u4>(strlen(aIdentifier) + 1)))
        return nullptr;
    return message;
}

void Post(cGlobal* aGlobal, llk::cMessage* aMessage) {
    pProxy* supervisor = aGlobal->Search(kTypeSupervisorProxy, static_cast<const pProxy*>(nullptr));
    if (!supervisor) return;
    supervisor->PostMessage(aMessage, 0);
    supervisor->Release();
}

} // namespace

void TellInterfaceChanged(cGlobal* aGlobal, const char* aIdentifier, bool aAvailable) {
    llk::cMessage* message = NewsFor(aGlobal, message::kInterfaceChanged, aIdentifier);
    if (message && message->StoreBool("data", aAvailable)) Post(aGlobal, message);
}

void TellDeviceChanged(cGlobal* aGlobal, const char* aIdentifier, llk::u4 aWhat, llk::u4 aData) {
    llk::cMessage* message = NewsFor(aGlobal, message::kDeviceChanged, aIdentifier);
    if (message && message->StoreUint("what", aWhat) && message->StoreUint("data", aData))
        Post(aGlobal, message);
}

} // namespace tvk
