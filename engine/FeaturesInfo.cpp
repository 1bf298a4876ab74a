// cFeatures: what a feature is (its record) and how features relate (the
// lists of features, and of those a feature affects or selects).
#include <cstring>

#include "engine/Features.h"
#include "gik/Node.h"
#include "kit/ObjectList.h"

namespace tvk {

namespace {

constexpr int kAffected = 0;
constexpr int kSelected = 1;

// What a node's loot keeps for the container: the features it affects and
// the features it selects, made on first use.
class cRelated : public llk::pObject {
public:
    static cRelated* New() { return Make<cRelated>(); }
    ~cRelated() override {
        for (llk::cObjectList*& list : mLists)
            llk::ReleaseAndClear(list);
    }
    llk::cObjectList*& operator[](int aWhich) { return mLists[aWhich]; }

private:
    llk::cObjectList* mLists[2] = {nullptr, nullptr};
};

// What a list entry must be to be told: a feature (a node with a path that
// is in the feature list).
struct tNotFeature {
    llk::cObjectList* features;
    static bool Test(llk::pObject* aObject, void* aSelf) {
        auto* node = static_cast<gik::pNode*>(aObject);
        return !node->GetPath() || !static_cast<tNotFeature*>(aSelf)->features->Contains(node);
    }
};

} // namespace

llk::i4 cFeatures::RelatedList(gik::pNode* aNode, int aWhich, llk::cObjectList*& aList) {
    auto* related = static_cast<cRelated*>(aNode->GetLoot());
    if (!related) {
        related = cRelated::New();
        if (!related) return llk::kNoMemory;
        aNode->SetLoot(related);
    }
    if ((*related)[aWhich]) {
        aList = (*related)[aWhich];
        return llk::kOk;
    }
    llk::cObjectList* list = llk::cObjectList::New(32, true);
    if (!list) return llk::kNotFound;
    llk::i4 walk =
        aWhich == kAffected ? aNode->Affected(mRuntime, list) : aNode->Selected(mRuntime, list);
    if (walk != llk::kOk) return llk::kBadArgument;
    list->Remove(aNode);
    tNotFeature filter{mRuntime->Nodes()};
    list->Remove(&tNotFeature::Test, &filter);
    (*related)[aWhich] = llk::Retained(list);
    aList = list;
    return llk::kOk;
}

llk::i4 cFeatures::FillFeatureInfo(gik::pNode* aNode, tFeatureInfo& aInfo) {
    llk::cObjectList* affected = nullptr;
    llk::cObjectList* selected = nullptr;
    llk::i4 status = RelatedList(aNode, kAffected, affected);
    if (status == llk::kOk) status = RelatedList(aNode, kSelected, selected);
    if (status != llk::kOk) return status;

    aInfo = tFeatureInfo{};
    aInfo.name = Lasting(aNode->Name(false));
    aInfo.category = Lasting(aNode->GetPath());
    aInfo.displayName = aNode->Name(true) ? Lasting(aNode->Name(true)) : aInfo.name;
    llk::u8 polling = aNode->PollingTime();
    aInfo.pollingTime = polling > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(polling);
    aInfo.unit = Lasting(aNode->Unit());
    aInfo.representation = Lasting(aNode->Representation());
    aInfo.tooltip = Lasting(aNode->Help(true));
    aInfo.description = Lasting(aNode->Help(false));
    aInfo.sfncNamespace = Lasting(aNode->NameSpace());
    aInfo.visibility = aNode->Visibility();
    aInfo.featureDataType = Class2Type(aNode);
    aInfo.isStreamable = aNode->IsStreamable(mRuntime);
    aInfo.hasAffectedFeatures = affected->Count() > 0;
    aInfo.hasSelectedFeatures = selected->Count() > 0;

    llk::u4 flags = TvkFeatureFlagsNone;
    if (aNode->IsReadable(mRuntime)) flags |= TvkFeatureFlagsRead;
    if (aNode->IsWriteable(mRuntime)) flags |= TvkFeatureFlagsWrite;
    if (aNode->IsNoCache(mRuntime)) flags |= TvkFeatureFlagsVolatile;
    if (aNode->IsWriteAround(mRuntime)) flags |= TvkFeatureFlagsModifyWrite;
    // Nothing can ever change a feature that is neither written, volatile
    // nor invalidated.
    if (!(flags & (TvkFeatureFlagsWrite | TvkFeatureFlagsVolatile)) &&
        !aNode->HasInvalidators(mRuntime))
        flags |= TvkFeatureFlagsConst;
    // A view without a cache sees changes only by looking again.
    if (mNoCache && !(flags & TvkFeatureFlagsConst)) {
        if (aInfo.pollingTime == 0) aInfo.pollingTime = 1000;
        flags |= TvkFeatureFlagsVolatile;
    }
    aInfo.featureFlags = flags;
    return llk::kOk;
}

llk::i4 cFeatures::InfoList(llk::cObjectList* aNodes, bool aSkipInvisible, tFeatureInfo* aArray,
                            llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound) {
    llk::u4 found = 0;
    auto* out = reinterpret_cast<llk::u1*>(aArray);
    for (llk::u4 i = 0; i < aNodes->Count(); ++i) {
        tFeatureInfo info;
        if (FillFeatureInfo(static_cast<gik::pNode*>(aNodes->AtIndex(i)), info) != llk::kOk)
            continue;
        if (aSkipInvisible && info.visibility == TvkFeatureVisibilityInvisible) continue;
        if (out && found < aSize)
            std::memcpy(out + static_cast<size_t>(found) * aStructSize, &info,
                        std::min<size_t>(aStructSize, sizeof(info)));
        ++found;
    }
    aFound = found;
    return llk::kOk;
}

llk::i4 cFeatures::FeaturesList(tFeatureInfo* aArray, llk::u4 aStructSize, llk::u4 aSize,
                                llk::u4& aFound) {
    if (mState != kFeaturesRealized) return llk::kRefused;
    return InfoList(mRuntime->Nodes(), true, aArray, aStructSize, aSize, aFound);
}

llk::i4 cFeatures::RelatedFeaturesList(const char* aName, int aWhich, tFeatureInfo* aArray,
                                       llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound) {
    gik::pNode* node = nullptr;
    llk::cObjectList* list = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node);
    if (status == llk::kOk) status = RelatedList(node, aWhich, list);
    if (status != llk::kOk) return status;
    return InfoList(list, false, aArray, aStructSize, aSize, aFound);
}

