// The camera actor's features: the documents merged into one tree, the
// additions made to a GigE Vision camera's own document on the way in, and
// the camera port whose registers serve the engine's documents.
#include <tinyxml.h>

#include <cstring>
#include <string>

#include "engine/BuiltinDocuments.h"
#include "engine/Camera.h"
#include "engine/Features.h"
#include "engine/GigEDocument.h"
#include "engine/Global.h"
#include "gik/Runtime.h"
#include "kit/Env.h"

namespace tvk {

namespace {

// The camera port's registers.
enum : llk::u4 {
    kCurrentIP = 0x00,
    kCurrentMask = 0x04,
    kCurrentGateway = 0x08,
    kPersistentIP = 0x0C,
    kPersistentMask = 0x10,
    kPersistentGateway = 0x14,
    kIPConfiguration = 0x18,
    kIPApply = 0x1C,
    kOverflowStamp = 0x20,
    kOverflowFrame = 0x28,
    kErrorStamp = 0x2C,
    kErrorFrame = 0x34,
};

constexpr llk::cRegistery::tRegister kRegisters[] = {
    {kCurrentIP, 4, 0x24},
    {kCurrentMask, 4, 0x34},
    {kCurrentGateway, 4, 0x44},
    {kPersistentIP, 4, 0x64C},
    {kPersistentMask, 4, 0x65C},
    {kPersistentGateway, 4, 0x66C},
    {kIPConfiguration, 4, 0x14},
    {kIPApply, 4, 0x10008},
    {kOverflowStamp, 8, 0},
    {kOverflowFrame, 4, 0},
    {kErrorStamp, 8, 0},
    {kErrorFrame, 4, 0},
    {kEventSlots, kEventRows* kEventSlotSize, 0},
};
static_assert(sizeof(kRegisters) / sizeof(kRegisters[0]) == 13, "the camera port's registers");

// What the IP configuration register of the device says, as the engine's
// enumeration numbers it: LLA 4, DHCP 6, persistent 5.
constexpr llk::u4 kLLA = 4, kPersistent = 5, kDHCP = 6;
// What the apply command writes to the device.
constexpr llk::u4 kApplyValue = 2;

// Camera port statuses.
constexpr llk::i4 kNoAccess = TvkErrorInvalidAccess;
constexpr llk::i4 kTooShort = TvkErrorMoreData;
constexpr llk::i4 kBadValue = TvkErrorBadParameter;

void PutBigEndian(llk::u1* aBytes, llk::u8 aValue, llk::u4 aLength) {
    for (llk::u4 i = 0; i < aLength; ++i)
        aBytes[i] = static_cast<llk::u1>(aValue >> (8 * (aLength - 1 - i)));
}

} // namespace

void cCameraActor::BuildFeatures() {
    llk::i4 status = ConnectDocuments();
    if (status == llk::kOk) status = mFeatures->Realize();
    if (status == llk::kOk) return;
    // The camera stays open, without features.
    llk::sEnv::PrintTrace("cCameraActor - failed to setup features");
    llk::ReleaseAndClear(mFeatures);
}

llk::i4 cCameraActor::ConnectDocuments() {
    mRegistery = llk::Retained(
        llk::cRegistery::New(kRegisters, sizeof(kRegisters) / sizeof(kRegisters[0]), this));
    if (!mRegistery) return llk::kNoMemory;
    if (mMode == TvkAccessModeConfig)
        return mFeatures->Connect("CameraPort", mCameraPort, g_XMLCIPConf, false, false, nullptr,
                                  nullptr);
    const bool gigE = IsGigE();
    llk::i4 status = mFeatures->Connect("DevicePort", mDevicePort, false, nullptr, nullptr);
    if (status == llk::kOk)
        status = mFeatures->Connect("Device", mRemotePort, false,
                                    gigE ? &TweakDeviceDocument : nullptr, this);
    if (status == llk::kOk)
        status = mFeatures->Connect("StreamPort", mStreamPort, false,
                                    gigE ? &PatchStreamDocument : nullptr, this);
    if (status == llk::kOk && gigE) {
        if (mHasEvents)
            status = mFeatures->Connect("CameraPort", mCameraPort, g_XMLCEvents, false, false,
                                        nullptr, nullptr);
        if (status == llk::kOk)
            status = mFeatures->Connect("CameraPort", mCameraPort, g_XMLCIPRead, false, false,
                                        nullptr, nullptr);
        if (status == llk::kOk) status = mFeatures->Inject(g_XMLTLPatch, false);
    }
    // Before Realize only the runtime knows which nodes there are.
    if (status == llk::kOk && !mFeatures->Runtime()->SeekNode("TLParamsLocked", false))
        status = mFeatures->Inject(g_XMLTLParam, false);
    if (status != llk::kOk || !gigE) return status;
    mFeatures->RelocateFeature("GevDeviceMACAddress", "/Info");
    for (const char* category :
         {"/StreamModule", "/DeviceModule", "/DeviceInformation", "/StreamEnumeration"})
        mFeatures->HideCategory(category);
    return llk::kOk;
}

// The document edits of a GigE Vision camera, with what they found kept
// for the stream's document and the remote events.
int cCameraActor::TweakDeviceDocument(gik::cRuntime*, TiXmlNode* aDescription, void* aContext) {
    auto* self = static_cast<cCameraActor*>(aContext);
    TiXmlElement* description = aDescription ? aDescription->ToElement() : nullptr;
    if (!description) return llk::kOk;
    TweakGigEDeviceDocument(description, self->mGigE);
    cGlobal* global = self->Global();
    for (llk::u4 i = 0; i < kEventRows; ++i) {
        const std::string& event = self->mGigE.events[i];
        if (event.empty()) continue;
        self->mEventRows[i] = {global->Cache(event.c_str()),
                               global->Cache(("Reg" + event + "Timestamp").c_str()),
                               global->Cache(("Reg" + event + "FrameID").c_str())};
        self->mHasEvents = true;
    }
    return llk::kOk;
}

int cCameraActor::PatchStreamDocument(gik::cRuntime*, TiXmlNode* aDescription, void* aContext) {
    auto* self = static_cast<cCameraActor*>(aContext);
    TiXmlElement* description = aDescription ? aDescription->ToElement() : nullptr;
    if (description) PatchGigEStreamDocument(description, self->mGigE);
    return llk::kOk;
}

// ---- The camera port ------------------------------------------------------------------

llk::i4 cCameraActor::RemoteFetch(llk::u4 aAddress, llk::u4& aValue) {
    llk::u4 done = 0;
    llk::i4 status = mRemotePort->Fetch(aAddress, sizeof(aValue), &aValue, done);
    llk::sNet::SwapToHost(aValue);
    return status;
}

llk::i4 cCameraActor::RemoteStore(llk::u4 aAddress, llk::u4 aValue) {
    llk::u4 done = 0;
    llk::sNet::SwapToNet(aValue);
    return mRemotePort->Store(aAddress, sizeof(aValue), &aValue, done);
}

llk::i4 cCameraActor::OnRegisterFetch(llk::u8 aBase, llk::u4 aOffset, void* aBytes,
                                      llk::u4 aCount) {
    auto* bytes = static_cast<llk::u1*>(aBytes);
    if (aBase == kEventSlots) {
        // Each slot: timestamp (8 bytes) and frame id (4), big-endian.
        llk::u1 image[kEventRows * kEventSlotSize] = {};
        for (llk::u4 i = 0; i < kEventRows; ++i) {
            PutBigEndian(image + i * kEventSlotSize, mSlots[i].stamp, 8);
            PutBigEndian(image + i * kEventSlotSize + 8, mSlots[i].frame, 4);
        }
        memcpy(bytes, image + aOffset, aCount);
        return llk::kOk;
    }
    const llk::cRegistery::tRegister* row = nullptr;
    for (const auto& r : kRegisters)
        if (r.base == aBase) row = &r;
    if (aOffset != 0 || aCount < row->length) return kTooShort;
    switch (aBase) {
    case kOverflowStamp:
    case kErrorStamp:
        PutBigEndian(bytes, (aBase == kOverflowStamp ? mOverflow : mError).stamp, 8);
        return llk::kOk;
    case kOverflowFrame:
    case kErrorFrame:
        PutBigEndian(bytes, (aBase == kOverflowFrame ? mOverflow : mError).frame, 4);
        return llk::kOk;
    case kIPApply:
        memset(bytes, 0, 4);
        return llk::kOk;
    default:
        break;
    }
    llk::u4 value = 0;
    llk::i4 status = RemoteFetch(row->spare, value);
    if (status != llk::kOk) return status;
    if (aBase == kIPConfiguration) value = value & 1u ? kPersistent : value & 2u ? kDHCP : kLLA;
    memcpy(bytes, &value, 4);
    return llk::kOk;
}

llk::i4 cCameraActor::OnRegisterStore(llk::u8 aBase, llk::u4 aOffset, const void* aBytes,
                                      llk::u4 aCount) {
    const llk::cRegistery::tRegister* row = nullptr;
    for (const auto& r : kRegisters)
        if (r.base == aBase) row = &r;
    if (aOffset != 0 || aCount < row->length)
        return aBase == kIPConfiguration ? kTooShort : kBadValue;
    llk::u4 value = 0;
    memcpy(&value, aBytes, 4);
    switch (aBase) {
    case kPersistentIP:
    case kPersistentMask:
    case kPersistentGateway:
        return RemoteStore(row->spare, value);
    case kIPConfiguration:
        return RemoteStore(row->spare, value == kLLA || value == kDHCP ? value : kPersistent);
    case kIPApply:
        // What the device makes of it is its own business.
        RemoteStore(row->spare, kApplyValue);
        return llk::kOk;
    default:
        return kNoAccess;
    }
}

} // namespace tvk
