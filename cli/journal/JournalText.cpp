#include "JournalText.hpp"

#include "Journal.hpp"

#include <array>
#include <cstdio>

namespace cvsoa::journal {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool isContinuation(unsigned char byte) { return (byte & 0xC0U) == 0x80U; }

// The length of the well-formed character at `text[at]`, or 0.
std::size_t characterLength(std::string_view text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t left = text.size() - at;
    auto next = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    if (lead < 0x80U) {
        return (lead >= 0x20U && lead != 0x7FU) || lead == '\t' ? 1 : 0;
    }
    if (lead >= 0xC2U && lead <= 0xDFU) {
        return left >= 2 && isContinuation(next(1)) ? 2 : 0;
    }
    if (lead >= 0xE0U && lead <= 0xEFU) {
        if (left < 3 || !isContinuation(next(1)) || !isContinuation(next(2))) {
            return 0;
        }
        const unsigned char second = next(1);
        if ((lead == 0xE0U && second < 0xA0U) || (lead == 0xEDU && second > 0x9FU)) {
            return 0;  // overlong, or a surrogate
        }
        // U+FFFE and U+FFFF are not characters XML allows.
        return lead == 0xEFU && second == 0xBFU && next(2) >= 0xBEU ? 0 : 3;
    }
    if (lead >= 0xF0U && lead <= 0xF4U) {
        if (left < 4 || !isContinuation(next(1)) || !isContinuation(next(2)) ||
            !isContinuation(next(3))) {
            return 0;
        }
        const unsigned char second = next(1);
        return (lead == 0xF0U && second < 0x90U) || (lead == 0xF4U && second > 0x8FU) ? 0 : 4;
    }
    return 0;
}

}  // namespace

std::string JournalText::printable(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        if (length == 0) {
            out += kReplacement;
            ++at;
        } else {
            out.append(text.substr(at, length));
            at += length;
        }
    }
    return out;
}

std::string JournalText::shortened(std::string_view text, std::size_t limit) {
    std::string shown = printable(text);
    const std::size_t kept = limit > 3 ? limit - 3 : 0;
    std::size_t characters = 0;
    std::size_t cut = shown.size();
    for (std::size_t at = 0; at < shown.size(); ++at) {
        if (isContinuation(static_cast<unsigned char>(shown[at]))) {
            continue;
        }
        if (characters == kept) {
            cut = at;
        }
        if (characters++ == limit) {
            return shown.substr(0, cut) + "...";
        }
    }
    return shown;
}

std::string JournalText::fixed(double value, int decimals) {
    std::array<char, 64> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    if (length < 0 || static_cast<std::size_t>(length) >= text.size()) {
        std::snprintf(text.data(), text.size(), "%g", value);  // only from a forged journal
        return text.data();
    }
    return std::string(text.data(), static_cast<std::size_t>(length));
}

std::string Journal::origin() const {
    std::string text = "SOA-CPP";
    if (!label.empty()) {
        text += " " + label;
    }
    if (!system.empty() || !release.empty()) {
        text += " on " + system + (system.empty() || release.empty() ? "" : " ") + release;
    }
    if (!started.empty()) {
        text += ", started " + started;
    }
    return JournalText::printable(text);
}

}  // namespace cvsoa::journal
