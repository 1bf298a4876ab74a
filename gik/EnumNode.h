// gik::cEnumNode: named entries over a numeric value. Entries
// are found by name or by number, in document order: the first match
// decides.
#pragma once

#include <vector>

#include "gik/ValueNode.h"

namespace gik {

class cEnumNode : public pValueNode {
public:
    static cEnumNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cEnumNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    ~cEnumNode() override;
    u4 ClassCode() const override { return kTagEnumeration; }
    const char* ClassName() const override { return "cEnumNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    // The base test, the Value target's, and at least one implemented entry.
    bool IsImplemented(cRuntime* aRuntime) override;
    // aValue: an entry name (text) or a number.
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    // The current entry's name.
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    using pNode::GetRange;
    // The names (text values) of the implemented entries, in document order,
    // built by the first call and kept for the node's life. The list belongs
    // to the node.
    i4 GetRange(cRuntime* aRuntime, llk::cObjectList*& aList, pNode* aOriginator);

    // The integer value of the current entry (108 when the value is no
    // entry's).
    i4 GetIntValue(cRuntime* aRuntime, cValue& aValue);
    // The smallest and largest value of the implemented entries; kNoValue
    // when none is.
    i4 GetNumberRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum);

    i4 IsValueAvailable(cRuntime* aRuntime, const cValue& aValue, bool& aAvailable);
    i4 GetValueAsInteger(cRuntime* aRuntime, const cValue& aValue, i8& aInteger);
    // The entry's name; aText belongs to the node.
    i4 GetValueAsString(cRuntime* aRuntime, const cValue& aValue, llk::cString*& aText);
    // Outputs belong to the node; the display name reads as the name when
    // there is none; the description may be null.
    i4 GetValueNames(cRuntime* aRuntime, const cValue& aValue, llk::cString*& aName,
                     llk::cString*& aDescription, llk::cString*& aDisplayName);
    i4 GetValueInfo(cRuntime* aRuntime, const cValue& aValue, tVisibility& aVisibility,
                    llk::cString*& aToolTip, llk::cString*& aNameSpace);

    u4 EntryCount() const { return static_cast<u4>(mEntries.size()); }

private:
    struct tEntry {
        tValue value;
        tValue available;
        tValue implemented;
        cValue* name = nullptr; // text
        llk::cString* description = nullptr;
        llk::cString* displayName = nullptr;
        tVisibility visibility = kVisibilityBeginner;
        llk::cString* toolTip = nullptr;
        llk::cString* nameSpace = nullptr;
        ~tEntry();
    };

    // The first entry that matches aValue (by name for a text, by number
    // otherwise); kRejected when none, or when it is not implemented, or,
    // with aAvailable, not available.
    i4 Find(cRuntime* aRuntime, const cValue& aValue, bool aAvailable, u4& aIndex);
    bool EntryFlag(cRuntime* aRuntime, const tValue& aFlag);

    std::vector<tEntry*> mEntries;
    llk::cObjectList* mRange = nullptr;
};

} // namespace gik
