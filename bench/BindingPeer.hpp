#ifndef CVSOA_BENCH_BINDINGPEER_HPP
#define CVSOA_BENCH_BINDINGPEER_HPP

// A binding library that the generated types are measured against: it reads a
// FileTicketsResponse document into its own bound objects, keeps them, and writes them back.
// Each peer lives in its own translation unit, so that their generated headers never meet.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace cvsoa::bench {

// What a bound document holds, for checking that every peer read the same data: the number of
// tickets and a hash of their keys, and of their values when given. The hashes of the tickets
// are summed, so that a peer that keeps a map in key order sums to the same.
struct BindingSummary {
    std::size_t tickets = 0;
    std::uint64_t hash = 0;

    void add(const std::string& key, const std::string* value) {
        std::uint64_t h = 14695981039346656037ULL;
        const auto mix = [&h](const std::string& text) {
            for (const char c : text) {
                h = (h ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
            }
            h = (h ^ 0xffU) * 1099511628211ULL;
        };
        mix(key);
        if (value != nullptr) {
            mix(*value);
        }
        ++tickets;
        hash += h;
    }
    bool operator==(const BindingSummary& other) const {
        return tickets == other.tickets && hash == other.hash;
    }
};

class BindingPeer {
public:
    virtual ~BindingPeer() = default;
    // Parses `text` and binds it, replacing the objects bound before; throws on bad input.
    virtual void read(const std::string& text) = 0;
    // Writes the bound objects.
    virtual std::string write() const = 0;
    virtual BindingSummary summary(bool withValues) const = 0;
};

// Each returns null when the peer was not built.
std::unique_ptr<BindingPeer> makeXsdPeer();
std::unique_ptr<BindingPeer> makeGsoapPeer();
std::unique_ptr<BindingPeer> makeNlohmannPeer();

}  // namespace cvsoa::bench

#endif
