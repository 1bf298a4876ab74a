#include "gik/NodeTable.h"

#include "gik/Node.h"

namespace gik {

pNode* cNodeTable::Find(std::string_view aName) const {
    auto it = mIndex.find(aName);
    return it == mIndex.end() ? nullptr : mOrder[it->second];
}

i4 cNodeTable::Store(pNode* aNode, pNode*& aOld) {
    aOld = nullptr;
    std::string_view name = aNode->NameText();
    try {
        auto it = mIndex.find(name);
        if (it != mIndex.end()) {
            aOld = mOrder[it->second];
            mOrder[it->second] = aNode;
            // The key must view the new node's own name.
            u4 index = it->second;
            mIndex.erase(it);
            mIndex.emplace(name, index);
        } else {
            mOrder.push_back(aNode);
            try {
                mIndex.emplace(name, static_cast<u4>(mOrder.size() - 1));
            } catch (...) {
                mOrder.pop_back();
                throw;
            }
        }
    } catch (...) {
        return kNoMemory;
    }
    aNode->Retain();
    return kOk;
}

pNode* cNodeTable::Remove(std::string_view aName) {
    auto it = mIndex.find(aName);
    if (it == mIndex.end()) return nullptr;
    u4 index = it->second;
    pNode* node = mOrder[index];
    mIndex.erase(it);
    mOrder.erase(mOrder.begin() + index);
    for (auto& entry : mIndex)
        if (entry.second > index) --entry.second;
    return node;
}

void cNodeTable::Clear() {
    mIndex.clear();
    std::vector<pNode*> order;
    order.swap(mOrder);
    for (pNode* node : order)
        node->Release();
}

} // namespace gik
