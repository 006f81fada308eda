#ifndef CVSOA_SRC_COMMON_XML_TYPEIDENTITIES_HPP
#define CVSOA_SRC_COMMON_XML_TYPEIDENTITIES_HPP

#include <cstdint>
#include <string>
#include <string_view>

namespace Corvane::Soa::Common::Xml {

/// The process's table of data-type identities (namespace URI and type name). An object keeps
/// the 32-bit number of its identity instead of the two texts or pointers to them, which keeps
/// `BaseObject` to a virtual table pointer and two 32-bit words.
///
/// Entries are added under a lock and never moved or removed, so `at` reads without locking;
/// a number only reaches another thread together with an object, whose hand-over orders the
/// entry's writes before the read. Number 0 is the empty identity. The table is never destroyed,
/// so that objects which outlive static destruction keep their texts.
class TypeIdentities {
public:
    struct Identity {
        std::string ns;
        std::string typeName;
    };

    /// The number of the identity (ns, typeName), added on first request.
    static std::uint32_t intern(std::string_view ns, std::string_view typeName);

    static const Identity& at(std::uint32_t number) noexcept;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
