#ifndef CORVANE_SOA_COMMON_XML_BASEOBJECT_HPP
#define CORVANE_SOA_COMMON_XML_BASEOBJECT_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <cstdint>
#include <set>
#include <string>

namespace Corvane::Soa::Internal::Json {
class Value;
class JSONObject;
}  // namespace Corvane::Soa::Internal::Json

namespace Corvane::Soa::Common::Xml {

class XmlStream;
class XMLNode;
class JsonStream;

/// Base of every serialisable data type: its XML identity (namespace URI and local type name),
/// an intrusive reference count, and the virtual protocol by which a type writes itself as XML
/// and JSON and reads itself back.
///
/// The order of the virtual functions below is part of the design: generated types override
/// within this table. The count is deliberately not atomic: a data object and its holders belong
/// to one thread at a time.
class CORVANE_SOA_API BaseObject {
public:
    BaseObject(const BaseObject& other);
    BaseObject& operator=(const BaseObject& other);

    // Slot 1: writes an empty element named `elementName`.
    virtual void outputXML(XmlStream& stream, const std::string& elementName) const;
    // Slot 2: slot 1 with the element name "EmptyXml".
    virtual void outputXML(XmlStream& stream) const;
    // Slot 3.
    virtual void parse(const XMLNode& node);
    // Slot 4: adds the namespace URIs of this object and of its members.
    virtual void getNamespaces(std::set<std::string>& namespaces) const = 0;
    // Slot 5.
    virtual void writeJSON(JsonStream* stream) const;
    // Slots 6 and 7.
    virtual void parseJSON(const std::string& name,
                           AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> object);
    virtual void parseJSON(AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> object);
    // Slots 8 to 14: the map-entry protocol.
    virtual void parseSimpleJSONMapEntry(
        const std::string& key, AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> object);
    virtual void parseComplexJSONMapKey(AutoPtr<::Corvane::Soa::Internal::Json::Value> key);
    virtual void parseComplexJSONMapValue(AutoPtr<::Corvane::Soa::Internal::Json::Value> value);
    virtual bool isJsonMapEntry() const;
    virtual bool isJsonMapKeyReferenceType() const;
    virtual void writeJSONKey(JsonStream* stream) const;
    virtual void writeJSONValue(JsonStream* stream) const;
    // Slot 15.
    virtual ~BaseObject();

    void ref() noexcept { addRef(); }
    void unref() noexcept { removeRef(); }
    int askRefCount() const noexcept { return m_refCount; }

    /// A new heap copy of this object with a count of 0, for the caller to wrap in an AutoPtr.
    BaseObject* clone() const;

    /// The namespace URI, ".", the type name.
    std::string getQaulifiedName() const;

    const std::string& getNamespace() const noexcept;
    const std::string& getTypeName() const noexcept;

    /// The process-wide number of the identity (ns, typeName), made on first request: what a
    /// generated type passes to its base once per object instead of the two texts.
    static std::uint32_t identify(const std::string& ns, const std::string& typeName);

    CORVANE_SOA_ACCOUNTED_ALLOCATION("BaseObject")

protected:
    BaseObject();
    explicit BaseObject(const char* ns);
    BaseObject(const char* ns, const char* typeName);
    /// Takes an identity number from `identify`: constructing the object allocates nothing
    /// for its identity.
    explicit BaseObject(std::uint32_t identity) noexcept : m_identity(identity) {}

    /// Begins this object's element: when it is the document's root, first declares every
    /// namespace its tree needs. Returns whether it was the root. The text is ignored.
    bool outputXMLBase(XmlStream& stream, const std::string& elementName,
                       const char* ignored) const;

    // Slot 16: a new heap copy of the concrete object.
    virtual BaseObject* reallyClone() const = 0;

private:
    void addRef() noexcept { ++m_refCount; }
    void removeRef() noexcept {
        if (--m_refCount == 0) {
            delete this;
        }
    }

    // The number of the namespace and type name in the process's table of identities, which
    // every object of a type shares: with the count, the base is two words in all.
    std::uint32_t m_identity = 0;
    std::int32_t m_refCount = 0;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
