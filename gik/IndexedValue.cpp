#include "gik/IndexedValue.h"

#include <cstring>
#include <new>
#include <tinyxml.h>

#include "gik/Node.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

tIndexedValue::~tIndexedValue() {
    for (tEntry* entry : mEntries)
        delete entry;
}

namespace {

// One "X" literal or "pX" name into aValue.
i4 ReadEntry(cRuntime* aRuntime, const TiXmlElement* aElement, bool aNamed,
             tValue::tLiteral aLiteral, tValue& aValue) {
    const char* text = aElement->GetText();
    if (aNamed) return aValue.SetName(aRuntime, text);
    cValue literal;
    if (aLiteral == tValue::kReal) {
        double v = 0.0;
        if (!sText::ReadReal(text, v)) return kBadNumber;
        literal.SetReal(v);
    } else {
        i8 v = 0;
        if (!sText::ReadInteger(text, v)) return kBadNumber;
        literal.SetSigned(v);
    }
    return aValue.SetConstantCopy(literal);
}

} // namespace

i4 tIndexedValue::Parse(cRuntime* aRuntime, const TiXmlElement* aElement,
                        tValue::tLiteral aLiteral) {
    i4 status = index.SetName(aRuntime, sText::ChildText(aElement, "pIndex"));
    if (status != kOk) return status;
    for (const TiXmlElement* c = aElement->FirstChildElement(); c; c = c->NextSiblingElement()) {
        const char* kind = c->Value();
        bool named = strcmp(kind, "pValueIndexed") == 0;
        if (!named && strcmp(kind, "ValueIndexed") != 0) continue;
        auto* entry = new (std::nothrow) tEntry();
        if (!entry) return kNoMemory;
        try {
            mEntries.push_back(entry);
        } catch (...) {
            delete entry;
            return kNoMemory;
        }
        u8 key = 0;
        if (!sText::ReadAddress(c->Attribute("Index"), key)) return kBadNumber;
        entry->key = static_cast<i8>(key);
        if ((status = ReadEntry(aRuntime, c, named, aLiteral, entry->value)) != kOk) return status;
    }
    if (const TiXmlElement* named = sText::Child(aElement, "pValueDefault"))
        return ReadEntry(aRuntime, named, true, aLiteral, fallback);
    if (const TiXmlElement* literal = sText::Child(aElement, "ValueDefault"))
        return ReadEntry(aRuntime, literal, false, aLiteral, fallback);
    return kOk;
}

i4 tIndexedValue::Resolve(pNode* aOwner, cRuntime* aRuntime) {
    i4 status = index.Resolve(aOwner, aRuntime, true);
    for (tEntry* entry : mEntries)
        if (status == kOk) status = entry->value.Resolve(aOwner, aRuntime, true);
    return status == kOk ? fallback.Resolve(aOwner, aRuntime, true) : status;
}

void tIndexedValue::SetImplemented(bool aImplemented) const {
    if (pNode* n = index.Node()) n->SetImplemented(aImplemented);
    for (tEntry* entry : mEntries)
        if (pNode* n = entry->value.Node()) n->SetImplemented(aImplemented);
    if (pNode* n = fallback.Node()) n->SetImplemented(aImplemented);
}

i4 tIndexedValue::Select(pNode* aOwner, cRuntime* aRuntime, tValue*& aChosen) {
    cValue at;
    i4 status = index.Get(aOwner, aRuntime, at);
    if (status != kOk) return status;
    if (at.IsAbsent()) return kNothing;
    i8 key = at.Sint();
    for (tEntry* entry : mEntries)
        if (entry->key == key) {
            aChosen = &entry->value;
            return kOk;
        }
    if (fallback.IsEmpty()) return kNothing;
    aChosen = &fallback;
    return kOk;
}

} // namespace gik
