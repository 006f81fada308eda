#include <corvane/soa/internal/json/JSONObject.hpp>

namespace Corvane::Soa::Internal::Json {

JSONObject::JSONObject() = default;

JSONObject::~JSONObject() = default;

void JSONObject::serialize(int /*level*/, std::ostream& os) const { os << "{}"; }

}  // namespace Corvane::Soa::Internal::Json
