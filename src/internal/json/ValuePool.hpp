#ifndef CORVANE_SOA_SRC_INTERNAL_JSON_VALUEPOOL_HPP
#define CORVANE_SOA_SRC_INTERNAL_JSON_VALUEPOOL_HPP

#include <cstddef>

namespace Corvane::Soa::Internal::Json {

/// Storage of the tree's values: blocks of a few size classes (multiples of 8 bytes up to
/// `kLargest`), kept on free lists instead of going back to the heap. Larger requests go to the
/// global heap.
///
/// Each thread allocates from and frees to lists of its own, without locking. A block may be
/// freed on any thread: it simply joins that thread's list. Lists that grow past two batches give
/// a batch to a shared depot, from which threads whose lists ran empty take one back, so memory
/// freed on one thread is reused by the others. A thread that ends hands its lists and the rest
/// of its carving region to the depot. The pool keeps its memory for reuse; it is never returned
/// to the heap.
///
/// Under AddressSanitizer each value has a heap block of its own, so that the sanitizer's leak,
/// use-after-release and double-release checks see every value.
class ValuePool {
public:
    /// Requests above this size are passed to the global heap.
    static constexpr std::size_t kLargest = 512;

    static void* allocate(std::size_t size);
    /// `size` must be the size given to `allocate`.
    static void deallocate(void* block, std::size_t size) noexcept;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
