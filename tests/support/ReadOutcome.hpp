#ifndef CVSOA_TESTS_SUPPORT_READOUTCOME_HPP
#define CVSOA_TESTS_SUPPORT_READOUTCOME_HPP

// What a read gives, as one text that two readings can be compared by: the object written in
// both wire forms, or the exception's class and message.

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/DocumentReader.hpp>

#include "WireForms.hpp"

#include <exception>
#include <string>
#include <typeinfo>

namespace ReadOutcome {

template <class Read>
std::string of(Read&& read) {
    try {
        const ::Corvane::Soa::Common::AutoPtr<::Corvane::Soa::Common::Xml::BaseObject> object =
            read();
        return WireForms::xmlOf(*object) + "\n" + WireForms::jsonOf(*object);
    } catch (const std::exception& e) {
        return std::string("throws ") + typeid(e).name() + ": " + e.what();
    }
}

/// A new object of the type the document names, read by `path`.
inline std::string ofNew(const std::string& text,
                         ::Corvane::Soa::Common::Xml::DocumentReader::Path path) {
    return of([&] { return ::Corvane::Soa::Common::Xml::DocumentReader::read(text, path); });
}

/// `make()`'s new object, read by `path`.
template <class Make>
std::string ofInto(const std::string& text, Make&& make,
                   ::Corvane::Soa::Common::Xml::DocumentReader::Path path) {
    return of([&] {
        ::Corvane::Soa::Common::AutoPtr<::Corvane::Soa::Common::Xml::BaseObject> object(make());
        ::Corvane::Soa::Common::Xml::DocumentReader::read(text, *object, path);
        return object;
    });
}

}  // namespace ReadOutcome

#endif
