// gik::cMaskedIntNode: one "StructEntry" of a "StructReg", a bit
// field of the shared holder register, with its own cached value.
#pragma once

#include "gik/IntRegNode.h"

namespace gik {

class cMaskedIntNode : public pNode {
public:
    static cMaskedIntNode* New(cRuntime* aRuntime, const TiXmlElement* aElement,
                               cIntRegNode* aHolder) {
        return Make<cMaskedIntNode>(aRuntime, aElement, aHolder);
    }
    // The holder outlives the entry in the node table; it is not retained.
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement, cIntRegNode* aHolder);
    ~cMaskedIntNode() override;
    u4 ClassCode() const override { return kTagStructEntry; }
    const char* ClassName() const override { return "cMaskedIntNode"; }

    // Also follows the holder: an entry hears of its holder's changes only
    // once it is a node of the table, so a duplicate that is dropped or
    // replaced is never linked.
    i4 Resolve(cRuntime* aRuntime) override;
    bool IsNoCache(cRuntime* aRuntime) override;
    bool IsWriteAround(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    bool IsWriteable(cRuntime* aRuntime) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;
    void OnInvalidate(cRuntime* aRuntime, cNotification* aNotification) override;

    cIntRegNode* Holder() const { return mHolder; }
    const tBitField& Field() const { return mField; }

private:
    cIntRegNode* mHolder = nullptr;
    cValue* mCache = nullptr;
    bool mCached = false;
    tBitField mField;
};

} // namespace gik
