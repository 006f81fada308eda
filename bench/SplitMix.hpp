#ifndef CVSOA_BENCH_SPLITMIX_HPP
#define CVSOA_BENCH_SPLITMIX_HPP

#include <cstddef>
#include <cstdint>

namespace cvsoa::bench {

/// splitmix64: the benchmarks' generated documents come out the same on every platform and
/// standard library.
class SplitMix {
public:
    explicit SplitMix(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31U);
    }
    /// A number in [0, n).
    std::size_t below(std::size_t n) { return static_cast<std::size_t>(next() % n); }

private:
    std::uint64_t m_state;
};

}  // namespace cvsoa::bench

#endif
