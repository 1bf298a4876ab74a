// pActor's feature half: the feature requests (uid 10), invalidation
// callbacks with their registration, poll timers and delivery on the
// offloader, and the writes deferred while a callback is still reporting.
#include <algorithm>
#include <cstring>

#include "engine/Actor.h"
#include "engine/FeatureRequests.h"
#include "engine/Global.h"
#include "engine/RequestIds.h"
#include "kit/Env.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"

namespace tvk {

namespace {

// Poll intervals above this would run into the uids of other timers.
constexpr llk::u8 kLongestPoll = ~kPollTimer;

// Runs one user callback on an offloader thread; the tag makes the flat
// setters refuse to run inside it.
llk::pObject* InvalidationCall(llk::pObject* aCallback, llk::pObject* aName) {
    llk::sEnv::SetThreadTag(kTagFeatureCallback);
    static_cast<cFCallback*>(aCallback)->Call(static_cast<llk::cString*>(aName)->Chars());
    llk::sEnv::SetThreadTag(0);
    return nullptr;
}

// Offloaded invalidation calls of one callback on one name, or all of them
// (a null key).
struct tCallKey {
    tFCallback callback;
    const char* name;
    static bool Match(llk::cFunction* aFunction, void* aKey) {
        if (aFunction->Function() != &InvalidationCall) return false;
        auto* key = static_cast<tCallKey*>(aKey);
        if (!key) return true;
        auto* callback = static_cast<cFCallback*>(aFunction->Context());
        auto* name = static_cast<llk::cString*>(aFunction->Default());
        return callback->Callback() == key->callback && name->Compare(key->name) == 0;
    }
};

// Features polled by interval: interval to a list of interned names.
void CollectPolled(llk::cString* aName, const tFeatureInfo& aInfo, void* aTimers) {
    if (aInfo.pollingTime == 0) return;
    auto* timers = static_cast<llk::cObjectMap*>(aTimers);
    llk::cObjectMap::tKey interval = std::min<llk::u8>(aInfo.pollingTime, kLongestPoll);
    auto* names = static_cast<llk::cObjectList*>(timers->Fetch(interval));
    if (!names && (names = llk::cObjectList::New(8, true))) timers->Store(interval, names);
    if (names) names->Append(aName);
}

llk::i4 Peek(cFeatures* aFeatures, tFAccessPeekCtx& aContext) {
    const char* name = aContext.name;
    void* value = aContext.value;
    switch (aContext.type) {
    case kFeatureInt:
        return aFeatures->FeatureIntGet(name, static_cast<llk::i8*>(value));
    case kFeatureFloat:
        return aFeatures->FeatureFloatGet(name, static_cast<double*>(value));
    case kFeatureEnum:
        if (!value) return kFeatureNullOutput;
        return aFeatures->FeatureEnumGet(name, *static_cast<const char**>(value));
    case kFeatureString:
        return aFeatures->FeatureStringGet(name, static_cast<char*>(value), aContext.length);
    case kFeatureBool:
    case kFeatureCommand: {
        if (!value) return kFeatureNullOutput;
        bool answer = false;
        llk::i4 status = aContext.type == kFeatureBool
                             ? aFeatures->FeatureBoolGet(name, &answer)
                             : aFeatures->FeatureCommandIsDone(name, &answer);
        if (status == llk::kOk) *static_cast<TvkBool_t*>(value) = answer;
        return status;
    }
    case kFeatureRaw: {
        llk::u4 done = 0;
        llk::i4 status = aFeatures->FeatureRawGet(name, value, aContext.length, done);
        aContext.length = done;
        return status;
    }
    default:
        return kFeatureWrongType;
    }
}

llk::i4 Poke(cFeatures* aFeatures, const tFAccessPokeCtx& aContext) {
    const char* name = aContext.name;
    const void* value = aContext.value;
    switch (aContext.type) {
    case kFeatureInt:
    case kFeatureFloat:
    case kFeatureBool:
        if (!value) return kFeatureNullOutput;
        if (aContext.type == kFeatureInt)
            return aFeatures->FeatureIntSet(name, *static_cast<const llk::i8*>(value));
        if (aContext.type == kFeatureFloat)
            return aFeatures->FeatureFloatSet(name, *static_cast<const double*>(value));
        return aFeatures->FeatureBoolSet(name, *static_cast<const TvkBool_t*>(value) != 0);
    case kFeatureEnum:
        return aFeatures->FeatureEnumSet(name, static_cast<const char*>(value));
    case kFeatureString:
        return aFeatures->FeatureStringSet(name, static_cast<const char*>(value));
    case kFeatureCommand:
        return aFeatures->FeatureCommandExecute(name);
    case kFeatureRaw: {
        llk::u4 done = 0;
        return aFeatures->FeatureRawSet(name, value, aContext.length, done);
    }
    default:
        return kFeatureWrongType;
    }
}

llk::i4 Range(cFeatures* aFeatures, tFAccessRngeCtx& aContext) {
    switch (aContext.type) {
    case kFeatureInt:
        if (!aContext.min && !aContext.max) return llk::kOk;
        return aFeatures->FeatureIntRange(aContext.name, static_cast<llk::i8*>(aContext.min),
                                          static_cast<llk::i8*>(aContext.max));
    case kFeatureFloat:
        if (!aContext.min && !aContext.max) return llk::kOk;
        return aFeatures->FeatureFloatRange(aContext.name, static_cast<double*>(aContext.min),
                                            static_cast<double*>(aContext.max));
    case kFeatureEnum:
        return aFeatures->FeatureEnumRange(aContext.name, aContext.array, aContext.length);
    default:
        return kFeatureWrongType;
    }
}

llk::i4 Size(cFeatures* aFeatures, tFAccessSizeCtx& aContext) {
    tFeatureData type = kFeatureUnknown;
    llk::i4 status = aFeatures->FeatureType(aContext.name, type);
    if (status != llk::kOk) return status;
    if (aContext.type != kFeatureRaw && aContext.type != type) return kFeatureWrongType;
    status = aFeatures->FeatureRawLen(aContext.name, &aContext.size);
    if (status == llk::kOk) return status;
    // Without a register behind it a value still has a size by its type;
    // the failure stays the answer, so the caller sees none of it.
    switch (type) {
    case kFeatureInt:
    case kFeatureFloat:
        aContext.size = 8;
        return status;
    case kFeatureEnum:
    case kFeatureString:
        aContext.size = 1024;
        return status;
    case kFeatureBool:
        aContext.size = 1;
        return status;
    default:
        return kFeatureWrongType;
    }
}

llk::i4 Increment(cFeatures* aFeatures, tFAccessQIncCtx& aContext) {
    if (aContext.type == kFeatureInt)
        return aFeatures->FeatureIntIncrement(aContext.name, static_cast<llk::i8*>(aContext.value),
                                              aContext.gotOne);
    if (aContext.type == kFeatureFloat)
        return aFeatures->FeatureFloatIncrement(aContext.name, static_cast<double*>(aContext.value),
                                                aContext.gotOne);
    return kFeatureWrongType;
}

llk::i4 EnumQuery(cFeatures* aFeatures, tFAccessEnumCtx& aContext) {
    if (aContext.entry)
        return aFeatures->FeatureEnumValueInfo(aContext.name, aContext.value, *aContext.entry);
    if (aContext.integer)
        return aFeatures->FeatureEnumValueAsInteger(aContext.name, aContext.value,
                                                    *aContext.integer);
    return aFeatures->FeatureEnumValueIsAvailable(aContext.name, aContext.value,
                                                  aContext.available);
}

llk::i4 List(cFeatures* aFeatures, tFAccessListCtx& aContext) {
    llk::u4 found = 0;
    llk::i4 status;
    if (!aContext.name)
        status =
            aFeatures->FeaturesList(aContext.array, aContext.structSize, aContext.count, found);
    else if (aContext.selected)
        status = aFeatures->SelectedFeaturesList(aContext.name, aContext.array, aContext.structSize,
                                                 aContext.count, found);
    else
        status = aFeatures->AffectedFeaturesList(aContext.name, aContext.array, aContext.structSize,
                                                 aContext.count, found);
    if (status == llk::kOk) aContext.count = found;
    return status;
}

} // namespace

bool pActor::OnFeatureRequest(llk::cRequest* aRequest, cFeatures* aFeatures) {
    void* context = aRequest->GetPointer();
    llk::i4 status;
    switch (aRequest->GetTag()) {
    case request::kFeatureList:
        status = List(aFeatures, *static_cast<tFAccessListCtx*>(context));
        break;
    case request::kFeatureInfo: {
        auto* info = static_cast<tFAccessInfoCtx*>(context);
        tFeatureInfo record;
        status = aFeatures->FeatureQuery(info->name, record);
        if (status == llk::kOk)
            std::memcpy(info->data, &record, std::min<size_t>(info->size, sizeof(record)));
        break;
    }
    case request::kFeatureRange:
        status = Range(aFeatures, *static_cast<tFAccessRngeCtx*>(context));
        break;
    case request::kFeatureAccess: {
        auto* stat = static_cast<tFAccessStatCtx*>(context);
        status = aFeatures->FeatureProbe(stat->name, stat->readable, stat->writeable);
        break;
    }
    case request::kFeaturePeek:
        status = Peek(aFeatures, *static_cast<tFAccessPeekCtx*>(context));
        break;
    case request::kFeaturePoke:
        // A feature must not change under a callback that is still
        // reporting it: the write waits for the callback to finish.
        if (!IsFeaturesWritable()) return false;
        status = Poke(aFeatures, *static_cast<const tFAccessPokeCtx*>(context));
        break;
    case request::kFeatureEnumQuery:
        status = EnumQuery(aFeatures, *static_cast<tFAccessEnumCtx*>(context));
        break;
    case request::kFeatureEnumAsString: {
        auto* query = static_cast<tFAccessEnum2Ctx*>(context);
        status = aFeatures->FeatureEnumValueAsString(query->name, query->value, query->string);
        break;
    }
    case request::kFeatureCallback: {
        auto* callback = static_cast<const tFAccessICBMCtx*>(context);
        status = callback->enroll ? EnrollCallback(aFeatures, *callback) : DropCallback(*callback);
        break;
    }
    case request::kFeatureSize:
        status = Size(aFeatures, *static_cast<tFAccessSizeCtx*>(context));
        break;
    case request::kFeatureIncrement:
        status = Increment(aFeatures, *static_cast<tFAccessQIncCtx*>(context));
        break;
    default:
        llk::sEnv::PrintTrace("%s::OnRequest - unknown tag (%x) for request", ClassName(),
                              aRequest->GetTag());
        return true;
    }
    aRequest->SetOutcome(status);
    return true;
}

llk::i4 pActor::EnrollCallback(cFeatures* aFeatures, const tFAccessICBMCtx& aContext) {
    if (!aContext.name) return llk::kNotFound;
    tFeatureData type = kFeatureUnknown;
    llk::i4 status = aFeatures->FeatureType(aContext.name, type);
    if (status != llk::kOk) return status;
    if (!mCallbacks) {
        StartPolling(aFeatures);
        mCallbacks = llk::Retained(llk::cObjectList::New(8, true));
        if (!mCallbacks) return llk::kNoMemory;
    }
    for (llk::u4 i = 0; i < mCallbacks->Count(); ++i)
        if (static_cast<cFCallback*>(mCallbacks->AtIndex(i))->Is(aContext.name, aContext.callback))
            return llk::kDuplicate;
    llk::cString* name = llk::cString::New(aContext.name, false);
    cFCallback* callback =
        name ? cFCallback::New(name, aContext.callback, aContext.context,
                               reinterpret_cast<TvkHandle_t>(static_cast<uintptr_t>(Handle())))
             : nullptr;
    return callback ? mCallbacks->Append(callback) : llk::kNoMemory;
}

llk::i4 pActor::DropCallback(const tFAccessICBMCtx& aContext) {
    for (llk::u4 i = 0; mCallbacks && i < mCallbacks->Count(); ++i) {
        if (!static_cast<cFCallback*>(mCallbacks->AtIndex(i))->Is(aContext.name, aContext.callback))
            continue;
        tCallKey key{aContext.callback, aContext.name};
        Helper()->Discard(this, &tCallKey::Match, &key);
        mCallbacks->Remove(i);
        if (mCallbacks->Count() == 0) {
            StopPolling();
            llk::ReleaseAndClear(mCallbacks);
        }
        return llk::kOk;
    }
    return llk::kDuplicate;
}

void pActor::DropAllCallbacks() {
    if (!mCallbacks) return;
    Helper()->Discard(this, &tCallKey::Match, nullptr);
    mCallbacks->Clear();
    StopPolling();
    llk::ReleaseAndClear(mCallbacks);
}

void pActor::StartPolling(cFeatures* aFeatures) {
    mPollTimers = llk::Retained(llk::cObjectMap::New(3, 0.0f, true));
    if (!mPollTimers) return;
    aFeatures->FeaturesIterate(&CollectPolled, mPollTimers);
    for (llk::u4 i = 0; i < mPollTimers->Count(); ++i) {
        llk::cObjectMap::tKey interval = 0;
        mPollTimers->AtIndex(i, &interval);
        auto ms = static_cast<llk::u4>(interval);
        Helper()->TimerStart(this, kPollTimer + ms, ms, ms, true);
    }
}

void pActor::StopPolling() {
    for (llk::u4 i = 0; mPollTimers && i < mPollTimers->Count(); ++i) {
        llk::cObjectMap::tKey interval = 0;
        mPollTimers->AtIndex(i, &interval);
        Helper()->TimerCease(this, kPollTimer + static_cast<llk::u4>(interval));
    }
    llk::ReleaseAndClear(mPollTimers);
}

void pActor::OnPoll(llk::u4 aInterval) {
    auto* names =
        mPollTimers ? static_cast<llk::cObjectList*>(mPollTimers->Fetch(aInterval)) : nullptr;
    for (llk::u4 i = 0; names && i < names->Count(); ++i)
        OnFeatureInvalidated(static_cast<llk::cString*>(names->AtIndex(i)), false);
}

void pActor::OnFeatureInvalidated(llk::cString* aName, bool aNotify) {
    for (llk::u4 i = 0; mCallbacks && i < mCallbacks->Count(); ++i) {
        auto* callback = static_cast<cFCallback*>(mCallbacks->AtIndex(i));
        if (callback->Name()->Compare(aName) != 0) continue;
        auto* function = static_cast<llk::cFunction*>(Global()->Recycle("cFunction"));
        if (!function && !(function = llk::cFunction::New(false))) continue;
        function->Reset(&InvalidationCall, callback, aName);
        // A callback that reports back keeps features unwritable until the
        // last of them has run; one that does not is forgotten once run.
        llk::i4 status = aNotify ? Helper()->Offload(this, kInvalidationDone, function, 255)
                                 : Helper()->Offload(this, function, 255);
        if (status == llk::kOk) {
            if (aNotify) mPendingInvalidation = function;
            continue;
        }
        function->Clear();
        Global()->Discard("cFunction", function);
    }
}

void pActor::OnInvalidationDone(llk::cFunction* aFunction) {
    if (!aFunction) return;
    if (aFunction == mPendingInvalidation) {
        mPendingInvalidation = nullptr;
        RequestsDrain();
        MessagesDrain();
    }
    aFunction->Clear();
    Global()->Discard("cFunction", aFunction);
}

} // namespace tvk
