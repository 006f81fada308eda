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

// One model object of a response's service data, mixed text by text in a fixed order: its uid, its
// optional attributes, then each property list with its properties' names and values. An absent
// optional attribute mixes a byte that no text mixes, so absent and empty differ.
class ObjectDigest {
public:
    ObjectDigest& text(const std::string& value) {
        for (const char c : value) {
            step(static_cast<unsigned char>(c));
        }
        step(0xffU);
        return *this;
    }
    ObjectDigest& optional(const std::string* value) {
        return value != nullptr ? text(*value) : mark(0xfeU);
    }
    ObjectDigest& flag(const bool* value) {
        return value != nullptr ? mark(*value ? 0xfcU : 0xfdU) : mark(0xfeU);
    }
    // The start of a list of `size` entries.
    ObjectDigest& list(std::size_t size) { return text(std::to_string(size)); }
    std::uint64_t value() const { return m_hash; }

private:
    void step(unsigned value) { m_hash = (m_hash ^ value) * 1099511628211ULL; }
    ObjectDigest& mark(unsigned value) {
        step(value);
        return *this;
    }

    std::uint64_t m_hash = 14695981039346656037ULL;
};

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
    // The service data: its model objects, in document order, and the uids of its text lists.
    std::size_t objects = 0;
    std::uint64_t objectHash = 0;

    void addObject(const ObjectDigest& digest) {
        objectHash = objectHash * 31U + digest.value();
        ++objects;
    }
    // An entry of the service data's list `list` ("created", "updated" or "deleted"), added after
    // the objects, list by list.
    void addListed(const char* list, const std::string& uid) {
        objectHash = objectHash * 31U + ObjectDigest().text(list).text(uid).value();
    }

    bool operator==(const BindingSummary& other) const {
        return tickets == other.tickets && hash == other.hash && objects == other.objects &&
               objectHash == other.objectHash;
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
std::unique_ptr<BindingPeer> makeBoostJsonPeer();

}  // namespace cvsoa::bench

#endif
