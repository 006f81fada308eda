// XMLNode on its own and mixed with the trees that SAXToNodeParser builds: attributes kept in an
// array with their map made on demand, parts shared between parsed nodes, nodes of the caller
// hung into a parsed tree, and what a memory manager accounts.
#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <gtest/gtest.h>

#include "ProcessWide.hpp"

#include <cstddef>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Corvane::Soa::Common::MemoryManager;
using Corvane::Soa::Common::Xml::SAXToNodeParser;
using Corvane::Soa::Common::Xml::XMLNode;

std::string outputOf(const XMLNode& node) {
    std::ostringstream out;
    node.output(out, "");
    return out.str();
}

// Attributes put one by one, past every room the array grows through, some of them twice.
TEST(XMLNodeTest, PutAttributesKeepMapSemantics) {
    XMLNode node("n");
    EXPECT_TRUE(node.attrs().empty());
    EXPECT_EQ(node.getAttr("a0"), "");
    EXPECT_FALSE(node.existsAttr("a0"));

    XMLNode::Attributes expected;
    for (int i = 39; i >= 0; --i) {
        const std::string name = "a" + std::to_string(i);
        node.putAttr(name, "first" + std::to_string(i));
        expected[name] = "first" + std::to_string(i);
    }
    for (int i = 0; i < 40; i += 3) {
        const std::string name = "a" + std::to_string(i);
        node.putAttr(name, "second");
        expected[name] = "second";
    }
    EXPECT_EQ(node.attrs(), expected);
    for (const auto& [name, value] : expected) {
        EXPECT_TRUE(node.existsAttr(name));
        EXPECT_EQ(node.getAttr(name), value);
    }
    EXPECT_FALSE(node.existsAttr("a40"));
    node.putAttr("", "empty name");
    EXPECT_EQ(node.getAttr(""), "empty name");
}

// The map is made once and then followed: a reference taken before a change sees it.
TEST(XMLNodeTest, TheAttributeMapIsKeptUpToDate) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString("<r b='2' a='1'><c/></r>");
    const XMLNode::Attributes& map = root->attrs();
    EXPECT_EQ(&map, &root->attrs());
    EXPECT_EQ(map, (XMLNode::Attributes{{"a", "1"}, {"b", "2"}}));

    root->putAttr("b", "two");
    root->putAttr("0", "zero");
    EXPECT_EQ(map, (XMLNode::Attributes{{"0", "zero"}, {"a", "1"}, {"b", "two"}}));
    EXPECT_EQ(root->getAttr("b"), "two");
    EXPECT_EQ(outputOf(*root), "r 0=\"zero\" a=\"1\" b=\"two\"\n  c\n");

    // A node whose map was never asked for takes attributes too.
    XMLNode* c = root->getChildren()[0];
    c->putAttr("x", "1");
    EXPECT_EQ(c->attrs(), (XMLNode::Attributes{{"x", "1"}}));
}

