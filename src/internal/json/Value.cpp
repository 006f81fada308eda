#include <corvane/soa/internal/json/Value.hpp>

namespace Corvane::Soa::Internal::Json {

Value::~Value() = default;

}  // namespace Corvane::Soa::Internal::Json
