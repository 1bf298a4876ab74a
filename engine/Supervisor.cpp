// The Supervisor's life: making it, getting it going, and the discovery
// news it republishes.
#include "engine/Supervisor.h"

#include <cstring>

#include "engine/BuiltinDocuments.h"
#include "engine/RequestIds.h"
#include "kit/Env.h"

namespace tvk {

namespace {

// The register block of the system document, by address.
constexpr llk::cRegistery::tRegister kRegisters[] = {
    {0x000, 8, 0},   // RegElapsed
    {0x008, 4, 0},   // TLGeVPresent, TLFiWPresent, TLUsbPresent
    {0x00C, 4, 0},   // RegTLDiscoveryCmd
    {0x010, 4, 0},   // RegDiscoveryCameraEvent
    {0x014, 128, 0}, // RegDiscoveryCameraIdent
    {0x094, 4, 0},   // RegDiscoveryInterfaceEvent
    {0x098, 128, 0}, // RegDiscoveryInterfaceIdent
    {0x118, 4, 0},   // RegTLSchedulerConcurrencyMin
    {0x11C, 4, 0},   // RegTLSchedulerConcurrencyMax
    {0x120, 4, 0},   // RegTLSchedulerStride
    {0x124, 4, 0},   // RegTLSchedulerStatBusy
    {0x128, 4, 0},   // RegTLSchedulerStatIdle
    {0x12C, 4, 0},   // RegTLSchedulerStatBusyMax
    {0x130, 4, 0},   // RegTLSchedulerStatIdleMax
    {0x134, 4, 0},   // RegTLSchedulerStatObjects
    {0x138, 4, 0},   // RegTLSchedulerSelector
    {0x13C, 8, 0},   // RegGeVForceIPAddressMAC
    {0x144, 4, 0},   // RegGeVForceIPAddressIP
    {0x148, 4, 0},   // RegGeVForceIPAddressSubnetMask
    {0x14C, 4, 0},   // RegGeVForceIPAddressGateway
    {0x150, 4, 0},   // RegGeVForceIPAddressSend
    {0x154, 8, 0},   // RegTLDiscoveryDuration
};
static_assert(sizeof(kRegisters) / sizeof(kRegisters[0]) == 22, "the system's register block");

constexpr tInterface kSlotTypes[cSupervisorActor::kSlots] = {kInterfaceEthernet, kInterfaceFirewire,
                                                             kInterfaceUsb};

// The identifier a message carries, cut to the register and zero-filled.
void CopyIdent(llk::cMessage* aMessage, char (&aIdent)[cSupervisorActor::kIdentSize]) {
    std::memset(aIdent, 0, sizeof(aIdent));
    llk::u4 size = sizeof(aIdent);
    aMessage->FetchBlock("duid", aIdent, size);
}

} // namespace

llk::i4 cSupervisorActor::Initialize(pProxy* aProxy, cAggregate* aAggregate, pSystems* aSystems) {
    llk::i4 status = pActor::Initialize(aProxy, aAggregate);
    if (status != llk::kOk) return status;
    if (!aSystems) return llk::kNoMemory;
    mSystems = llk::Retained(aSystems);
    mRegistery = llk::Retained(
        llk::cRegistery::New(kRegisters, sizeof(kRegisters) / sizeof(kRegisters[0]), this));
    for (llk::u4 i = 0; i < kSlots; ++i)
        mSlots[i].type = kSlotTypes[i];
    return mRegistery ? llk::kOk : llk::kNoMemory;
}

cSupervisorActor::~cSupervisorActor() {
    llk::ReleaseAndClear(mFeatures);
    llk::ReleaseAndClear(mPort);
    llk::ReleaseAndClear(mRegistery);
    llk::ReleaseAndClear(mSystems);
}

llk::i4 cSupervisorActor::Prepare() {
    mPort = llk::Retained(cPseudoPort::New(0, this, false));
    mFeatures = llk::Retained(cFeatures::New(false));
    if (!mPort || !mFeatures) return llk::kNoMemory;
    mStartTime = llk::sEnv::GetElapsedTime();
    mFeatures->SetDelegate(this);
    return mFeatures->Prepare();
}

void cSupervisorActor::Dismiss() {
    pActor::Dismiss();
    RequestsDisable(true);
    RequestsReject();
}

llk::u4 cSupervisorActor::Handle() const {
    return static_cast<llk::u4>(reinterpret_cast<uintptr_t>(TVK_SYSTEM_HANDLE));
}

bool cSupervisorActor::OnRequest(llk::cRequest* aRequest) {
    if (aRequest->GetUid() != request::kSupervisorGo) return pActor::OnRequest(aRequest);
    aRequest->SetOutcome(GetGoing());
    return true;
}

void cSupervisorActor::ProbeTL() {
    for (llk::u4 i = 0; i < kSlots; ++i) {
        mSlots[i].present = mSystems->Helper(mSlots[i].type) != nullptr;
        if (mSlots[i].present) mPresent |= 1u << i;
    }
}

llk::i4 cSupervisorActor::GetGoing() {
    ProbeTL();
    // GigE Vision when there is one, else FireWire, else USB.
    mSelected = mSlots[0].present ? 0 : (mSlots[1].present ? 1 : 2);
    llk::i4 status =
        mFeatures->Connect("Pseudo", mPort, g_XMLSupervisor, false, false, nullptr, nullptr);
    llk::i4 realized = mFeatures->Realize();
    return status != llk::kOk ? status : realized;
}

bool cSupervisorActor::OnMessage(llk::cMessage* aMessage) {
    llk::u4 uid = aMessage->GetUid();
    if (uid != message::kInterfaceChanged && uid != message::kDeviceChanged) return true;
    // A second event waits until the callbacks have read the first.
    if (!IsFeaturesWritable()) return false;
    if (uid == message::kInterfaceChanged) {
        CopyIdent(aMessage, mInterfaceIdent);
        bool available = false;
        aMessage->FetchBool("data", available);
        mInterfaceEvent = available ? kInterfaceAvailable : kInterfaceUnavailable;
        Republish("RegDiscoveryInterfaceEvent", "RegDiscoveryInterfaceIdent");
        return true;
    }
    CopyIdent(aMessage, mCameraIdent);
    llk::u4 what = 0, data = 0;
    aMessage->FetchUint("what", what);
    aMessage->FetchUint("data", data);
    if (what == 1 || what == 3)
        mCameraEvent = data & 1u ? kCameraDetected : kCameraMissing;
    else if (what == 2)
        mCameraEvent = data & 2u ? kCameraReachable : kCameraUnreachable;
    Republish("RegDiscoveryCameraEvent", "RegDiscoveryCameraIdent");
    return true;
}

void cSupervisorActor::Republish(const char* aEvent, const char* aIdent) {
    mFeatures->TrackInvalidations(true);
    mFeatures->FeatureInvalidate(aEvent);
    mFeatures->FeatureInvalidate(aIdent);
    mFeatures->TrackInvalidations(false);
}

llk::i4 cSupervisorProxy::Initialize(cAggregate* aAggregate, pSystems* aSystems) {
    SetAggregate(aAggregate);
    mActor = llk::Retained(cSupervisorActor::New(this, aAggregate, aSystems));
    if (!mActor) return llk::kNoMemory;
    llk::i4 status = StartActor(mActor);
    if (status != llk::kOk) return status;
    status = mActor->Prepare();
    if (status != llk::kOk) aAggregate->Helper()->Detach(mActor);
    return status;
}

cSupervisorProxy::~cSupervisorProxy() {
    EndActor(mActor);
    llk::ReleaseAndClear(mActor);
}

llk::i4 cSupervisorProxy::GetGoing() {
    return SendRequest(request::kSupervisorGo, 0, nullptr, 255);
}

} // namespace tvk
