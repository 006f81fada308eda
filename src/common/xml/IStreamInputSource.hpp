#ifndef CORVANE_SOA_SRC_COMMON_XML_ISTREAMINPUTSOURCE_HPP
#define CORVANE_SOA_SRC_COMMON_XML_ISTREAMINPUTSOURCE_HPP

// A standard stream as the input of the XML reader. Not part of the exported interface.

#include <xercesc/sax/InputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>

#include <istream>

namespace Corvane::Soa::Common::Xml {

// Reads a standard stream for Xerces. The stream is not owned.
class IStreamInputSource : public XERCES_CPP_NAMESPACE::InputSource {
public:
    IStreamInputSource(std::istream& in, const char* systemId)
        : XERCES_CPP_NAMESPACE::InputSource(systemId), m_in(in) {}

    XERCES_CPP_NAMESPACE::BinInputStream* makeStream() const override { return new Stream(m_in); }

private:
    class Stream : public XERCES_CPP_NAMESPACE::BinInputStream {
    public:
        explicit Stream(std::istream& in) : m_in(in) {}

        XMLFilePos curPos() const override { return m_position; }
        XMLSize_t readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) override {
            if (!m_in.good()) {
                return 0;
            }
            m_in.read(reinterpret_cast<char*>(toFill), static_cast<std::streamsize>(maxToRead));
            const auto count = static_cast<XMLSize_t>(m_in.gcount());
            m_position += count;
            return count;
        }
        const XMLCh* getContentType() const override { return nullptr; }

    private:
        std::istream& m_in;
        XMLFilePos m_position = 0;
    };

    std::istream& m_in;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
