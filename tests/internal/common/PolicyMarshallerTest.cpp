#include <corvane/soa/common/IPropertyPolicyChangeListener.hpp>
#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <gtest/gtest.h>

#include "PolicyText.hpp"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

using Corvane::Soa::Common::ObjectPropertyPolicy;
using Corvane::Soa::Common::PolicyType;
using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Exceptions::IOException;
using Corvane::Soa::Internal::Common::PolicyMarshaller;

namespace {

// The note that ends a message about misplaced elements, letter for letter.
std::string noted(const std::string& message) {
    return message +
           "\nPolicy file does not conform to the schema,please refer to the Corvane Services "
           "Guide for more information.";
}

class PolicyFile : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = ::testing::TempDir() + "policy-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        ::chmod(pattern.c_str(), 0755);
        dir = pattern + "/";
    }
    void TearDown() override {
        ::chmod(dir.c_str(), 0755);
        std::filesystem::remove_all(dir);
    }

    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(dir + name, std::ios::binary) << text;
        return dir + name;
    }
    static std::string read(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    // What loading `text` leaves, or the message it fails with.
    std::string load(const std::string& text, ObjectPropertyPolicy& policy) const {
        try {
            policy.load(write("in.xml", text));
            return PolicyText::of(policy);
        } catch (const DomException& e) {
            return "DomException: " + e.getMessage();
        }
    }

    std::string dir;
};

}  // namespace

TEST_F(PolicyFile, LoadsFlagsAtEveryLevelAndRefusesMisplacedElements) {
    const std::string root = "<ObjectPropertyPolicy xmlns='urn:x'";
    const std::pair<std::string, std::string> cases[] = {
        {root + " withProperties='true' excludeIsModifiable='1' other='1'>"
                "<Include file='x'/><ObjectType name='A' asAttribute='TRUE' uIValueOnly='1'>"
                "<Property name='p' excludeUiValues='0' includeIsModifiable='1'/>"
                "<Property name='q' excludeIsModifiable='1' excludeParentProperties='yes'/>"
                "</ObjectType><Include/></ObjectPropertyPolicy>",
         "(withProperties=1) A(asAttribute=0,uIValueOnly=1,withProperties=1){"
         "p(asAttribute=0,excludeUiValues=0,includeIsModifiable=1,uIValueOnly=1,withProperties=1), "
         "q(asAttribute=0,excludeParentProperties=0,uIValueOnly=1,withProperties=1)}"},
        {"<p:ObjectPropertyPolicy xmlns:p='urn:x'><p:ObjectType name='A'><p:Property name='p'/>"
         "<p:Property name='p' asAttribute='1'/></p:ObjectType></p:ObjectPropertyPolicy>",
         "A{p(asAttribute=1)}"},
        {"<objectPropertyPolicy/>", noted("DomException: Invalid root node:objectPropertyPolicy")},
        {root + "><ObjectType name='A'/><Other/><ObjectType name='B'/></ObjectPropertyPolicy>",
         noted("DomException: Unexpected element: Other")},
        {root + "><ObjectType Name='A'/></ObjectPropertyPolicy>",
         noted("DomException: The ObjectTypenode does not have the name' attribute.'")},
        {root + "><ObjectType name='A'><property name='p'/></ObjectType></ObjectPropertyPolicy>",
         "DomException: Invalid childPropertyelement."},
        {root + "><ObjectType name='A'><Property/></ObjectType></ObjectPropertyPolicy>",
         "DomException: Invalid childPropertyelement."},
    };
    for (const auto& [text, expected] : cases) {
        ObjectPropertyPolicy policy;
        EXPECT_EQ(load(text, policy), expected) << text;
    }
    // Nothing is undone: A, read before the fault, stays.
    ObjectPropertyPolicy policy;
    load(root + "><ObjectType name='A'/><Other/></ObjectPropertyPolicy>", policy);
    EXPECT_EQ(PolicyText::of(policy), "A{}");
    EXPECT_TRUE(PolicyMarshaller::isAFlag("uIValueOnly"));
    EXPECT_FALSE(PolicyMarshaller::isAFlag("excludeIsModifiable"));
}

