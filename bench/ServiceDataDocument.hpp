#ifndef CVSOA_BENCH_SERVICEDATADOCUMENT_HPP
#define CVSOA_BENCH_SERVICEDATADOCUMENT_HPP

// The second document of the binding benchmark: a FileTicketsResponse with a few tickets whose
// service data holds many model objects with properties, as a response that returns objects
// does. Generated the same on every run.

#include "BindingPeer.hpp"

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/schemas/Core/_2006_03/Filemanagement.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Base.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace cvsoa::bench {

// A uid as the server makes them: fourteen characters of a URL-safe alphabet, distinct for
// distinct `bits`.
std::string uidOf(std::uint64_t bits);

// About 10 MB of XML.
::Corvane::Soa::Common::AutoPtr<
    ::Corvane::Schemas::Core::_2006_03::Filemanagement::FileTicketsResponse>
makeServiceDataResponse();

// Adds the service data's objects and lists to `summary`.
void addServiceData(const ::Corvane::Schemas::Soa::_2006_03::Base::ServiceData& data,
                    BindingSummary& summary);

// The elements of the response's XML form: the response, its tickets with their keys, the service
// data, its objects, their properties and values, and its text list entries.
std::size_t elementCount(
    const ::Corvane::Schemas::Core::_2006_03::Filemanagement::FileTicketsResponse& response);

}  // namespace cvsoa::bench

#endif
