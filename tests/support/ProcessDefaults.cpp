// Settings that are process-wide (the default code page, the 0x1A replacement) go back to
// their defaults after every test, so that the suite also passes when one process runs it all
// (ctest runs each test in a process of its own). The memory manager, once installed, stays
// for the life of the process: the tests that install one still need a process of their own.
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>

#include <gtest/gtest.h>

namespace {

class ProcessDefaults : public ::testing::EmptyTestEventListener {
    void OnTestEnd(const ::testing::TestInfo&) override {
        Corvane::Soa::Common::Xml::setDefaultCharacterEncoding("");
        Corvane::Soa::Common::Xml::SAXToNodeParser::replaceHexOneA(false);
    }
};

// Registered before main: the test main of the library gives no later hook.
const bool kInstalled = [] {  // NOLINT(cert-err58-cpp)
    ::testing::UnitTest::GetInstance()->listeners().Append(new ProcessDefaults);
    return true;
}();

}  // namespace