llk::i4 cFeatures::AffectedFeaturesList(const char* aName, tFeatureInfo* aArray,
                                        llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound) {
    return RelatedFeaturesList(aName, kAffected, aArray, aStructSize, aSize, aFound);
}

llk::i4 cFeatures::SelectedFeaturesList(const char* aName, tFeatureInfo* aArray,
                                        llk::u4 aStructSize, llk::u4 aSize, llk::u4& aFound) {
    return RelatedFeaturesList(aName, kSelected, aArray, aStructSize, aSize, aFound);
}

llk::i4 cFeatures::FeatureQuery(const char* aName, tFeatureInfo& aInfo) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node);
    return status == llk::kOk ? FillFeatureInfo(node, aInfo) : status;
}

llk::i4 cFeatures::FeaturesIterate(tVisit aVisit, void* aContext) {
    if (mState != kFeaturesRealized) return llk::kRefused;
    llk::cObjectList* nodes = mRuntime->Nodes();
    for (llk::u4 i = 0; i < nodes->Count(); ++i) {
        auto* node = static_cast<gik::pNode*>(nodes->AtIndex(i));
        tFeatureInfo info;
        if (FillFeatureInfo(node, info) == llk::kOk) aVisit(node->Name(false), info, aContext);
    }
    return llk::kOk;
}

} // namespace tvk
