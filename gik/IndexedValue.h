// gik::tIndexedValue: the value of an Integer or Float node that has a
// "pIndex", in the wide reading. The index node's value picks the
// "ValueIndexed" (a literal) or "pValueIndexed" (a node) entry whose Index
// attribute equals it; when none does, "ValueDefault" or "pValueDefault"
// stands. The chosen entry behaves as "Value" or "pValue" would: reads,
// ranges and writes go to it.
#pragma once

#include <vector>

#include "gik/Reference.h"

namespace gik {

struct tIndexedValue {
    tValue index;
    tValue fallback;

    tIndexedValue() = default;
    ~tIndexedValue();
    tIndexedValue(const tIndexedValue&) = delete;
    tIndexedValue& operator=(const tIndexedValue&) = delete;

    // The entries of aElement in document order; aLiteral reads the
    // literal forms. kBadNumber for an Index attribute that is missing or
    // unreadable, or a literal that is.
    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement, tValue::tLiteral aLiteral);
    // The owner follows the index and every entry that is a node.
    i4 Resolve(pNode* aOwner, cRuntime* aRuntime);
    void SetImplemented(bool aImplemented) const;
    // The entry the index picks now: a failure of the index passes
    // through; no matching entry and no default is kNothing.
    i4 Select(pNode* aOwner, cRuntime* aRuntime, tValue*& aChosen);

private:
    struct tEntry {
        i8 key = 0;
        tValue value;
    };
    std::vector<tEntry*> mEntries; // owned
};

} // namespace gik
