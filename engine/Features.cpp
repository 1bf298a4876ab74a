// cFeatures: lifecycle, documents, shaping, and the common road of lookups
// and sets.
#include "engine/Features.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/Global.h"
#include "engine/ZipDocument.h"
#include "gik/FormulaNode.h"
#include "gik/Node.h"
#include "gik/Port.h"
#include "gik/Value.h"
#include "kit/ObjectList.h"

namespace tvk {

namespace {
// Custom URL information a port answers about its document.
constexpr llk::u4 kInfoDocumentSize = 1002;
constexpr llk::u4 kInfoCompressed = 1003;
// No register description comes near this; a device that claims more is
// not believed.
constexpr llk::u4 kLargestDocument = 64u << 20;
constexpr llk::i4 kDocumentTooLarge = 18;
} // namespace

bool cFCallback::Is(const char* aName, tFCallback aCallback) const {
    return aCallback == mCallback && aName && std::strcmp(aName, mName->Chars()) == 0;
}

llk::i4 cFeatures::Initialize(bool aNoCache) {
    mNoCache = aNoCache;
    mRuntime = llk::Retained(gik::cRuntime::New(aNoCache));
    return mRuntime ? llk::kOk : llk::kNoMemory;
}

cFeatures::~cFeatures() {
    llk::ReleaseAndClear(mRuntime);
}

llk::i4 cFeatures::Prepare() {
    mRuntime->SetReading(cGlobal::WideReading() ? gik::tReading::Wide() : gik::tReading::Strict());
    llk::i4 status = mRuntime->Prepare();
    if (status == llk::kOk) mState = kFeaturesPrepared;
    return status;
}

namespace {
// The text of a port's document: plain, or inflated from a ZIP image.
llk::i4 FetchDocument(gik::pPort* aPort, std::vector<char>& aText) {
    llk::u4 size = 0, length = 0;
    llk::u1 compressed = 0;
    llk::i4 status = aPort->QueryXML(&size, sizeof(size), length, kInfoDocumentSize, 0);
    if (status == llk::kOk)
        status = aPort->QueryXML(&compressed, sizeof(compressed), length, kInfoCompressed, 0);
    if (status != llk::kOk) return status;
    if (size > kLargestDocument) return kDocumentTooLarge;
    std::vector<char> image;
    try {
        image.resize(size + 1u);
    } catch (...) {
        return llk::kNoMemory;
    }
    length = 0;
    status = aPort->FetchXML(image.data(), size, length, 0);
    if (status != llk::kOk) return status;
    length = std::min(length, size);
    if (!compressed) {
        image[length] = '\0';
        aText.swap(image);
        return llk::kOk;
    }
    tZIPStream stream{};
    const auto* bytes = reinterpret_cast<const llk::u1*>(image.data());
    if (ZIPScanBuffer(bytes, length, stream) != llk::kOk) return llk::kFailed;
    if (stream.unpackedSize > kLargestDocument) return kDocumentTooLarge;
    try {
        aText.assign(stream.unpackedSize + 1u, '\0');
    } catch (...) {
        return llk::kNoMemory;
    }
    return ZIPPuffBuffer(bytes, stream, reinterpret_cast<llk::u1*>(aText.data()));
}
} // namespace

llk::i4 cFeatures::Connect(const char* aName, gik::pPort* aPort, bool aReplace,
                           gik::cRuntime::tProcessCallback aCallback, void* aContext) {
    if (mState != kFeaturesPrepared) return llk::kNotAllowed;
    if (!aName || !aPort) return llk::kNotFound;
    std::vector<char> text;
    llk::i4 status = FetchDocument(aPort, text);
    if (status != llk::kOk) return status;
    mRuntime->SetProcessCallback(aCallback, aContext);
    status = mRuntime->AttachPort(aName, aPort);
    if (status == llk::kOk) {
        status = mRuntime->Process(text.data(), false, nullptr, aReplace);
        if (status != llk::kOk) mRuntime->RemovePort(aName);
    }
    mRuntime->SetProcessCallback(nullptr, nullptr);
    return status;
}

llk::i4 cFeatures::Connect(const char* aName, gik::pPort* aPort, const char* aDocument, bool aPath,
                           bool aReplace, gik::cRuntime::tProcessCallback aCallback,
                           void* aContext) {
    if (mState != kFeaturesPrepared) return llk::kNotAllowed;
    if (!aName || !aPort || !aDocument) return llk::kNotFound;
    bool attached = false;
    if (!mRuntime->IsAttached(aName)) {
        llk::i4 status = mRuntime->AttachPort(aName, aPort);
        if (status != llk::kOk) return status;
        attached = true;
    }
    mRuntime->SetProcessCallback(aCallback, aContext);
    llk::i4 status = mRuntime->Process(aDocument, aPath, nullptr, aReplace);
    mRuntime->SetProcessCallback(nullptr, nullptr);
    if (status != llk::kOk && attached) mRuntime->RemovePort(aName);
    return status;
}

llk::i4 cFeatures::Inject(const char* aDocument, bool aPath) {
    if (mState != kFeaturesPrepared) return llk::kNotAllowed;
    if (!aDocument) return llk::kNotFound;
    return mRuntime->Process(aDocument, aPath, nullptr, true);
}

llk::i4 cFeatures::Realize() {
    if (mState != kFeaturesPrepared) return llk::kNotAllowed;
    llk::i4 status = mRuntime->Finalize();
    mState = kFeaturesRealized;
    return status;
}

llk::i4 cFeatures::Dismiss() {
    if (mState != kFeaturesRealized) return llk::kNotAllowed;
    mRuntime->Dismiss();
    mState = kFeaturesCreated;
    return llk::kOk;
}

void cFeatures::HideCategory(const char* aPath) {
    mRuntime->HideAllNodes(aPath);
}

bool cFeatures::RelocateFeature(const char* aName, const char* aPath) {
    return mRuntime->MoveNode(aName, aPath);
}

bool cFeatures::NodeRemove(const char* aName) {
    return mRuntime->RemoveNode(aName);
}

void cFeatures::TrackInvalidations(bool aStart) {
    if (aStart) {
        mRuntime->ClearPoked();
        return;
    }
    if (!mDelegate) return;
    llk::cObjectList* poked = mRuntime->Poked();
    for (llk::u4 i = 0; i < poked->Count(); ++i)
        mDelegate->OnFeatureInvalidated(static_cast<gik::pNode*>(poked->AtIndex(i))->Name(false),
                                        true);
}

tFeatureData cFeatures::Class2Type(gik::pNode* aNode) {
    switch (aNode->ClassType()) {
    case gik::pNode::kTagIntReg:
    case gik::pNode::kTagMaskedIntReg:
    case gik::pNode::kTagInteger:
        return kFeatureInt;
    case gik::pNode::kTagStringReg:
    case gik::pNode::kTagString:
        return kFeatureString;
    case gik::pNode::kTagFloatReg:
    case gik::pNode::kTagFloat:
        return kFeatureFloat;
    case gik::pNode::kTagBoolean:
        return kFeatureBool;
    case gik::pNode::kTagCommand:
        return kFeatureCommand;
    case gik::pNode::kTagEnumeration:
        return kFeatureEnum;
    case gik::pNode::kTagConverter:
    case gik::pNode::kTagSwissKnife:
        return static_cast<gik::pFormulaNode*>(aNode)->IsFloat() ? kFeatureFloat : kFeatureInt;
    case gik::pNode::kTagMemory:
        return kFeatureRaw;
    default:
        return kFeatureUnknown;
    }
}

const char* cFeatures::Lasting(llk::cString* aText) {
    if (!aText) return nullptr;
    cGlobal* global = cGlobal::Shared();
    llk::cString* lasting = global ? global->Cache(aText->Chars()) : nullptr;
    return (lasting ? lasting : aText)->Chars();
}

llk::i4 cFeatures::Seek(const char* aName, tFeatureData aType, gik::pNode*& aNode,
                        bool aFeatureOnly) {
    if (mState != kFeaturesRealized) return llk::kRefused;
    aNode = aName ? mRuntime->SeekNode(aName, aFeatureOnly) : nullptr;
    if (!aNode) return llk::kNotFound;
    if (aType != kFeatureUnknown && Class2Type(aNode) != aType) return kFeatureWrongType;
    return llk::kOk;
}

llk::i4 cFeatures::FeatureType(const char* aName, tFeatureData& aType) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node);
    if (status == llk::kOk) aType = Class2Type(node);
    return status;
}

