// Register maps of the module documents; the addresses are those of the
// documents' nodes. Selectors and the like are the module's own state.
#include "Modules.h"

#include <atomic>

#include "Bootstrap.h"
#include "Device.h"
#include "Documents.h"
#include "Producer.h"
#include "Stream.h"
#include "Transport.h"

namespace sim {

namespace {
constexpr uint32_t kText = 64;

// A register a consumer sets and reads back, with a test of what it takes.
ModulePort::tNumberWrite Keep(std::shared_ptr<std::atomic<uint64_t>> aValue,
                              std::function<bool(uint64_t)> aAccept) {
    return [aValue, aAccept](uint64_t aNew) {
        if (!aAccept(aNew)) return GC_ERR_INVALID_PARAMETER;
        aValue->store(aNew);
        return GC_ERR_SUCCESS;
    };
}

// An enumeration of the modules below: at aAddress the update command, then
// the selector and the count (32-bit each), and at aId the selected one's id.
// Gives the selected id as a function.
std::function<std::string()> Enumeration(ModulePort& aPort, uint64_t aAddress, uint64_t aId,
                                         Listing* aListing, std::function<void()> aUpdate) {
    auto selector = std::make_shared<std::atomic<uint64_t>>(0);
    auto selected = [aListing, selector] {
        std::string id;
        aListing->At(static_cast<uint32_t>(selector->load()), id);
        return id;
    };
    aPort.Command(aAddress, std::move(aUpdate));
    aPort.Number(
        aAddress + 4, 4, [selector] { return selector->load(); },
        Keep(selector, [aListing](uint64_t v) { return v < aListing->Count(); }));
    aPort.Number(aAddress + 8, 4, [aListing] { return uint64_t{aListing->Count()}; });
    aPort.Text(aId, kText, selected);
    return selected;
}
} // namespace

std::unique_ptr<ModulePort> SystemModule(System& aSystem) {
    System* system = &aSystem;
    const std::string type = LayerType(system->Topology());
    auto port = std::make_unique<ModulePort>(
        Port::tIdentity{kProducerId, kProducerVendor, kProducerModel, type, "TLSystem", "TLPort"},
        "TavikSimSystem.xml", kSystemModuleDocument);
    port->Text(0x0000, kText, [] { return std::string(kProducerId); });
    port->Text(0x0040, kText, [] { return std::string(kProducerVendor); });
    port->Text(0x0080, kText, [] { return std::string(kProducerModel); });
    port->Text(0x00C0, kText, [] { return std::string(kProducerVersion); });
    port->Text(0x0100, 512, [] { return ModulePath(); });
    port->Number(0x0300, 4, [type] { return uint64_t{TypeCode(type)}; });
    port->Number(0x0304, 4, [] { return uint64_t{1}; }); // GenTL 1.5
    port->Number(0x0308, 4, [] { return uint64_t{5}; });
    Enumeration(*port, 0x0310, 0x0320, &system->listed,
                [system] { system->UpdateListed(nullptr); });
    // Force IP, written by consumers in one stacked write: MAC, address, mask,
    // gateway, send. The cameras have no IP configuration to change.
    port->Scratch(0xF000011C, 24);
    return port;
}

std::unique_ptr<ModulePort> InterfaceModule(Interface& aInterface) {
    Interface* interface = &aInterface;
    const tInterfaceConfig* c = &interface->Config();
    auto port =
        std::make_unique<ModulePort>(Port::tIdentity{c->id, kProducerVendor, kProducerModel,
                                                     c->type, "TLInterface", "InterfacePort"},
                                     "TavikSimInterface.xml", kInterfaceModuleDocument);
    port->Text(0x0000, kText, [c] { return c->id; });
    port->Text(0x0040, kText, [c] { return c->name; });
    port->Number(0x0080, 4, [c] { return uint64_t{TypeCode(c->type)}; });
    auto selected = Enumeration(*port, 0x0090, 0x00A0, &interface->listed,
                                [interface] { interface->UpdateListed(nullptr); });
    // The selected camera, or nothing when it has gone.
    auto camera = [interface, selected] { return interface->Find(selected()); };
    port->Text(0x00E0, kText, [camera] {
        Device* d = camera();
        return d ? d->Config().vendor : std::string();
    });
    port->Text(0x0120, kText, [camera] {
        Device* d = camera();
        return d ? d->Config().model : std::string();
    });
    port->Text(0x0160, kText, [camera] {
        Device* d = camera();
        return d ? d->Config().serial : std::string();
    });
    port->Number(0x01A0, 4, [camera] {
        Device* d = camera();
        return uint64_t(d ? d->AccessStatus() : DEVICE_ACCESS_STATUS_UNKNOWN);
    });
    // Discovery: kept; the list is always current.
    auto mode = std::make_shared<std::atomic<uint64_t>>(0);
    auto duration = std::make_shared<std::atomic<uint64_t>>(150);
    port->Number(
        0xF000029C, 4, [mode] { return mode->load(); },
        Keep(mode, [](uint64_t v) { return v <= 2; }));
    port->Number(
        0xF00002C4, 8, [duration] { return duration->load(); },
        Keep(duration, [](uint64_t) { return true; }));
    return port;
}

std::unique_ptr<ModulePort> DeviceModule(Device& aDevice) {
    Device* device = &aDevice;
    const tCameraConfig* c = &device->Config();
    auto port = std::make_unique<ModulePort>(Port::tIdentity{c->id, c->vendor, c->model,
                                                             device->TransportType(), "TLDevice",
                                                             "DevicePort"},
                                             "TavikSimDevice.xml", kDeviceModuleDocument);
    port->Text(0x0000, kText, [c] { return c->id; });
    port->Text(0x0040, kText, [c] { return c->vendor; });
    port->Text(0x0080, kText, [c] { return c->model; });
    port->Text(0x00C0, kText, [c] { return c->serial; });
    port->Text(0x0100, 128, [c] { return c->vendor + " " + c->model + " (" + c->serial + ")"; });
    port->Number(0x0180, 4, [device] { return uint64_t{TypeCode(device->TransportType())}; });
    port->Number(0x0184, 4, [device] { return uint64_t(device->AccessStatus()); });
    port->Number(0x0188, 8, [c] { return gev::MacAddress(c->id); }); // as its bootstrap says
    // One stream: the selector takes 0 only.
    port->Number(
        0x0190, 4, [] { return uint64_t{0}; },
        [](uint64_t v) { return v == 0 ? GC_ERR_SUCCESS : GC_ERR_INVALID_PARAMETER; });
    port->Number(0x0194, 4, [] { return uint64_t{1}; });
    port->Text(0x01A0, kText, [] { return std::string(Stream::Id()); });
    return port;
}

std::unique_ptr<ModulePort> StreamModule(Stream& aStream) {
    Stream* stream = &aStream;
    Device* device = stream->Parent();
    auto port = std::make_unique<ModulePort>(
        Port::tIdentity{Stream::Id(), device->Config().vendor, device->Config().model,
                        device->TransportType(), "TLDataStream", "StreamPort"},
        "TavikSimStream.xml", kStreamModuleDocument);
    port->Text(0x0000, kText, [] { return std::string(Stream::Id()); });
    port->Number(0x0040, 4, [device] { return uint64_t{TypeCode(device->TransportType())}; });
    port->Number(0x0044, 4, [device] { return uint64_t{device->ReadU32(reg::kPayloadSize)}; });
    // Buffers are delivered oldest first, the one mode there is.
    port->Number(
        0x0048, 4, [] { return uint64_t{1}; },
        [](uint64_t v) { return v == 1 ? GC_ERR_SUCCESS : GC_ERR_INVALID_PARAMETER; });
    port->Number(0x004C, 4, [stream] { return uint64_t{stream->Counts().announced}; });
    port->Number(0x0050, 4, [] { return uint64_t{1}; });
    port->Number(0x0054, 4, [stream] { return uint64_t{stream->Counts().queued}; });
    port->Number(0x0058, 4, [stream] { return uint64_t{stream->Counts().awaiting}; });
    port->Number(0x0060, 8, [stream] { return stream->Counts().started; });
    port->Number(0x0068, 8, [stream] { return stream->Counts().delivered; });
    port->Number(0x0070, 8, [stream] { return stream->Counts().underruns; });
    port->Number(0x0078, 4, [stream] { return uint64_t{stream->Counts().grabbing}; });
    port->Number(0x007C, 4, [] { return uint64_t{Stream::kChunksMax}; });
    // The packet size lives in the camera; the camera's document gives its range.
    port->Number(0x0100, 4, [] { return uint64_t{576}; });
    port->Number(0x0104, 4, [] { return uint64_t{9000}; });
    port->Number(
        0x0108, 4, [device] { return uint64_t{device->PacketSize()}; },
        [device](uint64_t v) { return device->SetPacketSize(v); });
    port->Number(0x010C, 4, [stream, device] {
        return uint64_t{device->AccessStatus() == DEVICE_ACCESS_STATUS_OPEN_READONLY ||
                        stream->Counts().grabbing};
    });
    return port;
}

} // namespace sim
