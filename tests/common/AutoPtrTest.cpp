#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>

#include <gtest/gtest.h>

#include <utility>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::BaseObject;

// A data object that reports its destruction.
class Node : public BaseObject {
public:
    explicit Node(int* destroyed) : BaseObject("urn:test", "Node"), m_destroyed(destroyed) {}
    ~Node() override { ++*m_destroyed; }
    void getNamespaces(std::set<std::string>& ns) const override { ns.insert(getNamespace()); }

protected:
    BaseObject* reallyClone() const override { return new Node(*this); }

private:
    int* m_destroyed;
};

class Leaf : public Node {
public:
    using Node::Node;
};

TEST(AutoPtr, NullHolder) {
    AutoPtr<Node> empty(static_cast<Node*>(nullptr));
    EXPECT_TRUE(empty.isNull());
    EXPECT_FALSE(empty);
    EXPECT_TRUE(empty == nullptr);
    EXPECT_TRUE(empty.dynamicCast<Leaf>().isNull());
    empty.reset();
    EXPECT_EQ(empty.get(), nullptr);
}

TEST(AutoPtr, EachHolderCountsOnceAndTheLastDestroys) {
    int destroyed = 0;
    Node* node = new Node(&destroyed);
    EXPECT_EQ(node->askRefCount(), 0);
    {
        AutoPtr<Node> first(node);
        EXPECT_EQ(&*first, node);
        EXPECT_EQ(first->askRefCount(), 1);
        {
            AutoPtr<Node> copy(first);
            AutoPtr<Node> assigned;
            assigned = first;
            EXPECT_EQ(node->askRefCount(), 3);
            AutoPtr<Node> moved(std::move(copy));  // moving passes a share on uncounted
            // NOLINTNEXTLINE(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
            EXPECT_TRUE(copy.isNull());
            EXPECT_EQ(node->askRefCount(), 3);
        }
        EXPECT_EQ(node->askRefCount(), 1);
        first = first.get();  // re-holding the held object keeps it alive
        AutoPtr<Node>& alias = first;
        first = alias;
        EXPECT_EQ(node->askRefCount(), 1);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(AutoPtr, ReplacingTheObjectReleasesThePreviousOne) {
    int destroyed = 0;
    AutoPtr<Node> holder(new Node(&destroyed));
    AutoPtr<Node> other(new Node(&destroyed));
    holder = other;
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(other->askRefCount(), 2);
    holder.reset(new Node(&destroyed));
    EXPECT_EQ(other->askRefCount(), 1);
    holder = nullptr;
    EXPECT_EQ(destroyed, 2);
}

TEST(AutoPtr, ConvertsToABaseAndCastsBack) {
    int destroyed = 0;
    AutoPtr<Leaf> leaf(new Leaf(&destroyed));
    AutoPtr<BaseObject> base(leaf);
    EXPECT_EQ(base.get(), leaf.get());
    EXPECT_EQ(base->askRefCount(), 2);

    AutoPtr<Leaf> back = base.dynamicCast<Leaf>();
    EXPECT_EQ(back.get(), leaf.get());
    EXPECT_EQ(base->askRefCount(), 3);

    AutoPtr<BaseObject> node(new Node(&destroyed));
    EXPECT_TRUE(node.dynamicCast<Leaf>().isNull());
    EXPECT_EQ(node->askRefCount(), 1);

    AutoPtr<Node> moved(std::move(leaf));
    EXPECT_TRUE(leaf.isNull());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(moved->askRefCount(), 3);
    moved.reset();
    back.reset();
    base.reset();
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
