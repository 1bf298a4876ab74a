#include "kit/XMLBundle.h"

#include <tinyxml.h>

#include <cstring>

#include "kit/Env.h"

namespace llk {

namespace {
constexpr size_t kMaxNameLength = 127;

TiXmlDocument* EmptyDocument() {
    auto* document = new (std::nothrow) TiXmlDocument();
    if (document) document->LinkEndChild(new TiXmlDeclaration("1.0", "", "yes"));
    return document;
}
} // namespace

i4 cXMLBundle::Initialize(const char* aPath, cMutex* aMutex) {
    mMutex = Retained(aMutex);
    mDocument = EmptyDocument();
    if (!mDocument) return kNoMemory;
    return Load(aPath);
}

cXMLBundle::~cXMLBundle() {
    delete mDocument;
    ReleaseAndClear(mMutex);
}

i4 cXMLBundle::Load(const char* aPath) {
    uLock hold(mMutex);
    if (!aPath || !sEnv::FileExists(aPath)) return kNotFound;
    auto* document = new (std::nothrow) TiXmlDocument();
    if (!document) return kNoMemory;
    if (!document->LoadFile(aPath)) {
        delete document;
        return kBadArgument;
    }
    delete mDocument;
    mDocument = document;
    return kOk;
}

i4 cXMLBundle::Save(const char* aPath) {
    uLock hold(mMutex);
    return aPath && mDocument->SaveFile(aPath) ? kOk : kBadArgument;
}

void cXMLBundle::Reset() {
    uLock hold(mMutex);
    if (TiXmlDocument* document = EmptyDocument()) {
        delete mDocument;
        mDocument = document;
    }
}

// Walks the path from the document; a fetch stops at the first missing
// element, a store makes it.
TiXmlElement* cXMLBundle::Find(const char* aPath, bool aCreate) {
    if (!aPath || !*aPath) return nullptr;
    TiXmlNode* node = mDocument;
    const char* part = aPath;
    while (*part) {
        const char* end = strchr(part, '/');
        size_t length = end ? static_cast<size_t>(end - part) : strlen(part);
        if (length == 0 || length > kMaxNameLength) return nullptr;
        char name[kMaxNameLength + 1];
        memcpy(name, part, length);
        name[length] = '\0';
        TiXmlElement* child = node->FirstChildElement(name);
        if (!child) {
            if (!aCreate) return nullptr;
            child = static_cast<TiXmlElement*>(node->LinkEndChild(new TiXmlElement(name)));
        }
        node = child;
        part += length;
        if (*part == '/') ++part;
    }
    return node->ToElement();
}

const char* cXMLBundle::TextOf(const char* aPath) {
    TiXmlElement* element = Find(aPath, false);
    return element ? element->GetText() : nullptr;
}

bool cXMLBundle::Probe(const char* aPath, const char* aAttribute) {
    uLock hold(mMutex);
    TiXmlElement* element = Find(aPath, false);
    return element && (!aAttribute || element->Attribute(aAttribute));
}

bool cXMLBundle::Remove(const char* aPath, const char* aAttribute) {
    uLock hold(mMutex);
    TiXmlElement* element = Find(aPath, false);
    if (!element) return false;
    if (aAttribute) {
        element->RemoveAttribute(aAttribute);
        return true;
    }
    return element->Parent()->RemoveChild(element);
}

bool cXMLBundle::FetchBool(const char* aPath, bool& aValue) {
    uLock hold(mMutex);
    const char* text = TextOf(aPath);
    if (!text) return false;
    if (strcmp(text, "True") == 0 || strcmp(text, "true") == 0) {
        aValue = true;
        return true;
    }
    if (strcmp(text, "False") == 0 || strcmp(text, "false") == 0) {
        aValue = false;
        return true;
    }
    return false;
}

template <class T> bool cXMLBundle::FetchNumber(const char* aPath, T& aValue) {
    uLock hold(mMutex);
    return sEnv::ReadNumber(TextOf(aPath), aValue);
}

bool cXMLBundle::FetchUint(const char* aPath, u4& aValue) {
    return FetchNumber(aPath, aValue);
}
bool cXMLBundle::FetchUint(const char* aPath, u8& aValue) {
    return FetchNumber(aPath, aValue);
}
bool cXMLBundle::FetchInt(const char* aPath, i4& aValue) {
    return FetchNumber(aPath, aValue);
}
bool cXMLBundle::FetchInt(const char* aPath, i8& aValue) {
    return FetchNumber(aPath, aValue);
}
bool cXMLBundle::FetchFloat(const char* aPath, float& aValue) {
    return FetchNumber(aPath, aValue);
}
bool cXMLBundle::FetchDouble(const char* aPath, double& aValue) {
    return FetchNumber(aPath, aValue);
}

bool cXMLBundle::FetchText(const char* aPath, cString*& aText) {
    uLock hold(mMutex);
    TiXmlElement* element = Find(aPath, false);
    if (!element) return false;
    const char* text = element->GetText();
    aText = cString::New(text ? text : "", false);
    return aText != nullptr;
}

bool cXMLBundle::StoreText(const char* aPath, const char* aText) {
    uLock hold(mMutex);
    TiXmlElement* element = Find(aPath, true);
    if (!element) return false;
    element->Clear();
    element->LinkEndChild(new TiXmlText(aText ? aText : ""));
    return true;
}

bool cXMLBundle::StoreBool(const char* aPath, bool aValue) {
    return StoreText(aPath, aValue ? "True" : "False");
}

template <class T> bool cXMLBundle::StoreNumber(const char* aPath, T aValue) {
    char text[64];
    return sEnv::WriteNumber(text, sizeof(text), aValue) && StoreText(aPath, text);
}

bool cXMLBundle::StoreUint(const char* aPath, u4 aValue) {
    return StoreNumber(aPath, aValue);
}
bool cXMLBundle::StoreUint(const char* aPath, u8 aValue) {
    return StoreNumber(aPath, aValue);
}
bool cXMLBundle::StoreInt(const char* aPath, i4 aValue) {
    return StoreNumber(aPath, aValue);
}
bool cXMLBundle::StoreInt(const char* aPath, i8 aValue) {
    return StoreNumber(aPath, aValue);
}
bool cXMLBundle::StoreDouble(const char* aPath, double aValue) {
    return StoreNumber(aPath, aValue);
}

} // namespace llk
