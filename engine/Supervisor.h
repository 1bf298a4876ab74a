// The Supervisor: the actor behind handle 1, the system as a whole. It has
// no producer; its features are those of the built-in system document on
// its pseudo port "Pseudo", where every read and write ends in a register
// switch that answers from its own state or forwards to the systems. It also
// republishes the systems' discovery news as invalidations of its features.
#pragma once

#include "engine/Actor.h"
#include "engine/Port.h"
#include "engine/Proxy.h"
#include "engine/Systems.h"
#include "kit/Registery.h"

namespace tvk {

class cSupervisorActor : public pActor,
                         public cPseudoPort::pDelegate,
                         public llk::cRegistery::pDelegate {
public:
    enum tCameraEvent : llk::u4 {
        kCameraMissing = 0,
        kCameraDetected = 1,
        kCameraReachable = 2,
        kCameraUnreachable = 3
    };
    enum tInterfaceEvent : llk::u4 { kInterfaceUnavailable = 0, kInterfaceAvailable = 1 };
    // Transport slots: GigE Vision, FireWire, USB.
    static constexpr llk::u4 kSlots = 3;
    static constexpr llk::u4 kIdentSize = 128;
    // How long scheduler statistics are served before they are fetched again.
    static constexpr double kStatsAge = 0.25;

    static cSupervisorActor* New(pProxy* aProxy, cAggregate* aAggregate, pSystems* aSystems) {
        return Make<cSupervisorActor>(aProxy, aAggregate, aSystems);
    }
    llk::i4 Initialize(pProxy* aProxy, cAggregate* aAggregate, pSystems* aSystems);
    ~cSupervisorActor() override;
    const char* ClassName() const override { return "cSupervisorActor"; }
    llk::u4 ClassType() const { return kTypeSupervisorActor; }

    // On the caller's thread, before any request: the port, the features
    // and the start time.
    llk::i4 Prepare();
    void Dismiss() override;
    // The system as a whole is handle 1, whatever the table gave the proxy.
    llk::u4 Handle() const override;
    cFeatures* Features() const override { return mFeatures; }
    bool OnRequest(llk::cRequest* aRequest) override;
    // Discovery news; deferred while an invalidation is still reporting.
    bool OnMessage(llk::cMessage* aMessage) override;

    // The register switch.
    llk::i4 OnRegisterFetch(llk::u8 aBase, llk::u4 aOffset, void* aBytes, llk::u4 aCount) override;
    llk::i4 OnRegisterStore(llk::u8 aBase, llk::u4 aOffset, const void* aBytes,
                            llk::u4 aCount) override;

private:
    struct tSlot {
        tInterface type;
        bool present;
        bool setupCached;
        bool statsCached;
        double statsTime;
        cHelper::tSetup setup;
        cHelper::tStats stats;
    };

    llk::i4 GetGoing();
    void ProbeTL();
    // A register's whole value, little-endian, into aImage.
    llk::i4 Read(llk::u8 aBase, llk::u1* aImage);
    llk::i4 Write(llk::u8 aBase, llk::u8 aValue);
    // The scheduler of the selected transport, or null when it is absent.
    cHelper* SelectedHelper();
    // The selected slot's setup and statistics: -6 without a transport.
    llk::i4 Setup(cHelper::tSetup*& aSetup);
    llk::i4 Stats(cHelper::tStats*& aStats);
    llk::i4 SetDiscoveryCommand(llk::u8 aCommand);
    llk::i4 SetDiscoveryDuration(llk::u8 aDuration);
    llk::i4 SendForceIP();
    // Invalidates two registers and tells the callbacks of every feature
    // that reached.
    void Republish(const char* aEvent, const char* aIdent);

    llk::cRegistery* RegisterMap() const override { return mRegistery; }

    llk::cRegistery* mRegistery = nullptr;
    cPseudoPort* mPort = nullptr;
    cFeatures* mFeatures = nullptr;
    pSystems* mSystems = nullptr;
    double mStartTime = 0.0;
    llk::u4 mPresent = 0; // bit per slot
    llk::u4 mSelected = 0;
    char mCameraIdent[kIdentSize] = {};
    llk::u4 mCameraEvent = kCameraMissing;
    char mInterfaceIdent[kIdentSize] = {};
    llk::u4 mInterfaceEvent = kInterfaceUnavailable;
    tSlot mSlots[kSlots] = {};
    llk::u4 mDiscoveryCommand = kDiscoveryOff;
    llk::u8 mDiscoveryDuration = 0;
    tCommandForceIP mForceIP = {};
};

class cSupervisorProxy : public pProxy {
public:
    static cSupervisorProxy* New(cAggregate* aAggregate, pSystems* aSystems) {
        return Make<cSupervisorProxy>(aAggregate, aSystems);
    }
    llk::i4 Initialize(cAggregate* aAggregate, pSystems* aSystems);
    ~cSupervisorProxy() override;
    llk::u4 ClassType() const override { return kTypeSupervisorProxy; }
    pActor* Actor() const override { return mActor; }

    // Probes the transport layers and loads the features.
    llk::i4 GetGoing();

private:
    cSupervisorActor* mActor = nullptr;
};

} // namespace tvk