// A file is read with no tree between; the result, the message and what the listeners hear
// must be those of reading the file into the XML reader's tree and the tree into the policy.
TEST_F(PolicyFile, LoadingAFileEndsAsLoadingItsTree) {
    struct Log : Corvane::Soa::Common::IPropertyPolicyChangeListener {
        void propertyAdded(PolicyType& type, const std::string& name,
                           Corvane::Soa::Common::PolicyProperty&) override {
            text += type.getName() + "." + name + " ";
        }
        std::string text;
    } log;
    PolicyType::addPropertyPolicyChangeListener(&log);
    std::string deep;
    for (int i = 0; i < 1100; ++i) {
        deep += "<x>";
    }
    // Long cases are written as adjacent literals on purpose.
    // NOLINTBEGIN(bugprone-suspicious-missing-comma)
    const std::string cases[] = {
        // A misplaced element, then the document breaks off: the reader's fault, nothing added.
        "<ObjectPropertyPolicy><ObjectType name='A'><Property name='a'/></ObjectType><Other/>"
        "<ObjectType name='B'>",
        // The properties before a faulty one are added to its type (and heard), the type is not.
        "<ObjectPropertyPolicy withProperties='1'><ObjectType name='A'><Property name='a'/>"
        "</ObjectType><ObjectType name='B' asAttribute='1'><Property name='b'/><Property/>"
        "<Property name='c'/></ObjectType></ObjectPropertyPolicy>",
        "<!DOCTYPE ObjectPropertyPolicy><ObjectPropertyPolicy/>",
        "<ObjectPropertyPolicy><Include>" + deep,
        "<?xml version='1.0 '?><ObjectPropertyPolicy/>",
        // Prefixed attributes are not flags, xsi:type is no attribute, values are converted.
        "<p:ObjectPropertyPolicy xmlns:p='urn:p' xmlns:xsi='http://www.w3.org/2001/"
        "XMLSchema-instance' xsi:type='p:T' p:asAttribute='1' uIValueOnly='&#x31;'>"
        "<p:ObjectType name='\xC3\x9C&amp;&#xE9;' p:withProperties='1'><p:Property name='a'/>"
        "<p:Property name='\xE2\x82\xAC' uIValueOnly='0'><Deeper/></p:Property></p:ObjectType>"
        "<p:ObjectType p:name='X'/></p:ObjectPropertyPolicy>",
    };
    // NOLINTEND(bugprone-suspicious-missing-comma)
    std::string outcomes[2];
    for (const std::string& text : cases) {
        const std::string path = write("in.xml", text);
        for (int way = 0; way < 2; ++way) {
            ObjectPropertyPolicy policy;
            policy.addType("Z{z}");
            log.text.clear();
            try {
                if (way == 0) {
                    policy.load(path);
                } else {
                    Corvane::Soa::Common::Xml::SAXToNodeParser parser;
                    PolicyMarshaller::load(policy, *parser.parseFile(path, "UTF-8"));
                }
                outcomes[way] = PolicyText::of(policy);
            } catch (const DomException& e) {
                outcomes[way] = PolicyText::of(policy) + " DomException: " + e.getMessage();
            }
            outcomes[way] += " heard: " + log.text;
        }
        EXPECT_EQ(outcomes[0], outcomes[1]) << text;
    }
    PolicyType::removePropertyPolicyChangeListener(&log);
    // The last case, for the record: every level read, and the type without "name" refused.
    EXPECT_EQ(outcomes[0],
              "(uIValueOnly=1) Z{z} \xC3\x9C&\xC3\xA9(uIValueOnly=1){"
              "a(uIValueOnly=1), \xE2\x82\xAC(uIValueOnly=0)} DomException: " +
                  noted("The ObjectTypenode does not have the name' attribute.'") +
                  " heard: \xC3\x9C&\xC3\xA9.a \xC3\x9C&\xC3\xA9.\xE2\x82\xAC ");
}

