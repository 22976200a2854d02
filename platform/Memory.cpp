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
constexpr unsigned kSlots = kRegionBytes / kTextSlotBytes;
constexpr uint32_t kAllFree = (uint32_t{1} << kSlots) - 1;
static_assert(kSlots >= 2 && kSlots <= 32 && kRegionBytes % kTextSlotBytes == 0);

// The regions by their base address; `free` has bit k set when slot k is free. invariant: a region is
// in `partial` exactly when it has a free slot and a used one (an empty region is unmapped at once).
struct Regions {
  std::mutex lock;
  std::unordered_map<uintptr_t, uint32_t> free;
  std::vector<uintptr_t> partial;
};

Regions& TheRegions() {
  static Regions* regions = new Regions;  // never destroyed: buffers may be freed during exit
  return *regions;
}

// A fresh region, or 0. The mapping is made twice as large and cut to the aligned part in its middle.
uintptr_t MapRegion() {
  void* p = mmap(nullptr, 2 * kRegionBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (p == MAP_FAILED) return 0;
  const auto start = reinterpret_cast<uintptr_t>(p);
  const uintptr_t base = (start + kRegionBytes - 1) & ~(kRegionBytes - 1);
  if (base > start) munmap(p, base - start);
  const uintptr_t end = start + 2 * kRegionBytes;
  if (end > base + kRegionBytes) munmap(reinterpret_cast<void*>(base + kRegionBytes), end - base - kRegionBytes);
  madvise(reinterpret_cast<void*>(base), kRegionBytes, MADV_HUGEPAGE);  // a hint; refusal is harmless
  return base;
}
#endif

}  // namespace

void* AllocateTextBuffer(size_t bytes) {
#if KW_TEXT_REGIONS
  if (bytes <= kTextSlotBytes && bytes >= kTextSlotBytes / 4) {
    Regions& r = TheRegions();
    std::lock_guard<std::mutex> guard(r.lock);
    uintptr_t base = 0;
    if (!r.partial.empty()) {
      base = r.partial.back();
    } else {
      base = MapRegion();
      if (base != 0) {
        try {
          r.free.emplace(base, kAllFree);
          r.partial.push_back(base);
        } catch (const std::bad_alloc&) {
          r.free.erase(base);
          munmap(reinterpret_cast<void*>(base), kRegionBytes);
          base = 0;
        }
      }
    }
    if (base != 0) {
      uint32_t& mask = r.free[base];
      const int slot = std::countr_zero(mask);
      mask &= mask - 1;
      if (mask == 0) r.partial.pop_back();  // full now (it was the last of `partial`)
      return reinterpret_cast<void*>(base + static_cast<uintptr_t>(slot) * kTextSlotBytes);
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
    auto it = r.free.find(base);
    if (it != r.free.end()) {
      uint32_t& mask = it->second;
      const bool wasFull = mask == 0;
      mask |= uint32_t{1} << ((p - base) / kTextSlotBytes);
      if (mask == kAllFree) {
        for (size_t k = 0; k < r.partial.size(); ++k)
          if (r.partial[k] == base) {
            r.partial[k] = r.partial.back();
            r.partial.pop_back();
            break;
          }
        r.free.erase(it);
        munmap(reinterpret_cast<void*>(base), kRegionBytes);
      } else if (wasFull) {
        // Without memory for the list the region's free slots wait until the region is empty.
        try {
          r.partial.push_back(base);
        } catch (const std::bad_alloc&) {
        }
      }
      return;
    }
  }
#endif
  ::operator delete(buffer);
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
