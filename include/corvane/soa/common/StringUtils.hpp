#ifndef CORVANE_SOA_COMMON_STRINGUTILS_HPP
#define CORVANE_SOA_COMMON_STRINGUTILS_HPP

#include <corvane/soa/Export.hpp>

#include <string>
#include <vector>

namespace Corvane::Soa::Common {

/// Small text helpers shared across the library.
class CORVANE_SOA_API StringUtils {
public:
    /// The pieces of `text` between occurrences of any character of `separators`. Runs of
    /// separators and separators at either end produce no empty pieces.
    static std::vector<std::string> split(const std::string& text, const std::string& separators);

    /// `text` without leading and trailing blanks, tabs, line feeds and carriage returns.
    static std::string trim(const std::string& text);

    /// `text` with every occurrence of `from` replaced by `to`, left to right, without rescanning
    /// replaced text. An empty `from` changes nothing.
    static std::string replace(const std::string& text, const std::string& from,
                               const std::string& to);
};

}  // namespace Corvane::Soa::Common

#endif
