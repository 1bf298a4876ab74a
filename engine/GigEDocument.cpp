#include "engine/GigEDocument.h"

#include <tinyxml.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "gik/Text.h"

namespace tvk {

namespace {

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

void TweakGigEDeviceDocument(TiXmlElement* aDescription, tGigEDocument& aFound) {
    if (TiXmlElement* packetSize = SearchForNode(aDescription, "GevSCPSPacketSize"))
        aFound.hasPacketLimits =
            gik::sText::ReadInteger(gik::sText::ChildText(packetSize, "Min"), aFound.packetMin) &&
            gik::sText::ReadInteger(gik::sText::ChildText(packetSize, "Max"), aFound.packetMax);

    TiXmlElement* selector = SearchForNode(aDescription, "EventSelector");
    TiXmlElement* control = SearchForNode(aDescription, "EventControl");
    if (!selector || !control) return;
    TiXmlElement* category = AddNode(aDescription, "Category", "EventData");
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
        const llk::u4 slot = kEventSlots + index * kEventSlotSize;
        AddEventFeature(aDescription, category, event + "Timestamp", "Reg" + event + "Timestamp",
                        slot, 8, event, implemented);
        AddEventFeature(aDescription, category, event + "FrameID", "Reg" + event + "FrameID",
                        slot + 8, 4, event, implemented);
        aFound.events[index] = event;
    }
}

void PatchGigEStreamDocument(TiXmlElement* aDescription, const tGigEDocument& aFound) {
    if (!aFound.hasPacketLimits) return;
    const std::pair<const char*, llk::i8> bounds[] = {{"GVSPPacketSizeMin", aFound.packetMin},
                                                      {"GVSPPacketSizeMax", aFound.packetMax}};
    for (const auto& [name, value] : bounds) {
        TiXmlElement* node = SearchForNode(aDescription, name);
        if (!node) continue;
        if (TiXmlElement* pValue = node->FirstChildElement("pValue")) node->RemoveChild(pValue);
        AddChild(node, "Value", std::to_string(value));
    }
}

} // namespace tvk
