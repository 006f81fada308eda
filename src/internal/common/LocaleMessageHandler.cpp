#include <corvane/soa/common/StringUtils.hpp>
#include <corvane/soa/internal/common/LocaleMessageHandler.hpp>

#include <cstddef>

namespace Corvane::Soa::Internal::Common {

namespace {

// The constant "%" and the bytes that follow it in the program's read-only data; the search
// token of parameter i starts i bytes in.
constexpr char kPercentAndFollowing[] = "%\0\0\0null";

}  // namespace

LocaleMessageHandler::~LocaleMessageHandler() = default;

std::string LocaleMessageHandler::getMessage(int /*code*/) { return std::string(); }

std::string LocaleMessageHandler::getMessage(int code, const std::vector<std::string>& parameters) {
    std::string text = getMessage(code);
    if (parameters.empty() || text.empty()) {
        return text;
    }
    for (std::size_t i = 1; i <= parameters.size(); ++i) {
        const std::string token =
            i < sizeof kPercentAndFollowing ? std::string(&kPercentAndFollowing[i]) : std::string();
        const std::string& value = parameters[i - 1];
        text = ::Corvane::Soa::Common::StringUtils::replace(text, token,
                                                            value.empty() ? "null" : value);
    }
    return text;
}

}  // namespace Corvane::Soa::Internal::Common
