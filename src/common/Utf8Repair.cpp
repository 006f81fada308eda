#include "common/Utf8Repair.hpp"

#include <cstdint>
#include <cstring>

namespace Corvane::Soa::Common {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool continuation(unsigned byte) { return (byte & 0xC0U) == 0x80U; }

// The length of the sequence at the start of `rest` (not empty, not ASCII) when it is valid;
// otherwise the number of bytes that one replacement character stands for, negated.
int sequenceAt(const unsigned char* rest, std::size_t size) {
    const unsigned b1 = rest[0];
    const unsigned b2 = size > 1 ? rest[1] : 0;
    const unsigned b3 = size > 2 ? rest[2] : 0;
    const int tail = -static_cast<int>(size);
    if (b1 >= 0xC2 && b1 <= 0xDF) {
        if (size < 2) {
            return tail;
        }
        return continuation(b2) ? 2 : -1;
    }
    if (b1 >= 0xE0 && b1 <= 0xEF) {
        const bool badSecond = (b1 == 0xE0 && (b2 & 0xE0U) == 0x80U) || !continuation(b2);
        if (size < 3) {
            return size > 1 && badSecond ? -1 : tail;
        }
        if (badSecond) {
            return -1;
        }
        if (!continuation(b3)) {
            return -2;
        }
        // An encoded surrogate is malformed as a whole.
        return b1 == 0xED && b2 >= 0xA0 ? -3 : 3;
    }
    if (b1 >= 0xF0 && b1 <= 0xF7) {
        const bool badSecond = b1 > 0xF4 || (b1 == 0xF0 && (b2 < 0x90 || b2 > 0xBF)) ||
                               (b1 == 0xF4 && (b2 & 0xF0U) != 0x80U) || !continuation(b2);
        if (size < 4) {
            if (b1 > 0xF4 || (size > 1 && badSecond)) {
                return -1;
            }
            return size > 2 && !continuation(b3) ? -2 : tail;
        }
        if (badSecond) {
            return -1;
        }
        if (!continuation(b3)) {
            return -2;
        }
        return continuation(rest[3]) ? 4 : -3;
    }
    return -1;
}

}  // namespace

bool isUtf8OrRepair(std::string_view text, std::string& repaired) {
    const auto* data = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    std::size_t copied = 0;  // text before this is in `repaired` (when repairing)
    bool repairing = false;
    std::size_t i = 0;
    while (i < size) {
        // Eight ASCII bytes at a time.
        std::uint64_t word = 0;
        if (size - i >= 8 &&
            (std::memcpy(&word, data + i, 8), (word & 0x8080808080808080ULL) == 0)) {
            i += 8;
            continue;
        }
        if (data[i] < 0x80) {
            ++i;
            continue;
        }
        const int length = sequenceAt(data + i, size - i);
        if (length > 0) {
            i += static_cast<std::size_t>(length);
            continue;
        }
        if (!repairing) {
            repairing = true;
            repaired.clear();
            repaired.reserve(size + 16);
        }
        repaired.append(text.data() + copied, i - copied);
        repaired.append(kReplacement);
        i += static_cast<std::size_t>(-length);
        copied = i;
    }
    if (repairing) {
        repaired.append(text.data() + copied, size - copied);
    }
    return !repairing;
}

}  // namespace Corvane::Soa::Common
