// The binary search tree shared by cObjectMap and cDictionary: unbalanced
// unless a balance factor is given, with an insertion-order list threaded
// through its nodes and a rebuild that yields a fixed, reproducible shape.
//
// A node type provides: parent, left, right, prevOrder, nextOrder, and
// sparePrev, spareNext (used only during a rebuild, and for spare lists).
// Order is decided by a comparison of a probe with a node (<0, 0, >0).
#pragma once

#include <cmath>

#include "kit/Types.h"

namespace llk {

template <class Node> class tSearchTree {
public:
    Node* root = nullptr;
    u4 count = 0;
    u4 largest = 0; // largest count since the last full rebuild
    float factor = 0.0f;
    Node* head = nullptr; // insertion order
    Node* tail = nullptr;

    void SetFactor(float aFactor) {
        factor = aFactor < 0.0f ? 0.0f : (aFactor > 1.0f ? 1.0f : aFactor);
    }

    // The node that compares equal to the probe, or null.
    template <class Cmp> Node* Find(Cmp aCompare) const {
        Node* n = root;
        while (n) {
            int c = aCompare(n);
            if (c == 0) return n;
            n = c < 0 ? n->left : n->right;
        }
        return nullptr;
    }

    // Hangs a new node (its key already set) and appends it to the order list.
    // aCompare(node) compares the new node's key with node's.
    template <class Cmp> void Insert(Node* aNode, Cmp aCompare) {
        aNode->left = aNode->right = nullptr;
        aNode->nextOrder = nullptr;
        aNode->prevOrder = tail;
        if (tail)
            tail->nextOrder = aNode;
        else
            head = aNode;
        tail = aNode;

        u4 depth = Hang(aNode, root, aCompare);
        ++count;
        if (count > largest) largest = count;
        if (factor == 0.0f || count < 2) return;
        // The deepest a node may sit before its part of the tree is rebuilt.
        float limit = std::ceil(std::log10(static_cast<float>(count)) / std::log10(1.0f / factor));
        if (static_cast<float>(depth) <= limit) return;
        Node* top = aNode->parent;
        u4 index = depth - 1;
        while (top->parent && static_cast<float>(index) > limit) {
            top = top->parent;
            --index;
        }
        Rebuild(top);
    }

    // Unhooks aNode from the tree and the order list.
    template <class CmpOf> void Remove(Node* aNode, CmpOf aCompareOf) {
        Node* parent = aNode->parent;
        Node* left = aNode->left;
        Node* right = aNode->right;
        if (parent) {
            if (parent->left == aNode)
                parent->left = nullptr;
            else
                parent->right = nullptr;
            if (right) Hang(right, parent, aCompareOf(right));
            if (left) Hang(left, parent, aCompareOf(left));
        } else if (right) {
            root = right;
            right->parent = nullptr;
            if (left) Hang(left, root, aCompareOf(left));
        } else {
            root = left;
            if (left) left->parent = nullptr;
        }
        if (aNode->prevOrder)
            aNode->prevOrder->nextOrder = aNode->nextOrder;
        else
            head = aNode->nextOrder;
        if (aNode->nextOrder)
            aNode->nextOrder->prevOrder = aNode->prevOrder;
        else
            tail = aNode->prevOrder;
        aNode->parent = aNode->left = aNode->right = aNode->prevOrder = aNode->nextOrder = nullptr;
        --count;
        // Whatever the factor, a tree that lost half its peak is rebuilt.
        if (count * 2 <= largest) {
            if (root) Rebuild(root);
            largest = count;
        }
    }

    void Reset() {
        root = head = tail = nullptr;
        count = largest = 0;
    }

private:
    // Plain search from aFrom, then attach aNode (and whatever hangs below
    // it) there. Returns the depth of aNode, the root being 0.
    template <class Cmp> u4 Hang(Node* aNode, Node* aFrom, Cmp aCompare) {
        if (!aFrom) {
            root = aNode;
            aNode->parent = nullptr;
            return 0;
        }
        u4 depth = Depth(aFrom) + 1;
        Node* n = aFrom;
        for (;;) {
            Node*& next = aCompare(n) < 0 ? n->left : n->right;
            if (!next) {
                next = aNode;
                aNode->parent = n;
                return depth;
            }
            n = next;
            ++depth;
        }
    }

    static u4 Depth(const Node* aNode) {
        u4 depth = 0;
        for (const Node* n = aNode->parent; n; n = n->parent)
            ++depth;
        return depth;
    }

    // Flattens in order into the spare links, then hangs the middle element
    // with a descending chain of the smaller and an ascending chain of the
    // larger ones.
    void Rebuild(Node* aTop) {
        Node* parent = aTop->parent;
        bool wasLeft = parent && parent->left == aTop;
        Node* first = nullptr;
        Node* last = nullptr;
        u4 n = 0;
        Flatten(aTop, first, last, n);
        Node* middle = first;
        for (u4 i = 0; i < n / 2; ++i)
            middle = middle->spareNext;

        middle->parent = parent;
        if (!parent)
            root = middle;
        else if (wasLeft)
            parent->left = middle;
        else
            parent->right = middle;
        Node* below = middle;
        for (Node* s = middle->sparePrev; s; s = s->sparePrev) {
            below->left = s;
            s->parent = below;
            below = s;
        }
        below->left = nullptr;
        below = middle;
        for (Node* s = middle->spareNext; s; s = s->spareNext) {
            below->right = s;
            s->parent = below;
            below = s;
        }
        below->right = nullptr;
    }

    // In-order walk without recursion, so deep trees cannot overflow the stack.
    void Flatten(Node* aTop, Node*& aFirst, Node*& aLast, u4& aCount) {
        Node* n = aTop;
        while (n->left)
            n = n->left;
        while (n) {
            n->sparePrev = aLast;
            n->spareNext = nullptr;
            if (aLast)
                aLast->spareNext = n;
            else
                aFirst = n;
            aLast = n;
            ++aCount;
            // In-order successor within aTop's subtree.
            if (n->right) {
                n = n->right;
                while (n->left)
                    n = n->left;
            } else {
                Node* child = n;
                n = n->parent;
                while (n && child == n->right && child != aTop) {
                    child = n;
                    n = n->parent;
                }
                if (child == aTop) n = nullptr;
            }
        }
        // Clear the child links of every flattened node; Rebuild sets them.
        for (Node* s = aFirst; s; s = s->spareNext)
            s->left = s->right = nullptr;
    }
};

} // namespace llk
