#ifndef CORVANE_SOA_COMMON_XML_TRYINGTOCREATENULLHANDLE_HPP
#define CORVANE_SOA_COMMON_XML_TRYINGTOCREATENULLHANDLE_HPP

namespace Corvane::Soa::Common::Xml {

/// Exception tag for an attempt to make a handle from a null object. It carries no data.
class TryingToCreateNullHandle {};

}  // namespace Corvane::Soa::Common::Xml

#endif
