#ifndef CORVANE_SOA_INTERNAL_JSON_JSONOBJECT_HPP
#define CORVANE_SOA_INTERNAL_JSON_JSONOBJECT_HPP

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include <map>
#include <string>

namespace Corvane::Soa::Internal::Json {

/// A JSON object: members ordered by byte-wise comparison of their keys.
class CORVANE_SOA_API JSONObject : public Value {
public:
    JSONObject();
    ~JSONObject() override;

    /// True when the object has at least one member (callers rely on this inverted sense).
    bool isEmpty() const override { return !m_members.empty(); }
    std::size_t size() const override { return m_members.size(); }
    ValueType getType() const override { return OBJECT; }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    std::map<std::string, Common::AutoPtr<Value>> m_members;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
