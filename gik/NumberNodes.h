// gik::cIntegerNode and gik::cFloatNode: typed views over a
// value, with a range and an increment checked on every set.
#pragma once

#include <vector>

#include "gik/IndexedValue.h"
#include "gik/ValueNode.h"

namespace gik {

// The shape both share: Min, Max, Value and Inc references.
class pNumberNode : public pValueNode {
public:
    ~pNumberNode() override;
    const char* ClassName() const override { return "pNumberNode"; }

    i4 Resolve(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;
    i4 GetIncrement(cRuntime* aRuntime, cValue& aIncrement, pNode* aOriginator) override;

protected:
    // The literal kind and the default bounds differ.
    i4 ParseNumber(cRuntime* aRuntime, const TiXmlElement* aElement, bool aReal);
    // The reference that stands for the value now: Value, or in the wide
    // reading the entry a "pIndex" picks.
    i4 Chosen(cRuntime* aRuntime, tValue*& aValue);
    // Writes aValue to the chosen reference, and in the wide reading to the
    // copies around it, in document order; the first failure ends it.
    i4 Write(cRuntime* aRuntime, const cValue* aValue);
    // The range without the copies' bounds.
    i4 OwnRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum);

    tValue mMin;
    tValue mMax;
    tValue mInc;
    tIndexedValue* mIndexed = nullptr; // the wide reading's "pIndex"
    std::vector<tValue*> mCopies;      // the wide reading's "pValueCopy", owned
    size_t mCopiesBefore = 0;          // how many come before "pValue"
    bool mReal = false;
};

class cIntegerNode : public pNumberNode {
public:
    static cIntegerNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cIntegerNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagInteger; }
    const char* ClassName() const override { return "cIntegerNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
};

class cFloatNode : public pNumberNode {
public:
    static cFloatNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cFloatNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagFloat; }
    const char* ClassName() const override { return "cFloatNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
};

} // namespace gik
