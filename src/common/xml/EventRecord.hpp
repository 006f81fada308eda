#ifndef CORVANE_SOA_SRC_COMMON_XML_EVENTRECORD_HPP
#define CORVANE_SOA_SRC_COMMON_XML_EVENTRECORD_HPP

// The record of what the XML scanner reported, in 16-bit units, that the reader builds its
// tree from. Not part of the exported interface.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

namespace Corvane::Soa::Common::Xml {

class EventRecord {
public:
    // Room for `units` more units at the end, returned to be written.
    char16_t* extend(std::size_t units) {
        if (units > m_capacity - m_size) {
            grow(units);
        }
        char16_t* const at = m_data.get() + m_size;
        m_size += units;
        return at;
    }
    const char16_t* data() const noexcept { return m_data.get(); }
    char16_t* at(std::size_t offset) noexcept { return m_data.get() + offset; }
    std::size_t size() const noexcept { return m_size; }
    void clear() noexcept { m_size = 0; }
    void resize(std::size_t size) noexcept { m_size = size; }  // never larger
    // Gives back the memory that a large document needed, keeping what a small one does.
    void trim() noexcept {
        if (m_capacity > kKeptUnits) {
            m_data.reset();
            m_capacity = 0;
            m_size = 0;
        }
    }

private:
    static constexpr std::size_t kFirstUnits = 1024;
    static constexpr std::size_t kKeptUnits = std::size_t{16} * 1024;
    void grow(std::size_t units) {
        const std::size_t capacity = std::max({2 * m_capacity, m_size + units, kFirstUnits});
        std::unique_ptr<char16_t[]> data(new char16_t[capacity]);
        if (m_size != 0) {
            std::memcpy(data.get(), m_data.get(), m_size * sizeof(char16_t));
        }
        m_data = std::move(data);
        m_capacity = capacity;
    }

    std::unique_ptr<char16_t[]> m_data;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
