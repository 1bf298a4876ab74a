// One producer's transport layer: the system actor keeps an interface proxy
// for each interface the producer lists, tells the Supervisor when one comes
// or goes, and forwards discovery settings to its interfaces.
#pragma once

#include "engine/Actor.h"
#include "engine/Producer.h"
#include "engine/Proxy.h"
#include "engine/Systems.h"

namespace llk {
class cObjectList;
}

namespace tvk {

// Transport layer port registers of the force IP command.
constexpr llk::u8 kRegForceIPMAC = 0xF000011C;     // 8 bytes
constexpr llk::u8 kRegForceIPAddress = 0xF0000124; // 4 bytes each from here
constexpr llk::u8 kRegForceIPMask = 0xF0000128;
constexpr llk::u8 kRegForceIPGateway = 0xF000012C;
constexpr llk::u8 kRegForceIPSend = 0xF0000130;

// How long discovery answers take to come in, in milliseconds, until told.
constexpr llk::u8 kDiscoveryDurationMs = 150;

class cSystemActor : public pActor {
public:
    static cSystemActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cSystemActor>(aProxy, aAggregate);
    }
    const char* ClassName() const override { return "cSystemActor"; }
    llk::u4 ClassType() const { return kTypeSystemActor; }

    // On the caller's thread, before any request: listens for interface
    // list changes and schedules the first scan.
    llk::i4 Prepare();
    void Dismiss() override;
    void OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength) override;
    void OnAsyncFired(llk::u4 aUid) override;
    bool OnRequest(llk::cRequest* aRequest) override;

private:
    // The producer's interface identifiers, interned; any that fails is
    // left out.
    llk::cObjectList* ListAllInterfaces();
    // An interface proxy in the table, and the news of it.
    void AddInterface(llk::cString* aIdentifier);
    void CheckMIAInterfaces(llk::cObjectList* aNow, llk::cObjectList* aProxies);
    void CheckNewInterfaces(llk::cObjectList* aNow, llk::cObjectList* aProxies);
    // Sends a setting to every interface of this system; the first failure
    // is the result.
    template <class Send> llk::i4 Forward(Send&& aSend);
    llk::i4 SendForceIP(const tCommandForceIP& aCommand);

    bool mReady = false;
    tDiscoveryMode mMode = kDiscoveryOff;
    llk::u8 mDuration = kDiscoveryDurationMs;
    gc::TL_HANDLE mTL = nullptr;
    gc::EVENT_HANDLE mEvent = nullptr; // interface list changes; null without the extension
};

class cSystemProxy : public pProxy {
public:
    // aIdentifier is the producer's path.
    static cSystemProxy* New(const char* aIdentifier, cAggregate* aAggregate) {
        return Make<cSystemProxy>(aIdentifier, aAggregate);
    }
    llk::i4 Initialize(const char* aIdentifier, cAggregate* aAggregate);
    ~cSystemProxy() override;
    llk::u4 ClassType() const override { return kTypeSystemProxy; }
    pActor* Actor() const override { return mActor; }

    // Auto and Once return once the first answers had time to come in.
    llk::i4 SetDiscoveryMode(tDiscoveryMode aMode);
    llk::i4 GetDiscoveryMode(tDiscoveryMode& aMode);
    llk::i4 SetDiscoveryDuration(llk::u8 aDuration);
    llk::i4 GetDiscoveryDuration(llk::u8& aDuration);
    llk::i4 SendForceIP(const tCommandForceIP& aCommand);
    // Whether the first interface list has been made.
    llk::i4 IsReady(bool& aReady);

private:
    llk::i4 Ask(llk::u4 aUid, llk::u4 aTag, void* aContext) {
        return SendRequest(aUid, aTag, aContext, 255);
    }

    cSystemActor* mActor = nullptr;
    std::atomic<llk::u8> mDuration{kDiscoveryDurationMs};
};

} // namespace tvk
