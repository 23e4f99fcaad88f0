// The DIB model: header arithmetic, the checked allocation every export
// uses, a lock holder, and a validated view of a locked image block.
#pragma once

#include "platform/platform.h"

#include <cstddef>
#include <cstdint>

namespace prism {

// Flags of every image block and almost every work block: movable and
// zero-filled.
constexpr UINT kImageFlags = GMEM_MOVEABLE | GMEM_ZEROINIT;  // 66
constexpr std::uint32_t kInfoHeaderSize = 40;
constexpr std::uint32_t kCoreHeaderSize = 12;

// Largest block the library makes or accepts: a 32-bit host's limit.
constexpr std::uint64_t kMaxBlockBytes = 0xFFFFFFFFu;

// ---- header arithmetic on a locked header ---------------------------------
// Colour-table entries: biClrUsed of a 40-byte header when non-zero
// (unchecked), else 2, 16 or 256 by depth, 0 for any other depth.
std::uint32_t DibColorCount(const void* header);
// Bytes of colour table: 4 per entry for a 40-byte header, 3 otherwise.
std::uint64_t DibPaletteSize(const void* header);
// First pixel byte: behind the header and the colour table.
unsigned char* DibBits(void* header);
// Stride of a row: rows end on a 32-bit boundary.  Exact in 64 bits for
// any width and depth, so callers can check the product against a block.
std::uint64_t DibRowBytes(std::int64_t width, int bitCount);

// Size of an open file; the position is kept.
long FileSizeOf(HFILE file);

// ---- allocation ------------------------------------------------------------
// Bytes of a 40-byte-header DIB with `colors` table entries.  False when a
// dimension is negative or the total leaves the 32-bit range.
bool DibBlockBytes(std::int64_t width, std::int64_t height, int bitCount, std::uint64_t colors,
                   std::uint64_t* bytes);

// The one checked allocation: refuses sizes above the 32-bit range and
// returns 0 on failure.
HGLOBAL AllocBlock(std::uint64_t bytes, UINT flags = kImageFlags);

// A new zero-filled image with a 40-byte header filled in (biSizeImage set,
// biClrUsed = colors) and room for `colors` table entries.  0 when the size
// is refused or memory is short.
HDIB NewDib(std::int64_t width, std::int64_t height, int bitCount, std::uint32_t colors);

// ---- locking ---------------------------------------------------------------
// Holds one lock on a block for a scope.  Release() hands the lock over to
// the caller (for operations that leave a lock standing).
class BlockLock {
public:
    BlockLock() = default;
    explicit BlockLock(HGLOBAL block) : block_(block), data_(block ? GlobalLock(block) : nullptr) {}
    ~BlockLock() { Unlock(); }
    BlockLock(const BlockLock&) = delete;
    BlockLock& operator=(const BlockLock&) = delete;
    BlockLock(BlockLock&& other) noexcept : block_(other.block_), data_(other.data_) {
        other.data_ = nullptr;
    }

    explicit operator bool() const { return data_ != nullptr; }
    void* get() const { return data_; }
    unsigned char* bytes() const { return static_cast<unsigned char*>(data_); }
    HGLOBAL block() const { return block_; }
    std::uint64_t size() const { return data_ ? GlobalSize(block_) : 0; }

    void Unlock() {
        if (data_) GlobalUnlock(block_);
        data_ = nullptr;
    }
    void Release() { data_ = nullptr; }

private:
    HGLOBAL block_ = nullptr;
    void* data_ = nullptr;
};

// Frees a block at the end of a scope unless it is handed out.
class OwnedBlock {
public:
    OwnedBlock() = default;
    explicit OwnedBlock(HGLOBAL block) : block_(block) {}
    ~OwnedBlock() {
        if (block_) GlobalFree(block_);
    }
    OwnedBlock(const OwnedBlock&) = delete;
    OwnedBlock& operator=(const OwnedBlock&) = delete;

    explicit operator bool() const { return block_ != nullptr; }
    HGLOBAL get() const { return block_; }
    HGLOBAL Release() {
        HGLOBAL b = block_;
        block_ = nullptr;
        return b;
    }

private:
    HGLOBAL block_ = nullptr;
};

// ---- a validated view of a locked DIB ----------------------------------------
// Everything an operation needs about an image, read once from the header
// and checked against the block that holds it.
struct DibView {
    unsigned char* header = nullptr;  // start of the block
    bool infoHeader = false;          // 40-byte header (else core)
    std::uint32_t headerBytes = 0;    // the size word
    std::int64_t width = 0;
    std::int64_t height = 0;
    int bitCount = 0;
    std::uint32_t compression = 0;    // 0 for core headers
    std::uint32_t colors = 0;         // DibColorCount
    std::uint64_t paletteBytes = 0;   // DibPaletteSize
    unsigned char* palette = nullptr;
    unsigned char* bits = nullptr;    // DibBits
    std::uint64_t stride = 0;         // DibRowBytes
    std::uint64_t blockBytes = 0;     // GlobalSize of the block
    std::uint64_t pixelBytes = 0;     // bytes from `bits` to the block's end

    // Row y counted from the bottom, as stored.
    unsigned char* Row(std::int64_t y) const { return bits + static_cast<size_t>(y) * stride; }
    // Do height rows of stride bytes lie inside the block?
    bool RowsFit() const { return height >= 0 && stride * static_cast<std::uint64_t>(height) <= pixelBytes; }
};

enum class DibStatus {
    kOk,
    kTooSmall,      // the block cannot hold the header or colour table it claims
    kBadSize,       // negative dimensions, or a size outside the 32-bit range
};

// Reads the header of a locked block of `blockBytes` bytes.  kOk means the
// header and colour table lie inside the block and the stride is known;
// whether the rows fit is left to RowsFit(), since compressed images and a
// few operations have rules of their own.
DibStatus ViewDib(void* locked, std::uint64_t blockBytes, DibView* view);

// Do the rows a header claims, read as a 40-byte header with its colour
// table in front of them, lie inside a block of `blockBytes`?  Sizes of 0
// or below claim no rows.
bool RowsInsideBlock(const BITMAPINFOHEADER& header, std::uint64_t blockBytes);

// Is the image whole in a form the graphics system reads: every row (or,
// run-length coded, biSizeImage bytes) inside the block, no bit-field
// masks?  Rows stored top first were refused by ViewDib already.
bool PixelsForDevice(const DibView& view);

// Copies up to 40 header bytes of a block into `out`, reading bytes past
// the block's end as 0.
void CopyHeaderBytes(const void* locked, std::uint64_t blockBytes, BITMAPINFOHEADER* out);

}  // namespace prism
