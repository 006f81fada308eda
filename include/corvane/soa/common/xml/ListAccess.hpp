#ifndef CORVANE_SOA_COMMON_XML_LISTACCESS_HPP
#define CORVANE_SOA_COMMON_XML_LISTACCESS_HPP

#include <cstddef>

namespace Corvane::Soa::Common::Xml {

class BaseObject;

/// The operations the runtime needs on a list of structures, `std::vector<AutoPtr<T>>`, whose
/// element type it does not know; `ObjectList<T>::kAccess` supplies them for each `T`.
struct ListAccess {
    std::size_t (*size)(const void* list);
    BaseObject* (*at)(const void* list, std::size_t index);
    void (*reserve)(void* list, std::size_t count);
    /// Appends a new default-constructed element and returns it.
    BaseObject* (*append)(void* list);
};

}  // namespace Corvane::Soa::Common::Xml

#endif
