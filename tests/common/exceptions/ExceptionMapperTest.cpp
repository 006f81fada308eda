#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/ExceptionMapper.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

namespace {

using ::Corvane::Soa::Common::Exceptions::DomException;
using ::Corvane::Soa::Common::Exceptions::ExceptionMapper;
using namespace ::Corvane::Schemas::Soa::_2006_03::Exceptions;

// Type, errors and the extra texts of an exception, in one comparable line.
std::string describe(const SoaException& e) {
    std::string out = e.getTypeName();
    for (const auto& error : e.getErrors()) {
        out += "|" + error->getMessage() + "," + std::to_string(error->getCode()) + "," +
               std::to_string(error->getLevel());
    }
    if (const auto* service = dynamic_cast<const ServiceException*>(&e)) {
        out += "|uid=" + service->getUid() + "|client=" + service->getClientId();
    }
    if (const auto* user = dynamic_cast<const InvalidUserException*>(&e)) {
        out += "|response=" + user->getCvResponse();
    }
    return out;
}

std::string outcome(const std::function<void()>& call) {
    try {
        call();
    } catch (const SoaException& e) {
        return describe(e);
    }
    return "returned";
}

std::string dispatch(const std::string& xml) {
    return outcome([&] { ExceptionMapper::parseExceptionString(xml); });
}

constexpr const char* kNs = R"( xmlns:e="http://corvane.com/Schemas/Soa/2006-03/Exceptions")";

TEST(ExceptionMapper, DispatchesEachDocumentKind) {
    const struct {
        std::string xml, expected;
    } cases[] = {
        {"<InvalidUserException><c>12</c><l>3</l><m>who?</m><r>&lt;x/&gt;</r>"
         "</InvalidUserException>",
         "InvalidUserException|who?,12,3|response=<x/>"},
        {"<InvalidUserException><c>12</c></InvalidUserException>",
         "InvalidUserException|,12,0|response="},
        {std::string("<e:InvalidCredentialsException") + kNs +
             "><m code='7' level='2'>bad password</m><m code='8'>ignored</m>"
             "</e:InvalidCredentialsException>",
         "InvalidCredentialsException|bad password,7,2"},
        {"<InternalServerException><m code='1' level='3'>one</m></InternalServerException>",
         "InternalServerException|one,1,3"},
        {"<InternalServerException><m code='1'>a</m><x level='2'>b</x><m>c</m>"
         "</InternalServerException>",
         "InternalServerException|a,1,0|b,0,2|c,0,0"},
        {"<InternalServerException/>", "InternalServerException|,0,0"},
        {"<ConnectionException><m>refused</m></ConnectionException>",
         "ConnectionException|refused,0,0"},
        {"<ProtocolException><m code='x' level='-4'>odd</m></ProtocolException>",
         "ProtocolException|odd,-2147483648,-4"},
        {"<ServiceException><m code='5' level='1'>a</m><m>b</m></ServiceException>",
         "ServiceException|a,5,1|b,0,0|uid=|client="},
        {"<ServiceException uid='Q1' clientId='c'/>", "ServiceException|uid=Q1|client=c"},
        // An exception document's name in any namespace counts.
        {"<o:ServiceException xmlns:o='urn:other'/>", "ServiceException|uid=|client="},
        {"<CvResponse><CvError><CvErrorValue code='4' level='2' message='a'/><skip message='x'/>"
         "<CvErrorValue code='9' level='9' message='b'/><CvErrorValue message='c'/></CvError>"
         "</CvResponse>",
         "InternalServerException|a\nb\nc,4,2"},
        {"<CvResponse><CvError/></CvResponse>", "InternalServerException|,0,0"},
        {"<CvResponse><CvCorbaResponse/></CvResponse>", "returned"},
        {"<CvResponse><CvResult/><CvError/></CvResponse>",
         "InternalServerException|Unexected xml document inside CvResponse.\n,0,0"},
        {"<CvResponse/>",
         "InternalServerException|Unexected xml document inside CvResponse.\n,0,0"},
        {"<LoginResponse><ServiceException/></LoginResponse>", "returned"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(dispatch(c.xml), c.expected) << c.xml;
    }
    EXPECT_THROW(ExceptionMapper::parseExceptionString("<ServiceException>"), DomException);
    EXPECT_EQ(outcome([] { ExceptionMapper::parseExceptionString(nullptr); }), "returned");
}

// A SoaException of no known type.
class OtherException : public SoaException {
public:
    OtherException() : SoaException("OtherException", "boom", 5, 1) { addError("more", 6, 2); }
};

std::string written(SoaException& e) {
    std::ostringstream out;
    ExceptionMapper::writeSoaException(e, out);
    return out.str();
}

TEST(ExceptionMapper, WritesTheDocumentPiecesInOrder) {
    InternalServerException internal("a<b", 214004, 3);
    internal.addMessage("c", 1, 1);
    EXPECT_EQ(written(internal),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ns0:InternalServerException xmlns:ns0=\"http://corvane.com/Schemas/Soa/2006-03/"
              "Exceptions\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
              "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n"
              "<messages xsi:type=\"xsd:string\" code=\"214004\" level=\"3\">a&lt;b</messages>\n"
              "<messages xsi:type=\"xsd:string\" code=\"1\" level=\"1\">c</messages>\n"
              "</ns0:InternalServerException>\n");

    InvalidUserException user(9, 1, "who?", "r");
    std::ostringstream out;
    ExceptionMapper::writeSoaException("", user, out);
    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<InvalidUserException xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
              "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n"
              "<code xsi:type=\"xsd:int\">9</code>\n<level xsi:type=\"xsd:int\">1</level>\n"
              "<messages xsi:type=\"xsd:string\">who?</messages>\n"
              "<cvresponse xsi:type=\"xsd:string\">r</cvresponse>\n</InvalidUserException>\n");
}

// Each kind is rethrown as its most derived type, and written as a document that reads back as
// the same exception, in its own namespace or another.
TEST(ExceptionMapper, RethrowsAndWritesEachKind) {
    const std::string odd = " tab\there \"q\" 'a' <&> 100% line\nreturn\r東京 ";
    ServiceException service;
    service.addError(odd, -1, 3);
    service.addError("second", 2147483647, -2147483647);
    service.setUid("Q\"1&");
    service.setClientId(odd);
    ServiceException empty;
    InternalServerException internal(odd, 1, 2);
    internal.addMessage("", 0, 0);
    InvalidUserException user(-5, 2, odd, "<CvResponse/>");
    InvalidCredentialsException credentials(odd, 7, 1);
    ConnectionException connection("refused", 8, 2);
    ProtocolException protocol("late", 3, 4);
    protocol.addError("dropped", 0, 0);
    OtherException other;
    const struct {
        SoaException* e;
        std::string rethrown;  // "": as it is
        std::string read;      // "": as it is
    } cases[] = {
        {&service, "", ""},
        {&empty, "", ""},
        {&internal, "", ""},
        {&user, "", ""},
        {&credentials, "", ""},
        {&connection, "", ""},
        // Rebuilt from the first error only, in rethrowing and in writing.
        {&protocol, "ProtocolException|late,3,4", "ProtocolException|late,3,4"},
        {&other, "InternalServerException|boom,5,1", "InternalServerException|boom,5,1|more,6,2"},
    };
    for (const auto& c : cases) {
        SoaException& e = *c.e;
        const std::string same = describe(e);
        EXPECT_EQ(outcome([&] { ExceptionMapper::throwSoaException(e); }),
                  c.rethrown.empty() ? same : c.rethrown);
        const std::string document = written(e);
        EXPECT_EQ(dispatch(document), c.read.empty() ? same : c.read) << document;
        std::ostringstream elsewhere;
        ExceptionMapper::writeSoaException("urn:any", e, elsewhere);
        EXPECT_EQ(dispatch(elsewhere.str()), c.read.empty() ? same : c.read);
    }
}

}  // namespace
