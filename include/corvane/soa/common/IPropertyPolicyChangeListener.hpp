#ifndef CORVANE_SOA_COMMON_IPROPERTYPOLICYCHANGELISTENER_HPP
#define CORVANE_SOA_COMMON_IPROPERTYPOLICYCHANGELISTENER_HPP

#include <corvane/soa/Export.hpp>

#include <string>

namespace Corvane::Soa::Common {

class PolicyProperty;
class PolicyType;

/// Told of every property added to any policy type (see
/// `PolicyType::addPropertyPolicyChangeListener`). Registering does not hand over ownership: a
/// listener is removed before it is destroyed.
class CORVANE_SOA_API IPropertyPolicyChangeListener {
public:
    virtual ~IPropertyPolicyChangeListener() = default;

    /// `property` (named `name`) has just been added to `type`. `property` is the object the
    /// caller added; the type holds a copy of it.
    virtual void propertyAdded(PolicyType& type, const std::string& name,
                               PolicyProperty& property) = 0;

protected:
    IPropertyPolicyChangeListener() = default;
    IPropertyPolicyChangeListener(const IPropertyPolicyChangeListener&) = default;
    IPropertyPolicyChangeListener& operator=(const IPropertyPolicyChangeListener&) = default;
};

}  // namespace Corvane::Soa::Common

#endif
