#include <corvane/soa/common/StringUtils.hpp>

namespace Corvane::Soa::Common {

std::vector<std::string> StringUtils::split(const std::string& text,
                                            const std::string& separators) {
    std::vector<std::string> pieces;
    std::size_t start = text.find_first_not_of(separators);
    while (start != std::string::npos) {
        const std::size_t end = text.find_first_of(separators, start);
        pieces.emplace_back(text, start,
                            end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? end : text.find_first_not_of(separators, end);
    }
    return pieces;
}

std::string StringUtils::trim(const std::string& text) {
    static constexpr char kBlanks[] = " \t\n\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) {
        return std::string();
    }
    const std::size_t last = text.find_last_not_of(kBlanks);
    return text.substr(first, last - first + 1);
}

std::string StringUtils::replace(const std::string& text, const std::string& from,
                                 const std::string& to) {
    if (from.empty()) {
        return text;
    }
    std::string result;
    result.reserve(text.size());
    std::size_t pos = 0;
    for (std::size_t hit = text.find(from); hit != std::string::npos; hit = text.find(from, pos)) {
        result.append(text, pos, hit - pos).append(to);
        pos = hit + from.size();
    }
    result.append(text, pos, std::string::npos);
    return result;
}

}  // namespace Corvane::Soa::Common
