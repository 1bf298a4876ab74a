#include "gik/Runtime.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <tinyxml.h>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "gik/BoolNode.h"
#include "gik/CommandNode.h"
#include "gik/ConverterNode.h"
#include "gik/Document.h"
#include "gik/EnumNode.h"
#include "gik/FloatRegNode.h"
#include "gik/IntRegNode.h"
#include "gik/MaskedIntNode.h"
#include "gik/MemoryNode.h"
#include "gik/NodeTable.h"
#include "gik/NumberNodes.h"
#include "gik/Port.h"
#include "gik/PortNode.h"
#include "gik/Shared.h"
#include "gik/StringNode.h"
#include "gik/StringRegNode.h"
#include "gik/SwissKnifeNode.h"
#include "gik/Text.h"
#include "kit/Env.h"
#include "kit/ObjectList.h"
#include "kit/String.h"

namespace gik {

// Builds nodes from elements: the classes by element name, and the shared
// storage of a "StructReg".
class sBuilder {
public:
    // A new node owned by the caller, or null when the class's parse fails.
    template <class T, class... A>
    static T* Make(cRuntime* aRuntime, const TiXmlElement* aElement, A... aArgs) {
        T* node = new (std::nothrow) T();
        if (!node) return nullptr;
        if (node->Initialize(aRuntime, aElement, aArgs...) != kOk) {
            node->Release();
            return nullptr;
        }
        return node;
    }

    // Null for an unknown element name; aKnown tells the two apart.
    static pNode* Create(cRuntime* aRuntime, const TiXmlElement* aElement, bool& aKnown) {
        const char* kind = aElement->Value();
        aKnown = true;
        if (strcmp(kind, "IntReg") == 0) return Make<cIntRegNode>(aRuntime, aElement);
        if (strcmp(kind, "MaskedIntReg") == 0) return Make<cMaskedIntRegNode>(aRuntime, aElement);
        if (strcmp(kind, "StringReg") == 0) return Make<cStringRegNode>(aRuntime, aElement);
        if (strcmp(kind, "FloatReg") == 0) return Make<cFloatRegNode>(aRuntime, aElement);
        if (strcmp(kind, "Integer") == 0) return Make<cIntegerNode>(aRuntime, aElement);
        if (strcmp(kind, "Float") == 0) return Make<cFloatNode>(aRuntime, aElement);
        if (strcmp(kind, "Command") == 0) return Make<cCommandNode>(aRuntime, aElement);
        if (strcmp(kind, "String") == 0) return Make<cStringNode>(aRuntime, aElement);
        if (strcmp(kind, "IntConverter") == 0)
            return Make<cConverterNode>(aRuntime, aElement, false);
        if (strcmp(kind, "Converter") == 0) return Make<cConverterNode>(aRuntime, aElement, true);
        if (strcmp(kind, "IntSwissKnife") == 0)
            return Make<cSwissKnifeNode>(aRuntime, aElement, false);
        if (strcmp(kind, "SwissKnife") == 0) return Make<cSwissKnifeNode>(aRuntime, aElement, true);
        if (strcmp(kind, "Enumeration") == 0) return Make<cEnumNode>(aRuntime, aElement);
        if (strcmp(kind, "Boolean") == 0) return Make<cBoolNode>(aRuntime, aElement);
        if (strcmp(kind, "Register") == 0) return Make<cMemoryNode>(aRuntime, aElement);
        if (strcmp(kind, "StructReg") == 0) return Make<cIntRegNode>(aRuntime, aElement);
        if (strcmp(kind, "Port") == 0) return Make<cPortNode>(aRuntime, aElement);
        aKnown = false;
        return nullptr;
    }

