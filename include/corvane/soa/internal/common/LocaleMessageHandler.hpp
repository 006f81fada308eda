#ifndef CORVANE_SOA_INTERNAL_COMMON_LOCALEMESSAGEHANDLER_HPP
#define CORVANE_SOA_INTERNAL_COMMON_LOCALEMESSAGEHANDLER_HPP

#include <corvane/soa/Export.hpp>

#include <string>
#include <vector>

namespace Corvane::Soa::Internal::Common {

/// The text of a numbered message. The catalogue belongs to a concrete handler, which overrides
/// `getMessage(int)`; this base knows no message and answers the empty text.
class CORVANE_SOA_API LocaleMessageHandler {
public:
    LocaleMessageHandler() = default;
    LocaleMessageHandler(const LocaleMessageHandler& other) = default;
    LocaleMessageHandler& operator=(const LocaleMessageHandler& other) = default;
    virtual ~LocaleMessageHandler();

    /// The catalogue text of `code`.
    virtual ::std::string getMessage(int code);

    /// The catalogue text of `code`, unchanged when `parameters` or the text is empty. Otherwise
    /// parameter i (1-based; "null" when it is empty) replaces every occurrence of a search token
    /// that is NOT "%i": the token is the text that starts i bytes into the one-byte constant
    /// "%" as the compiled program lays it out ("%", three zero bytes, "null", a zero byte).
    /// So the tokens are "" for 1 to 3 and from 8 on (which replace nothing), "null" for 4,
    /// "ull" for 5, "ll" for 6 and "l" for 7. Callers rely on these results and they are kept;
    /// `BaseCode::getTextWithSubstitutions` fills "%1"-style placeholders.
    virtual ::std::string getMessage(int code, const ::std::vector<::std::string>& parameters);
};

}  // namespace Corvane::Soa::Internal::Common

#endif
