#include "internal/common/PolicyDocumentReader.hpp"

#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <utility>

namespace Corvane::Soa::Internal::Common {

namespace {

using ::Corvane::Soa::Common::ObjectPropertyPolicy;
using ::Corvane::Soa::Common::PolicyProperty;
using ::Corvane::Soa::Common::PolicyType;
using ::Corvane::Soa::Common::Xml::ElementSink;

// The attribute named `name`, the last one if there are several; null if there is none.
const ElementSink::Attribute* find(const ElementSink::Attribute* attributes, std::size_t count,
                                   const char* name) {
    const ElementSink::Attribute* found = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        if (*attributes[i].name == name) {
            found = attributes + i;
        }
    }
    return found;
}

template <class Target>
void setFlags(Target& target, std::uint8_t set, std::uint8_t on) {
    const auto& flags = PolicyMarshaller::flags();
    for (std::size_t i = 0; set != 0 && i < flags.size(); ++i) {
        if ((set & (1U << i)) != 0) {
            target.setModifier(flags[i], (on & (1U << i)) != 0);
        }
    }
}

}  // namespace

std::string PolicyDocumentReader::invalidRoot(const std::string& name) {
    return "Invalid root node:" + name + PolicyMarshaller::kSchemaNote;
}

std::string PolicyDocumentReader::unexpectedElement(const std::string& name) {
    return "Unexpected element: " + name + PolicyMarshaller::kSchemaNote;
}

std::string PolicyDocumentReader::typeWithoutName() {
    // Formed of its parts as the other messages of a missing attribute would be.
    return std::string("The ") + "ObjectType" + "node does not have the " + "name" +
           "' attribute.'" + PolicyMarshaller::kSchemaNote;
}

std::string PolicyDocumentReader::invalidProperty() {
    return std::string("Invalid child") + "Property" + "element.";
}

void PolicyDocumentReader::readFlags(const Attribute* attributes, std::size_t count,
                                     std::uint8_t& set, std::uint8_t& on) {
    const auto& flags = PolicyMarshaller::flags();
    for (std::size_t a = 0; a < count; ++a) {
        for (std::size_t i = 0; i < flags.size(); ++i) {
            if (*attributes[a].name == flags[i]) {
                const auto bit = static_cast<std::uint8_t>(1U << i);
                const bool value = ::Corvane::Soa::Common::Xml::lexical_cast<bool, std::string>(
                    std::string(attributes[a].value));
                set |= bit;
                on = value ? static_cast<std::uint8_t>(on | bit)
                           : static_cast<std::uint8_t>(on & ~bit);
                break;
            }
        }
    }
}

void PolicyDocumentReader::fault(std::string message, bool inType) {
    m_faulted = true;
    m_faultInType = inType;
    m_fault = std::move(message);
}

void PolicyDocumentReader::startElement(const std::string& name, const Attribute* attributes,
                                        std::size_t count) {
    const int depth = m_depth++;
    if (m_faulted) {
        return;
    }
    if (depth == 0) {
        if (name != "ObjectPropertyPolicy") {
            fault(invalidRoot(name), false);
            return;
        }
        m_rootRead = true;
        readFlags(attributes, count, m_rootSet, m_rootOn);
    } else if (depth == 1) {
        m_inType = false;
        if (name == "ObjectType") {
            const Attribute* typeName = find(attributes, count, "name");
            if (typeName == nullptr) {
                fault(typeWithoutName(), false);
                return;
            }
            Element& type =
                m_elements.emplace_back(Element{std::string(typeName->value), 0, 0, true});
            readFlags(attributes, count, type.set, type.on);
            m_inType = true;
        } else if (name != "Include") {
            fault(unexpectedElement(name), false);
        }
    } else if (depth == 2 && m_inType) {
        const Attribute* propertyName = find(attributes, count, "name");
        if (name != "Property" || propertyName == nullptr) {
            fault(invalidProperty(), true);
            return;
        }
        Element& property =
            m_elements.emplace_back(Element{std::string(propertyName->value), 0, 0, false});
        readFlags(attributes, count, property.set, property.on);
    }
}

void PolicyDocumentReader::apply(ObjectPropertyPolicy& policy) {
    if (!m_rootRead) {
        throw ::Corvane::Soa::Common::Exceptions::DomException(m_fault);
    }
    setFlags(policy, m_rootSet, m_rootOn);
    PolicyType type;
    bool open = false;
    for (Element& element : m_elements) {
        if (element.isType) {
            if (open) {
                policy.addType(std::move(type));
            }
            type = PolicyType();
            type.setName(element.name);
            setFlags(type, element.set, element.on);
            open = true;
        } else {
            PolicyProperty property;
            property.setName(element.name);
            setFlags(property, element.set, element.on);
            type.addProperty(std::move(property));
        }
    }
    if (open && !(m_faulted && m_faultInType)) {
        policy.addType(std::move(type));
    }
    m_elements.clear();
    if (m_faulted) {
        throw ::Corvane::Soa::Common::Exceptions::DomException(m_fault);
    }
}

}  // namespace Corvane::Soa::Internal::Common
