#include "Transport.h"

#include "Stream.h"

namespace sim {

Interface::Interface(const tInterfaceConfig& aConfig)
    : mConfig(aConfig), mDeviceListChanged(EVENT_DEVICE_LIST_CHANGED_QRX, this, 512) {
    for (const tCameraConfig& camera : aConfig.cameras)
        mDevices.push_back(std::make_unique<Device>(this, camera));
}

std::vector<Device*> Interface::Visible() {
    std::vector<Device*> visible;
    for (auto& device : mDevices)
        if (device->Plugged()) visible.push_back(device.get());
    return visible;
}

Device* Interface::Find(const std::string& aId) {
    for (auto& device : mDevices)
        if (device->Config().id == aId) return device.get();
    return nullptr;
}

System::System(const tTopology& aTopology)
    : mTopology(aTopology), mInterfaceListChanged(EVENT_INTERFACE_LIST_CHANGED_QRX, this, 512) {
    for (const tInterfaceConfig& interface : aTopology.interfaces)
        mInterfaces.push_back(std::make_unique<Interface>(interface));
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

void Handles::Clear() {
    std::lock_guard<std::mutex> hold(mLock);
    mLive.clear();
}

} // namespace sim
