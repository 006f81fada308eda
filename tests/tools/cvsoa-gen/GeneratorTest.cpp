// cvsoa-gen's refusals: each names the file, the line and what is not supported, exits with 1
// and writes nothing.
#include <gtest/gtest.h>

#include "RunCommand.hpp"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

CommandOutcome run(const std::string& arguments) {
    return runCommand(std::string(CVSOA_GEN) + " " + arguments + " 2>&1");
}

class Generator : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir =
            fs::temp_directory_path() /
            ("cvsoa-gen-test-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir / "out");
    }
    void TearDown() override { fs::remove_all(m_dir); }

    // A schema of the namespace .../Schemas/Test/2026-01/Gen holding `body`, from line 3 on.
    std::string write(const std::string& body) const {
        const fs::path file = m_dir / "Gen.xsd";
        std::ofstream(file) << "<xsd:schema xmlns:xsd='http://www.w3.org/2001/XMLSchema' "
                               "xmlns:tns='http://corvane.com/Schemas/Test/2026-01/Gen'\n"
                               " targetNamespace='http://corvane.com/Schemas/Test/2026-01/Gen'>\n"
                            << body << "\n</xsd:schema>\n";
        return file.string();
    }
    CommandOutcome generate(const std::string& file) const {
        return run("-o " + (m_dir / "out").string() + " -I " CVSOA_SOURCE_DIR "/schemas " + file);
    }
    bool wroteNothing() const { return fs::is_empty(m_dir / "out"); }

    fs::path m_dir;
};

struct Refusal {
    const char* body;
    const char* message;  // after "file:"
};

TEST_F(Generator, RefusesWhatLiesOutsideTheSubset) {
    const std::vector<Refusal> refusals = {
        {"<xsd:simpleType name='S'/>", "3: simpleType is not supported"},
        {"<xsd:complexType name='T'>\n<xsd:complexContent/></xsd:complexType>",
         "4: complexContent is not supported"},
        {"<xsd:complexType name='T'><xsd:choice/></xsd:complexType>", "3: choice is not supported"},
        {"<xsd:complexType name='T'><xsd:sequence>\n<xsd:element ref='tns:X'/>"
         "</xsd:sequence></xsd:complexType>",
         "4: the element {http://corvane.com/Schemas/Test/2026-01/Gen}X is not declared in any "
         "schema read (is its schema imported?)"},
        {"<xsd:complexType name='M'><xsd:attribute name='key' type='xsd:string'/>\n"
         "<xsd:attribute name='value' type='xsd:int'/></xsd:complexType>",
         "4: the map entry M has a value of a kind that is not supported (a key is a text "
         "attribute or a model object; a value is a text attribute, a structure, a model object "
         "or a list of structures)"},
        {"<xsd:complexType name='T'><xsd:attribute name='a' type='xsd:decimal'/>"
         "</xsd:complexType>",
         "3: the type xsd:decimal is not supported"},
        {"<xsd:complexType name='T'><xsd:sequence><xsd:element name='e' type='xsd:string' "
         "maxOccurs='5'/></xsd:sequence></xsd:complexType>",
         "3: maxOccurs=\"5\" is not supported"},
        {"<xsd:complexType name='T'><xsd:sequence><xsd:element name='e' type='xsd:int'/>"
         "</xsd:sequence></xsd:complexType>",
         "3: an element of type xsd:int is not supported (make it an attribute)"},
        {"<xsd:complexType name='T'><xsd:sequence><xsd:element name='e' type='tns:Missing'/>"
         "</xsd:sequence></xsd:complexType>",
         "3: the type {http://corvane.com/Schemas/Test/2026-01/Gen}Missing is not declared in any "
         "schema read (is its schema imported?)"},
        {"<xsd:complexType name='T'/>\n<xsd:complexType name='T'/>",
         "4: type T is declared twice in http://corvane.com/Schemas/Test/2026-01/Gen (first at "
         "line 3)"},
        {"<xsd:import namespace='http://corvane.com/Schemas/None'/>",
         "3: no schema of the imported namespace http://corvane.com/Schemas/None was found: give "
         "its file or a directory with --import-dir"},
        {"<xsd:complexType name='T'><xsd:attribute name='a-b' "
         "type='xsd:string'/></xsd:complexType>",
         "3: the name \"a-b\" is not supported (names must be C++ identifiers)"},
        {"<xsd:complexType name='T'><xsd:attribute name='typeName' type='xsd:string'/>"
         "</xsd:complexType>",
         "3: the field name \"typeName\" is not supported (its accessor would hide the object "
         "base's)"},
        {"<xsd:complexType name='T'><xsd:sequence><xsd:element name='seldom' type='xsd:string' "
         "maxOccurs='unbounded'/>\n<xsd:element name='b' type='xsd:string' maxOccurs='unbounded'/>"
         "<xsd:element name='c' type='xsd:string' maxOccurs='unbounded'/></xsd:sequence>"
         "</xsd:complexType>",
         "3: the field name \"seldom\" is not supported in T (the type keeps its seldom-set "
         "fields under that name)"},
        {"<xsd:complexType name='T'><xsd:sequence><xsd:element name='e' type='bad:T'/>"
         "</xsd:sequence></xsd:complexType>",
         "3: namespace prefix \"bad\" is not declared"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.body);
        const std::string file = write(refusal.body);
        const CommandOutcome result = generate(file);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, file + ":" + refusal.message + "\n");
        EXPECT_TRUE(wroteNothing());
    }
}

TEST_F(Generator, RefusesDocumentsTheReaderRefuses) {
    const std::string file = (m_dir / "Bad.xsd").string();
    std::ofstream(file) << "<!DOCTYPE x [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><x>&e;</x>";
    const CommandOutcome result = generate(file);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.rfind(file + ": is not a well-formed XML document: Document Type", 0),
              0U)
        << result.output;
    EXPECT_TRUE(wroteNothing());
}

TEST_F(Generator, WritesOneHeaderAndOneSourceAndDocumentsTheSubset) {
    const std::string file = write(
        "<xsd:complexType name='T'><xsd:attribute name='a' type='xsd:string'/>"
        "</xsd:complexType>");
    EXPECT_EQ(generate(file).status, 0);
    EXPECT_TRUE(fs::exists(m_dir / "out/corvane/soa/schemas/Test/_2026_01/Gen.hpp"));
    EXPECT_TRUE(fs::exists(m_dir / "out/corvane/soa/schemas/Test/_2026_01/Gen.cpp"));
    const CommandOutcome help = run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("is not supported"), std::string::npos);
    EXPECT_EQ(run("").status, 2);
}

}  // namespace
