// The shape of the tree behind maps and dictionaries: rebuilds must give one
// fixed shape (a middle root with a descending and an ascending chain), so
// long-lived maps stay linear to rebuild and reproducible.
#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "kit/SearchTree.h"

using namespace llk;

namespace {

struct tNode {
    u4 key;
    tNode* parent;
    tNode* left;
    tNode* right;
    tNode* prevOrder;
    tNode* nextOrder;
    tNode* sparePrev;
    tNode* spareNext;
};

auto By(u4 aKey) {
    return [aKey](const tNode* n) { return aKey < n->key ? -1 : (aKey > n->key ? 1 : 0); };
}

class cTree {
public:
    explicit cTree(float aFactor) { mTree.SetFactor(aFactor); }

    void Insert(u4 aKey) {
        mNodes.push_back(
            tNode{aKey, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr});
        tNode* node = &mNodes.back();
        mTree.Insert(node, By(aKey));
    }
    void Remove(u4 aKey) {
        tNode* node = mTree.Find(By(aKey));
        ASSERT_NE(node, nullptr) << aKey;
        mTree.Remove(node, [](const tNode* aMoved) { return By(aMoved->key); });
    }
    bool Has(u4 aKey) const { return mTree.Find(By(aKey)) != nullptr; }

    // "key(left,right)", "-" for an empty side, leaves as plain keys.
    std::string Shape() const { return Shape(mTree.root); }
    std::string Order() const {
        std::string order;
        for (const tNode* n = mTree.head; n; n = n->nextOrder)
            order += std::to_string(n->key) + " ";
        return order;
    }
    const tSearchTree<tNode>& Tree() const { return mTree; }

private:
    static std::string Shape(const tNode* aNode) {
        if (!aNode) return "-";
        if (aNode->left) {
            EXPECT_EQ(aNode->left->parent, aNode);
        }
        if (aNode->right) {
            EXPECT_EQ(aNode->right->parent, aNode);
        }
        std::string key = std::to_string(aNode->key);
        if (!aNode->left && !aNode->right) return key;
        return key + "(" + Shape(aNode->left) + "," + Shape(aNode->right) + ")";
    }

    tSearchTree<tNode> mTree;
    std::deque<tNode> mNodes; // stable addresses
};

TEST(SearchTreeTest, RemovalToHalfThePeakRebuildsAroundTheMiddleWithTwoChains) {
    cTree tree(0.0f); // no balancing on insertion
    for (u4 k = 1; k <= 14; ++k)
        tree.Insert(k);
    EXPECT_EQ(tree.Tree().largest, 14u);
    for (u4 k = 14; k >= 9; --k)
        tree.Remove(k);
    // 8 of a peak of 14 left: still the plain chain.
    EXPECT_EQ(tree.Shape(), "1(-,2(-,3(-,4(-,5(-,6(-,7(-,8)))))))");
    tree.Remove(8);
    // Seven left: element floor(7 / 2) is the root, the smaller ones descend
    // to its left, the larger ones ascend to its right.
    EXPECT_EQ(tree.Shape(), "4(3(2(1,-),-),5(-,6(-,7)))");
    EXPECT_EQ(tree.Tree().largest, 7u);
    EXPECT_EQ(tree.Order(), "1 2 3 4 5 6 7 ");

    // An even count takes the upper middle.
    tree.Insert(8);
    tree.Remove(1);
    tree.Remove(2);
    tree.Remove(3);
    tree.Remove(4); // four of a peak of eight
    EXPECT_EQ(tree.Shape(), "7(6(5,-),8)");
    EXPECT_EQ(tree.Order(), "5 6 7 8 ");
}

TEST(SearchTreeTest, RemovalReHangsRightThenLeftFromTheParent) {
    cTree tree(0.0f);
    for (u4 k : {50u, 30u, 70u, 20u, 40u, 35u, 45u, 60u, 80u, 10u})
        tree.Insert(k);
    tree.Remove(30); // right subtree (40...) first under 50, then 20's subtree under it
    EXPECT_EQ(tree.Shape(), "50(40(35(20(10,-),-),45),70(60,80))");
    tree.Remove(50); // the root: its right child takes over, the left re-hangs below
    EXPECT_EQ(tree.Shape(), "70(60(40(35(20(10,-),-),45),-),80)");
    EXPECT_EQ(tree.Order(), "70 20 40 35 45 60 80 10 ");
}

TEST(SearchTreeTest, DeepInsertionRebuildsOnlyTheSubtreeAboveTheLimit) {
    // Factor 0.3: depth limit ceil(log10(n) / log10(1 / 0.3)) is 1 for n up
    // to 3 and 2 for n from 4 to 11.
    cTree tree(0.3f);
    tree.Insert(1);
    tree.Insert(2);
    tree.Insert(3); // depth 2 > 1: the subtree from 2 is rebuilt, 1 stays the root
    EXPECT_EQ(tree.Shape(), "1(-,3(2,-))");
    tree.Insert(4); // depth 2: within the limit
    EXPECT_EQ(tree.Shape(), "1(-,3(2,4))");
    tree.Insert(5); // depth 3 > 2: only the subtree from 4
    EXPECT_EQ(tree.Shape(), "1(-,3(2,5(4,-)))");

    // The same on a left side.
    cTree left(0.3f);
    for (u4 k : {50u, 30u, 40u})
        left.Insert(k);
    EXPECT_EQ(left.Shape(), "50(40(30,-),-)");
    EXPECT_EQ(left.Order(), "50 30 40 ");
}

TEST(SearchTreeTest, FactorIsClampedAndAFullFactorNeverRebuildsOnInsertion) {
    cTree high(3.0f);
    EXPECT_EQ(high.Tree().factor, 1.0f);
    cTree low(-2.0f);
    EXPECT_EQ(low.Tree().factor, 0.0f);
    // log10(1 / 1) is 0: the limit is infinite, a chain is left as it is.
    for (u4 k = 1; k <= 5; ++k)
        high.Insert(k);
    EXPECT_EQ(high.Shape(), "1(-,2(-,3(-,4(-,5))))");
    for (u4 k = 1; k <= 5; ++k)
        EXPECT_TRUE(high.Has(k));
}

} // namespace
