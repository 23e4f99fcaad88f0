// Movable memory blocks for POSIX: a handle table with Win32 semantics.
//
// A handle is an opaque number, never an address: its low bits index the
// table and its high bits carry the slot's generation, so a freed handle is
// told apart from the block that later reuses its slot.
#include "platform/export.h"
#include "platform/platform.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

struct Block {
    unsigned char* data = nullptr;
    size_t size = 0;
    size_t mapped = 0;  // length of its own mapping, or 0 when from malloc
    unsigned lockCount = 0;
    std::uint32_t generation = 0;
    bool used = false;
};

// Sizes a 32-bit host could never have; refusing them keeps hostile sizes
// from reaching the allocator.
constexpr size_t kMaxBlock = 0xFFFFFFFFu;

#if UINTPTR_MAX > 0xFFFFFFFFu
constexpr unsigned kIndexBits = 32;
#else
constexpr unsigned kIndexBits = 20;
#endif
constexpr std::uintptr_t kIndexMask = (std::uintptr_t(1) << kIndexBits) - 1;

std::mutex& TableMutex() {
    static std::mutex m;
    return m;
}
std::vector<Block>& Table() {
    static std::vector<Block> table;
    return table;
}
std::vector<size_t>& FreeSlots() {
    static std::vector<size_t> slots;
    return slots;
}

HGLOBAL MakeHandle(size_t index, std::uint32_t generation) {
    std::uintptr_t g = generation & ((std::uintptr_t(1) << (sizeof(std::uintptr_t) * 8 - kIndexBits)) - 1);
    return reinterpret_cast<HGLOBAL>((g << kIndexBits) | std::uintptr_t(index + 1));
}

// The live block a handle names, or null.  Call with the table locked.
Block* Find(HGLOBAL handle) {
    std::uintptr_t v = reinterpret_cast<std::uintptr_t>(handle);
    std::uintptr_t index = v & kIndexMask;
    if (index == 0) return nullptr;
    auto& table = Table();
    if (index > table.size()) return nullptr;
    Block& b = table[index - 1];
    if (!b.used) return nullptr;
    if (MakeHandle(index - 1, b.generation) != handle) return nullptr;
    return &b;
}

// Image-sized blocks get a mapping of their own on 2 MiB boundaries, where
// the kernel may back them with huge pages: a fresh 36 MB image then costs
// 18 page faults instead of some 9,000, and a mapping comes zero-filled.
// Smaller blocks come from malloc, and so does every block under
// AddressSanitizer, which then still guards the ends of large ones.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMapLarge = false;
#else
constexpr bool kMapLarge = true;
#endif
constexpr size_t kLargeBlock = size_t(4) << 20;
constexpr size_t kHugePage = size_t(2) << 20;

// The mapping ends at the page that holds the last byte: the part behind
// the last whole huge page gets small pages, so no more memory is taken
// than malloc would.
size_t MapLength(size_t bytes) {
    static const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

unsigned char* MapBytes(size_t bytes, size_t* mapped) {
    const size_t length = MapLength(bytes);
    void* p = mmap(nullptr, length + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) return nullptr;
    // Trim the mapping to a start on a huge-page boundary.
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(p);
    const std::uintptr_t aligned = (start + kHugePage - 1) & ~std::uintptr_t(kHugePage - 1);
    if (aligned > start) munmap(p, aligned - start);
    munmap(reinterpret_cast<void*>(aligned + length), start + kHugePage - aligned);
#ifdef MADV_HUGEPAGE
    madvise(reinterpret_cast<void*>(aligned), length, MADV_HUGEPAGE);
#endif
    *mapped = length;
    return reinterpret_cast<unsigned char*>(aligned);
}

// Always hands out at least one byte so a zero-sized block still has an
// identity; it still cannot be locked.
unsigned char* AllocBytes(size_t bytes, bool zero, size_t* mapped) {
    // PRISM_MALLOC_BLOCKS=1 takes every block from malloc, for comparison.
    static const bool mallocOnly = [] {
        const char* v = std::getenv("PRISM_MALLOC_BLOCKS");
        return v && *v && *v != '0';
    }();
    *mapped = 0;
    if (kMapLarge && bytes >= kLargeBlock && !mallocOnly) {
        if (unsigned char* p = MapBytes(bytes, mapped)) return p;
    }
    size_t n = bytes ? bytes : 1;
    void* p = zero ? std::calloc(n, 1) : std::malloc(n);
    return static_cast<unsigned char*>(p);
}

void FreeBytes(unsigned char* data, size_t mapped) {
    if (mapped)
        munmap(data, mapped);
    else
        std::free(data);
}

}  // namespace

