// Lists the interfaces and the cameras on them.
#include "ExampleSupport.h"

#include <string>
#include <vector>

using namespace QRX::TvkAPI;

int main() {
    TavikSystem& system = TavikSystem::GetInstance();
    Check(system.Startup(), "Starting Tavik");

    std::vector<InterfacePtr> interfaces;
    Check(system.GetInterfaces(interfaces), "Listing the interfaces");
    std::printf("%zu interface(s)\n", interfaces.size());
    for (const InterfacePtr& iface : interfaces) {
        std::string id, name;
        TvkInterfaceType type = TvkInterfaceUnknown;
        iface->GetID(id);
        iface->GetName(name);
        iface->GetType(type);
        std::printf("  %-12s %-24s type %d\n", id.c_str(), name.c_str(), type);
    }

    std::vector<CameraPtr> cameras;
    Check(system.GetCameras(cameras), "Listing the cameras");
    std::printf("%zu camera(s)\n", cameras.size());
    for (const CameraPtr& camera : cameras) {
        std::string id, model, serial, interfaceID;
        camera->GetID(id);
        camera->GetModel(model);
        camera->GetSerialNumber(serial);
        camera->GetInterfaceID(interfaceID);
        std::printf("  %-14s %-20s serial %-10s on %s\n", id.c_str(), model.c_str(), serial.c_str(),
                    interfaceID.c_str());
    }

    system.Shutdown();
    return 0;
}
