#include "Transport.h"

#include "EventData.h"
#include "Info.h"
#include "Modules.h"
#include "Stream.h"

namespace sim {

void Listing::Update(std::vector<std::string> aNow, bool8_t* aChanged) {
    std::lock_guard<std::mutex> hold(mLock);
    if (aChanged) *aChanged = aNow != mIds;
    mIds = std::move(aNow);
}

GC_ERROR Listing::Count(uint32_t* aCount) {
    if (!aCount) return GC_ERR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> hold(mLock);
    *aCount = static_cast<uint32_t>(mIds.size());
    return GC_ERR_SUCCESS;
}

uint32_t Listing::Count() {
    std::lock_guard<std::mutex> hold(mLock);
    return static_cast<uint32_t>(mIds.size());
}

GC_ERROR Listing::At(uint32_t aIndex, std::string& aId) {
    std::lock_guard<std::mutex> hold(mLock);
    if (aIndex >= mIds.size()) return GC_ERR_INVALID_INDEX;
    aId = mIds[aIndex];
    return GC_ERR_SUCCESS;
}

Interface::Interface(System* aParent, const tInterfaceConfig& aConfig)
    : mParent(aParent), mConfig(aConfig),
      mDeviceListChanged(EVENT_DEVICE_LIST_CHANGED_QRX, this, kDeviceChangeDataMax) {
    for (const tCameraConfig& camera : aConfig.cameras)
        mDevices.push_back(std::make_unique<Device>(this, camera));
    mModule = InterfaceModule(*this);
}

void Interface::UpdateListed(bool8_t* aChanged) {
    std::vector<std::string> now;
    for (Device* device : Visible())
        now.push_back(device->Config().id);
    listed.Update(std::move(now), aChanged);
}

std::vector<Device*> Interface::Visible() {
    std::vector<Device*> visible;
    for (auto& device : mDevices)
        if (device->Plugged()) visible.push_back(device.get());
    return visible;
}

GC_ERROR Interface::Info(INTERFACE_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer,
                         size_t* aSize) {
    switch (aCommand) {
    case INTERFACE_INFO_ID:
        return ReplyText(mConfig.id, aType, aBuffer, aSize);
    case INTERFACE_INFO_DISPLAYNAME:
        return ReplyText(mConfig.name, aType, aBuffer, aSize);
    case INTERFACE_INFO_TLTYPE:
        return ReplyText(mConfig.type, aType, aBuffer, aSize);
    case INTERFACE_INFO_SERIAL_QRX:
        return ReplyText(mConfig.serial, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

Device* Interface::Find(const std::string& aId) {
    for (auto& device : mDevices)
        if (device->Config().id == aId) return device.get();
    return nullptr;
}

System::System(const tTopology& aTopology)
    : mTopology(aTopology), mInterfaceListChanged(EVENT_INTERFACE_LIST_CHANGED_QRX, this, 512) {
    for (const tInterfaceConfig& interface : aTopology.interfaces)
        mInterfaces.push_back(std::make_unique<Interface>(this, interface));
    mModule = SystemModule(*this);
}

void System::UpdateListed(bool8_t* aChanged) {
    std::vector<std::string> now;
    for (auto& interface : mInterfaces)
        now.push_back(interface->Config().id);
    listed.Update(std::move(now), aChanged);
}

Interface* System::Find(const std::string& aId) {
    for (auto& interface : mInterfaces)
        if (interface->Config().id == aId) return interface.get();
    return nullptr;
}

Device* System::FindDevice(const std::string& aId) {
    for (auto& interface : mInterfaces)
        if (Device* device = interface->Find(aId)) return device;
    return nullptr;
}

void Handles::Add(void* aHandle, tKind aKind) {
    std::lock_guard<std::mutex> hold(mLock);
    mLive[aHandle] = aKind;
}

void Handles::Remove(void* aHandle) {
    std::lock_guard<std::mutex> hold(mLock);
    mLive.erase(aHandle);
}

bool Handles::Is(void* aHandle, tKind aKind) {
    std::lock_guard<std::mutex> hold(mLock);
    auto it = mLive.find(aHandle);
    return it != mLive.end() && it->second == aKind;
}

std::optional<tKind> Handles::KindOf(void* aHandle) {
    std::lock_guard<std::mutex> hold(mLock);
    auto it = mLive.find(aHandle);
    if (it == mLive.end()) return std::nullopt;
    return it->second;
}

void Handles::Clear() {
    std::lock_guard<std::mutex> hold(mLock);
    mLive.clear();
}

} // namespace sim
