#ifndef CVSOA_TESTS_SUPPORT_WIREFORMS_HPP
#define CVSOA_TESTS_SUPPORT_WIREFORMS_HPP

// A data object written in either wire form, and a fresh object of a type read from either.

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>

#include <sstream>
#include <string>

namespace WireForms {

inline std::string xmlOf(const ::Corvane::Soa::Common::Xml::BaseObject& object) {
    ::Corvane::Soa::Common::Xml::XmlStream stream;
    object.outputXML(stream);
    return stream.str();
}

inline std::string jsonOf(const ::Corvane::Soa::Common::Xml::BaseObject& object) {
    std::ostringstream out;
    ::Corvane::Soa::Common::Xml::JsonStream stream(&out);
    object.writeJSON(&stream);
    return out.str();
}

template <class T>
::Corvane::Soa::Common::AutoPtr<T> fromXml(const std::string& xml) {
    ::Corvane::Soa::Common::Xml::SAXToNodeParser parser;
    ::Corvane::Soa::Common::AutoPtr<T> object(new T);
    object->parse(*parser.parseString(xml));
    return object;
}

template <class T>
::Corvane::Soa::Common::AutoPtr<T> fromJson(const std::string& json) {
    ::Corvane::Soa::Common::AutoPtr<T> object(new T);
    object->parseJSON(::Corvane::Soa::Internal::Json::Parser()
                          .parse(json)
                          .dynamicCast< ::Corvane::Soa::Internal::Json::JSONObject>());
    return object;
}

}  // namespace WireForms

#endif
