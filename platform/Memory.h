// Memory for the big text buffers of the editor, and hints to the operating system about it.
#pragma once

#include <cstddef>
#include <new>

namespace kw {

// Buffers for chunk text. A buffer of kTextSlotBytes or less (but at least kTextSlotBytes / 4) comes from
// a region of 2 MB, aligned to 2 MB, that holds 16 such buffers and is offered to the system for a
// transparent huge page: filling hundreds of megabytes then takes a few hundred page faults instead of
// one per 4 KB, which otherwise costs more than decoding the text. A grown chunk (up to twice that
// size) comes from regions of 8 such buffers. A region whose last buffer is freed is kept for the next
// buffers (up to 64 MB of such regions; beyond that it is returned to the system). Other sizes, and every size on systems without such regions (or in builds with the address
// sanitizer, so that it still sees every buffer), come from operator new.
// Thread-safe. AllocateTextBuffer returns null when no memory is left; FreeTextBuffer takes what
// AllocateTextBuffer gave (or null) and nothing else.
inline constexpr size_t kTextSlotBytes = size_t{2} << 16;  // 128 KB: one chunk of the usual capacity
void* AllocateTextBuffer(size_t bytes);
void FreeTextBuffer(void* buffer);

// Blocks for large temporary arrays (the changes of a task over millions of lines): a block of 1 MB or
// more is a mapping of its own offered for transparent huge pages, for the same reason as the text
// buffers; smaller ones come from operator new. Null when no memory is left. FreeLargeBlock takes the
// block and the size it was asked for.
void* AllocateLargeBlock(size_t bytes);
void FreeLargeBlock(void* block, size_t bytes);

// A standard allocator over those blocks, for vectors that may grow to hundreds of megabytes. It throws
// std::bad_alloc as containers expect.
template <class T>
struct LargeBlockAllocator {
  using value_type = T;
  LargeBlockAllocator() = default;
  template <class U>
  LargeBlockAllocator(const LargeBlockAllocator<U>&) noexcept {}
  T* allocate(size_t n) {
    if (n > static_cast<size_t>(-1) / sizeof(T)) throw std::bad_alloc();
    void* p = AllocateLargeBlock(n * sizeof(T));
    if (p == nullptr) throw std::bad_alloc();
    return static_cast<T*>(p);
  }
  void deallocate(T* p, size_t n) noexcept { FreeLargeBlock(p, n * sizeof(T)); }
  template <class U>
  bool operator==(const LargeBlockAllocator<U>&) const noexcept { return true; }
};

// Asks the operating system to back the whole pages inside [start, start + bytes) with memory now, in one
// call, instead of one page fault per page at the first writes. Only a hint: the memory must be the
// caller's and stays as it is; where the system has no such call (or refuses it) the pages come at the
// first write as before. Returns true when the system took the hint.
bool PrefaultForWriting(void* start, size_t bytes);

}  // namespace kw
