// The runtime's table of nodes by name: it owns every node, keeps
// the order of first storage, and finds a name exactly (by its text, so two
// names with one checksum never meet).
#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "gik/Status.h"

namespace gik {

class pNode;

class cNodeTable {
public:
    cNodeTable() = default;
    ~cNodeTable() { Clear(); }
    cNodeTable(const cNodeTable&) = delete;
    cNodeTable& operator=(const cNodeTable&) = delete;

    pNode* Find(std::string_view aName) const;
    // Takes a reference to aNode. An existing name keeps its place; the old
    // node is handed back (its reference with it) through aOld, or null.
    i4 Store(pNode* aNode, pNode*& aOld);
    // Hands the node's reference back, or null when absent.
    pNode* Remove(std::string_view aName);
    void Clear();
    u4 Count() const { return static_cast<u4>(mOrder.size()); }
    pNode* At(u4 aIndex) const { return aIndex < mOrder.size() ? mOrder[aIndex] : nullptr; }

private:
    std::vector<pNode*> mOrder;
    std::unordered_map<std::string_view, u4> mIndex;
};

} // namespace gik