TEST_F(PolicyFile, FilesThatCannotBeReadAreIOExceptions) {
    for (const std::string& path : {dir + "missing.xml", dir}) {
        ObjectPropertyPolicy policy;
        try {
            policy.load(path);
            ADD_FAILURE() << path;
        } catch (const IOException& e) {
            EXPECT_EQ(e.getMessage(), "Error while loading the policy file specified in:" + path);
        }
    }
    ObjectPropertyPolicy policy;
    EXPECT_THROW(policy.load(write("bad.xml", "<ObjectPropertyPolicy>")), DomException);
}

TEST_F(PolicyFile, LoadingTwoFilesMergesThem) {
    ObjectPropertyPolicy policy;
    policy.load(write("1.xml",
                      "<ObjectPropertyPolicy><ObjectType name='A' withProperties='1'>"
                      "<Property name='a'/></ObjectType></ObjectPropertyPolicy>"));
    policy.load(write("2.xml",
                      "<ObjectPropertyPolicy asAttribute='1'><ObjectType name='A'>"
                      "<Property name='b'/></ObjectType><ObjectType name='B'/>"
                      "</ObjectPropertyPolicy>"));
    EXPECT_EQ(PolicyText::of(policy),
              "(asAttribute=1) A(withProperties=1){a(withProperties=1), b(asAttribute=1,"
              "withProperties=1)} B(asAttribute=1){}");
}

TEST_F(PolicyFile, SavesExactTextThatLoadsBackEqual) {
    ObjectPropertyPolicy policy;
    EXPECT_EQ(PolicyMarshaller::toXml(policy),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ns0:ObjectPropertyPolicy "
              "xmlns:ns0=\"http://corvane.com/Schemas/Soa/ObjectPropertyPolicy\">"
              "</ns0:ObjectPropertyPolicy>\n");
    policy.setModifier("excludeParentProperties", false);
    policy.setModifier("notAFlag", true);
    PolicyType item("It\xC3\xA9m", " b", "asAttribute");
    Corvane::Soa::Common::PolicyProperty odd("a&\"<%\t", "asAttribute");
    item.addProperty(odd);
    item.setModifier("withProperties", true);
    policy.addType(item);
    policy.addType("Empty");
    EXPECT_EQ(PolicyMarshaller::toXml(policy),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ns0:ObjectPropertyPolicy "
              "xmlns:ns0=\"http://corvane.com/Schemas/Soa/ObjectPropertyPolicy\" "
              "excludeParentProperties=\"0\">\n"
              "<ns0:ObjectType name=\"Empty\" excludeParentProperties=\"0\"></ns0:ObjectType>\n"
              "<ns0:ObjectType name=\"It\xC3\xA9m\" withProperties=\"1\" "
              "excludeParentProperties=\"0\">\n"
              "<ns0:Property name=\"a&amp;&quot;&lt;&#x25;&#9;\" withProperties=\"1\" "
              "asAttribute=\"1\" excludeParentProperties=\"0\"/>\n"
              "<ns0:Property name=\"b\" withProperties=\"1\" asAttribute=\"1\" "
              "excludeParentProperties=\"0\"/></ns0:ObjectType></ns0:ObjectPropertyPolicy>\n");

    // Modifiers that are not flags are not written, so they do not come back.
    policy.save(dir + "a/b//c.xml");
    ObjectPropertyPolicy loaded;
    loaded.load(dir + "a/b//c.xml");
    EXPECT_EQ(PolicyText::of(loaded),
              "(excludeParentProperties=0) Empty(excludeParentProperties=0){} "
              "It\xC3\xA9m(excludeParentProperties=0,withProperties=1){"
              "a&\"<%\t(asAttribute=1,excludeParentProperties=0,withProperties=1), "
              "b(asAttribute=1,excludeParentProperties=0,withProperties=1)}");
    EXPECT_EQ(PolicyMarshaller::toXml(loaded), PolicyMarshaller::toXml(policy));
    policy.save(dir + "a/b/c.xml");  // the directories exist: no error
}

