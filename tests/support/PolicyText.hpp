#ifndef CVSOA_TESTS_SUPPORT_POLICYTEXT_HPP
#define CVSOA_TESTS_SUPPORT_POLICYTEXT_HPP

#include <corvane/soa/common/ObjectPropertyPolicy.hpp>

#include <string>

// A policy model in one line, stored modifier texts included:
//   (policyMod=1) Type(typeMod=0){a(asAttribute=1), b} Other{}
namespace PolicyText {

template <class T>
std::string modifiers(const T& object) {
    std::string text;
    for (const auto& modifier : object.getModifiers()) {
        text += (text.empty() ? "(" : ",") + modifier.first + "=" + modifier.second;
    }
    return text.empty() ? text : text + ")";
}

inline std::string of(const Corvane::Soa::Common::PolicyProperty& property) {
    return property.getName() + modifiers(property);
}

inline std::string of(const Corvane::Soa::Common::PolicyType& type) {
    std::string text = type.getName() + modifiers(type) + "{";
    for (const auto& property : type.getProperties()) {
        text += (text.back() == '{' ? "" : ", ") + of(property);
    }
    return text + "}";
}

inline std::string of(const Corvane::Soa::Common::ObjectPropertyPolicy& policy) {
    std::string text = modifiers(policy);
    for (const auto& type : policy.getTypes()) {
        text += (text.empty() ? "" : " ") + of(type);
    }
    return text;
}

}  // namespace PolicyText

#endif
