#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::JsonStream;
using Corvane::Soa::Common::Xml::XmlStream;
using Corvane::Soa::Internal::Json::JSONObject;
using Corvane::Soa::Internal::Json::Value;

// A type that overrides only what BaseObject leaves pure.
class Plain : public BaseObject {
public:
    Plain() = default;
    explicit Plain(const char* ns) : BaseObject(ns) {}
    Plain(const char* ns, const char* typeName) : BaseObject(ns, typeName) {}

    void getNamespaces(std::set<std::string>& namespaces) const override {
        namespaces.insert(getNamespace());
    }

protected:
    BaseObject* reallyClone() const override { return new Plain(*this); }
};

// Element writers in the manner of generated types: each begins its element with outputXMLBase.
class Item : public Plain {
public:
    Item() : Plain("urn:example:a", "Item") {}
    using Plain::outputXML;
    void outputXML(XmlStream& stream, const std::string& elementName) const override {
        wasRoot = outputXMLBase(stream, elementName, "ignored");
        stream.writeOpenElementClose(elementName, true);
    }
    mutable bool wasRoot = true;
};

class Order : public Plain {
public:
    Order() : Plain("urn:example:b", "Order") {}
    using Plain::outputXML;
    void outputXML(XmlStream& stream, const std::string& elementName) const override {
        wasRoot = outputXMLBase(stream, elementName, nullptr);
        stream.writeOpenElementClose(elementName, false);
        item.outputXML(stream, "item");
        stream.writeCloseElement(getNamespace(), elementName);
    }
    void getNamespaces(std::set<std::string>& namespaces) const override {
        ++namespaceQueries;
        namespaces.insert(getNamespace());
        item.getNamespaces(namespaces);
    }
    Item item;
    mutable bool wasRoot = false;
    mutable int namespaceQueries = 0;
};

// Overrides the named form only: the unnamed form must reach it.
class Renamed : public Plain {
public:
    using Plain::outputXML;
    void outputXML(XmlStream& stream, const std::string& elementName) const override {
        stream << "[" << elementName << "]";
    }
};

class TrackedObject : public JSONObject {
public:
    explicit TrackedObject(int* destroyed) : m_destroyed(destroyed) {}
    ~TrackedObject() override { ++*m_destroyed; }

private:
    int* m_destroyed;
};

TEST(BaseObject, ConstructorsSetTheQualifiedName) {
    EXPECT_EQ(Plain().getQaulifiedName(), ".");
    EXPECT_EQ(Plain("urn:x").getQaulifiedName(), "urn:x.Unknown");
    const Plain full("http://corvane.com/Schemas/Core/2011-06/Session", "CacheTickets");
    EXPECT_EQ(full.getQaulifiedName(),
              "http://corvane.com/Schemas/Core/2011-06/Session.CacheTickets");
    EXPECT_EQ(full.askRefCount(), 0);
}

// Objects keep the number of their identity in a table that grows in chunks: threads that make
// new identities while others read old ones each see their own texts.
TEST(BaseObject, IdentitiesMadeOnSeveralThreads) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::vector<int> wrong(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &wrong] {
            const Plain empty;
            for (int i = 0; i < 300; ++i) {
                const std::string name = "T" + std::to_string(t) + "-" + std::to_string(i);
                const Plain made("urn:threads", name.c_str());
                wrong[t] += made.getQaulifiedName() != "urn:threads." + name ||
                            !empty.getNamespace().empty();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

// A copy carries the source's count, an assignment keeps the target's, a clone starts at zero.
TEST(BaseObject, CopyAssignmentAndCloneCounts) {
    AutoPtr<Plain> source(new Plain("urn:source", "Source"));
    source->ref();
    const Plain copy(*source);
    EXPECT_EQ(copy.askRefCount(), 2);
    EXPECT_EQ(copy.getQaulifiedName(), "urn:source.Source");
    source->unref();

    AutoPtr<Plain> target(new Plain("urn:target", "Target"));
    *target = Plain("urn:other", "Other");
    EXPECT_EQ(target->askRefCount(), 1);
    EXPECT_EQ(target->getQaulifiedName(), "urn:other.Other");

    BaseObject* clone = source->clone();
    EXPECT_NE(clone, source.get());
    EXPECT_EQ(clone->askRefCount(), 0);
    EXPECT_EQ(clone->getQaulifiedName(), "urn:source.Source");
    const AutoPtr<BaseObject> holder(clone);
    EXPECT_EQ(holder->askRefCount(), 1);
}

TEST(BaseObject, DefaultXmlOutputIsAnEmptyElementOnOneLine) {
    const Plain plain("urn:x", "T");
    XmlStream unnamed;
    XmlStream named;
    XmlStream renamed;
    plain.outputXML(unnamed);
    plain.outputXML(named, "a&b");
    Renamed().outputXML(renamed);
    EXPECT_EQ(unnamed.str(), "<EmptyXml></EmptyXml>\n");
    EXPECT_TRUE(unnamed.isRootElement());  // plain text: no element start was written
    EXPECT_EQ(named.str(), "<a&b></a&b>\n");
    EXPECT_EQ(renamed.str(), "[EmptyXml]");
}

TEST(BaseObject, OutputXmlBaseDeclaresEveryNamespaceOnTheRootOnly) {
    const Order order;
    XmlStream stream;
    order.outputXML(stream, "Order");

    EXPECT_EQ(stream.str(),
              "\n<ns1:Order xmlns:ns0=\"urn:example:a\" xmlns:ns1=\"urn:example:b\">"
              "\n<ns0:item/></ns1:Order>");
    EXPECT_TRUE(order.wasRoot);
    EXPECT_FALSE(order.item.wasRoot);
    EXPECT_EQ(order.namespaceQueries, 1);
}

TEST(BaseObject, JsonDefaultsWriteTheEmptyMarkerAndNothingElse) {
    Plain plain("urn:x", "T");
    EXPECT_FALSE(plain.isJsonMapEntry());
    EXPECT_FALSE(plain.isJsonMapKeyReferenceType());

    std::ostringstream out;
    JsonStream stream(&out);
    plain.writeJSONKey(&stream);
    plain.writeJSONValue(&stream);
    plain.writeJSON(&stream);
    EXPECT_EQ(out.str(), "{ \"EMPTY\"=\"EMPTY\" }\n");

    // Every JSON reader releases what it is handed and keeps nothing.
    int destroyed = 0;
    plain.parseJSON("name", AutoPtr<JSONObject>(new TrackedObject(&destroyed)));
    plain.parseJSON(AutoPtr<JSONObject>(new TrackedObject(&destroyed)));
    plain.parseSimpleJSONMapEntry("key", AutoPtr<JSONObject>(new TrackedObject(&destroyed)));
    plain.parseComplexJSONMapKey(AutoPtr<Value>(new TrackedObject(&destroyed)));
    plain.parseComplexJSONMapValue(AutoPtr<Value>(new TrackedObject(&destroyed)));
    EXPECT_EQ(destroyed, 5);
}

}  // namespace
