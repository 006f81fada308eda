#ifndef CORVANE_SOA_COMMON_XML_DOCUMENTREADER_HPP
#define CORVANE_SOA_COMMON_XML_DOCUMENTREADER_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <cstdint>
#include <iosfwd>
#include <string>

namespace Corvane::Soa::Common::Xml {

class BaseObject;

/// Reads a typed document, XML or JSON, into a generated object: the mirror of
/// `XmlUtil::serialize`. A text whose first byte after white space is '{' or '[' is JSON,
/// anything else XML.
///
/// The direct path, the default, binds the reader's tokens straight into the object by its
/// type's descriptor and builds no element tree or JSON tree; an object that reads itself (a
/// hand-written type, a user's subclass of a generated one) gets its own part of the document as
/// a tree. The tree path reads the whole tree and hands it to `parse` or `parseJSON`. Both give
/// the same object, or the same exception with the same message: the refusals of
/// `SAXToNodeParser` and `Parser`, and the failures of the JSON getters that `parseJSON` calls.
///
/// A document the direct path cannot follow exactly (a missing or mistyped JSON member, a
/// repeated member holding a structure) is read again through the tree. Into an object made by
/// the reader that is exact; into the caller's object the tree path then reads over what the
/// direct path had bound, which matters only when the tree path accepts the document.
class CORVANE_SOA_API DocumentReader {
public:
    enum class Path : std::uint8_t {
        Direct,
        Tree,
        /// The direct path without the tree behind it, for tests and measurements: a document
        /// it would hand to the tree path throws `std::domain_error` instead.
        DirectOnly,
    };

    /// Reads `text` into `object`.
    static void read(const std::string& text, BaseObject& object, Path path = Path::Direct);
    /// Reads `text` into a new object of the registered type that its root names: in XML the
    /// root element's namespace and local name, in JSON the root's ".QName" member. A name no
    /// type is registered under throws `DomException` (XML) or `InvalidTypeException` (JSON).
    static AutoPtr<BaseObject> read(const std::string& text, Path path = Path::Direct);

    /// Reads a service's reply into `object`. An error document (XML whose root element is one
    /// that `ExceptionMapper` reads: InvalidUserException, InvalidCredentialsException,
    /// InternalServerException, ConnectionException, ProtocolException, ServiceException,
    /// CvResponse) throws the exception it maps to; any other reply is read as `read` does.
    static void readReply(const std::string& text, BaseObject& object, Path path = Path::Direct);

    /// As `read`, the text taken from `in` to its end.
    static void readStream(std::istream& in, BaseObject& object, Path path = Path::Direct);
    static AutoPtr<BaseObject> readStream(std::istream& in, Path path = Path::Direct);

    /// As `read`, the text taken from the file at `path`; a file that cannot be read throws
    /// `IOException` naming it.
    static void readFile(const std::string& file, BaseObject& object, Path path = Path::Direct);
    static AutoPtr<BaseObject> readFile(const std::string& file, Path path = Path::Direct);
};

}  // namespace Corvane::Soa::Common::Xml

#endif
