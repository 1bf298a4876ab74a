// tvk::cFeatures: the typed face of one feature kernel. It turns names into
// nodes, node classes into feature types, kernel values into plain numbers
// and texts, and the nodes a change reached into invalidations for its
// delegate. Every actor with features owns one and uses it only on its own
// thread, so it has no lock.
#pragma once

#include "engine/FeatureTypes.h"
#include "gik/Runtime.h"
#include "kit/String.h"

namespace gik {
class cValue;
class pNode;
class pPort;
} // namespace gik

namespace tvk {

// Container lifecycle: created, prepared (documents may be loaded), realized
// (features usable).
enum tFeaturesState : llk::u4 {
    kFeaturesCreated = 0,
    kFeaturesPrepared = 1,
    kFeaturesRealized = 2
};

class cFeatures : public llk::pObject {
public:
    class pDelegate {
    public:
        virtual ~pDelegate() = default;
        // aName is interned and lives as long as the process. aNotify: the
        // change was made by a call, and the callbacks it starts report back.
        virtual void OnFeatureInvalidated(llk::cString* aName, bool aNotify) = 0;
    };
    // One feature of the walk: its interned name and its description.
    using tVisit = void (*)(llk::cString* aName, const tFeatureInfo& aInfo, void* aContext);

    // aNoCache: a read-only view of a device owned elsewhere; no value is
    // served from a cache, and every changeable feature is polled.
    static cFeatures* New(bool aNoCache) { return Make<cFeatures>(aNoCache); }
    llk::i4 Initialize(bool aNoCache);
    ~cFeatures() override;

    // Lifecycle. Documents load between Prepare and Realize. Prepare
    // chooses the kernel's reading of them (cGlobal::WideReading).
    llk::i4 Prepare();
    // The document the port serves (plain, or a ZIP image), with the port
    // attached under aName.
    llk::i4 Connect(const char* aName, gik::pPort* aPort, bool aReplace,
                    gik::cRuntime::tProcessCallback aCallback, void* aContext);
    // A given document (a path when aPath); the port is attached unless a
    // port of that name already is.
    llk::i4 Connect(const char* aName, gik::pPort* aPort, const char* aDocument, bool aPath,
                    bool aReplace, gik::cRuntime::tProcessCallback aCallback, void* aContext);
    // A document that replaces nodes of the same name, without a port.
    llk::i4 Inject(const char* aDocument, bool aPath);
    // The features become usable whatever the result, which is returned.
    llk::i4 Realize();
    llk::i4 Dismiss();
    bool IsRealized() const { return mState == kFeaturesRealized; }
    gik::cRuntime* Runtime() const { return mRuntime; }

    // Shaping, before Realize.
    void HideCategory(const char* aPath);
    bool RelocateFeature(const char* aName, const char* aPath);
    bool NodeRemove(const char* aName);
    // True starts a group of changes; false reports every feature the group
    // reached to the delegate, as changed by a call.
    void TrackInvalidations(bool aStart);
    void SetDelegate(pDelegate* aDelegate) { mDelegate = aDelegate; }
    pDelegate* GetDelegate() const { return mDelegate; }

    // Queries. Lists fill aSize records of aStructSize bytes at most (none
    // without an array) and count every feature in aFound.
    llk::i4 FeaturesIterate(tVisit aVisit, void* aContext);
    llk::i4 FeaturesList(tFeatureInfo* aArray, llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound);
    llk::i4 AffectedFeaturesList(const char* aName, tFeatureInfo* aArray, llk::u4 aStructSize,
                                 llk::u4 aSize, llk::u4& aFound);
    llk::i4 SelectedFeaturesList(const char* aName, tFeatureInfo* aArray, llk::u4 aStructSize,
                                 llk::u4 aSize, llk::u4& aFound);
    llk::i4 FeatureQuery(const char* aName, tFeatureInfo& aInfo);
    // An unavailable feature is neither readable nor writeable; only an
    // unknown one fails.
    llk::i4 FeatureProbe(const char* aName, bool& aReadable, bool& aWriteable);
    llk::i4 FeatureType(const char* aName, tFeatureData& aType);

