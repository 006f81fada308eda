#ifndef CORVANE_SOA_COMMON_EXCEPTIONS_EXCEPTIONMAPPER_HPP
#define CORVANE_SOA_COMMON_EXCEPTIONS_EXCEPTIONMAPPER_HPP

#include <corvane/soa/Export.hpp>

#include <ostream>
#include <string>

namespace Corvane::Soa::Common::Xml {
class XMLNode;
}  // namespace Corvane::Soa::Common::Xml

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {
class SoaException;
}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

namespace Corvane::Soa::Common::Exceptions {

/// Turns the server's error documents into thrown exceptions, rethrows an exception as its most
/// derived type, and writes an exception as its error document. All operations are static.
///
/// An error document is recognised by its root element's local name (whatever its namespace):
///   InvalidUserException         children: code, level, message, response text (by position)
///   InvalidCredentialsException  first child: message, with "code" and "level" attributes
///   InternalServerException      every child: one message, with "code" and "level" attributes
///   ConnectionException, ProtocolException   as InvalidCredentialsException
///   ServiceException             every child: one error; "uid" and "clientId" on the root
///   CvResponse                   legacy: "CvError" with "CvErrorValue"s, or "CvCorbaResponse"
/// Absent attributes and children give 0 and the empty text. Only the first child of a
/// credentials, connection or protocol document is read.
class CORVANE_SOA_API ExceptionMapper {
public:
    ExceptionMapper() = delete;

    /// Reads `xml` with a fresh `SAXToNodeParser` and dispatches its root as below. A document
    /// that is not well formed throws the reader's `DomException`.
    static void parseExceptionString(const std::string& xml);

    /// Throws the exception that the error document rooted at `root` describes; returns when it
    /// is an ordinary response (any other root, a "CvResponse" holding a "CvCorbaResponse", or
    /// no root at all). A "CvResponse" whose first child is neither "CvError" nor
    /// "CvCorbaResponse", or that has no child, throws `InternalServerException` with
    /// "Unexected xml document inside CvResponse.\n".
    static void parseExceptionString(const ::Corvane::Soa::Common::Xml::XMLNode* root);

    /// Throws a copy of `e` as its most derived type among the six service exceptions. Protocol
    /// and connection exceptions are rebuilt from the first error's message, code and level. Any
    /// other `SoaException` is thrown as an `InternalServerException` with its first error's
    /// message, code and level.
    static void throwSoaException(::Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException& e);

    /// Writes `e` as its error document, under the exception's own namespace.
    static void writeSoaException(::Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException& e,
                                  ::std::ostream& out);

    /// Writes `e` as its error document with its root element in the namespace `nameSpace` (no
    /// namespace when it is empty). The document, for an InternalServerException with two
    /// errors:
    ///
    ///   <?xml version="1.0" encoding="UTF-8"?>
    ///   <ns0:InternalServerException xmlns:ns0="NAMESPACE"
    ///       xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
    ///       xmlns:xsd="http://www.w3.org/2001/XMLSchema">          (one line)
    ///   <messages xsi:type="xsd:string" code="214004" level="3">first</messages>
    ///   <messages xsi:type="xsd:string" code="1" level="1">second</messages>
    ///   </ns0:InternalServerException>
    ///
    /// Every error becomes one "messages" element, in order. A ServiceException's root also
    /// carries ` uid="..."` and ` clientId="..."` when they are not empty. An
    /// InvalidUserException is written as the reader expects it, by position:
    ///   <code xsi:type="xsd:int">C</code>, <level xsi:type="xsd:int">L</level>, one "messages"
    ///   element (the first error's text) and <cvresponse xsi:type="xsd:string">RESPONSE
    ///   </cvresponse> (without the line break before the closer), each on its own line.
    /// A `SoaException` of no other known type is written as an InternalServerException.
    /// Texts are escaped, so that reading the document back with `parseExceptionString` throws
    /// an equal exception: same type, errors, codes, levels, uid, client id and response text.
    /// (Documents carry at least one error for all types but ServiceException, and one only for
    /// invalid user, credentials, connection and protocol exceptions; texts hold no control
    /// characters but tab, line feed and carriage return, which XML cannot carry.)
    static void writeSoaException(const ::std::string& nameSpace,
                                  ::Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException& e,
                                  ::std::ostream& out);

private:
    // The local names of the six error documents' root elements.
    static constexpr const char* invalidCredentialsExceptionNamespace =
        "InvalidCredentialsException";
    static constexpr const char* connectionExceptionNamespace = "ConnectionException";
    static constexpr const char* protocolExceptionNamespace = "ProtocolException";
    static constexpr const char* internalServerExceptionNamespace = "InternalServerException";
    static constexpr const char* invalidUserExceptionNamespace = "InvalidUserException";
    static constexpr const char* serviceExceptionNamespace = "ServiceException";

    static ::std::string getTargetNameSpace(
        const ::Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException& e);
};

}  // namespace Corvane::Soa::Common::Exceptions

#endif
