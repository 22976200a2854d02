#include "platform/Memory.h"

#include <bit>
#include <cstdint>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

// Sanitizer builds keep plain allocations so that overruns of a chunk are seen (gcc names the build by
// a macro, clang by a feature test).
#if defined(__SANITIZE_ADDRESS__)
#define KW_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KW_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(__linux__) && defined(MADV_HUGEPAGE) && !defined(KW_ADDRESS_SANITIZER)
#define KW_TEXT_REGIONS 1
#else
#define KW_TEXT_REGIONS 0
#endif

namespace kw {

namespace {

#if KW_TEXT_REGIONS
constexpr uintptr_t kRegionBytes = uintptr_t{2} << 20;

// Buffers come in two sizes: the usual chunk (kTextSlotBytes) and a grown one of twice that; a region
// holds slots of one size only.
struct SizeClass {
  size_t slotBytes;
  uint32_t allFree;  // one bit per slot of a region
};
constexpr SizeClass kClasses[2] = {{kTextSlotBytes, (uint32_t{1} << (kRegionBytes / kTextSlotBytes)) - 1},
                                   {2 * kTextSlotBytes, (uint32_t{1} << (kRegionBytes / kTextSlotBytes / 2)) - 1}};
static_assert(kRegionBytes / kTextSlotBytes >= 4 && kRegionBytes / kTextSlotBytes <= 32 &&
              kRegionBytes % (2 * kTextSlotBytes) == 0);

// The size class of a buffer of `bytes`, -1 for none.
int ClassOf(size_t bytes) {
  if (bytes >= kTextSlotBytes / 4 && bytes <= kTextSlotBytes) return 0;
  if (bytes > kTextSlotBytes && bytes <= 2 * kTextSlotBytes) return 1;
  return -1;
}

// The regions by their base address; `free` has bit k set when slot k is free. invariant: a region is
// in the `partial` list of its class exactly when it has a free slot and a used one (an empty region is
// unmapped at once).
struct Region {
  uint32_t free;
  int sizeClass;
};
struct Regions {
  std::mutex lock;
  std::unordered_map<uintptr_t, Region> regions;
  std::vector<uintptr_t> partial[2];
  // Empty regions kept mapped for the next buffers: an edit that rebuilds every chunk frees an old
  // buffer for each new one, and memory handed back to the system comes back zeroed page by page,
  // which costs more than the copy itself. Reserved with room for all of them, so keeping one never
  // allocates.
  std::vector<uintptr_t> spare;
};

constexpr size_t kSpareRegions = 32;  // 64 MB at most stay mapped without a buffer in them

Regions& TheRegions() {
  static Regions* regions = [] {
    auto* r = new Regions;  // never destroyed: buffers may be freed during exit
    r->spare.reserve(kSpareRegions);
    return r;
  }();
  return *regions;
}

// `bytes` of fresh memory offered for transparent huge pages, aligned to kRegionBytes when `aligned`;
// 0 when there is none. An aligned mapping is made larger and cut to the aligned part inside it.
uintptr_t MapHuge(size_t bytes, bool aligned) {
  const size_t extra = aligned ? kRegionBytes : 0;
  void* p = mmap(nullptr, bytes + extra, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (p == MAP_FAILED) return 0;
  const auto start = reinterpret_cast<uintptr_t>(p);
  const uintptr_t base = aligned ? (start + kRegionBytes - 1) & ~(kRegionBytes - 1) : start;
  if (base > start) munmap(p, base - start);
  const uintptr_t end = start + bytes + extra;
  if (end > base + bytes) munmap(reinterpret_cast<void*>(base + bytes), end - base - bytes);
  madvise(reinterpret_cast<void*>(base), bytes, MADV_HUGEPAGE);  // a hint; refusal is harmless
  return base;
}
#endif

}  // namespace

void* AllocateTextBuffer(size_t bytes) {
#if KW_TEXT_REGIONS
  const int k = ClassOf(bytes);
  if (k >= 0) {
    Regions& r = TheRegions();
    std::lock_guard<std::mutex> guard(r.lock);
    std::vector<uintptr_t>& partial = r.partial[k];
    uintptr_t base = 0;
    if (!partial.empty()) {
      base = partial.back();
    } else {
      if (!r.spare.empty()) {
        base = r.spare.back();
        r.spare.pop_back();
      } else {
        base = MapHuge(kRegionBytes, true);
      }
      if (base != 0) {
        try {
          r.regions.emplace(base, Region{kClasses[k].allFree, k});
          partial.push_back(base);
        } catch (const std::bad_alloc&) {
          r.regions.erase(base);
          munmap(reinterpret_cast<void*>(base), kRegionBytes);
          base = 0;
        }
      }
    }
    if (base != 0) {
      uint32_t& mask = r.regions[base].free;
      const int slot = std::countr_zero(mask);
      mask &= mask - 1;
      if (mask == 0) partial.pop_back();  // full now (it was the last of `partial`)
      return reinterpret_cast<void*>(base + static_cast<uintptr_t>(slot) * kClasses[k].slotBytes);
    }
    // No region to be had: operator new may still find memory.
  }
#endif
  return ::operator new(bytes, std::nothrow);
}

void FreeTextBuffer(void* buffer) {
  if (buffer == nullptr) return;
#if KW_TEXT_REGIONS
  const auto p = reinterpret_cast<uintptr_t>(buffer);
  const uintptr_t base = p & ~(kRegionBytes - 1);
  Regions& r = TheRegions();
  {
    std::lock_guard<std::mutex> guard(r.lock);
    auto it = r.regions.find(base);
    if (it != r.regions.end()) {
      const SizeClass& size = kClasses[it->second.sizeClass];
      std::vector<uintptr_t>& partial = r.partial[it->second.sizeClass];
      uint32_t& mask = it->second.free;
      const bool wasFull = mask == 0;
      mask |= uint32_t{1} << ((p - base) / size.slotBytes);
      if (mask == size.allFree) {
        for (size_t k = 0; k < partial.size(); ++k)
          if (partial[k] == base) {
            partial[k] = partial.back();
            partial.pop_back();
            break;
          }
        r.regions.erase(it);
        if (r.spare.size() < kSpareRegions)
          r.spare.push_back(base);
        else
          munmap(reinterpret_cast<void*>(base), kRegionBytes);
      } else if (wasFull) {
        // Without memory for the list the region's free slots wait until the region is empty.
        try {
          partial.push_back(base);
        } catch (const std::bad_alloc&) {
        }
      }
      return;
    }
  }
#endif
  ::operator delete(buffer);
}

namespace {
// Blocks of this size or more are mapped on their own; smaller ones come from operator new.
constexpr size_t kLargeBlockBytes = size_t{1} << 20;
#if KW_TEXT_REGIONS
size_t MappedBytes(size_t bytes) { return (bytes + kRegionBytes - 1) & ~(kRegionBytes - 1); }
#endif
}  // namespace

void* AllocateLargeBlock(size_t bytes) {
#if KW_TEXT_REGIONS
  if (bytes >= kLargeBlockBytes) {
    if (const uintptr_t base = MapHuge(MappedBytes(bytes), true)) return reinterpret_cast<void*>(base);
    return nullptr;
  }
#endif
  return ::operator new(bytes, std::nothrow);
}

void FreeLargeBlock(void* block, size_t bytes) {
  if (block == nullptr) return;
#if KW_TEXT_REGIONS
  if (bytes >= kLargeBlockBytes) {
    munmap(block, MappedBytes(bytes));
    return;
  }
#endif
  (void)bytes;
  ::operator delete(block);
}

bool PrefaultForWriting(void* start, size_t bytes) {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
  static const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  if (start == nullptr || page == 0 || bytes < page) return false;
  // Only the pages that lie wholly inside the buffer: the others belong partly to someone else.
  const auto from = (reinterpret_cast<uintptr_t>(start) + page - 1) & ~(page - 1);
  const auto to = (reinterpret_cast<uintptr_t>(start) + bytes) & ~(page - 1);
  if (to <= from) return false;
  return madvise(reinterpret_cast<void*>(from), to - from, MADV_POPULATE_WRITE) == 0;
#else
  (void)start;
  (void)bytes;
  return false;
#endif
}

}  // namespace kw
