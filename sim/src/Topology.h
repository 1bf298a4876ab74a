// What the simulator presents: its transport layer, interfaces and cameras,
// from the file named by TAVIK_SIM_CONFIG or a built-in default.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

struct tCameraConfig {
    std::string id;
    std::string vendor = "Tavik";
    std::string model = "TavikSim";
    std::string serial;
    std::string version = "1.0";
    int32_t access = 1; // DEVICE_ACCESS_STATUS
    uint32_t sensorWidth = 1280;
    uint32_t sensorHeight = 960;
    uint32_t width = 640;
    uint32_t height = 480;
    uint32_t pixelFormat = 0x01080001;
    double frameRate = 30.0;
    std::string document; // a file to serve instead of the built-in document
    bool zipped = false;  // serve the document ZIP-compressed
    bool plugged = true;
    // Its current IPv4 address, by its place in the topology.
    uint32_t ipAddress = 0;
};

struct tInterfaceConfig {
    std::string id;
    std::string type = "GEV";
    std::string name;
    std::string serial;
    std::vector<tCameraConfig> cameras;
};

struct tFaultConfig {
    std::string call;
    int32_t status = 0;
    uint32_t count = 0; // 0: every call
    uint32_t delayMs = 0;
};

struct tTopology {
    std::string tlType; // as configured; empty: from the interfaces
    std::vector<tInterfaceConfig> interfaces;
    std::vector<tFaultConfig> faults;
};

// The transport layer's type: as configured, else the type its interfaces
// share, "Mixed" when they differ, and "GEV" when there are none.
std::string LayerType(const tTopology& aTopology);

// A transport type as the modules' type enumerations number it: Mixed 0,
// Custom 1, GigEVision 2 ("GEV"), USB3Vision 3 ("U3V" or "USB3").
uint32_t TypeCode(const std::string& aTlType);

// The topology of the file named after the module beside it ("Lab.xml" for
// "Lab.cti"), else of TAVIK_SIM_CONFIG, else the default.
tTopology LoadTopology();
tTopology DefaultTopology();
// Parses a configuration document; false when it is not one.
bool ParseTopology(const std::string& aPath, tTopology& aTopology);

} // namespace sim
