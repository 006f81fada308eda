#include <corvane/soa/common/xml/LexicalCast.hpp>

#include <cfloat>
#include <charconv>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Corvane::Soa::Common::Xml {

namespace {

// Numbers are formatted with std::to_chars, which never consults a locale: the texts are those
// of a stream imbued with the "C" locale (and of printf's "%.17g" for floating point).
template <class Number>
std::string formatGeneral(Number value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, static_cast<double>(value),
                                      std::chars_format::general, 17);
    return std::string(text, result.ptr);
}

// Parsing switches the numeric category of the C locale to "C" for the conversion and puts the
// whole saved locale back afterwards. When the numeric category already is "C" both steps would
// change nothing, and they are skipped.
class NumericLocale {
public:
    NumericLocale() {
        const char* numeric = std::setlocale(LC_NUMERIC, nullptr);
        if (numeric == nullptr || std::strcmp(numeric, "C") != 0) {
            const char* all = std::setlocale(LC_ALL, nullptr);
            m_saved = all != nullptr ? all : "C";
            m_switched = true;
            std::setlocale(LC_NUMERIC, "C");
        }
    }
    NumericLocale(const NumericLocale&) = delete;
    NumericLocale& operator=(const NumericLocale&) = delete;
    ~NumericLocale() = default;

    void restore() {
        if (m_switched) {
            std::setlocale(LC_ALL, m_saved.c_str());
            m_switched = false;
        }
    }

private:
    std::string m_saved;
    bool m_switched = false;
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

double parseDouble(const std::string& text) {
    if (text.empty()) {
        return 0.0;
    }
    NumericLocale locale;
    const double value = std::strtod(text.c_str(), nullptr);
    locale.restore();
    return value;
}

}  // namespace

template <>
std::string lexical_cast<std::string, int>(const int& value) {
    char text[16];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

template <>
std::string lexical_cast<std::string, double>(const double& value) {
    return formatGeneral(value);
}

template <>
std::string lexical_cast<std::string, float>(const float& value) {
    return formatGeneral(value);
}

template <>
std::string lexical_cast<std::string, bool>(const bool& value) {
    return value ? "1" : "0";
}

template <>
std::string lexical_cast<std::string, std::string>(const std::string& value) {
    return value;
}

template <>
bool lexical_cast<bool, std::string>(const std::string& text) {
    return text == "true" || text == "1";
}

template <>
int lexical_cast<int, std::string>(const std::string& text) {
    if (text.empty()) {
        return 0;
    }
    NumericLocale locale;
    // strtol gives a long; the result keeps its low 32 bits.
    const long parsed = std::strtol(text.c_str(), nullptr, 10);
    const int value = static_cast<int>(static_cast<unsigned long>(parsed) & 0xFFFFFFFFUL);
    if (value != 0) {
        locale.restore();
        return value;
    }
    // Zero is either the number 0 or the sign that nothing was a number: only digits (after
    // one sign) make it a zero. Text that is not a number returns the marker at once, leaving
    // the numeric locale at "C".
    std::size_t i = (text[0] == '+' || text[0] == '-') ? 1 : 0;
    for (; i < text.size(); ++i) {
        if (!isDigit(text[i])) {
            return std::numeric_limits<int>::min();
        }
    }
    locale.restore();
    return 0;
}

template <>
double lexical_cast<double, std::string>(const std::string& text) {
    return parseDouble(text);
}

template <>
float lexical_cast<float, std::string>(const std::string& text) {
    const double value = parseDouble(text);
    // Narrowing a finite double beyond float's range is undefined; give the infinity that the
    // hardware conversion would.
    if (std::isfinite(value) && std::fabs(value) > FLT_MAX) {
        return std::signbit(value) ? -std::numeric_limits<float>::infinity()
                                   : std::numeric_limits<float>::infinity();
    }
    return static_cast<float>(value);
}

}  // namespace Corvane::Soa::Common::Xml
