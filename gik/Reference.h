// gik::tValue: the reference every node uses where the schema offers the
// pair "pX" / "X": a node, a pending name, or a constant.
#pragma once

#include "gik/Status.h"

class TiXmlElement;

namespace llk {
class cString;
}

namespace gik {

class cRuntime;
class cValue;
class pNode;

class tValue {
public:
    // How the literal form "X" is read.
    enum tLiteral : u1 { kInteger, kReal, kText };

    tValue() = default;
    ~tValue() { Clear(); }
    tValue(const tValue&) = delete;
    tValue& operator=(const tValue&) = delete;

    void Clear();
    bool IsEmpty() const { return !mNode && !mName && !mConstant; }
    bool IsConstant() const { return mConstant != nullptr; }
    bool IsNamed() const { return mNode != nullptr || mName != nullptr; }
    pNode* Node() const { return mNode; }
    llk::cString* PendingName() const { return mName; }
    cValue* Constant() const { return mConstant; }

    // The name is prefixed by the runtime's prefix and interned.
    i4 SetName(cRuntime* aRuntime, const char* aName);
    // Retains aValue.
    void SetConstant(cValue* aValue);
    // A new constant holding a copy of aValue.
    i4 SetConstantCopy(const cValue& aValue);
    void SetNode(pNode* aNode);

    // Reads the pair "p<aName>" / "<aName>" from aElement's children: the
    // named form wins. Absent both: nothing changes and aFound is false.
    // An unreadable literal is kBadNumber.
    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement, const char* aName, tLiteral aLiteral,
             bool* aFound = nullptr);

    // No name: done. Otherwise the node by name without the feature filter
    // (kDangling when absent); with aLink the owner becomes its dependent.
    i4 Resolve(pNode* aOwner, cRuntime* aRuntime, bool aLink);

    // A constant is copied out; a node is read with aOwner as originator; an
    // empty reference gives an absent value and kOk.
    i4 Get(pNode* aOwner, cRuntime* aRuntime, cValue& aValue) const;
    // A constant is replaced; a node is written; empty is kNothing.
    i4 Set(pNode* aOwner, cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator);

private:
    pNode* mNode = nullptr;        // not owned
    llk::cString* mName = nullptr; // retained until resolved
    cValue* mConstant = nullptr;   // retained
};

} // namespace gik