    // Values. Null required outputs give kFeatureNullOutput; a feature of
    // another type gives kFeatureWrongType.
    llk::i4 FeatureIntGet(const char* aName, llk::i8* aValue);
    llk::i4 FeatureIntSet(const char* aName, llk::i8 aValue);
    llk::i4 FeatureIntRange(const char* aName, llk::i8* aMin, llk::i8* aMax);
    llk::i4 FeatureIntIncrement(const char* aName, llk::i8* aValue, bool& aGotOne);
    llk::i4 FeatureFloatGet(const char* aName, double* aValue);
    llk::i4 FeatureFloatSet(const char* aName, double aValue);
    llk::i4 FeatureFloatRange(const char* aName, double* aMin, double* aMax);
    llk::i4 FeatureFloatIncrement(const char* aName, double* aValue, bool& aGotOne);
    // A null buffer gives the size the text needs; a short one gets as much
    // of the text as fits and a terminator. aSize comes back as the bytes
    // needed (no buffer) or written.
    llk::i4 FeatureStringGet(const char* aName, char* aBuffer, llk::u4& aSize);
    llk::i4 FeatureStringSet(const char* aName, const char* aValue);
    llk::i4 FeatureEnumGet(const char* aName, const char*& aValue);
    llk::i4 FeatureEnumSet(const char* aName, const char* aValue);
    // No array or a zero length: aLength gets the count; otherwise as many
    // names as fit, and aLength gets how many.
    llk::i4 FeatureEnumRange(const char* aName, const char** aArray, llk::u4& aLength);
    llk::i4 FeatureEnumValueIsAvailable(const char* aName, const char* aValue, bool& aAvailable);
    llk::i4 FeatureEnumValueAsInteger(const char* aName, const char* aValue, llk::i8& aInteger);
    llk::i4 FeatureEnumValueAsString(const char* aName, llk::i8 aValue, const char*& aText);
    llk::i4 FeatureEnumValueInfo(const char* aName, const char* aValue, tFeatureEnumEntry& aEntry);
    llk::i4 FeatureBoolGet(const char* aName, bool* aValue);
    llk::i4 FeatureBoolSet(const char* aName, bool aValue);
    llk::i4 FeatureCommandIsDone(const char* aName, bool* aDone);
    llk::i4 FeatureCommandExecute(const char* aName);
    // Raw bytes of the register or block under any feature, at most its
    // length; aDone gets the bytes moved.
    llk::i4 FeatureRawGet(const char* aName, void* aBuffer, llk::u4 aSize, llk::u4& aDone);
    llk::i4 FeatureRawSet(const char* aName, const void* aBuffer, llk::u4 aSize, llk::u4& aDone);
    llk::i4 FeatureRawLen(const char* aName, llk::u4* aLength);
    // Drops what any node of that name (a feature or not) and all that
    // depends on it hold; the delegate hears through TrackInvalidations.
    llk::i4 FeatureInvalidate(const char* aName);

    // The same for nodes that need not be features.
    bool NodeExists(const char* aName);
    llk::i4 NodeType(const char* aName, tFeatureData& aType);
    llk::i4 NodeIntGet(const char* aName, llk::i8& aValue);
    llk::i4 NodeIntSet(const char* aName, llk::i8 aValue);
    llk::i4 NodeBoolGet(const char* aName, bool& aValue);
    llk::i4 NodeBoolSet(const char* aName, bool aValue);

    // A kernel class tag as a feature type.
    static tFeatureData Class2Type(gik::pNode* aNode);
    // A text handed out to callers: the global's copy, which lasts until the
    // library is unloaded (the kernel's go with its last runtime). Null
    // stays null.
    static const char* Lasting(llk::cString* aText);

private:
    // The node of a usable feature (or any node when not aFeatureOnly), of
    // type aType unless that is kFeatureUnknown.
    llk::i4 Seek(const char* aName, tFeatureData aType, gik::pNode*& aNode,
                 bool aFeatureOnly = true);
    // The value of the node of aName (a feature of aType, or any node when
    // not aFeatureOnly), converted into aOut.
    template <class T, class F>
    llk::i4 Get(const char* aName, tFeatureData aType, bool aFeatureOnly, T* aOut, F aConvert);
    // Sets the node of aName to aValue; a null value is out of memory.
    llk::i4 Set(const char* aName, tFeatureData aType, bool aFeatureOnly,
                const gik::cValue* aValue);
    // A set's road: clear the poked list, set, and tell the delegate of every
    // feature reached, the node itself last.
    llk::i4 SetNode(gik::pNode* aNode, const gik::cValue* aValue);
    void Announce(gik::pNode* aNode);
    llk::i4 Range(const char* aName, tFeatureData aType, gik::cValue& aMin, gik::cValue& aMax);
    llk::i4 Increment(const char* aName, tFeatureData aType, gik::cValue& aValue);
    llk::i4 FillFeatureInfo(gik::pNode* aNode, tFeatureInfo& aInfo);
    // The affected (0) or selected (1) features of a node, cached in its loot.
    llk::i4 RelatedList(gik::pNode* aNode, int aWhich, llk::cObjectList*& aList);
    llk::i4 RelatedFeaturesList(const char* aName, int aWhich, tFeatureInfo* aArray,
                                llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound);
    // Fills records for the nodes of aNodes; aSkipInvisible leaves out what
    // the user is not meant to see.
    llk::i4 InfoList(llk::cObjectList* aNodes, bool aSkipInvisible, tFeatureInfo* aArray,
                     llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound);
    llk::i4 Raw(const char* aName, void* aInto, const void* aFrom, llk::u4 aSize, llk::u4& aDone);

    bool mNoCache = false;
    tFeaturesState mState = kFeaturesCreated;
    gik::cRuntime* mRuntime = nullptr;
    pDelegate* mDelegate = nullptr; // not owned
};

// One registered invalidation callback: what to call, with what, on which
// name.
class cFCallback : public llk::pObject {
public:
    static cFCallback* New(llk::cString* aName, tFCallback aCallback, void* aContext,
                           TvkHandle_t aHandle) {
        return Make<cFCallback>(aName, aCallback, aContext, aHandle);
    }
    llk::i4 Initialize(llk::cString* aName, tFCallback aCallback, void* aContext,
                       TvkHandle_t aHandle) {
        mName = llk::Retained(aName);
        mCallback = aCallback;
        mContext = aContext;
        mHandle = aHandle;
        return mName ? llk::kOk : llk::kNoMemory;
    }
    ~cFCallback() override { llk::ReleaseAndClear(mName); }

    bool Is(const char* aName, tFCallback aCallback) const;
    void Call(const char* aName) const { mCallback(mHandle, aName, mContext); }
    llk::cString* Name() const { return mName; }
    tFCallback Callback() const { return mCallback; }

private:
    llk::cString* mName = nullptr;
    tFCallback mCallback = nullptr;
    void* mContext = nullptr;
    TvkHandle_t mHandle = nullptr;
};

} // namespace tvk
