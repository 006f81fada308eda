#include "internal/json/ValuePool.hpp"

#include <corvane/soa/internal/json/Value.hpp>

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

// The thread's cache pointer is read on every allocation: the initial-exec model makes that a
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
constexpr std::size_t kClasses = ValuePool::kLargest / kGranule + 1;
// A free block holds two links.
constexpr std::size_t kSmallest = 2 * sizeof(void*);
// Blocks that move between a thread and the depot at once.
constexpr std::size_t kBatch = 128;
// Below malloc's threshold for mapping memory of its own: chunks come from the ordinary heap.
constexpr std::size_t kChunkBytes = std::size_t{32} * 1024;
constexpr std::size_t kChunkHeader = 16;

std::size_t classOf(std::size_t size) {
    return ((size < kSmallest ? kSmallest : size) + kGranule - 1) / kGranule;
}

// A free block: its first bytes link it to the others.
struct Block {
    Block* next;       // the next block of the same list or batch
    Block* nextBatch;  // in the depot: the first block of the next batch
};

Block* nextOf(Block* block) {
    Block* next = block->next;
    return next;
}

void setNext(Block* block, Block* next) { block->next = next; }

Block* nextBatchOf(Block* block) {
    Block* next = block->nextBatch;
    return next;
}

void setNextBatch(Block* block, Block* next) { block->nextBatch = next; }

// Memory not yet cut into blocks, [begin, end).
struct Region {
    char* begin = nullptr;
    char* end = nullptr;

    std::size_t available() const { return static_cast<std::size_t>(end - begin); }

    void* cut(std::size_t bytes) {
        void* block = begin;
        begin += bytes;
        return block;
    }
};

// A region given up by a thread that ended, waiting in the depot to be carved by another.
struct SpareRegion {
    SpareRegion* next;
    char* end;
};

// Blocks of one class on one thread: the list in use, of at most kBatch blocks, and one full
// batch held back, so that a thread that frees and allocates by turns does not go to the depot.
struct FreeList {
    Block* head = nullptr;
    std::size_t count = 0;
    Block* full = nullptr;
};

// What the threads share, behind one lock: complete batches, single blocks, spare regions, and
// every chunk ever taken. It is never destroyed: values may be released during the destruction
// of static objects.
struct Depot {
    std::mutex mutex;
    Block* batches[kClasses] = {};  // linked through nextBatch, each of kBatch blocks
    Block* loose[kClasses] = {};    // single blocks
    SpareRegion* spares = nullptr;
    Region carving;          // carved for threads that have no cache (any more)
    void* chunks = nullptr;  // each chunk starts with the address of the one taken before it

    // A region to carve: a spare one, or a new chunk. Called with the lock held.
    Region takeRegion() {
        if (spares != nullptr) {
            SpareRegion* spare = spares;
            spares = spare->next;
            Region region{reinterpret_cast<char*>(spare), spare->end};
            return region;
        }
        auto* chunk = static_cast<char*>(std::malloc(kChunkBytes));
        if (chunk == nullptr) {
            throw std::bad_alloc();
        }
        *reinterpret_cast<void**>(chunk) = chunks;
        chunks = chunk;
        Region region{chunk + kChunkHeader, chunk + kChunkBytes};
        return region;
    }

    // Keeps what is left of a region for later: a block when it is small enough, else a spare
    // region. Called with the lock held.
    void giveBack(Region region) {
        const std::size_t bytes = region.available();
        if (bytes < kSmallest) {
            return;
        }
        if (bytes <= ValuePool::kLargest) {
            auto* block = static_cast<Block*>(region.cut(bytes));
            setNext(block, loose[bytes / kGranule]);
            loose[bytes / kGranule] = block;
            return;
        }
        auto* spare = reinterpret_cast<SpareRegion*>(region.begin);
        spare->next = spares;
        spare->end = region.end;
        spares = spare;
    }

    void putLoose(std::size_t index, Block* block) {
        setNext(block, loose[index]);
        loose[index] = block;
    }
};

Depot& depot() {
    static Depot* const instance = new Depot;
    return *instance;
}

// One thread's blocks and carving region.
struct Cache {
    FreeList lists[kClasses];
    Region region;

    Cache() = default;
    Cache(const Cache&) = delete;
    Cache& operator=(const Cache&) = delete;
    ~Cache();
};

thread_local Cache* t_cache CVSOA_POOL_TLS = nullptr;
// Set once the thread's cache is gone; blocks released later in the thread's end go to the depot.
thread_local bool t_ended CVSOA_POOL_TLS = false;

[[gnu::noinline]] Cache* attach() {
    if (t_ended) {
        return nullptr;
    }
    thread_local Cache cache;
    t_cache = &cache;
    return &cache;
}

Cache::~Cache() {
    Depot& shared = depot();
    {
        const std::lock_guard<std::mutex> lock(shared.mutex);
        for (std::size_t index = 0; index < kClasses; ++index) {
            FreeList& list = lists[index];
            if (list.full != nullptr) {
                setNextBatch(list.full, shared.batches[index]);
                shared.batches[index] = list.full;
            }
            for (Block* block = list.head; block != nullptr;) {
                Block* next = nextOf(block);
                shared.putLoose(index, block);
                block = next;
            }
            list = FreeList();
        }
        shared.giveBack(region);
        region = Region();
    }
    t_cache = nullptr;
    t_ended = true;
}

