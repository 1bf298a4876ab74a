#include "gik/Location.h"

#include <new>
#include <tinyxml.h>

#include "gik/Node.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

tLocation::~tLocation() {
    llk::ReleaseAndClear(computed);
}

i4 tLocation::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    computed = new (std::nothrow) cValue();
    if (!computed) return kNoMemory;
    if (!aElement) return kOk;
    bool found = false;
    i4 status = address.Parse(aRuntime, aElement, "Address", tValue::kInteger, &found);
    if (status != kOk) return status;
    if (!found) {
        cValue zero;
        zero.SetSigned(0);
        if ((status = address.SetConstantCopy(zero)) != kOk) return status;
    }
    if ((status = index.Parse(aRuntime, aElement, "Index", tValue::kInteger, &found)) != kOk)
        return status;
    if (found) {
        const TiXmlElement* element = sText::Child(aElement, "pIndex");
        if (!element) element = sText::Child(aElement, "Index");
        if (const char* offset = element->Attribute("Offset")) {
            i8 v = 0;
            if (!sText::ReadInteger(offset, v) || v < 0 || v > 0xFFFFFFFFll) return kBadNumber;
            multiplier = static_cast<u4>(v);
        }
    }
    return kOk;
}

i4 tLocation::Resolve(pNode* aOwner, cRuntime* aRuntime) {
    i4 status = address.Resolve(aOwner, aRuntime, true);
    if (status == kOk) status = index.Resolve(aOwner, aRuntime, true);
    return status;
}

void tLocation::SetImplemented(bool aImplemented) const {
    if (pNode* n = address.Node()) n->SetImplemented(aImplemented);
    if (pNode* n = index.Node()) n->SetImplemented(aImplemented);
}

i4 tLocation::Compute(pNode* aOwner, cRuntime* aRuntime, u8& aAddress) {
    cValue a, i;
    i4 status = address.Get(aOwner, aRuntime, a);
    if (status != kOk) return status;
    if ((status = index.Get(aOwner, aRuntime, i)) != kOk) return status;
    aAddress = a.Uint() + i.Uint() * static_cast<u8>(multiplier);
    if (computed) computed->SetUnsigned(aAddress);
    return kOk;
}

} // namespace gik
