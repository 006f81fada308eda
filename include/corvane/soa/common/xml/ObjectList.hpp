#ifndef CORVANE_SOA_COMMON_XML_OBJECTLIST_HPP
#define CORVANE_SOA_COMMON_XML_OBJECTLIST_HPP

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/ListAccess.hpp>

#include <cstddef>
#include <vector>

namespace Corvane::Soa::Common::Xml {

/// The list operations of `ListAccess` for `std::vector<AutoPtr<T>>`. New elements come from
/// `T`'s own class `operator new`.
template <class T>
struct ObjectList {
    using List = std::vector<::Corvane::Soa::Common::AutoPtr<T>>;

    static std::size_t size(const void* list) { return static_cast<const List*>(list)->size(); }
    static BaseObject* at(const void* list, std::size_t index) {
        return (*static_cast<const List*>(list))[index].get();
    }
    static void reserve(void* list, std::size_t count) { static_cast<List*>(list)->reserve(count); }
    static BaseObject* append(void* list) {
        return static_cast<List*>(list)->emplace_back(new T).get();
    }

    static constexpr ListAccess kAccess{&size, &at, &reserve, &append};
};

}  // namespace Corvane::Soa::Common::Xml

#endif
