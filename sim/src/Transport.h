// The transport layer and its interfaces, and the registry of live handles
// that every entry point checks its arguments against.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Device.h"
#include "Event.h"
#include "Port.h"
#include "Topology.h"

namespace sim {

// The identifiers a consumer saw at its last list update: count and index
// calls answer from it, not from the live topology.
class Listing {
public:
    // Takes the new list; aChanged (may be null) says whether it differs.
    void Update(std::vector<std::string> aNow, bool8_t* aChanged);
    GC_ERROR Count(uint32_t* aCount);
    uint32_t Count();
    GC_ERROR At(uint32_t aIndex, std::string& aId);

private:
    std::mutex mLock;
    std::vector<std::string> mIds;
};

class System;

class Interface {
public:
    Interface(System* aParent, const tInterfaceConfig& aConfig);
    System* Parent() const { return mParent; }
    const tInterfaceConfig& Config() const { return mConfig; }
    GC_ERROR Info(INTERFACE_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize);
    // Plugged cameras, in the order they were configured.
    std::vector<Device*> Visible();
    Device* Find(const std::string& aId);
    std::vector<std::unique_ptr<Device>>& Devices() { return mDevices; }
    // Takes the plugged cameras into the list the consumer sees.
    void UpdateListed(bool8_t* aChanged);
    ModulePort& Module() { return *mModule; }
    // False when it is open already: one opener wins.
    bool TryOpen() { return !mOpen.exchange(true); }
    void Close() { mOpen.store(false); }
    Event* DeviceListChanged() { return &mDeviceListChanged; }
    Listing listed;

private:
    System* mParent;
    tInterfaceConfig mConfig;
    std::vector<std::unique_ptr<Device>> mDevices;
    std::atomic<bool> mOpen{false};
    Event mDeviceListChanged;
    std::unique_ptr<ModulePort> mModule;
};

class System {
public:
    explicit System(const tTopology& aTopology);
    const tTopology& Topology() const { return mTopology; }
    std::vector<std::unique_ptr<Interface>>& Interfaces() { return mInterfaces; }
    Interface* Find(const std::string& aId);
    Device* FindDevice(const std::string& aId);
    Event* InterfaceListChanged() { return &mInterfaceListChanged; }
    // Takes the interfaces into the list the consumer sees.
    void UpdateListed(bool8_t* aChanged);
    ModulePort& Module() { return *mModule; }
    Listing listed;

private:
    tTopology mTopology;
    std::vector<std::unique_ptr<Interface>> mInterfaces;
    Event mInterfaceListChanged;
    std::unique_ptr<ModulePort> mModule;
};

// What a handle may be.
enum class tKind { kSystem, kInterface, kDevice, kStream, kPort, kEvent, kUnion };

// Live handles; a handle leaves when its object closes.
class Handles {
public:
    void Add(void* aHandle, tKind aKind);
    void Remove(void* aHandle);
    bool Is(void* aHandle, tKind aKind);
    // What a live handle is.
    std::optional<tKind> KindOf(void* aHandle);
    void Clear();

private:
    std::mutex mLock;
    std::map<void*, tKind> mLive;
};

} // namespace sim
