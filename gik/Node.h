// gik::pNode: the abstract base of every node of the feature graph.
// It reads the elements common to all node types, resolves
// references once all documents are in, holds the dependency lists and
// answers the access questions.
#pragma once

#include "gik/Nesting.h"
#include "gik/Object.h"
#include "gik/Reference.h"

class TiXmlElement;

namespace llk {
class cObjectList;
class cString;
} // namespace llk

namespace gik {

class cNotification;
class cRuntime;
class cValue;

class pNode : public pObject {
public:
    enum tVisibility : u4 {
        kVisibilityUnknown = 0,
        kVisibilityBeginner = 1,
        kVisibilityExpert = 2,
        kVisibilityGuru = 3,
        kVisibilityInvisible = 4,
    };
    enum tFlag : u4 {
        kFlagReadable = 1u << 0,
        kFlagWriteable = 1u << 1,
        kFlagNoCache = 1u << 2,
        kFlagWriteAround = 1u << 3,
        kFlagInvalidators = 1u << 4,
        kFlagStreamable = 1u << 5,
    };

    // Class tags, shared with the layer above.
    static constexpr u4 kTagIntReg = 0x1000010a;
    static constexpr u4 kTagMaskedIntReg = 0x1000010b;
    static constexpr u4 kTagStringReg = 0x1000010c;
    static constexpr u4 kTagFloatReg = 0x1000010d;
    static constexpr u4 kTagInteger = 0x1000020e;
    static constexpr u4 kTagFloat = 0x1000020f;
    static constexpr u4 kTagBoolean = 0x10000210;
    static constexpr u4 kTagCommand = 0x10000211;
    static constexpr u4 kTagEnumeration = 0x10000212;
    static constexpr u4 kTagString = 0x10000213;
    static constexpr u4 kTagConverter = 0x10000214;
    static constexpr u4 kTagSwissKnife = 0x10000215;
    static constexpr u4 kTagStructEntry = 0x10000216;
    static constexpr u4 kTagMemory = 0x10000217;
    static constexpr u4 kTagPort = 0;

    ~pNode() override;
    // Abstract: concrete classes take (runtime, element) and parse.
    i4 Initialize() override { return kNotProvided; }
    const char* ClassName() const override { return "pNode"; }
    // The class tag: the node's ClassCode.
    u4 ClassType() const { return ClassCode(); }

