#include "LargeDocument.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tinyxml.h>
#include <unordered_set>

namespace bench {

namespace {

// Every "Name" attribute of the tree under aElement.
void CollectNames(const TiXmlElement* aElement, std::unordered_set<std::string>& aNames) {
    for (const TiXmlElement* e = aElement->FirstChildElement(); e; e = e->NextSiblingElement()) {
        if (const char* name = e->Attribute("Name")) aNames.insert(name);
        CollectNames(e, aNames);
    }
}

std::string Trimmed(const char* aText) {
    std::string text = aText ? aText : "";
    size_t b = text.find_first_not_of(" \t\r\n");
    size_t e = text.find_last_not_of(" \t\r\n");
    return b == std::string::npos ? std::string() : text.substr(b, e - b + 1);
}

// Renames, in place, every name of aNames and every element text that is
// one of them, with aSuffix.
void Rename(TiXmlElement* aElement, const std::unordered_set<std::string>& aNames,
            const std::string& aSuffix) {
    if (const char* name = aElement->Attribute("Name"))
        if (aNames.count(name)) aElement->SetAttribute("Name", (name + aSuffix).c_str());
    for (const char* attribute : {"pOffset"})
        if (const char* name = aElement->Attribute(attribute))
            if (aNames.count(name)) aElement->SetAttribute(attribute, (name + aSuffix).c_str());
    for (TiXmlNode* child = aElement->FirstChild(); child; child = child->NextSibling()) {
        if (TiXmlText* text = child->ToText()) {
            std::string value = Trimmed(text->Value());
            if (aNames.count(value)) text->SetValue((value + aSuffix).c_str());
        } else if (TiXmlElement* element = child->ToElement()) {
            Rename(element, aNames, aSuffix);
        }
    }
}

} // namespace

std::vector<std::string> Documents(const std::string& aDirectory) {
    std::vector<std::string> paths;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(aDirectory, error))
        if (entry.path().extension() == ".xml") paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string ReadText(const std::string& aPath) {
    std::ifstream in(aPath, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string LargeDocument(const std::vector<std::string>& aDocuments, size_t aBytes) {
    std::vector<TiXmlDocument> sources(aDocuments.size());
    std::vector<std::unordered_set<std::string>> names(aDocuments.size());
    bool any = false;
    for (size_t i = 0; i < aDocuments.size(); ++i) {
        sources[i].LoadFile(aDocuments[i].c_str());
        if (TiXmlElement* description = sources[i].FirstChildElement("RegisterDescription")) {
            CollectNames(description, names[i]);
            any = true;
        }
    }
    if (!any) return std::string();

    TiXmlDocument large;
    large.LinkEndChild(new TiXmlDeclaration("1.0", "utf-8", ""));
    auto* description = new TiXmlElement("RegisterDescription");
    description->SetAttribute("ModelName", "Large");
    description->SetAttribute("VendorName", "Tavik");
    large.LinkEndChild(description);
    auto* root = new TiXmlElement("Category");
    root->SetAttribute("Name", "Root");
    description->LinkEndChild(root);
    size_t bytes = 0;
    for (int copy = 0; bytes < aBytes; ++copy) {
        for (size_t i = 0; i < sources.size(); ++i) {
            const TiXmlElement* source = sources[i].FirstChildElement("RegisterDescription");
            if (!source) continue;
            std::string suffix = "_" + std::to_string(copy) + "_" + std::to_string(i);
            auto* group = new TiXmlElement("Group");
            group->SetAttribute("Comment", suffix.c_str());
            for (const TiXmlElement* e = source->FirstChildElement(); e;
                 e = e->NextSiblingElement()) {
                TiXmlNode* clone = e->Clone();
                Rename(clone->ToElement(), names[i], suffix);
                group->LinkEndChild(clone);
            }
            description->LinkEndChild(group);
            auto* feature = new TiXmlElement("pFeature");
            feature->LinkEndChild(new TiXmlText(("Root" + suffix).c_str()));
            root->LinkEndChild(feature);
            TiXmlPrinter size;
            group->Accept(&size);
            bytes += size.Size();
        }
    }
    TiXmlPrinter printer;
    large.Accept(&printer);
    return printer.Str();
}

} // namespace bench
