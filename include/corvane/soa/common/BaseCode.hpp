#ifndef CORVANE_SOA_COMMON_BASECODE_HPP
#define CORVANE_SOA_COMMON_BASECODE_HPP

#include <corvane/soa/Export.hpp>

#include <string>
#include <vector>

namespace Corvane::Soa::Common {

/// Helpers for message texts with numbered placeholders.
class CORVANE_SOA_API BaseCode {
public:
    BaseCode() = delete;

    /// `text` with its placeholders filled: for i from 1 to the number of values, in that
    /// order, every "%i" becomes `values[i-1]`, or "null" when that value is empty. "%1" is
    /// replaced before "%10", so with ten or more values a "%10" receives the first value
    /// followed by "0". The text comes back unchanged when it or `values` is empty.
    static ::std::string getTextWithSubstitutions(const ::std::string& text,
                                                  const ::std::vector<::std::string>& values);
};

}  // namespace Corvane::Soa::Common

#endif
