// The caller-side half of an engine object: lives in the handle table and
// forwards each call to its actor.
#pragma once

#include "engine/FeatureTypes.h"
#include "kit/Object.h"
#include "kit/Request.h"
#include "kit/String.h"

namespace tvk {

class cAggregate;
class pActor;

// The wait of a proxy call for its actor.
constexpr llk::u4 kRequestTimeoutMs = 5000;

// Class type constants by which the handle table is searched.
constexpr llk::u4 kTypeProducer = 0x20000001;
constexpr llk::u4 kTypeHelper = 0x20000002;
constexpr llk::u4 kTypeUnionListener = 0x20000003;
constexpr llk::u4 kTypeGlobal = 0x20000004;
constexpr llk::u4 kTypeSystemProxy = 0x20000006;
constexpr llk::u4 kTypeSystemActor = 0x20000007;
constexpr llk::u4 kTypeInterfaceProxy = 0x20000008;
constexpr llk::u4 kTypeInterfaceActor = 0x20000009;
constexpr llk::u4 kTypeSupervisorProxy = 0x2000000e;
constexpr llk::u4 kTypeSupervisorActor = 0x2000000f;
constexpr llk::u4 kTypeCameraProxy = 0x20000010;
constexpr llk::u4 kTypeCameraActor = 0x20000011;
constexpr llk::u4 kTypeEventListener = 0x20000012;
constexpr llk::u4 kTypeAncillaryData = 0x20000013;

class pProxy : public llk::pObject {
public:
    ~pProxy() override { llk::ReleaseAndClear(mIdentifier); }

    virtual llk::u4 ClassType() const = 0;
    virtual llk::u4 Handle() const { return mHandle; }
    // The actor this proxy owns, or null.
    virtual pActor* Actor() const { return nullptr; }

    // The outcome of the request, 7 without an actor, 2 without memory.
    llk::i4 SendRequest(llk::u4 aUid, llk::u4 aTag, void* aContext, llk::u1 aPriority,
                        llk::u4 aTimeoutMs = kRequestTimeoutMs);
    llk::i4 SendRequest(llk::cRequest* aRequest, llk::u1 aPriority);
    llk::i4 PostMessage(llk::cMessage* aMessage, llk::u1 aPriority);
    llk::i4 PostFlash(llk::u4 aUid, llk::u4 aArgument, llk::u1 aPriority);

    // The feature forms: each a request of uid 10 to the actor, outputs
    // copied back on success. Null outputs are not written.
    llk::i4 ListFeatures(tFeatureInfo* aArray, llk::u4 aStructSize, llk::u4 aLength,
                         llk::u4* aFound);
    llk::i4 ListAffectedFeatures(const char* aName, tFeatureInfo* aArray, llk::u4 aStructSize,
                                 llk::u4 aLength, llk::u4* aFound);
    llk::i4 ListSelectedFeatures(const char* aName, tFeatureInfo* aArray, llk::u4 aStructSize,
                                 llk::u4 aLength, llk::u4* aFound);
    llk::i4 InfoFeature(const char* aName, tFeatureInfo* aInfo, llk::u4 aSize);
    llk::i4 StatFeature(const char* aName, bool* aReadable, bool* aWriteable);
    llk::i4 SizeFeature(const char* aName, tFeatureData aType, llk::u4* aSize);
    // aValue takes the type's value; strings and raw bytes also fill aFilled.
    llk::i4 PeekFeature(const char* aName, tFeatureData aType, void* aValue, llk::u4 aLength,
                        llk::u4* aFilled);
    llk::i4 PokeFeature(const char* aName, tFeatureData aType, const void* aValue, llk::u4 aLength);
    // Integer and float bounds.
    llk::i4 RngeFeature(const char* aName, tFeatureData aType, void* aMin, void* aMax);
    // Enumeration entries; aFilled gets the count without an array.
    llk::i4 RngeFeature(const char* aName, const char** aArray, llk::u4 aLength, llk::u4* aFilled);
    llk::i4 QIncFeature(const char* aName, tFeatureData aType, void* aValue, bool* aGotOne);
    llk::i4 IsEnumValueAvailable(const char* aName, const char* aValue, bool* aAvailable);
    llk::i4 GetEnumValueAsInteger(const char* aName, const char* aValue, llk::i8* aInteger);
    llk::i4 GetEnumValueAsString(const char* aName, llk::i8 aValue, const char** aString);
    llk::i4 GetEnumValueInfo(const char* aName, const char* aValue, tFeatureEnumEntry* aEntry);
    llk::i4 RegisterCBFeature(const char* aName, tFCallback aCallback, void* aContext);
    llk::i4 UnregisterCBFeature(const char* aName, tFCallback aCallback);

    void SetHandle(llk::u4 aHandle) { mHandle = aHandle; }
    llk::cString* Identifier() const { return mIdentifier; }
    const pProxy* Parent() const { return mParent; }
    cAggregate* Aggregate() const { return mAggregate; }

protected:
    // Attaches a new actor to its aggregate's scheduler.
    llk::i4 StartActor(pActor* aActor);
    // Ends an actor from a concrete proxy's destructor: stops its turns,
    // dismisses it, detaches it.
    static void EndActor(pActor* aActor);
    void SetIdentifier(llk::cString* aIdentifier) { llk::Assign(mIdentifier, aIdentifier); }
    void SetParent(const pProxy* aParent) { mParent = aParent; }
    void SetAggregate(cAggregate* aAggregate) { mAggregate = aAggregate; }

private:
    llk::cString* mIdentifier = nullptr; // owning, may be absent
    const pProxy* mParent = nullptr;     // compared, never called
    cAggregate* mAggregate = nullptr;    // not owning
    llk::u4 mHandle = 0;                 // 0 while not in the handle table
};

} // namespace tvk
