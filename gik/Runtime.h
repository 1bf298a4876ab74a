// gik::cRuntime: the kernel's single owner. It turns register
// description documents into a graph of nodes and keeps it alive: the nodes
// by name, the ports by name, the sorted feature list and the list of nodes
// touched by the last change (the poked list).
//
// A runtime does not lock itself: its owner serialises every call. Only the
// process-wide string cache and formula table are shared (gik::sShared).
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gik/Object.h"
#include "gik/Reading.h"

class TiXmlElement;
class TiXmlNode;

namespace llk {
class cObjectList;
class cString;
} // namespace llk

namespace gik {

class cNodeTable;
class pNode;
class pPort;

class cRuntime : public pObject {
public:
    using tProcessCallback = int (*)(cRuntime* aRuntime, TiXmlNode* aDescription, void* aContext);

    // Autoreleased; null when the runtime or the process-wide state cannot
    // be built. aNoCache: no node serves a value from its cache.
    static cRuntime* New(bool aNoCache) { return Make<cRuntime>(aNoCache); }
    i4 Initialize() override { return Initialize(false); }
    i4 Initialize(bool aNoCache);
    ~cRuntime() override;
    const char* ClassName() const override { return "cRuntime"; }

    // Ports by name.
    i4 AttachPort(const char* aName, pPort* aPort);
    bool RemovePort(const char* aName);
    bool IsAttached(const char* aName) const;
    pPort* Port(const char* aName) const;

    // Once, before any document: kOk or kNoMemory.
    i4 Prepare();
    // The reading of the documents to come (strict unless set); set it
    // before the first document.
    void SetReading(const tReading& aReading) { mReading = aReading; }
    const tReading& Reading() const { return mReading; }
    void SetProcessCallback(tProcessCallback aFunction, void* aContext);
    // Loads one document (a path when aIsPath, else the text itself) into
    // the graph; names get aPrefix; with aReplace a node replaces one of the
    // same name, otherwise the first definition wins.
    i4 Process(const char* aText, bool aIsPath, const char* aPrefix, bool aReplace);
    // Resolves references, builds the feature list, computes access.
    i4 Finalize();
    // Empties ports, nodes, features and the poked list.
    i4 Dismiss();

    // The implemented, unhidden nodes with a category path, by name.
    llk::cObjectList* Nodes() const { return mFeatures; }
    // The nodes reached by the last change(s) that are features.
    llk::cObjectList* Poked();
    // Empties the poked list (and the walk's visited set with it). The
    // layer above calls it before each top-level change.
    void ClearPoked();

    // aFeatureOnly: only a node with a path whose implemented latch is set.
    pNode* SeekNode(const char* aName, bool aFeatureOnly) const;
    // Before Finalize: hides every node whose path is exactly aPath.
    void HideAllNodes(const char* aPath);
    // Before Finalize: removes the node from the table.
    bool RemoveNode(const char* aName);
    // Sets a node's path, also after Finalize; false when unknown.
    bool MoveNode(const char* aName, const char* aPath);
    // Interns aText (null as ""); aRetain: retained for the caller.
    llk::cString* CacheString(const char* aText, bool aRetain);

    bool IsCacheEnabled() const { return mCacheEnabled; }
    bool IsFinalized() const { return mFinalized; }
    u4 NodeCount() const;
    // Node aIndex in table order, or null.
    pNode* NodeAt(u4 aIndex) const;

    // Notification. A full invalidation starting at aNode itself.
    void Invalidate(u4 aType, void* aOriginator, pNode* aNode);
    // Tells aNode's dependents (not aNode), skipping aOriginator.
    void Propagate(u4 aType, llk::pObject* aValue, pNode* aOriginator, pNode* aNode);
    // Tells every node whose class tag meets aMask (0: all), but aSender.
    void Broadcast(u4 aMask, u4 aType, llk::pObject* aValue, pNode* aSender);

    // For nodes while a document is processed: aName with the prefix in
    // force, interned; null on failure.
    llk::cString* InternPrefixed(const char* aName);

private:
    friend class sBuilder;

    i4 Build(TiXmlElement* aDescription, bool aReplace);
    i4 StoreNode(pNode* aNode, bool aReplace);
    // Takes over the reference of a node that left the table.
    void Retire(pNode* aNode);
    // After Finalize, nodes leaving the table (the retired ones from
    // aFirst on) leave every list of the graph too, so that a walk meets
    // only nodes of the table.
    void Unlink(u4 aFirst);
    void AddPoked(pNode* aNode);
    bool IsPoked(const pNode* aNode) const;
    void BeginWalk();

    bool mCacheEnabled = true;
    tReading mReading;
    bool mFinalized = false;
    bool mAttached = false;
    llk::cString* mPrefix = nullptr;
    std::string mScratch;                               // prefix plus name
    std::vector<std::pair<std::string, pPort*>> mPorts; // retained
    cNodeTable* mNodes = nullptr;
    llk::cObjectList* mFeatures = nullptr;
    llk::cObjectList* mPoked = nullptr;
    llk::cObjectList* mRetired = nullptr; // replaced and removed nodes, kept alive
    u4 mPokeGeneration = 1;
    tProcessCallback mProcessCallback = nullptr;
    void* mProcessContext = nullptr;
};

} // namespace gik
