// One opened GenTL interface: its device list, the changes it reports, and
// its discovery settings. The interface actor owns the GenTL handle from its
// proxy's creation to its end; opening and closing from the flat functions
// only switch its features.
#pragma once

#include "TavikC.h"
#include "engine/Actor.h"
#include "engine/Port.h"
#include "engine/Proxy.h"
#include "engine/Systems.h"

namespace tvk {

// The records the flat functions hand out, filled by the actor.
using tDeviceInfo = TvkCameraInfo_t;
using tInterfaceInfo = TvkInterfaceInfo_t;

// A device list request: renew, count (into count), query (count records
// from index into array; count comes back as the number filled) or find
// (the device of identifier into array[0]).
struct tDeviceListQuery {
    const char* identifier;
    tDeviceInfo* array;
    llk::u4 index;
    llk::u4 count;
};

// GigE Vision interface registers.
constexpr llk::u8 kRegDiscoveryMode = 0xF000029C;     // 4 bytes
constexpr llk::u8 kRegDiscoveryDuration = 0xF00002C4; // 8 bytes

class cInterfaceActor : public pActor {
public:
    static cInterfaceActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cInterfaceActor>(aProxy, aAggregate);
    }
    const char* ClassName() const override { return "cInterfaceActor"; }
    llk::u4 ClassType() const { return kTypeInterfaceActor; }

    // On the caller's thread, before any request: opens the interface and
    // listens for its device changes.
    llk::i4 Prepare(const char* aIdentifier, tDiscoveryMode aMode);
    // Reports every device still listed as missing, then closes.
    void Dismiss() override;
    void OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength) override;
    bool OnRequest(llk::cRequest* aRequest) override;
    // The interface's features, while it is open.
    cFeatures* Features() const override { return mOpened ? mFeatures : nullptr; }

    // Set at Prepare, then constant.
    gc::IF_HANDLE Interface() const { return mInterface; }
    // GenTL access status as permitted access bits.
    static llk::u4 ConvertStatus(llk::i4 aStatus, tInterface aType);

private:
    llk::i4 QueryInfo(tInterfaceInfo& aInfo);
    // Opening makes the features the first time; without them the interface
    // opens all the same.
    void Open();
    llk::i4 DeviceList(llk::u4 aTag, tDeviceListQuery& aQuery);
    // The device of aIdentifier, or at aIndex when aIdentifier is null.
    llk::i4 FetchDeviceInfo(const char* aIdentifier, llk::u4 aIndex, tDeviceInfo& aInfo);
    // An info text of the interface, interned; null when it is no text.
    const char* InfoText(gc::INTERFACE_INFO_CMD aCommand);
    llk::i4 Discovery(llk::u4 aUid, llk::u4 aTag, void* aValue);
    // Tells the cameras open on a device that it has gone.
    void TellCamerasLost(const char* aIdentifier);
    bool IsGigE() const { return Aggregate()->Type() == kInterfaceEthernet; }

    gc::IF_HANDLE mInterface = nullptr;
    gc::EVENT_HANDLE mEvent = nullptr; // device list changes; null without the extension
    cDirectPort* mPort = nullptr;
    cFeatures* mFeatures = nullptr;
    const char* mIdentifier = nullptr; // interned
    bool mOpened = false;
    const char* mName = nullptr;   // interned
    const char* mSerial = nullptr; // interned
};

class cInterfaceProxy : public pProxy {
public:
    // aParent is the system proxy; aIdentifier the producer's interface id.
    static cInterfaceProxy* New(const pProxy* aParent, llk::cString* aIdentifier,
                                cAggregate* aAggregate, tDiscoveryMode aMode) {
        return Make<cInterfaceProxy>(aParent, aIdentifier, aAggregate, aMode);
    }
    llk::i4 Initialize(const pProxy* aParent, llk::cString* aIdentifier, cAggregate* aAggregate,
                       tDiscoveryMode aMode);
    ~cInterfaceProxy() override;
    llk::u4 ClassType() const override { return kTypeInterfaceProxy; }
    pActor* Actor() const override { return mActor; }

    llk::i4 QueryInfo(tInterfaceInfo& aInfo);
    llk::i4 DeviceListRenew();
    llk::i4 DeviceListCount(llk::u4& aCount);
    // Fills up to aCount records from aIndex; aCount comes back as the
    // number filled.
    llk::i4 DeviceListQuery(llk::u4 aIndex, tDeviceInfo* aArray, llk::u4& aCount);
    llk::i4 DeviceFind(const char* aIdentifier, tDeviceInfo& aInfo);
    // Switches the interface's features on and off.
    llk::i4 Open();
    llk::i4 Close();
    // GigE Vision only; elsewhere they succeed and do nothing.
    llk::i4 SetDiscoveryMode(tDiscoveryMode aMode);
    llk::i4 GetDiscoveryMode(tDiscoveryMode& aMode);
    llk::i4 SetDiscoveryDuration(llk::u8 aDuration);
    llk::i4 GetDiscoveryDuration(llk::u8& aDuration);
    // The GenTL interface handle.
    gc::IF_HANDLE OwnHandle() const { return mActor->Interface(); }

private:
    llk::i4 Ask(llk::u4 aUid, llk::u4 aTag, void* aContext) {
        return SendRequest(aUid, aTag, aContext, 255);
    }

    cInterfaceActor* mActor = nullptr;
};

} // namespace tvk