PRISM_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    if (bytes > kMaxBlock) return nullptr;
    size_t mapped;
    unsigned char* data = AllocBytes(bytes, (flags & GMEM_ZEROINIT) != 0, &mapped);
    if (!data) return nullptr;
    std::lock_guard<std::mutex> guard(TableMutex());
    auto& table = Table();
    auto& slots = FreeSlots();
    size_t index;
    if (!slots.empty()) {
        index = slots.back();
        slots.pop_back();
    } else {
        if (table.size() >= kIndexMask) {
            FreeBytes(data, mapped);
            return nullptr;
        }
        table.emplace_back();
        index = table.size() - 1;
    }
    Block& b = table[index];
    b.data = data;
    b.size = bytes;
    b.mapped = mapped;
    b.lockCount = 0;
    b.used = true;
    return MakeHandle(index, b.generation);
}

PRISM_API HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags) {
    std::lock_guard<std::mutex> guard(TableMutex());
    Block* b = Find(block);
    if (!b) return nullptr;
    if (flags & 0x80) return block;  // GMEM_MODIFY: attributes only, nothing to do
    if (bytes > kMaxBlock) return nullptr;
    unsigned char* grown;
    if (!b->mapped && bytes < kLargeBlock) {
        grown = static_cast<unsigned char*>(std::realloc(b->data, bytes ? bytes : 1));
        if (!grown) return nullptr;
    } else if (b->mapped && bytes <= b->mapped && bytes >= kLargeBlock) {
        // Still fits its mapping; pages no longer needed go back.
        grown = b->data;
        const size_t length = MapLength(bytes);
        if (length < b->mapped) munmap(grown + length, b->mapped - length);
        b->mapped = length;
    } else {
        size_t mapped;
        grown = AllocBytes(bytes, false, &mapped);
        if (!grown) return nullptr;
        std::memcpy(grown, b->data, bytes < b->size ? bytes : b->size);
        FreeBytes(b->data, b->mapped);
        b->mapped = mapped;
    }
    if (bytes > b->size && (flags & GMEM_ZEROINIT))
        std::memset(grown + b->size, 0, bytes - b->size);
    b->data = grown;
    b->size = bytes;
    return block;
}

PRISM_API LPVOID GlobalLock(HGLOBAL block) {
    std::lock_guard<std::mutex> guard(TableMutex());
    Block* b = Find(block);
    if (!b || b->size == 0) return nullptr;
    ++b->lockCount;
    return b->data;
}

PRISM_API BOOL GlobalUnlock(HGLOBAL block) {
    std::lock_guard<std::mutex> guard(TableMutex());
    Block* b = Find(block);
    if (!b || b->lockCount == 0) return 0;
    --b->lockCount;
    return b->lockCount > 0;
}

PRISM_API HGLOBAL GlobalFree(HGLOBAL block) {
    std::lock_guard<std::mutex> guard(TableMutex());
    Block* b = Find(block);
    if (!b) return block;
    FreeBytes(b->data, b->mapped);
    b->data = nullptr;
    b->size = 0;
    b->mapped = 0;
    b->lockCount = 0;
    b->used = false;
    ++b->generation;
    FreeSlots().push_back(static_cast<size_t>(b - Table().data()));
    return nullptr;
}

PRISM_API SIZE_T GlobalSize(HGLOBAL block) {
    std::lock_guard<std::mutex> guard(TableMutex());
    Block* b = Find(block);
    return b ? b->size : 0;
}

// A large block goes to small pages, so only the pages written take
// memory, as with malloc.
void plat::SparseBlock(HGLOBAL block) {
    std::lock_guard<std::mutex> guard(TableMutex());
    Block* b = Find(block);
    if (!b || !b->mapped) return;
#ifdef MADV_NOHUGEPAGE
    madvise(b->data, b->mapped, MADV_NOHUGEPAGE);
#endif
}