    // The node's operations.
    virtual i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement);
    virtual bool IsNoCache(cRuntime* aRuntime);
    virtual bool IsWriteAround(cRuntime* aRuntime);
    virtual i4 Resolve(cRuntime* aRuntime);
    virtual pNode* Target(cRuntime* aRuntime);
    virtual bool IsImplementedLatched(cRuntime* aRuntime);
    virtual bool IsImplemented(cRuntime* aRuntime);
    virtual void SetImplemented(bool aImplemented);
    virtual bool IsReadable(cRuntime* aRuntime);
    virtual bool CanRead();
    virtual bool IsWriteable(cRuntime* aRuntime);
    virtual bool CanWrite();
    virtual bool IsAvailable(cRuntime* aRuntime);
    virtual bool IsLocked(cRuntime* aRuntime);
    virtual bool IsStreamable(cRuntime* aRuntime);
    virtual bool HasInvalidators(cRuntime* aRuntime);
    // aDisplay: the display name (may be null); otherwise the name.
    virtual llk::cString* Name(bool aDisplay);
    // aTooltip: the tooltip; otherwise the description. Either may be null.
    virtual llk::cString* Help(bool aTooltip);
    virtual llk::cString* Unit();
    virtual llk::cString* NameSpace();
    virtual llk::cString* Representation();
    virtual tVisibility Visibility();
    virtual u8 PollingTime();
    // A full invalidation that starts at this node.
    virtual void Invalidate(cRuntime* aRuntime);
    // aValue may be null where a class allows it (a command's execution).
    virtual i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator);
    // On success aValue holds the result; it may be absent ("no value").
    virtual i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator);
    virtual i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode* aOriginator);
    // An absent result means no increment.
    virtual i4 GetIncrement(cRuntime* aRuntime, cValue& aIncrement, pNode* aOriginator);
    // Appends the nodes that follow this one (hidden ones are walked
    // through, not added), and what they reach in turn; once each.
    virtual i4 Affected(cRuntime* aRuntime, llk::cObjectList* aList);
    // The same over the nodes this one selects.
    virtual i4 Selected(cRuntime* aRuntime, llk::cObjectList* aList);
    virtual u4 ComputeAccess();
    // Adds this node to aTarget's dependents.
    virtual i4 LinkTo(cRuntime* aRuntime, pNode* aTarget);
    virtual void OnInvalidate(cRuntime* aRuntime, cNotification* aNotification);
    virtual void OnBroadcast(cRuntime* aRuntime, cNotification* aNotification);
    virtual void MergeAccess(u4 aBits);

    // Non-virtual.
    const char* NameText() const;
    llk::cString* GetPath() const { return mPath; }
    void SetPath(llk::cString* aPath);
    void Hide() { mHidden = true; }
    bool IsHidden() const { return mHidden; }
    void SetLoot(llk::pObject* aObject);
    llk::pObject* GetLoot() const { return mLoot; }
    // A node is in a list at most once.
    i4 AddDependent(pNode* aNode);
    llk::cObjectList* Dependents() const { return mDependents; }
    llk::cObjectList* SelectedNodes() const { return mSelected; }
    // Sets (never clears) the no-cache and write-around bits.
    void SetNoCache(bool aNoCache, bool aWriteAround);
    u4 Flags() const { return mFlags; }
    // For the runtime, before the node is stored: a name of its choosing.
    void Rename(llk::cString* aName);
    void SetAccessBits(u4 aBits) { mFlags = (mFlags & ~3u) | (aBits & 3u); }

    // Marks kept for the runtime: the generation of the poked list this
    // node was last put on, whether it is a feature, and whether it has
    // left the table.
    u4 mPokedMark = 0;
    bool mListed = false;
    bool mGone = false;

protected:
    pNode() = default;

    // Reads a tValue pair, logging nothing; see tValue::Parse.
    i4 ParseValue(cRuntime* aRuntime, const TiXmlElement* aElement, const char* aName,
                  tValue& aValue, tValue::tLiteral aLiteral, bool* aFound = nullptr);
    // The base's part of SetImplemented: the three "pIs" targets and the latch.
    void SetImplementedBase(bool aImplemented);
    // Runs aPropagate, which passes SetImplemented on to the nodes this one
    // stands on, unless this node is already doing so (a cycle) or the walk
    // is too deep.
    template <class F> void PropagateImplemented(F aPropagate) {
        if (mImplementing) return;
        uNest nest;
        if (!nest) return;
        mImplementing = true;
        aPropagate();
        mImplementing = false;
    }
    // Tells the dependents of a change (a successful SetValue).
    void Notify(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator);
    // Access bits: the low two of the flags.
    u4 OwnAccess() const { return mFlags & 3u; }

    llk::cString* mName = nullptr;
    llk::cString* mNameSpace = nullptr;
    llk::cString* mUnit = nullptr;
    llk::cString* mDisplayName = nullptr;
    llk::cString* mDescription = nullptr;
    llk::cString* mToolTip = nullptr;
    llk::cString* mRepresentation = nullptr;
    llk::cString* mPath = nullptr;
    tVisibility mVisibility = kVisibilityUnknown;
    u8 mPollingTime = 0;
    bool mHidden = false;
    u4 mFlags = 0;
    llk::pObject* mLoot = nullptr;
    llk::cObjectList* mDependents = nullptr;
    llk::cObjectList* mSelected = nullptr;
    llk::cObjectList* mSelectedNames = nullptr;
    llk::cObjectList* mInvalidatorNames = nullptr;
    tValue mIsImplemented;
    tValue mIsAvailable;
    tValue mIsLocked;
    bool mLatch = false;
    bool mImplementing = false; // inside SetImplemented: cuts cycles
};

} // namespace gik
