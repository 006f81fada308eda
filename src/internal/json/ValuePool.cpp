#include "internal/json/ValuePool.hpp"

#include <corvane/soa/internal/json/Value.hpp>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define CVSOA_POOL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CVSOA_POOL_ASAN 1
#endif
#endif

// The thread's cutting state is read on every allocation: the initial-exec model makes that a
// plain load instead of a call into the dynamic loader.
#if defined(__GNUC__)
#define CVSOA_POOL_TLS __attribute__((tls_model("initial-exec")))
#else
#define CVSOA_POOL_TLS
#endif

namespace Corvane::Soa::Internal::Json {

namespace {

// Under AddressSanitizer every value has a heap block of its own: the leak checker (and the
// fuzzer's, which counts heap calls) then sees a value that is never released, and the sanitizer
// reports a use after release or a second release in its own words. The ordinary builds' tests
// cover the pool itself.
#if defined(CVSOA_POOL_ASAN)
constexpr bool kEachValueOnTheHeap = true;
#else
constexpr bool kEachValueOnTheHeap = false;
#endif

constexpr std::size_t kGranule = 8;
constexpr std::uintptr_t kChunkMask = ~static_cast<std::uintptr_t>(ValuePool::kChunkBytes - 1);
// Added to a chunk's count while a thread cuts from it, so that releases cannot bring it to zero
// before the thread has handed it over with the number of blocks it cut.
constexpr std::int64_t kCutting = std::int64_t{1} << 48;

// The start of every chunk: the blocks cut from it and not yet released (plus kCutting while a
// thread cuts from it).
struct alignas(16) Chunk {
    std::atomic<std::int64_t> live;
};

// The chunk of a block is found by clearing the low bits of its address, by design.
Chunk* chunkOf(const void* block) {
    return reinterpret_cast<Chunk*>(  // NOLINT(performance-no-int-to-ptr)
        reinterpret_cast<std::uintptr_t>(block) & kChunkMask);
}

void release(Chunk* chunk, std::int64_t blocks) noexcept {
    if (chunk->live.fetch_sub(blocks, std::memory_order_acq_rel) == blocks) {
        std::free(chunk);
    }
}

// A chunk being cut: [cursor, end) is still free, `cut` blocks have been handed out.
struct Cutter {
    Chunk* chunk = nullptr;
    char* cursor = nullptr;
    char* end = nullptr;
    std::int64_t cut = 0;

    // Hands the chunk over to its blocks: it goes back to the heap with the last of them.
    void retire() noexcept {
        if (chunk != nullptr) {
            release(chunk, kCutting - cut);
        }
        *this = Cutter();
    }

    void* cutFresh(std::size_t bytes) {
        retire();
        void* memory = std::aligned_alloc(ValuePool::kChunkBytes, ValuePool::kChunkBytes);
        if (memory == nullptr) {
            throw std::bad_alloc();
        }
        chunk = new (memory) Chunk{};
        chunk->live.store(kCutting, std::memory_order_relaxed);
        cursor = static_cast<char*>(memory) + sizeof(Chunk);
        end = static_cast<char*>(memory) + ValuePool::kChunkBytes;
        return cutHere(bytes);
    }

    void* cutHere(std::size_t bytes) noexcept {
        void* block = cursor;
        cursor += bytes;
        ++cut;
        return block;
    }
};

// Each thread's chunk; a thread that has ended (its cutter destroyed) cuts from a shared one
// under a lock.
struct ThreadCutter {
    Cutter cutter;
    ThreadCutter() = default;
    ThreadCutter(const ThreadCutter&) = delete;
    ThreadCutter& operator=(const ThreadCutter&) = delete;
    ~ThreadCutter();
};

thread_local Cutter* t_cutter CVSOA_POOL_TLS = nullptr;
thread_local bool t_ended CVSOA_POOL_TLS = false;

// The releases of a batch not yet applied: `count` blocks of `chunk`.
struct PendingRelease {
    Chunk* chunk = nullptr;
    std::int64_t count = 0;
    int depth = 0;

    void flush() noexcept {
        if (chunk != nullptr) {
            release(chunk, count);
        }
        chunk = nullptr;
        count = 0;
    }
};

thread_local PendingRelease t_pending CVSOA_POOL_TLS;

ThreadCutter::~ThreadCutter() {
    cutter.retire();
    t_cutter = nullptr;
    t_ended = true;
}

[[gnu::noinline]] Cutter* attach() {
    if (t_ended) {
        return nullptr;
    }
    thread_local ThreadCutter owned;
    t_cutter = &owned.cutter;
    return t_cutter;
}

[[gnu::noinline]] void* allocateShared(std::size_t bytes) {
    static std::mutex* const mutex = new std::mutex;
    static Cutter* const shared = new Cutter;
    const std::lock_guard<std::mutex> lock(*mutex);
    if (static_cast<std::size_t>(shared->end - shared->cursor) >= bytes) {
        return shared->cutHere(bytes);
    }
    return shared->cutFresh(bytes);
}

}  // namespace

void* ValuePool::allocate(std::size_t size) {
    if (kEachValueOnTheHeap || size > kLargest) {
        return ::operator new(size);
    }
    const std::size_t bytes = (size + kGranule - 1) & ~(kGranule - 1);
    Cutter* cutter = t_cutter;
    if (cutter == nullptr) {
        cutter = attach();
        if (cutter == nullptr) {
            return allocateShared(bytes);
        }
    }
    if (static_cast<std::size_t>(cutter->end - cutter->cursor) >= bytes) {
        return cutter->cutHere(bytes);
    }
    return cutter->cutFresh(bytes);
}

void ValuePool::deallocate(void* block, std::size_t size) noexcept {
    if (block == nullptr) {
        return;
    }
    if (kEachValueOnTheHeap || size > kLargest) {
        ::operator delete(block);
        return;
    }
    Chunk* chunk = chunkOf(block);
    PendingRelease& pending = t_pending;
    if (pending.depth == 0) {
        release(chunk, 1);
        return;
    }
    if (pending.chunk != chunk) {
        pending.flush();
        pending.chunk = chunk;
    }
    ++pending.count;
}

ValuePool::BatchedRelease::BatchedRelease() noexcept { ++t_pending.depth; }

ValuePool::BatchedRelease::~BatchedRelease() {
    PendingRelease& pending = t_pending;
    if (--pending.depth == 0) {
        pending.flush();
    }
}

// Defined here, next to the pool, so that the pool's quick paths are compiled into them.
void* Value::operator new(std::size_t size) { return ValuePool::allocate(size); }

void Value::operator delete(void* block, std::size_t size) noexcept {
    ValuePool::deallocate(block, size);
}

}  // namespace Corvane::Soa::Internal::Json
