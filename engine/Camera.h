// One opened camera: its GenTL device and stream, its ports, and one
// feature tree merged from the device's own document, the transport layer's
// device and stream modules and the engine's additions. The stream's buffers
// and frames are served beside it (CameraStream).
#pragma once

#include "TavikC.h"
#include "engine/Actor.h"
#include "engine/GigEDocument.h"
#include "engine/Port.h"
#include "engine/Proxy.h"
#include "kit/Registery.h"

namespace tvk {

class cCameraActor : public pActor,
                     public cPseudoPort::pDelegate,
                     public llk::cRegistery::pDelegate {
public:
    static constexpr llk::u4 kEventOverflow = 0xFFFE;
    static constexpr llk::u4 kEventError = 0xFFFF;

    static cCameraActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cCameraActor>(aProxy, aAggregate);
    }
    llk::i4 Initialize(pProxy* aProxy, cAggregate* aAggregate);
    ~cCameraActor() override;
    const char* ClassName() const override { return "cCameraActor"; }
    llk::u4 ClassType() const { return kTypeCameraActor; }

    // On the caller's thread: opens the device in aMode and what the mode
    // needs; the features are built on the actor's thread right after.
    llk::i4 Prepare(const char* aIdentifier, gc::IF_HANDLE aInterface, TvkAccessMode_t aMode);
    void Dismiss() override;
    cFeatures* Features() const override { return mFeatures; }
    void OnAsyncFired(llk::u4 aUid) override;
    void OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength) override;
    bool OnRequest(llk::cRequest* aRequest) override;
    bool OnMessage(llk::cMessage* aMessage) override;

    llk::i4 OnRegisterFetch(llk::u8 aBase, llk::u4 aOffset, void* aBytes, llk::u4 aCount) override;
    llk::i4 OnRegisterStore(llk::u8 aBase, llk::u4 aOffset, const void* aBytes,
                            llk::u4 aCount) override;

private:
    // What the camera keeps of one kind of remote event.
    struct tEventSlot {
        llk::u8 stamp;
        llk::u4 frame;
    };
    // The features an event reaches: its invalidator and its two registers.
    struct tEventRow {
        llk::cString* invalidator;
        llk::cString* timestamp;
        llk::cString* frame;
    };

    llk::i4 PrepareWithMode();
    llk::i4 PrepareStream(bool aReadOnly);
    llk::i4 PreparePorts(bool aReadOnly, bool aModulePorts);
    // Listens for the optional invalidation events of the stream and device.
    void ListenForInvalidations();
    void CloseStream();
    bool IsGigE() const { return Aggregate()->Type() == kInterfaceEthernet; }
    // The camera port: the registers behind the engine's documents.
    llk::cRegistery* RegisterMap() const override { return mRegistery; }

    // The feature tree, from the documents the mode calls for.
    void BuildFeatures();
    llk::i4 ConnectDocuments();
    static int TweakDeviceDocument(gik::cRuntime* aRuntime, TiXmlNode* aDescription,
                                   void* aContext);
    static int PatchStreamDocument(gik::cRuntime* aRuntime, TiXmlNode* aDescription,
                                   void* aContext);
    void Republish(const tEventSlot& aSlot, tEventSlot& aInto, const char* aInvalidator,
                   const char* aTimestamp, const char* aFrame);

    // Remote registers of the camera port, in network order on the device.
    llk::i4 RemoteFetch(llk::u4 aAddress, llk::u4& aValue);
    llk::i4 RemoteStore(llk::u4 aAddress, llk::u4 aValue);

    gc::DEV_HANDLE mDevice = nullptr;
    gc::DS_HANDLE mStream = nullptr;
    gc::PORT_HANDLE mPortHandle = nullptr;
    gc::EVENT_HANDLE mBufferEvent = nullptr;
    gc::EVENT_HANDLE mDeviceEvent = nullptr;
    gc::EVENT_HANDLE mStreamInvalidate = nullptr;
    gc::EVENT_HANDLE mDeviceInvalidate = nullptr;
    cDirectPort* mDevicePort = nullptr; // the transport layer's device module
    cDirectPort* mRemotePort = nullptr; // the camera itself
    cDirectPort* mStreamPort = nullptr;
    cPseudoPort* mCameraPort = nullptr;
    TvkAccessMode_t mMode = TvkAccessModeNone;
    cFeatures* mFeatures = nullptr;
    llk::cRegistery* mRegistery = nullptr;
    bool mActive = false;
    bool mLost = false; // the device has gone: it stays so until closed
    tEventRow mEventRows[kEventRows] = {};
    bool mHasEvents = false;
    tGigEDocument mGigE;
    tEventSlot mOverflow = {}, mError = {};
    tEventSlot mSlots[kEventRows] = {};
};

class cCameraProxy : public pProxy {
public:
    // aInterface is the GenTL handle of the interface proxy aParent; the
    // actor's status comes back in aError when the open fails.
    static cCameraProxy* New(const pProxy* aParent, llk::cString* aIdentifier,
                             cAggregate* aAggregate, gc::IF_HANDLE aInterface,
                             TvkAccessMode_t aMode, llk::i4* aError) {
        return Make<cCameraProxy>(aParent, aIdentifier, aAggregate, aInterface, aMode, aError);
    }
    llk::i4 Initialize(const pProxy* aParent, llk::cString* aIdentifier, cAggregate* aAggregate,
                       gc::IF_HANDLE aInterface, TvkAccessMode_t aMode, llk::i4* aError);
    ~cCameraProxy() override;
    llk::u4 ClassType() const override { return kTypeCameraProxy; }
    pActor* Actor() const override { return mActor; }

    // The actor takes requests from here on.
    llk::i4 GetGoing();
    // It refuses them from here on, its turns end and the device closes.
    llk::i4 Shutdown();

private:
    cCameraActor* mActor = nullptr;
};

} // namespace tvk