    static i4 CreateNode(cRuntime* aRuntime, const TiXmlElement* aElement, bool aReplace);
    static i4 CreateStruct(cRuntime* aRuntime, const TiXmlElement* aElement, cIntRegNode* aHolder,
                           bool aReplace);
};

namespace {

const char* ElementName(const TiXmlElement* aElement) {
    const char* name = aElement->Attribute("Name");
    return name ? name : aElement->Attribute("Comment");
}

} // namespace

i4 sBuilder::CreateNode(cRuntime* aRuntime, const TiXmlElement* aElement, bool aReplace) {
    const char* name = ElementName(aElement);
    if (!name) return kOk; // neither "Name" nor "Comment": skipped
    bool known = false;
    pNode* node;
    {
        uChildIndex children(aElement);
        node = Create(aRuntime, aElement, known);
    }
    if (!known) {
        llk::sEnv::PrintError("cRuntime - node type '%s' is unsupported", aElement->Value());
        return kUnacceptable;
    }
    if (!node) {
        llk::sEnv::PrintError("cRuntime - failed to instantiate node '%s' (%s)", name,
                              aElement->Value());
        return kUnacceptable;
    }
    i4 status;
    if (strcmp(aElement->Value(), "StructReg") == 0) {
        status = CreateStruct(aRuntime, aElement, static_cast<cIntRegNode*>(node), aReplace);
    } else {
        status = aRuntime->StoreNode(node, aReplace);
    }
    node->Release();
    return status;
}

i4 sBuilder::CreateStruct(cRuntime* aRuntime, const TiXmlElement* aElement, cIntRegNode* aHolder,
                          bool aReplace) {
    // The holder is an IntReg under a hidden, unique name.
    std::string base = std::string("$") + aHolder->NameText();
    std::string hidden = base;
    for (unsigned long counter = 2; aRuntime->SeekNode(hidden.c_str(), false); ++counter) {
        char suffix[32];
        if (snprintf(suffix, sizeof(suffix), "_%lu", counter) < 0) return kFormatFailed;
        hidden = base + suffix;
    }
    llk::cString* interned = aRuntime->CacheString(hidden.c_str(), false);
    if (!interned) return kFormatFailed;
    aHolder->Rename(interned);
    aHolder->ForceUnsigned();
    i4 status = aRuntime->StoreNode(aHolder, false);
    if (status != kOk) return status;

    bool noCache = false, writeAround = false;
    for (const TiXmlElement* e = aElement->FirstChildElement("StructEntry"); e;
         e = e->NextSiblingElement("StructEntry")) {
        uChildIndex children(e);
        cMaskedIntNode* entry = Make<cMaskedIntNode>(aRuntime, e, aHolder);
        if (!entry) {
            const char* entryName = ElementName(e);
            llk::sEnv::PrintError("cRuntime - failed to instantiate node '%s' (StructEntry)",
                                  entryName ? entryName : "");
            return kUnacceptable;
        }
        if (entry->Flags() & pNode::kFlagNoCache) noCache = true;
        if (entry->Flags() & pNode::kFlagWriteAround) writeAround = true;
        status = aRuntime->StoreNode(entry, aReplace);
        entry->Release();
        if (status != kOk) return status;
    }
    aHolder->SetNoCache(noCache, writeAround);
    return kOk;
}

i4 cRuntime::Initialize(bool aNoCache) {
    mCacheEnabled = !aNoCache;
    if (!sShared::Attach()) return kNoMemory;
    mAttached = true;
    mNodes = new (std::nothrow) cNodeTable();
    if (!mNodes) return kNoMemory;
    mFeatures = llk::Retained(llk::cObjectList::New(32, false));
    mPoked = llk::Retained(llk::cObjectList::New(16, false));
    mRetired = llk::Retained(llk::cObjectList::New(0, true));
    if (!mFeatures || !mPoked || !mRetired) return kNoMemory;
    return kOk;
}

cRuntime::~cRuntime() {
    for (auto& port : mPorts)
        port.second->Release();
    mPorts.clear();
    llk::ReleaseAndClear(mFeatures);
    llk::ReleaseAndClear(mPoked);
    delete mNodes;
    mNodes = nullptr;
    llk::ReleaseAndClear(mRetired);
    llk::ReleaseAndClear(mPrefix);
    if (mAttached) sShared::Detach();
}

i4 cRuntime::AttachPort(const char* aName, pPort* aPort) {
    if (!aName || !aPort) return kNothing;
    try {
        for (auto& port : mPorts)
            if (port.first == aName) {
                llk::Assign(port.second, aPort);
                return kOk;
            }
        mPorts.emplace_back(aName, aPort);
    } catch (...) {
        return kNoMemory;
    }
    aPort->Retain();
    return kOk;
}

bool cRuntime::RemovePort(const char* aName) {
    if (!aName) return false;
    for (auto it = mPorts.begin(); it != mPorts.end(); ++it)
        if (it->first == aName) {
            pPort* port = it->second;
            mPorts.erase(it);
            port->Release();
            return true;
        }
    return false;
}

bool cRuntime::IsAttached(const char* aName) const {
    return Port(aName) != nullptr;
}

pPort* cRuntime::Port(const char* aName) const {
    if (!aName) return nullptr;
    for (auto& port : mPorts)
        if (port.first == aName) return port.second;
    return nullptr;
}

i4 cRuntime::Prepare() {
    try {
        mScratch.reserve(256);
    } catch (...) {
        return kNoMemory;
    }
    return kOk;
}

void cRuntime::SetProcessCallback(tProcessCallback aFunction, void* aContext) {
    mProcessCallback = aFunction;
    mProcessContext = aContext;
}

llk::cString* cRuntime::CacheString(const char* aText, bool aRetain) {
    llk::cString* s = sShared::Intern(aText ? aText : "");
    return aRetain ? llk::Retained(s) : s;
}

llk::cString* cRuntime::InternPrefixed(const char* aName) {
    if (!mPrefix || mPrefix->Length() == 0) return CacheString(aName, false);
    try {
        mScratch.assign(mPrefix->Chars());
        mScratch.append(aName ? aName : "");
    } catch (...) {
        return nullptr;
    }
    return CacheString(mScratch.c_str(), false);
}

i4 cRuntime::StoreNode(pNode* aNode, bool aReplace) {
    if (!aReplace && mNodes->Find(aNode->NameText())) return kOk; // the first definition wins
    pNode* old = nullptr;
    i4 status = mNodes->Store(aNode, old);
    if (old) Retire(old);
    return status;
}

void cRuntime::Retire(pNode* aNode) {
    // Kept alive: nodes resolved before it left may still point at it.
    aNode->mGone = true;
    aNode->mListed = false;
    mRetired->Append(aNode);
    aNode->Release();
}

i4 cRuntime::Process(const char* aText, bool aIsPath, const char* aPrefix, bool aReplace) {
    u4 retired = mRetired->Count();
    try {
        std::string text;
        if (aIsPath) {
            if (!sDocument::ReadFile(aText, text)) {
                llk::sEnv::PrintError("cRuntime - failed to parse document (%s)",
                                      "Failed to open file");
                return kUnacceptable;
            }
        } else {
            size_t length = aText ? strlen(aText) : 0;
            text.reserve(length + sDocument::kPadding);
            text.assign(aText ? aText : "", length);
        }
        TiXmlDocument* document = nullptr;
        std::string error;
        i4 status = sDocument::Parse(text, document, error);
        if (status != kOk) {
            llk::sEnv::PrintError("cRuntime - failed to parse document (%s)", error.c_str());
            return status;
        }
        struct tHold {
            TiXmlDocument* document;
            ~tHold() { delete document; }
        } hold{document};

        // The wide reading sums a register's address terms in the register
        // itself, so it needs no generated knives.
        if ((status = sDocument::ExpandEmbedded(document, error)) != kOk ||
            (!mReading.Has(tReading::kAddressSums) &&
             (status = sDocument::ExpandAddresses(document, error)) != kOk)) {
            llk::sEnv::PrintError("cRuntime - failed to parse document (%s)", error.c_str());
            return status;
        }
        TiXmlElement* description = document->FirstChildElement("RegisterDescription");
        if (mProcessCallback) {
            status = mProcessCallback(this, description, mProcessContext);
            if (status != kOk) return status;
        }
        llk::Assign(mPrefix, aPrefix ? CacheString(aPrefix, false) : nullptr);
        status = Build(description, aReplace);
        llk::ReleaseAndClear(mPrefix);
        if (mFinalized) Unlink(retired);
        if (status != kOk)
            llk::sEnv::PrintError("cRuntime - failed to process document (%d)", status);
        return status;
    } catch (...) {
        llk::ReleaseAndClear(mPrefix);
        if (mFinalized) Unlink(retired);
        return kNoMemory;
    }
}

i4 cRuntime::Build(TiXmlElement* aDescription, bool aReplace) {
    if (!aDescription) return kUnacceptable;

    // Nodes: element children depth first; "Group" is entered, "Category"
    // only supplies paths.
    std::vector<TiXmlElement*> stack;
    stack.push_back(aDescription->FirstChildElement());
    while (!stack.empty()) {
        TiXmlElement* e = stack.back();
        if (!e) {
            stack.pop_back();
            continue;
        }
        stack.back() = e->NextSiblingElement();
        const char* kind = e->Value();
        if (strcmp(kind, "Group") == 0) {
            stack.push_back(e->FirstChildElement());
            continue;
        }
        if (strcmp(kind, "Category") == 0) continue;
        i4 status = sBuilder::CreateNode(this, e, aReplace);
        if (status != kOk) return status;
    }

    // The elements of the description's level by name, through groups.
    std::unordered_map<std::string_view, const TiXmlElement*> elements;
    stack.push_back(aDescription->FirstChildElement());
    while (!stack.empty()) {
        TiXmlElement* e = stack.back();
        if (!e) {
            stack.pop_back();
            continue;
        }
        stack.back() = e->NextSiblingElement();
        if (strcmp(e->Value(), "Group") == 0) {
            stack.push_back(e->FirstChildElement());
            continue;
        }
        if (const char* name = e->Attribute("Name")) elements.emplace(name, e);
    }
    auto root = elements.find("Root");
    if (root == elements.end() || strcmp(root->second->Value(), "Category") != 0)
        return kUnacceptable;

    // Paths: "" for the features directly under "Root", "/Info" under
    // "Root"/"Info". The walk keeps its own stack; a category that contains
    // itself, or a tree of more than kMaxCategoryDepth levels or
    // kMaxCategoryVisits visits, is not acceptable.
    constexpr size_t kMaxCategoryDepth = 64;
    constexpr size_t kMaxCategoryVisits = 100000;
    struct tLevel {
        const TiXmlElement* category;
        const TiXmlElement* next; // next "pFeature" child
        llk::cString* path;
    };
    std::vector<tLevel> levels;
    std::unordered_set<const TiXmlElement*> open;
    llk::cString* empty = CacheString("", false);
    if (!empty) return kNoMemory;
    levels.push_back({root->second, root->second->FirstChildElement("pFeature"), empty});
    open.insert(root->second);
    size_t visits = 1;
    while (!levels.empty()) {
        tLevel& level = levels.back();
        if (!level.next) {
            open.erase(level.category);
            levels.pop_back();
            continue;
        }
        const TiXmlElement* feature = level.next;
        level.next = feature->NextSiblingElement("pFeature");
        llk::cString* path = level.path;
        const char* text = feature->GetText() ? feature->GetText() : "";
        auto found = elements.find(text);
        if (found != elements.end() && strcmp(found->second->Value(), "Category") == 0) {
            const TiXmlElement* category = found->second;
            if (open.count(category) || levels.size() >= kMaxCategoryDepth ||
                ++visits > kMaxCategoryVisits)
                return kUnacceptable;
            const char* name = category->Attribute("Name");
            std::string working = std::string(path->Chars()) + "/" + (name ? name : "");
            llk::cString* interned = CacheString(working.c_str(), false);
            if (!interned) return kNoMemory;
            open.insert(category);
            levels.push_back({category, category->FirstChildElement("pFeature"), interned});
            continue;
        }
        pNode* node = nullptr;
        if (found != elements.end()) {
            node = SeekNode(InternPrefixed(found->second->Attribute("Name"))->Chars(), false);
            if (!node) continue; // an element without a node: skipped in silence
        } else {
            llk::cString* name = InternPrefixed(text);
            node = name ? SeekNode(name->Chars(), false) : nullptr;
            if (!node) return kUnacceptable;
        }
        node->SetPath(path);
    }
    return kOk;
}

void cRuntime::Unlink(u4 aFirst) {
    if (mRetired->Count() == aFirst) return;
    auto isGone = [](llk::pObject* aObject, void*) { return static_cast<pNode*>(aObject)->mGone; };
    auto sweep = [&](llk::pObject* aNode) {
        auto* node = static_cast<pNode*>(aNode);
        if (llk::cObjectList* list = node->Dependents()) list->Remove(isGone, nullptr);
        if (llk::cObjectList* list = node->SelectedNodes()) list->Remove(isGone, nullptr);
    };
    for (u4 i = 0; i < NodeCount(); ++i)
        sweep(NodeAt(i));
    for (u4 i = 0; i < mRetired->Count(); ++i)
        sweep(mRetired->AtIndex(i));
    mFeatures->Remove(isGone, nullptr);
    mPoked->Remove(isGone, nullptr);
}

i4 cRuntime::Finalize() {
    std::string().swap(mScratch);
    u4 count = NodeCount();
    for (u4 i = 0; i < count; ++i) {
        pNode* node = NodeAt(i);
        i4 status = node->Resolve(this);
        if (status != kOk) {
            llk::sEnv::PrintError("cRuntime - failed to finalize node '%s'", node->NameText());
            return status;
        }
    }

    // Features: by name, each latched implemented as it is inserted.
    for (u4 i = 0; i < mFeatures->Count(); ++i)
        static_cast<pNode*>(mFeatures->AtIndex(i))->mListed = false;
    mFeatures->Clear();
    std::vector<pNode*> features;
    for (u4 i = 0; i < count; ++i) {
        pNode* node = NodeAt(i);
        if (node->IsHidden() || !node->GetPath() || !node->IsImplemented(this)) continue;
        try {
            auto at =
                std::upper_bound(features.begin(), features.end(), node, [](pNode* a, pNode* b) {
                    return strcmp(a->NameText(), b->NameText()) < 0;
                });
            features.insert(at, node);
        } catch (...) {
            node->SetImplemented(false);
            return kNoMemory;
        }
        node->mListed = true;
        node->SetImplemented(true);
    }
    for (pNode* node : features)
        if (mFeatures->Append(node) != llk::kOk) return kNoMemory;

    for (u4 i = 0; i < count; ++i) {
        pNode* node = NodeAt(i);
        u4 access = node->ComputeAccess();
        if (node->ClassType() == pNode::kTagStructEntry)
            node->MergeAccess(access);
        else
            node->SetAccessBits(access);
    }
    mFinalized = true;
    return kOk;
}

i4 cRuntime::Dismiss() {
    for (auto& port : mPorts)
        port.second->Release();
    mPorts.clear();
    if (mNodes) mNodes->Clear();
    if (mFeatures) mFeatures->Clear();
    if (mPoked) mPoked->Clear();
    if (mRetired) mRetired->Clear();
    return kOk;
}

pNode* cRuntime::SeekNode(const char* aName, bool aFeatureOnly) const {
    if (!aName || !mNodes) return nullptr;
    pNode* node = mNodes->Find(aName);
    if (!node || !aFeatureOnly) return node;
    if (!node->GetPath() || !node->IsImplementedLatched(const_cast<cRuntime*>(this)))
        return nullptr;
    return node;
}

void cRuntime::HideAllNodes(const char* aPath) {
    if (mFinalized || !aPath) return;
    for (u4 i = 0; i < NodeCount(); ++i) {
        pNode* node = NodeAt(i);
        if (node->GetPath() && strcmp(node->GetPath()->Chars(), aPath) == 0) node->Hide();
    }
}

bool cRuntime::RemoveNode(const char* aName) {
    if (mFinalized || !aName) return false;
    pNode* node = mNodes->Remove(aName);
    if (!node) return false;
    Retire(node);
    return true;
}

bool cRuntime::MoveNode(const char* aName, const char* aPath) {
    pNode* node = SeekNode(aName, false);
    if (!node) return false;
    node->SetPath(aPath ? CacheString(aPath, false) : nullptr);
    return true;
}

u4 cRuntime::NodeCount() const {
    return mNodes ? mNodes->Count() : 0;
}

pNode* cRuntime::NodeAt(u4 aIndex) const {
    return mNodes ? mNodes->At(aIndex) : nullptr;
}

} // namespace gik
