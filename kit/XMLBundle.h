// Typed values in an XML settings document, addressed by slash paths such as
// "Settings/Log/Enable".
#pragma once

#include "kit/Mutex.h"
#include "kit/String.h"

class TiXmlDocument;
class TiXmlElement;

namespace llk {

class cXMLBundle : public pObject {
public:
    // Loads aPath; a missing file (kNotFound) or a parse error (kBadArgument)
    // makes New fail. aMutex, when given, guards every call.
    static cXMLBundle* New(const char* aPath, cMutex* aMutex = nullptr) {
        return Make<cXMLBundle>(aPath, aMutex);
    }
    i4 Initialize(const char* aPath, cMutex* aMutex);
    ~cXMLBundle() override;
    u4 ClassCode() const override { return 72; }
    const char* ClassName() const override { return "cXMLBundle"; }

    // Replaces the document only on success.
    i4 Load(const char* aPath);
    i4 Save(const char* aPath);
    // An empty document with its declaration.
    void Reset();

    bool Probe(const char* aPath, const char* aAttribute);
    bool Remove(const char* aPath, const char* aAttribute);

    // "True"/"true" and "False"/"false" only.
    bool FetchBool(const char* aPath, bool& aValue);
    // Decimal, or hexadecimal with "0x".
    bool FetchUint(const char* aPath, u4& aValue);
    bool FetchUint(const char* aPath, u8& aValue);
    bool FetchInt(const char* aPath, i4& aValue);
    bool FetchInt(const char* aPath, i8& aValue);
    bool FetchFloat(const char* aPath, float& aValue);
    bool FetchDouble(const char* aPath, double& aValue);
    // A new autoreleased string of the element's text.
    bool FetchText(const char* aPath, cString*& aText);

    // Each store creates missing elements along the path.
    bool StoreBool(const char* aPath, bool aValue);
    bool StoreUint(const char* aPath, u4 aValue);
    bool StoreUint(const char* aPath, u8 aValue);
    bool StoreInt(const char* aPath, i4 aValue);
    bool StoreInt(const char* aPath, i8 aValue);
    bool StoreDouble(const char* aPath, double aValue);
    bool StoreText(const char* aPath, const char* aText);

private:
    TiXmlElement* Find(const char* aPath, bool aCreate);
    const char* TextOf(const char* aPath);
    template <class T> bool FetchNumber(const char* aPath, T& aValue);
    template <class T> bool StoreNumber(const char* aPath, T aValue);

    TiXmlDocument* mDocument = nullptr;
    cMutex* mMutex = nullptr;
};

} // namespace llk
