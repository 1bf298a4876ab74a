// The built-in documents: well formed, and with the names, addresses and
// access that the engine's register maps rely on.
#include <gtest/gtest.h>

#include <tinyxml.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "engine/BuiltinDocuments.h"

using namespace tvk;

namespace {

struct tRegister {
    unsigned long address = 0;
    int length = 0;
    std::string access;
    std::string endianess;
};

// Registers by name (IntReg, FloatReg, StringReg, MaskedIntReg) and node names by element.
struct tDocument {
    explicit tDocument(const char* aText) {
        ok = document.Parse(aText) != nullptr || !document.Error();
        if (!document.RootElement()) return;
        for (const TiXmlElement* e = document.RootElement()->FirstChildElement(); e;
             e = e->NextSiblingElement()) {
            const char* name = e->Attribute("Name");
            if (name) kinds[name] = e->Value();
            const TiXmlElement* address = e->FirstChildElement("Address");
            if (!name || !address) continue;
            tRegister r;
            r.address = strtoul(address->GetText(), nullptr, 0);
            r.length = atoi(e->FirstChildElement("Length")->GetText());
            r.access = e->FirstChildElement("AccessMode")->GetText();
            if (const TiXmlElement* endian = e->FirstChildElement("Endianess"))
                r.endianess = endian->GetText();
            registers[name] = r;
        }
    }
    TiXmlDocument document;
    bool ok = false;
    std::map<std::string, std::string> kinds;
    std::map<std::string, tRegister> registers;
};

TEST(BuiltinDocumentsTest, AllParseAsRegisterDescriptions) {
    for (const char* text : {g_XMLChunkData, g_XMLCEvents, g_XMLCIPConf, g_XMLCIPRead, g_XMLTLPatch,
                             g_XMLTLParam, g_XMLSupervisor}) {
        tDocument d(text);
        ASSERT_TRUE(d.ok) << d.document.ErrorDesc();
        ASSERT_NE(d.document.RootElement(), nullptr);
        EXPECT_STREQ(d.document.RootElement()->Value(), "RegisterDescription");
        EXPECT_EQ(d.kinds.count("Root"), 1u);
    }
}

TEST(BuiltinDocumentsTest, SupervisorRegisterMap) {
    tDocument d(g_XMLSupervisor);
    const std::map<std::string, std::pair<unsigned long, int>> expected = {
        {"RegElapsed", {0x00, 8}},
        {"RegTLDiscoveryCmd", {0x0C, 4}},
        {"RegDiscoveryCameraEvent", {0x10, 4}},
        {"DiscoveryCameraIdent", {0x14, 128}},
        {"RegDiscoveryInterfaceEvent", {0x94, 4}},
        {"DiscoveryInterfaceIdent", {0x98, 128}},
        {"RegTLSchedulerConcurrencyMin", {0x118, 4}},
        {"RegTLSchedulerConcurrencyMax", {0x11C, 4}},
        {"RegTLSchedulerStride", {0x120, 4}},
        {"RegTLSchedulerStatBusy", {0x124, 4}},
        {"RegTLSchedulerStatObjects", {0x134, 4}},
        {"RegTLSchedulerSelector", {0x138, 4}},
        {"RegGeVForceIPAddressMAC", {0x13C, 8}},
        {"RegGeVForceIPAddressGateway", {0x14C, 4}},
        {"RegGeVForceIPAddressSend", {0x150, 4}},
        {"RegTLDiscoveryDuration", {0x154, 8}},
    };
    for (const auto& [name, where] : expected) {
        ASSERT_EQ(d.registers.count(name), 1u) << name;
        EXPECT_EQ(d.registers[name].address, where.first) << name;
        EXPECT_EQ(d.registers[name].length, where.second) << name;
    }
    EXPECT_EQ(d.kinds["GeVDiscoveryAllOnce"], "Command");
    EXPECT_EQ(d.kinds["UsbTLIsPresent"], "Boolean");
    EXPECT_EQ(d.kinds["DiscoveryCameraEvent"], "Enumeration");
    EXPECT_EQ(d.registers["RegTLSchedulerStatBusy"].access, "RO");
}

TEST(BuiltinDocumentsTest, ChunkDataIsBigEndianAndReadOnly) {
    tDocument d(g_XMLChunkData);
    for (const char* name :
         {"RegChunkAcquisitionFrameCount", "RegChunkUserValue", "RegChunkExposureValue",
          "RegChunkGainValue", "RegChunkSyncInLevels", "RegChunkSyncOutLevels"}) {
        ASSERT_EQ(d.registers.count(name), 1u) << name;
        EXPECT_EQ(d.registers[name].endianess, "BigEndian") << name;
        EXPECT_EQ(d.registers[name].access, "RO") << name;
    }
    EXPECT_EQ(d.registers["RegChunkGainValue"].address, 0xCu);
    EXPECT_EQ(d.registers["RegChunkSyncOutLevels"].address, 0x10u);
    EXPECT_EQ(d.kinds["ChunkExposureValueFloat"], "Converter");
}

TEST(BuiltinDocumentsTest, ReadVariantOfTheIpConfigurationCannotWrite) {
    tDocument conf(g_XMLCIPConf), read(g_XMLCIPRead);
    EXPECT_EQ(conf.registers["RegGevPersistentIPAddress"].access, "RW");
    EXPECT_EQ(conf.registers["RegGevCurrentIPAddress"].access, "RO");
    EXPECT_EQ(conf.registers["RegGevIPConfigurationApply"].address, 0x1Cu);
    EXPECT_EQ(conf.kinds["GevIPConfigurationApply"], "Command");
    EXPECT_EQ(read.kinds.count("GevIPConfigurationApply"), 0u);
    for (const auto& [name, r] : read.registers)
        EXPECT_EQ(r.access, "RO") << name;
}

} // namespace
