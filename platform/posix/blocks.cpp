// Movable memory blocks for POSIX: a handle table with Win32 semantics.
//
// A handle is an opaque number, never an address: its low bits index the
// table and its high bits carry the slot's generation, so a freed handle is
// told apart from the block that later reuses its slot.
#include "platform/export.h"
#include "platform/platform.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

struct Block {
    unsigned char* data = nullptr;
    size_t size = 0;
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

unsigned char* AllocBytes(size_t bytes, bool zero) {
    // Always hand out at least one byte so a zero-sized block still has an
    // identity; it still cannot be locked.
    size_t n = bytes ? bytes : 1;
    void* p = zero ? std::calloc(n, 1) : std::malloc(n);
    return static_cast<unsigned char*>(p);
}

}  // namespace

PRISM_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    if (bytes > kMaxBlock) return nullptr;
    unsigned char* data = AllocBytes(bytes, (flags & GMEM_ZEROINIT) != 0);
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
            std::free(data);
            return nullptr;
        }
        table.emplace_back();
        index = table.size() - 1;
    }
    Block& b = table[index];
    b.data = data;
    b.size = bytes;
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
    unsigned char* grown = static_cast<unsigned char*>(std::realloc(b->data, bytes ? bytes : 1));
    if (!grown) return nullptr;
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
    std::free(b->data);
    b->data = nullptr;
    b->size = 0;
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