TEST_F(PolicyFile, DirectoriesThatCannotBeMadeAreIOExceptions) {
    ASSERT_EQ(::symlink((dir + "nowhere").c_str(), (dir + "dangling").c_str()), 0);
    const std::string path = dir + "dangling/sub/p.xml";
    try {
        ObjectPropertyPolicy().save(path);
        ADD_FAILURE();
    } catch (const IOException& e) {
        EXPECT_EQ(e.getMessage(), "'Error in writing ObjectPropertyPolicy in a:-'" + path);
    }
    write("file", "");
    try {
        ObjectPropertyPolicy().save(dir + "file/p.xml");  // mkdir's "not a directory" passes
        ADD_FAILURE();
    } catch (const IOException& e) {
        EXPECT_EQ(e.getMessage(), "'Error while creating file under:-'" + dir + "file/p.xml");
    }
    PolicyMarshaller::createDir("p.xml");  // no directory part: nothing to make
    PolicyMarshaller::createDir("/p.xml");
}

// Saving through a link replaces the file it names, link by link, and a dangling link gets its
// file made; the links stay links. A cycle of links names no file.
TEST_F(PolicyFile, SavingThroughALinkReplacesTheFileItNames) {
    ObjectPropertyPolicy policy;
    policy.addType("Item");
    write("real.xml", "<ObjectPropertyPolicy/>");
    ASSERT_EQ(::symlink("real.xml", (dir + "link.xml").c_str()), 0);
    ASSERT_EQ(::symlink((dir + "link.xml").c_str(), (dir + "chain.xml").c_str()), 0);
    ASSERT_EQ(::symlink("made.xml", (dir + "dangling.xml").c_str()), 0);
    ASSERT_EQ(::symlink("loop.xml", (dir + "loop.xml").c_str()), 0);
    for (const auto& [link, file] :
         {std::pair{"chain.xml", "real.xml"}, {"dangling.xml", "made.xml"}}) {
        policy.save(dir + link);
        EXPECT_TRUE(std::filesystem::is_symlink(dir + link)) << link;
        EXPECT_EQ(read(dir + file), PolicyMarshaller::toXml(policy)) << link;
    }
    EXPECT_TRUE(std::filesystem::is_symlink(dir + "link.xml"));
    EXPECT_THROW(policy.save(dir + "loop.xml"), IOException);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 6);
}

TEST_F(PolicyFile, AFailedSaveLeavesTheEarlierFileWhole) {
    ObjectPropertyPolicy big;
    for (int i = 0; i < 1000; ++i) {
        big.addType("Type" + std::to_string(i) + "{a,b,c}");
    }
    const std::string path = write("policy.xml", "<ObjectPropertyPolicy/>");
    // Two ways to fail: a directory where no file can be made (root drops its rights for it),
    // and a file that cannot grow past a size limit.
    const bool root = ::geteuid() == 0;
    rlimit original{};
    ::getrlimit(RLIMIT_FSIZE, &original);
    for (const bool sizeLimit : {false, true}) {
        if (sizeLimit) {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{4096, original.rlim_max};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        } else {
            ::chmod(dir.c_str(), 0555);
            ASSERT_TRUE(!root || ::seteuid(65534) == 0);
        }
        EXPECT_THROW(big.save(path), IOException);
        ASSERT_TRUE(!root || ::seteuid(0) == 0);
        ::setrlimit(RLIMIT_FSIZE, &original);
        ::chmod(dir.c_str(), 0755);
        EXPECT_EQ(read(path), "<ObjectPropertyPolicy/>");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1);
    }
    big.save(path);
    ObjectPropertyPolicy loaded;
    loaded.load(path);
    EXPECT_EQ(loaded, big);
}
