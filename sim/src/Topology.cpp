#include "Topology.h"

#include <tinyxml.h>

#include <cstdlib>
#include <cstring>

#include "FrameGenerator.h"
#include "Producer.h"

namespace sim {

namespace {
// Camera c of interface i is at 192.168.<i + 1>.<c + 10>: every interface a
// network of its own, every camera on it an address of its own.
void AssignAddresses(tTopology& aTopology) {
    for (size_t i = 0; i < aTopology.interfaces.size(); ++i) {
        std::vector<tCameraConfig>& cameras = aTopology.interfaces[i].cameras;
        for (size_t c = 0; c < cameras.size(); ++c)
            cameras[c].ipAddress = 0xC0A80000u | static_cast<uint32_t>(1 + i % 254) << 8 |
                                   static_cast<uint32_t>(10 + c % 240);
    }
}
} // namespace

tTopology DefaultTopology() {
    tTopology t;
    tInterfaceConfig gev{"SimGEV-0", "GEV", "Simulated GigE Vision interface", "GEV0001", {}};
    tCameraConfig mono;
    mono.id = "SimCam-Mono";
    mono.model = "TavikSim Mono";
    mono.serial = "SIM0001";
    tCameraConfig bayer;
    bayer.id = "SimCam-Bayer";
    bayer.model = "TavikSim Color";
    bayer.serial = "SIM0002";
    bayer.sensorWidth = 2592;
    bayer.sensorHeight = 1944;
    bayer.width = 1296;
    bayer.height = 972;
    bayer.pixelFormat = 0x01080009; // BayerRG8
    gev.cameras = {mono, bayer};
    tInterfaceConfig lab{
        "SimGEV-1", "GEV", "Second simulated GigE Vision interface", "GEV0002", {}};
    tCameraConfig rgb;
    rgb.id = "SimCam-RGB";
    rgb.model = "TavikSim RGB";
    rgb.serial = "SIM0003";
    rgb.pixelFormat = 0x02180014; // RGB8
    lab.cameras = {rgb};
    t.interfaces = {gev, lab};
    AssignAddresses(t);
    return t;
}

namespace {
std::string Text(const TiXmlElement* aElement, const char* aName, const std::string& aDefault) {
    const char* value = aElement->Attribute(aName);
    return value ? value : aDefault;
}

template <class T> T Number(const TiXmlElement* aElement, const char* aName, T aDefault) {
    const char* value = aElement->Attribute(aName);
    if (!value) return aDefault;
    return static_cast<T>(strtod(value, nullptr));
}

bool Flag(const TiXmlElement* aElement, const char* aName, bool aDefault) {
    const char* value = aElement->Attribute(aName);
    if (!value) return aDefault;
    return strcmp(value, "true") == 0 || strcmp(value, "1") == 0;
}

int32_t AccessOf(const std::string& aText) {
    if (aText == "readonly") return 2;
    if (aText == "noaccess") return 3;
    if (aText == "busy") return 4;
    return 1;
}
} // namespace

bool ParseTopology(const std::string& aPath, tTopology& aTopology) {
    TiXmlDocument document;
    if (!document.LoadFile(aPath.c_str())) return false;
    const TiXmlElement* root = document.RootElement();
    if (!root || strcmp(root->Value(), "TavikSim") != 0) return false;
    tTopology t;
    t.tlType = Text(root, "tlType", "");
    int serial = 1;
    for (const TiXmlElement* i = root->FirstChildElement("Interface"); i;
         i = i->NextSiblingElement("Interface")) {
        tInterfaceConfig interface;
        interface.id = Text(i, "id", "SimIF-" + std::to_string(t.interfaces.size()));
        interface.type = Text(i, "type", "GEV");
        interface.name = Text(i, "name", interface.id);
        interface.serial = Text(i, "serial", interface.id);
        for (const TiXmlElement* c = i->FirstChildElement("Camera"); c;
             c = c->NextSiblingElement("Camera")) {
            tCameraConfig camera;
            camera.id = Text(c, "id", "SimCam-" + std::to_string(serial));
            camera.vendor = Text(c, "vendor", camera.vendor);
            camera.model = Text(c, "model", camera.model);
            camera.serial = Text(c, "serial", "SIM" + std::to_string(1000 + serial));
            camera.version = Text(c, "version", camera.version);
            camera.access = AccessOf(Text(c, "access", "readwrite"));
            camera.sensorWidth = Number(c, "sensorWidth", camera.sensorWidth);
            camera.sensorHeight = Number(c, "sensorHeight", camera.sensorHeight);
            camera.width = Number(c, "width", std::min(camera.width, camera.sensorWidth));
            camera.height = Number(c, "height", std::min(camera.height, camera.sensorHeight));
            if (const tPixelFormat* f = FindFormat(Text(c, "pixelFormat", "Mono8").c_str()))
                camera.pixelFormat = f->code;
            camera.frameRate = Number(c, "frameRate", camera.frameRate);
            camera.document = Text(c, "document", "");
            camera.zipped = Flag(c, "zip", false);
            camera.plugged = Flag(c, "plugged", true);
            interface.cameras.push_back(camera);
            ++serial;
        }
        t.interfaces.push_back(interface);
    }
    for (const TiXmlElement* f = root->FirstChildElement("Fault"); f;
         f = f->NextSiblingElement("Fault")) {
        tFaultConfig fault;
        fault.call = Text(f, "call", "");
        fault.status = Number(f, "status", int32_t{0});
        fault.count = Number(f, "count", uint32_t{0});
        fault.delayMs = Number(f, "delay", uint32_t{0});
        t.faults.push_back(fault);
    }
    AssignAddresses(t);
    aTopology = t;
    return true;
}

std::string LayerType(const tTopology& aTopology) {
    if (!aTopology.tlType.empty()) return aTopology.tlType;
    if (aTopology.interfaces.empty()) return "GEV";
    const std::string& first = aTopology.interfaces.front().type;
    for (const tInterfaceConfig& interface : aTopology.interfaces)
        if (interface.type != first) return "Mixed";
    return first;
}

uint32_t TypeCode(const std::string& aTlType) {
    if (aTlType == "Mixed") return 0;
    if (aTlType == "GEV") return 2;
    if (aTlType == "U3V" || aTlType == "USB3") return 3;
    return 1;
}

// The configuration named after the module, beside it: "Lab.xml" for
// "Lab.cti". Copies of the simulator loaded together can differ that way.
std::string ConfigBesideModule() {
    const std::string module = ModulePath();
    const size_t dot = module.rfind('.');
    if (dot == std::string::npos || module.find('/', dot) != std::string::npos) return {};
    return module.substr(0, dot) + ".xml";
}

tTopology LoadTopology() {
    tTopology t;
    const std::string beside = ConfigBesideModule();
    if (!beside.empty() && ParseTopology(beside, t)) return t;
    const char* path = getenv("TAVIK_SIM_CONFIG");
    if (path && *path && ParseTopology(path, t)) return t;
    return DefaultTopology();
}

} // namespace sim