// Readers on several threads asking for the map of one node get the same map.
TEST(XMLNodeTest, TheAttributeMapIsMadeOnceForConcurrentReaders) {
    SAXToNodeParser parser;
    const XMLNode* root = parser.parseString("<r a='1' b='2' c='3'/>");
    std::vector<const XMLNode::Attributes*> seen(8);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        threads.emplace_back([root, &seen, i] { seen[i] = &root->attrs(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const XMLNode::Attributes* map : seen) {
        EXPECT_EQ(map, seen[0]);
    }
    EXPECT_EQ(seen[0]->size(), 3U);
}

// The caller's nodes own their parts from the start: what the getters returned follows every
// change.
TEST(XMLNodeTest, ReferencesToTheCallersNodesFollowChanges) {
    for (XMLNode* node : {new XMLNode, new XMLNode("named")}) {
        const std::string& name = node->getName();
        const std::string& text = node->getText();
        const std::string& extension = node->getExtensionName();
        const std::vector<XMLNode*>& children = node->getChildren();
        node->setName("renamed");
        node->setText("some");
        node->appendText(" text");
        node->setExtensionName("T");
        XMLNode* child = node->addChild(new XMLNode("child"));
        EXPECT_EQ(name, "renamed");
        EXPECT_EQ(text, "some text");
        EXPECT_EQ(extension, "T");
        ASSERT_EQ(children.size(), 1U);
        EXPECT_EQ(children[0], child);
        EXPECT_EQ(child->getParent(), node);
        EXPECT_EQ(outputOf(*node), "renamed [T] = \"some text\"\n  child\n");
        delete node;
    }
}

// Parsed nodes share white space texts and names; changing one node changes no other.
TEST(XMLNodeTest, ChangingAParsedNodeLeavesTheOthersAlone) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(
        "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>\n"
        "  <a xsi:type='p:T'>\n    <x/>\n  </a>\n  <a xsi:type='q:T'>\n    <x/>\n  </a>\n</r>");
    ASSERT_EQ(root->getChildren().size(), 2U);
    XMLNode* first = root->getChildren()[0];
    XMLNode* second = root->getChildren()[1];
    ASSERT_EQ(first->getText(), second->getText());

    first->appendText("more");
    first->setName("b");
    first->setExtensionName("U");
    first->getChildren()[0]->setText("leaf");
    first->getChildren()[0]->addChild(new XMLNode("added"));

    EXPECT_EQ(first->getText(), "\n    \n  more");
    EXPECT_EQ(second->getText(), "\n    \n  ");
    EXPECT_EQ(second->getName(), "a");
    EXPECT_EQ(second->getExtensionName(), "T");
    EXPECT_EQ(second->getChildren()[0]->getText(), "");
    EXPECT_TRUE(second->getChildren()[0]->getChildren().empty());
    EXPECT_EQ(outputOf(*root),
              "r\n"
              "  b [U] = \"\n    \n  more\"\n"
              "    x = \"leaf\"\n"
              "      added\n"
              "  a [T]\n"
              "    x\n");
}

// The caller's nodes hung anywhere into a parsed tree go with it: under a leaf, under an element
// with parsed children, as a deep chain, with attributes and text of their own. The next parse
// and the parser's end free them (the sanitizers see any leak or double free).
TEST(XMLNodeTest, CallersNodesInAParsedTreeGoWithIt) {
    SAXToNodeParser parser;
    for (int round = 0; round < 2; ++round) {
        XMLNode* root = parser.parseString("<r><leaf/><inner><c/></inner></r>");
        XMLNode* leaf = root->getChildren()[0];
        XMLNode* inner = root->getChildren()[1];

        XMLNode* chain = leaf->addChild(new XMLNode("chain"));
        XMLNode* end = chain;
        for (int i = 0; i < 20000; ++i) {
            end = end->addChild(new XMLNode("link"));
        }
        end->putAttr("last", "yes");
        XMLNode* extra = inner->addChild(new XMLNode("extra"));
        extra->setText(std::string(100, 'x'));
        extra->addChild(new XMLNode("below"))->putAttr("k", std::string(50, 'v'));
        root->addChild(new XMLNode("tail"));

        ASSERT_EQ(inner->getChildren().size(), 2U);
        EXPECT_EQ(inner->getChildren()[0]->getName(), "c");
        EXPECT_EQ(inner->getChildren()[1], extra);
        EXPECT_EQ(leaf->getChildren()[0], chain);
        EXPECT_EQ(chain->getParent(), leaf);
        EXPECT_EQ(root->getChildren().back()->getName(), "tail");
        EXPECT_EQ(end->getAttr("last"), "yes");
    }
}

// A node that the caller deletes leaves alone a parsed tree hung under it: the parser frees that.
TEST(XMLNodeTest, DeletingACallersNodeLeavesAParsedTreeToItsParser) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString("<r><a/></r>");
    auto* holder = new XMLNode("holder");
    holder->addChild(root);
    holder->addChild(new XMLNode("own"));
    delete holder;
    EXPECT_EQ(parser.getRootNode(), root);
    EXPECT_EQ(root->getChildren()[0]->getName(), "a");
}

// Under a memory manager every node, parsed or the caller's, is accounted under its tag, and
// the accounting comes back to the tree that is left.
TEST(XMLNodeTest, NodesOfMixedTreesAreAccounted) {
    REQUIRE_NO_GLOBAL_MANAGER();
    ASSERT_TRUE(MemoryManager::initializeMemoryManager(nullptr, true));
    const MemoryManager& manager = *MemoryManager::getMemoryManager();
    auto countNodes = [&manager] {
        int count = 0;
        for (const auto& entry : manager.getObjectTable()) {
            count += entry.second.tag == "XMLNode" ? 1 : 0;
        }
        return count;
    };
    {
        SAXToNodeParser parser;
        XMLNode* root = parser.parseString("<r a='1'>text<b>more</b><c/></r>");
        EXPECT_EQ(countNodes(), 3);
        root->getChildren()[0]->addChild(new XMLNode("x"))->addChild(new XMLNode("y"));
        root->putAttr("z", "2");
        root->setText("changed");
        EXPECT_EQ(countNodes(), 5);
        EXPECT_EQ(outputOf(*root),
                  "r a=\"1\" z=\"2\" = \"changed\"\n  b = \"more\"\n    x\n      y\n  c\n");
        parser.parseString("<r><s/></r>");
        EXPECT_EQ(countNodes(), 2);
        auto* mine = new XMLNode("mine");
        EXPECT_EQ(countNodes(), 3);
        delete mine;
    }
    EXPECT_EQ(countNodes(), 0);
}

}  // namespace
