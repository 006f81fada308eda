#ifndef CORVANE_SOA_SRC_COMMON_XML_GROWINGBYTES_HPP
#define CORVANE_SOA_SRC_COMMON_XML_GROWINGBYTES_HPP

// A byte buffer of the XML reader. Not part of the exported interface.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

namespace Corvane::Soa::Common::Xml {

// Bytes that grow at the end and are cut back, without the zero-filling and the calls of a
// string: the texts of the open elements.
class GrowingBytes {
public:
    char* data() noexcept { return m_data.get(); }
    std::size_t size() const noexcept { return m_size; }
    std::size_t capacity() const noexcept { return m_capacity; }
    // Room for `count` more bytes at the end, returned to be written.
    char* extend(std::size_t count) {
        if (count > m_capacity - m_size) {
            grow(count);
        }
        char* const at = m_data.get() + m_size;
        m_size += count;
        return at;
    }
    void append(const char* bytes, std::size_t count) {
        if (count != 0) {
            std::memcpy(extend(count), bytes, count);
        }
    }
    void resize(std::size_t size) noexcept { m_size = size; }  // never larger
    void reset() noexcept {
        m_data.reset();
        m_size = 0;
        m_capacity = 0;
    }

private:
    void grow(std::size_t count) {
        const std::size_t capacity = std::max({2 * m_capacity, m_size + count, std::size_t{256}});
        std::unique_ptr<char[]> data(new char[capacity]);
        if (m_size != 0) {
            std::memcpy(data.get(), m_data.get(), m_size);
        }
        m_data = std::move(data);
        m_capacity = capacity;
    }

    std::unique_ptr<char[]> m_data;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
