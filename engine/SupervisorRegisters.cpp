// The Supervisor's pseudo port and register switch: every feature of the
// system ends here, in a register answered from the Supervisor's state or
// forwarded to the systems.
#include <cstring>

#include "engine/Supervisor.h"
#include "kit/Env.h"

namespace tvk {

namespace {

// Register addresses.
enum : llk::u4 {
    kElapsed = 0x000,
    kPresent = 0x008,
    kDiscoveryCmd = 0x00C,
    kCameraEvent = 0x010,
    kCameraIdent = 0x014,
    kInterfaceEvent = 0x094,
    kInterfaceIdent = 0x098,
    kConcurrencyMin = 0x118,
    kConcurrencyMax = 0x11C,
    kStride = 0x120,
    kStatBusy = 0x124,
    kStatIdle = 0x128,
    kStatBusyMax = 0x12C,
    kStatIdleMax = 0x130,
    kStatObjects = 0x134,
    kSelector = 0x138,
    kForceMAC = 0x13C,
    kForceIP = 0x144,
    kForceMask = 0x148,
    kForceGateway = 0x14C,
    kForceSend = 0x150,
    kDiscoveryDuration = 0x154,
};

// Public statuses the switch answers with.
constexpr llk::i4 kNoAccess = TvkErrorInvalidAccess;
constexpr llk::i4 kBadValue = TvkErrorBadParameter;
constexpr llk::i4 kNotInRange = TvkErrorInvalidValue;
constexpr llk::i4 kNoSystem = TvkErrorInternalFault;

constexpr llk::u4 kLargest = cSupervisorActor::kIdentSize;

llk::u4 LengthOf(llk::u8 aBase) {
    switch (aBase) {
    case kElapsed:
    case kForceMAC:
    case kDiscoveryDuration:
        return 8;
    case kCameraIdent:
    case kInterfaceIdent:
        return kLargest;
    default:
        return 4;
    }
}

// Registers are little-endian.
void Put(llk::u1* aImage, llk::u8 aValue, llk::u4 aLength) {
    for (llk::u4 i = 0; i < aLength; ++i)
        aImage[i] = static_cast<llk::u1>(aValue >> (8 * i));
}

llk::u8 Get(const llk::u1* aImage, llk::u4 aLength) {
    llk::u8 value = 0;
    for (llk::u4 i = aLength; i-- > 0;)
        value = value << 8 | aImage[i];
    return value;
}

} // namespace

llk::i4 cSupervisorActor::OnRegisterFetch(llk::u8 aBase, llk::u4 aOffset, void* aBytes,
                                          llk::u4 aCount) {
    llk::u1 image[kLargest] = {};
    llk::i4 status = Read(aBase, image);
    if (status == llk::kOk) std::memcpy(aBytes, image + aOffset, aCount);
    return status;
}

llk::i4 cSupervisorActor::OnRegisterStore(llk::u8 aBase, llk::u4 aOffset, const void* aBytes,
                                          llk::u4 aCount) {
    // A part of a register is written over what it holds.
    llk::u4 length = LengthOf(aBase);
    llk::u1 image[kLargest] = {};
    if (aOffset != 0 || aCount != length) {
        llk::i4 status = Read(aBase, image);
        if (status != llk::kOk) return status;
    }
    std::memcpy(image + aOffset, aBytes, aCount);
    return Write(aBase, Get(image, length));
}

cHelper* cSupervisorActor::SelectedHelper() {
    const tSlot& slot = mSlots[mSelected];
    return slot.present ? mSystems->Helper(slot.type) : nullptr;
}

llk::i4 cSupervisorActor::Setup(cHelper::tSetup*& aSetup) {
    cHelper* helper = SelectedHelper();
    if (!helper) return kNoAccess;
    tSlot& slot = mSlots[mSelected];
    // Read once: the setup only changes through these registers.
    if (!slot.setupCached) {
        helper->GetSetup(slot.setup);
        slot.setupCached = true;
    }
    aSetup = &slot.setup;
    return llk::kOk;
}

llk::i4 cSupervisorActor::Stats(cHelper::tStats*& aStats) {
    cHelper* helper = SelectedHelper();
    if (!helper) return kNoAccess;
    tSlot& slot = mSlots[mSelected];
    double now = llk::sEnv::GetElapsedTime();
    if (!slot.statsCached || now - slot.statsTime > kStatsAge) {
        helper->GetStats(slot.stats);
        slot.statsCached = true;
        slot.statsTime = now;
    }
    aStats = &slot.stats;
    return llk::kOk;
}

llk::i4 cSupervisorActor::Read(llk::u8 aBase, llk::u1* aImage) {
    llk::u4 length = LengthOf(aBase);
    llk::u8 value = 0;
    llk::i4 status = llk::kOk;
    cHelper::tSetup* setup = nullptr;
    cHelper::tStats* stats = nullptr;
    switch (aBase) {
    case kElapsed: {
        double elapsed = llk::sEnv::GetElapsedTime() - mStartTime;
        std::memcpy(&value, &elapsed, sizeof(value));
        break;
    }
    case kPresent:
        value = mPresent;
        break;
    case kDiscoveryCmd:
        value = mDiscoveryCommand;
        break;
    case kCameraEvent:
        value = mCameraEvent;
        break;
    case kInterfaceEvent:
        value = mInterfaceEvent;
        break;
    case kCameraIdent:
        std::memcpy(aImage, mCameraIdent, kIdentSize);
        return llk::kOk;
    case kInterfaceIdent:
        std::memcpy(aImage, mInterfaceIdent, kIdentSize);
        return llk::kOk;
    case kConcurrencyMin:
    case kConcurrencyMax:
    case kStride:
        status = Setup(setup);
        if (status == llk::kOk)
            value = aBase == kConcurrencyMin   ? setup->concurrencyMin
                    : aBase == kConcurrencyMax ? setup->concurrencyMax
                                               : setup->stride;
        break;
    case kStatBusy:
    case kStatIdle:
    case kStatBusyMax:
    case kStatIdleMax:
    case kStatObjects:
        status = Stats(stats);
        if (status == llk::kOk)
            value = aBase == kStatBusy      ? stats->busy
                    : aBase == kStatIdle    ? stats->idle
                    : aBase == kStatBusyMax ? stats->peakBusy
                    : aBase == kStatIdleMax ? stats->peakIdle
                                            : stats->objects;
        break;
    case kSelector:
        value = mSelected;
        break;
    case kForceMAC:
        value = mForceIP.mac;
        break;
    case kForceIP:
        value = mForceIP.ip;
        break;
    case kForceMask:
        value = mForceIP.subnetMask;
        break;
    case kForceGateway:
        value = mForceIP.gateway;
        break;
    case kForceSend:
        value = 0;
        break;
    case kDiscoveryDuration:
        value = mDiscoveryDuration;
        break;
    default:
        return kNoAccess;
    }
    if (status == llk::kOk) Put(aImage, value, length);
    return status;
}

llk::i4 cSupervisorActor::Write(llk::u8 aBase, llk::u8 aValue) {
    cHelper::tSetup* setup = nullptr;
    switch (aBase) {
    case kDiscoveryCmd:
        return SetDiscoveryCommand(aValue);
    case kConcurrencyMin:
    case kConcurrencyMax:
    case kStride: {
        // The value written plays no part: the scheduler gets its own setup
        // back, so these stay as they are.
        llk::i4 status = Setup(setup);
        if (status == llk::kOk) SelectedHelper()->SetSetup(*setup);
        return status;
    }
    case kSelector:
        if (aValue >= kSlots || !mSlots[aValue].present) return kNotInRange;
        mSelected = static_cast<llk::u4>(aValue);
        return llk::kOk;
    case kForceMAC:
        mForceIP.mac = aValue;
        return llk::kOk;
    case kForceIP:
        if (aValue == 0 || aValue == 0xFFFFFFFFu) return kBadValue;
        mForceIP.ip = aValue;
        return llk::kOk;
    case kForceMask:
        mForceIP.subnetMask = aValue;
        return llk::kOk;
    case kForceGateway:
        if (aValue == 0xFFFFFFFFu) return kBadValue;
        mForceIP.gateway = aValue;
        return llk::kOk;
    case kForceSend:
        return SendForceIP();
    case kDiscoveryDuration:
        return SetDiscoveryDuration(aValue);
    default:
        return kNoAccess;
    }
}

llk::i4 cSupervisorActor::SetDiscoveryCommand(llk::u8 aCommand) {
    if (aCommand > kDiscoveryOnce) return kBadValue;
    if (aCommand == mDiscoveryCommand) return llk::kOk;
    llk::i4 status =
        mSystems->SetDiscoveryMode(kInterfaceEthernet, static_cast<tDiscoveryMode>(aCommand));
    if (status == llk::kNotFound) return kNoSystem;
    if (status == llk::kOk) mDiscoveryCommand = static_cast<llk::u4>(aCommand);
    return status;
}

llk::i4 cSupervisorActor::SetDiscoveryDuration(llk::u8 aDuration) {
    if (aDuration == mDiscoveryDuration) return llk::kOk;
    llk::i4 status = mSystems->SetDiscoveryDuration(kInterfaceEthernet, aDuration);
    if (status == llk::kNotFound) return kNoSystem;
    if (status == llk::kOk) mDiscoveryDuration = aDuration;
    return status;
}

llk::i4 cSupervisorActor::SendForceIP() {
    if (mForceIP.mac == 0 || mForceIP.ip == 0) return kBadValue;
    // Without a GigE Vision system there is nobody to tell.
    llk::i4 status = mSystems->SendForceIP(kInterfaceEthernet, mForceIP);
    return status == llk::kNotFound ? llk::kOk : status;
}

} // namespace tvk