llk::i4 cFeatures::FeatureProbe(const char* aName, bool& aReadable, bool& aWriteable) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node);
    if (status != llk::kOk) return status;
    aReadable = node->IsReadable(mRuntime);
    aWriteable = node->IsWriteable(mRuntime);
    return llk::kOk;
}

llk::i4 cFeatures::SetNode(gik::pNode* aNode, const gik::cValue* aValue) {
    mRuntime->ClearPoked();
    llk::i4 status = aNode->SetValue(mRuntime, aValue, nullptr);
    if (status == llk::kOk) Announce(aNode);
    return status;
}

void cFeatures::Announce(gik::pNode* aNode) {
    if (!mDelegate) return;
    llk::cObjectList* poked = mRuntime->Poked();
    for (llk::u4 i = 0; i < poked->Count(); ++i) {
        auto* node = static_cast<gik::pNode*>(poked->AtIndex(i));
        if (node != aNode) mDelegate->OnFeatureInvalidated(node->Name(false), true);
    }
    mDelegate->OnFeatureInvalidated(aNode->Name(false), true);
}

llk::i4 cFeatures::FeatureInvalidate(const char* aName) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node, false);
    if (status == llk::kOk) node->Invalidate(mRuntime);
    return status;
}

bool cFeatures::NodeExists(const char* aName) {
    gik::pNode* node = nullptr;
    return Seek(aName, kFeatureUnknown, node, false) == llk::kOk;
}

llk::i4 cFeatures::NodeType(const char* aName, tFeatureData& aType) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node, false);
    if (status == llk::kOk) aType = Class2Type(node);
    return status;
}

} // namespace tvk
