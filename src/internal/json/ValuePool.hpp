#ifndef CORVANE_SOA_SRC_INTERNAL_JSON_VALUEPOOL_HPP
#define CORVANE_SOA_SRC_INTERNAL_JSON_VALUEPOOL_HPP

#include <cstddef>

namespace Corvane::Soa::Internal::Json {

/// Storage of the tree's values: requests up to `kLargest` bytes are cut, one after the other,
/// from aligned chunks of `kChunkBytes`; larger ones go to the global heap.
///
/// A tree is made in one go, so its values lie side by side in a few chunks, and releasing a
/// value only counts it off its chunk (the chunk is found from the block's address). A chunk
/// goes back to the heap when the last of its blocks has been released and no thread cuts from
/// it any more. Each thread cuts from a chunk of its own without locking; a block may be released
/// on any thread, the count being atomic. While a tree is taken apart (`BatchedRelease`), the
/// releases are counted up per chunk and applied once per chunk.
///
/// The price: a block kept alive keeps its whole chunk. Under AddressSanitizer each value has a
/// heap block of its own, so that the sanitizer's leak, use-after-release and double-release
/// checks see every value.
class ValuePool {
public:
    /// Requests above this size are passed to the global heap.
    static constexpr std::size_t kLargest = 2048;
    static constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;

    static void* allocate(std::size_t size);
    /// `size` must be the size given to `allocate`.
    static void deallocate(void* block, std::size_t size) noexcept;

    /// While one exists on a thread, the thread's releases are counted up per chunk and applied
    /// when the chunk changes or the batch ends.
    class BatchedRelease {
    public:
        BatchedRelease() noexcept;
        BatchedRelease(const BatchedRelease&) = delete;
        BatchedRelease& operator=(const BatchedRelease&) = delete;
        ~BatchedRelease();
    };
};

}  // namespace Corvane::Soa::Internal::Json

#endif
