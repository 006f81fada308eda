#include <corvane/soa/common/BaseCode.hpp>
#include <corvane/soa/common/StringUtils.hpp>

#include <cstddef>

namespace Corvane::Soa::Common {

std::string BaseCode::getTextWithSubstitutions(const std::string& text,
                                               const std::vector<std::string>& values) {
    if (text.empty() || values.empty()) {
        return text;
    }
    std::string result = text;
    for (std::size_t i = 1; i <= values.size(); ++i) {
        const std::string& value = values[i - 1];
        result =
            StringUtils::replace(result, "%" + std::to_string(i), value.empty() ? "null" : value);
    }
    return result;
}

}  // namespace Corvane::Soa::Common