// Adds a block to the thread's list of its class.
// The list is full: it becomes the held-back batch, and a batch held back before goes to the
// depot.
[[gnu::noinline]] void holdBack(FreeList& list, std::size_t index) {
    if (list.full != nullptr) {
        Depot& shared = depot();
        const std::lock_guard<std::mutex> lock(shared.mutex);
        setNextBatch(list.full, shared.batches[index]);
        shared.batches[index] = list.full;
    }
    list.full = list.head;
    list.head = nullptr;
    list.count = 0;
}

void push(Cache& cache, std::size_t index, Block* block) {
    FreeList& list = cache.lists[index];
    if (list.count == kBatch) {
        holdBack(list, index);
    }
    setNext(block, list.head);
    list.head = block;
    ++list.count;
}

// The thread's list of the class is empty: the held-back batch, then the carving region, then a
// batch or single blocks from the depot, and last a new region.
[[gnu::noinline]] Block* refill(Cache& cache, std::size_t index) {
    FreeList& list = cache.lists[index];
    const std::size_t bytes = index * kGranule;
    if (list.full != nullptr) {
        Block* block = list.full;
        list.full = nullptr;
        list.head = nextOf(block);
        list.count = kBatch - 1;
        return block;
    }
    if (cache.region.available() >= bytes) {
        return static_cast<Block*>(cache.region.cut(bytes));
    }
    Depot& shared = depot();
    std::unique_lock<std::mutex> lock(shared.mutex);
    if (Block* batch = shared.batches[index]) {
        shared.batches[index] = nextBatchOf(batch);
        lock.unlock();
        list.head = nextOf(batch);
        list.count = kBatch - 1;
        return batch;
    }
    if (Block* block = shared.loose[index]) {
        Block* rest = nextOf(block);
        std::size_t taken = 0;
        Block* head = nullptr;
        while (rest != nullptr && taken < kBatch) {
            Block* next = nextOf(rest);
            setNext(rest, head);
            head = rest;
            rest = next;
            ++taken;
        }
        shared.loose[index] = rest;
        lock.unlock();
        list.head = head;
        list.count = taken;
        return block;
    }
    const Region old = cache.region;
    cache.region = shared.takeRegion();
    lock.unlock();
    // What is left of the old region is smaller than this class: one block of a smaller one.
    const std::size_t left = old.available();
    if (left >= kSmallest) {
        push(cache, left / kGranule, reinterpret_cast<Block*>(old.begin));
    }
    return static_cast<Block*>(cache.region.cut(bytes));
}

[[gnu::noinline]] void* allocateShared(std::size_t index) {
    Depot& shared = depot();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    if (Block* block = shared.loose[index]) {
        shared.loose[index] = nextOf(block);
        return block;
    }
    if (Block* batch = shared.batches[index]) {
        shared.batches[index] = nextBatchOf(batch);
        shared.loose[index] = nextOf(batch);
        return batch;
    }
    const std::size_t bytes = index * kGranule;
    if (shared.carving.available() < bytes) {
        shared.giveBack(shared.carving);
        shared.carving = shared.takeRegion();
    }
    return shared.carving.cut(bytes);
}

}  // namespace

void* ValuePool::allocate(std::size_t size) {
    if (kEachValueOnTheHeap || size > kLargest) {
        return ::operator new(size);
    }
    const std::size_t index = classOf(size);
    Cache* cache = t_cache;
    if (cache == nullptr) {
        cache = attach();
    }
    void* block = nullptr;
    if (cache == nullptr) {
        block = allocateShared(index);
    } else {
        FreeList& list = cache->lists[index];
        if (Block* head = list.head) {
            Block* next = nextOf(head);
            list.head = next;
            --list.count;
            // The next block is likely cold: start fetching it for the next allocation.
            __builtin_prefetch(next, 1);
            block = head;
        } else if (list.full == nullptr && cache->region.available() >= index * kGranule) {
            block = cache->region.cut(index * kGranule);
        } else {
            block = refill(*cache, index);
        }
    }
    return block;
}

void ValuePool::deallocate(void* block, std::size_t size) noexcept {
    if (block == nullptr) {
        return;
    }
    if (kEachValueOnTheHeap || size > kLargest) {
        ::operator delete(block);
        return;
    }
    const std::size_t index = classOf(size);
    auto* free = static_cast<Block*>(block);
    Cache* cache = t_cache;
    if (cache == nullptr) {
        cache = attach();
    }
    if (cache == nullptr) {
        Depot& shared = depot();
        const std::lock_guard<std::mutex> lock(shared.mutex);
        shared.putLoose(index, free);
        return;
    }
    push(*cache, index, free);
}

// Defined here, next to the pool, so that the pool's quick paths are compiled into them.
void* Value::operator new(std::size_t size) { return ValuePool::allocate(size); }

void Value::operator delete(void* block, std::size_t size) noexcept {
    ValuePool::deallocate(block, size);
}

}  // namespace Corvane::Soa::Internal::Json
