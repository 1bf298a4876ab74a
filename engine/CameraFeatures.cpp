// The camera actor's features: the documents merged into one tree, the
// additions made to a GigE Vision camera's own document on the way in, and
// the camera port whose registers serve the engine's documents.
#include <tinyxml.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "engine/BuiltinDocuments.h"
#include "engine/Camera.h"
#include "engine/Features.h"
#include "engine/Global.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
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
    kEventSlots = 0x38,
};
constexpr llk::u4 kSlotSize = 16;

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
    {kEventSlots, cCameraActor::kEventRows* kSlotSize, 0},
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

// The element named aName among aParent's children, looking into groups.
TiXmlElement* SearchForNode(TiXmlElement* aParent, const char* aName) {
    for (TiXmlElement* e = aParent->FirstChildElement(); e; e = e->NextSiblingElement()) {
        const char* name = e->Attribute("Name");
        if (name && strcmp(name, aName) == 0) return e;
        if (strcmp(e->Value(), "Group") == 0)
            if (TiXmlElement* found = SearchForNode(e, aName)) return found;
    }
    return nullptr;
}

TiXmlElement* AddChild(TiXmlElement* aParent, const char* aTag, const std::string& aText) {
    auto* child = new TiXmlElement(aTag);
    child->LinkEndChild(new TiXmlText(aText.c_str()));
    aParent->LinkEndChild(child);
    return child;
}

TiXmlElement* AddNode(TiXmlElement* aDescription, const char* aTag, const std::string& aName) {
    auto* node = new TiXmlElement(aTag);
    node->SetAttribute("Name", aName.c_str());
    aDescription->LinkEndChild(node);
    return node;
}

// An unsigned, read-only event register on the camera port, and the
// integer feature over it.
void AddEventFeature(TiXmlElement* aDescription, TiXmlElement* aCategory,
                     const std::string& aFeature, const std::string& aRegister, llk::u4 aAddress,
                     llk::u4 aLength, const std::string& aInvalidator, const char* aImplemented) {
    TiXmlElement* feature = AddNode(aDescription, "Integer", aFeature);
    AddChild(feature, "Visibility", "Expert");
    if (aImplemented) AddChild(feature, "pIsImplemented", aImplemented);
    AddChild(feature, "pValue", aRegister);
    TiXmlElement* reg = AddNode(aDescription, "IntReg", aRegister);
    char address[16];
    snprintf(address, sizeof(address), "0x%X", aAddress);
    AddChild(reg, "Address", address);
    AddChild(reg, "Length", std::to_string(aLength));
    AddChild(reg, "AccessMode", "RO");
    AddChild(reg, "pPort", "CameraPort");
    AddChild(reg, "pInvalidator", aInvalidator);
    AddChild(reg, "Sign", "Unsigned");
    AddChild(reg, "Endianess", "BigEndian");
    AddChild(aCategory, "pFeature", aFeature);
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

// The device's document of a GigE Vision camera: keeps the packet size
// bounds for the stream, and adds a timestamp and a frame id feature for
// each event the camera can send.
int cCameraActor::TweakDeviceDocument(gik::cRuntime*, TiXmlNode* aDescription, void* aContext) {
    auto* self = static_cast<cCameraActor*>(aContext);
    TiXmlElement* description = aDescription ? aDescription->ToElement() : nullptr;
    if (!description) return llk::kOk;
    if (TiXmlElement* packetSize = SearchForNode(description, "GevSCPSPacketSize"))
        self->mHasPacketLimits =
            gik::sText::ReadInteger(gik::sText::ChildText(packetSize, "Min"), self->mPacketMin) &&
            gik::sText::ReadInteger(gik::sText::ChildText(packetSize, "Max"), self->mPacketMax);

    TiXmlElement* selector = SearchForNode(description, "EventSelector");
    TiXmlElement* control = SearchForNode(description, "EventControl");
    if (!selector || !control) return llk::kOk;
    TiXmlElement* category = AddNode(description, "Category", "EventData");
    AddChild(control, "pFeature", "EventData");
    for (TiXmlElement* entry = selector->FirstChildElement("EnumEntry"); entry;
         entry = entry->NextSiblingElement("EnumEntry")) {
        llk::i8 value = 0;
        const char* name = entry->Attribute("Name");
        if (!name || !gik::sText::ReadInteger(gik::sText::ChildText(entry, "Value"), value) ||
            value < kEventFirst || value >= kEventFirst + kEventRows)
            continue;
        const llk::u4 index = static_cast<llk::u4>(value - kEventFirst);
        const std::string event = std::string("Event") + name;
        const char* implemented = gik::sText::ChildText(entry, "pIsImplemented");
        AddEventFeature(description, category, event + "Timestamp", "Reg" + event + "Timestamp",
                        index * kSlotSize + kEventSlots, 8, event, implemented);
        AddEventFeature(description, category, event + "FrameID", "Reg" + event + "FrameID",
                        (index + 4) * kSlotSize, 4, event, implemented);
        cGlobal* global = self->Global();
        self->mEventRows[index] = {global->Cache(event.c_str()),
                                   global->Cache(("Reg" + event + "Timestamp").c_str()),
                                   global->Cache(("Reg" + event + "FrameID").c_str())};
        self->mHasEvents = true;
    }
    return llk::kOk;
}

// The stream module's document of a GigE Vision camera: the packet size
// bounds become the camera's own.
int cCameraActor::PatchStreamDocument(gik::cRuntime*, TiXmlNode* aDescription, void* aContext) {
    auto* self = static_cast<cCameraActor*>(aContext);
    TiXmlElement* description = aDescription ? aDescription->ToElement() : nullptr;
    if (!description || !self->mHasPacketLimits) return llk::kOk;
    const std::pair<const char*, llk::i8> bounds[] = {{"GVSPPacketSizeMin", self->mPacketMin},
                                                      {"GVSPPacketSizeMax", self->mPacketMax}};
    for (const auto& [name, value] : bounds) {
        TiXmlElement* node = SearchForNode(description, name);
        if (!node) continue;
        if (TiXmlElement* pValue = node->FirstChildElement("pValue")) node->RemoveChild(pValue);
        AddChild(node, "Value", std::to_string(value));
    }
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
        llk::u1 image[kEventRows * kSlotSize] = {};
        for (llk::u4 i = 0; i < kEventRows; ++i) {
            PutBigEndian(image + i * kSlotSize, mSlots[i].stamp, 8);
            PutBigEndian(image + i * kSlotSize + 8, mSlots[i].frame, 4);
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
