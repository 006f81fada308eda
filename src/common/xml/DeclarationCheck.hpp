#ifndef CORVANE_SOA_SRC_COMMON_XML_DECLARATIONCHECK_HPP
#define CORVANE_SOA_SRC_COMMON_XML_DECLARATIONCHECK_HPP

// The XML reader's check of the XML declaration. Not part of the exported interface.

#include <xercesc/framework/XMLDocumentHandler.hpp>

namespace Corvane::Soa::Common::Xml {

// Sees the XML declaration, which no SAX callback reports. Xerces lets a version with trailing
// blanks ("1.0 ") pass; the grammar does not.
class DeclarationCheck : public XERCES_CPP_NAMESPACE::XMLDocumentHandler {
public:
    using Refuse = void (*)(void* owner, const XMLCh* version);
    DeclarationCheck(void* owner, Refuse refuse) : m_owner(owner), m_refuse(refuse) {}

    void XMLDecl(const XMLCh* const version, const XMLCh* const, const XMLCh* const,
                 const XMLCh* const) override {
        if (version != nullptr && version[0] != 0 && !isXmlVersion(version)) {
            m_refuse(m_owner, version);
        }
    }
    void docCharacters(const XMLCh* const, const XMLSize_t, const bool) override {}
    void docComment(const XMLCh* const) override {}
    void docPI(const XMLCh* const, const XMLCh* const) override {}
    void endDocument() override {}
    void endElement(const XERCES_CPP_NAMESPACE::XMLElementDecl&, const unsigned int, const bool,
                    const XMLCh* const) override {}
    void endEntityReference(const XERCES_CPP_NAMESPACE::XMLEntityDecl&) override {}
    void ignorableWhitespace(const XMLCh* const, const XMLSize_t, const bool) override {}
    void resetDocument() override {}
    void startDocument() override {}
    void startElement(const XERCES_CPP_NAMESPACE::XMLElementDecl&, const unsigned int,
                      const XMLCh* const,
                      const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>&,
                      const XMLSize_t, const bool, const bool) override {}
    void startEntityReference(const XERCES_CPP_NAMESPACE::XMLEntityDecl&) override {}

private:
    // XML 1.x: "1." and one or more digits, nothing around them.
    static bool isXmlVersion(const XMLCh* version) {
        if (version == nullptr || version[0] != u'1' || version[1] != u'.' || version[2] == 0) {
            return false;
        }
        for (const XMLCh* c = version + 2; *c != 0; ++c) {
            if (*c < u'0' || *c > u'9') {
                return false;
            }
        }
        return true;
    }

    void* m_owner;
    Refuse m_refuse;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
