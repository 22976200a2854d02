// Index sorting: build sorts with equal-key gathering, the string quicksort with progress, the
// apply sorts and the helpers on arrays.
#include "base/IndexSort.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"

namespace kw {

namespace {

// The quicksort of the build functions over index[lo..hi]. `less(a, b)` and `equal(a, b)` compare
// the keys of original positions a and b.
//
// Each round puts the middle element at lo as pivot, partitions the smaller keys to its left,
// counts the keys equal to it, then gathers those into one run right of the pivot. The run is
// ordered by original position, so equal keys keep their order and are never looked at again.
template <class Less, class Equal>
void GatheringSort(int64_t* index, int64_t lo, int64_t hi, const Less& less, const Equal& equal) {
  while (lo < hi) {
    std::swap(index[lo], index[lo + (hi - lo) / 2]);
    int64_t store = lo, equals = 0;
    for (int64_t k = lo + 1; k <= hi; ++k) {
      if (less(index[k], index[lo])) {
        ++store;
        std::swap(index[store], index[k]);
      } else if (equal(index[k], index[lo])) {
        ++equals;
      }
    }
    std::swap(index[lo], index[store]);
    int64_t last = store;
    for (int64_t next = store + 1; equals > 0 && next <= hi; ++next) {
      if (equal(index[next], index[last])) {
        ++last;
        std::swap(index[last], index[next]);
        --equals;
      }
    }
    // The run store..last in ascending original position. Sorting it once gives the same result as
    // inserting each gathered entry as it comes, without the quadratic walk on long runs.
    std::sort(index + store, index + last + 1);
    // The two sides are independent: recurse into the smaller one to bound the stack.
    if (store - lo < hi - last) {
      GatheringSort(index, lo, store - 1, less, equal);
      lo = last + 1;
    } else {
      GatheringSort(index, last + 1, hi, less, equal);
      hi = store - 1;
    }
  }
}

template <class Less, class Equal>
void BuildSort(int64_t* index, int64_t n, const Less& less, const Equal& equal) {
  if (n < 1) return;
  KW_ASSERT(index != nullptr);
  if (index == nullptr) return;
  for (int64_t i = 0; i < n; ++i) index[i] = i;
  if (n >= 2) GatheringSort(index, 0, n - 1, less, equal);
}

// The walk of the apply sorts. `swap(i, j)` exchanges elements i and j.
template <class Swap>
void ApplyIndex(const int64_t* index, int64_t n, int reverse, const Swap& swap) {
  if (n < 1) return;
  KW_ASSERT(index != nullptr);
  if (index == nullptr) return;
  auto visit = [&](int64_t i) {
    // Follow the cycle of i back to the first position at or after i.
    int64_t j = index[i];
    for (int64_t steps = 0; j >= 0 && j < i && steps <= n; ++steps) j = index[j];
    const bool valid = j >= i && j < n;
    KW_ASSERT(valid);  // index is not a permutation of 0..n-1
    if (!valid) return false;
    if (j > i) swap(i, j);
    return true;
  };
  if (!reverse) {
    for (int64_t i = 0; i < n; ++i)
      if (!visit(i)) return;
  } else {
    // From n-1 in steps of two until the position is -1; an odd count ends after position 0.
    for (int64_t i = n - 1; i >= 0; i -= 2)
      if (!visit(i)) return;
  }
}

int CompareText(const std::u16string& a, const std::u16string& b) {
  return StrCompare(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size()), 1, 0, 0);
}

// The state of one qsort call: the comparison counter runs over the whole call.
struct StringSort {
  const std::vector<std::u16string>& strings;
  int fileNames;
  KwProgress* progress;
  int counter = 0;

  static constexpr int kStepEvery = 501;
  static constexpr int kStepPercent = 5;

  // False when the user stopped the sort at this comparison.
  bool Tick() {
    if (progress == nullptr) return true;
    if (counter == kStepEvery) {
      counter = 0;
      int percent = progress->GetPercent() + kStepPercent;
      if (percent > 100) percent = 0;
      if (progress->Step(percent) == 0) return false;
    }
    ++counter;
    return true;
  }

  int Compare(int64_t a, int64_t b) const {
    const std::u16string& x = strings[static_cast<size_t>(a)];
    const std::u16string& y = strings[static_cast<size_t>(b)];
    return fileNames ? CollateFileNames(x, y) : CompareText(x, y);
  }

  bool Sort(int64_t* index, int64_t lo, int64_t hi) {
    while (lo < hi) {
      std::swap(index[lo], index[lo + (hi - lo) / 2]);
      int64_t store = lo;
      for (int64_t k = lo + 1; k <= hi; ++k) {
        if (!Tick()) return false;
        if (Compare(index[k], index[lo]) < 0) {
          ++store;
          std::swap(index[store], index[k]);
        }
      }
      std::swap(index[lo], index[store]);
      if (!Sort(index, lo, store - 1)) return false;
      lo = store + 1;  // the right side, as a loop rather than a call
    }
    return true;
  }
};

// Splits a path at its last separator: the folder part (without it) and the name.
void SplitPath(const std::u16string& path, std::u16string_view& folder, std::u16string_view& name) {
  const size_t cut = path.find_last_of(u"/\\");
  const std::u16string_view all(path);
  folder = cut == std::u16string::npos ? std::u16string_view() : all.substr(0, cut);
  name = cut == std::u16string::npos ? all : all.substr(cut + 1);
}

// The components of a folder part, in order, without allocating.
class Components {
 public:
  explicit Components(std::u16string_view folder) : rest_(folder), done_(folder.empty()) {}
  bool Next(std::u16string_view& component) {
    if (done_) return false;
    const size_t end = rest_.find_first_of(u"/\\");
    if (end == std::u16string_view::npos) {
      component = rest_;
      done_ = true;
    } else {
      component = rest_.substr(0, end);
      rest_.remove_prefix(end + 1);
    }
    return true;
  }

 private:
  std::u16string_view rest_;
  bool done_;
};

int CompareComponent(std::u16string_view a, std::u16string_view b) {
  return StrCompare(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size()), 1, 0, 0);
}

}  // namespace

void SortDI(const double* keys, int64_t* index, int64_t n) {
  KW_ASSERT(n < 2 || keys != nullptr);
  if (n >= 2 && keys == nullptr) return;
  BuildSort(
      index, n, [keys](int64_t a, int64_t b) { return keys[a] < keys[b]; },
      [keys](int64_t a, int64_t b) { return keys[a] == keys[b]; });
}

void SortUI(const uint64_t* keys, int64_t* index, int64_t n) {
  KW_ASSERT(n < 2 || keys != nullptr);
  if (n >= 2 && keys == nullptr) return;
  BuildSort(
      index, n, [keys](int64_t a, int64_t b) { return keys[a] < keys[b]; },
      [keys](int64_t a, int64_t b) { return keys[a] == keys[b]; });
}

void SortCI(const char16_t* table, int64_t width, int64_t* index, int64_t n) {
  KW_ASSERT(n < 2 || (table != nullptr && width >= 0));
  if (n >= 2 && (table == nullptr || width < 0)) return;
  auto compare = [table, width](int64_t a, int64_t b) {
    return StrCompare(table + a * width, width, table + b * width, width, 1, 0, 0);
  };
  BuildSort(
      index, n, [&compare](int64_t a, int64_t b) { return compare(a, b) < 0; },
      [&compare](int64_t a, int64_t b) { return compare(a, b) == 0; });
}

int CollateFileNames(const std::u16string& a, const std::u16string& b) {
  std::u16string_view folderA, nameA, folderB, nameB;
  SplitPath(a, folderA, nameA);
  SplitPath(b, folderB, nameB);
  Components partsA(folderA), partsB(folderB);
  std::u16string_view partA, partB;
  for (;;) {
    const bool moreA = partsA.Next(partA), moreB = partsB.Next(partB);
    if (!moreA && !moreB) break;
    if (!moreA) return -1;  // a folder's own files before those of its subfolders
    if (!moreB) return 1;
    const int c = CompareComponent(partA, partB);
    if (c != 0) return c;
  }
  return CompareComponent(nameA, nameB);
}

int qsort(int64_t* index, int64_t first, int64_t last, const std::vector<std::u16string>& strings, int fileNames,
          KwProgress* progress) {
  if (last - first < 1) return 1;
  KW_ASSERT(index != nullptr && first >= 0);
  if (index == nullptr || first < 0) return 1;
  StringSort sort{strings, fileNames, progress};
  return sort.Sort(index, first, last) ? 1 : 0;
}

void SortID(double* values, const int64_t* index, int64_t n, int reverse) {
  ApplyIndex(index, n, reverse, [values](int64_t i, int64_t j) { std::swap(values[i], values[j]); });
}

void SortIU(uint64_t* values, const int64_t* index, int64_t n, int reverse) {
  ApplyIndex(index, n, reverse, [values](int64_t i, int64_t j) { std::swap(values[i], values[j]); });
}

void SortIC(char16_t* table, int64_t width, const int64_t* index, int64_t n, int reverse) {
  KW_ASSERT(n < 1 || (table != nullptr && width >= 0));
  if (n < 1 || table == nullptr || width <= 0) return;
  std::u16string scratch;
  try {
    scratch.resize(static_cast<size_t>(width));
  } catch (const std::bad_alloc&) {
    return;  // no scratch record: nothing happens
  } catch (const std::length_error&) {
    return;
  }
  char16_t* record = scratch.data();
  const size_t bytes = static_cast<size_t>(width) * sizeof(char16_t);
  ApplyIndex(index, n, reverse, [=](int64_t i, int64_t j) {
    std::memcpy(record, table + i * width, bytes);
    std::memcpy(table + i * width, table + j * width, bytes);
    std::memcpy(table + j * width, record, bytes);
  });
}

void SortIS(std::vector<std::u16string>& strings, const int64_t* index, int64_t n, int reverse) {
  KW_ASSERT(n <= static_cast<int64_t>(strings.size()));
  if (n > static_cast<int64_t>(strings.size())) return;
  ApplyIndex(index, n, reverse, [&strings](int64_t i, int64_t j) { strings[i].swap(strings[j]); });
}

void SortDM(const double* keys, int64_t* index, int64_t n, int64_t p) {
  KW_ASSERT(keys != nullptr && index != nullptr && p >= 0 && p < n);
  if (keys == nullptr || index == nullptr || p < 0 || p >= n) return;
  for (;;) {
    int64_t t = p;
    if (p >= 1 && keys[index[p - 1]] > keys[index[p]]) t = p - 1;
    if (p < n - 1 && keys[index[p]] > keys[index[p + 1]]) t = t + 1;
    if (t == p) return;
    std::swap(index[p], index[t]);
    p = t;
  }
}

void SortStrArray(std::vector<std::u16string>& strings) {
  const auto n = static_cast<int64_t>(strings.size());
  if (n < 2) return;
  std::vector<int64_t> index(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) index[i] = i;
  kw::qsort(index.data(), 0, n - 1, strings, 0, nullptr);
  std::vector<std::u16string> sorted;
  sorted.reserve(strings.size());
  for (int64_t i : index) sorted.push_back(std::move(strings[static_cast<size_t>(i)]));
  strings.swap(sorted);
}

void SortUIntArray(std::vector<uint64_t>& values) {
  const auto n = static_cast<int64_t>(values.size());
  if (n < 2) return;
  std::vector<int64_t> index(static_cast<size_t>(n));
  SortUI(values.data(), index.data(), n);
  std::vector<uint64_t> sorted;
  sorted.reserve(values.size());
  for (int64_t i : index) sorted.push_back(values[static_cast<size_t>(i)]);
  values.swap(sorted);
}

int IsUIntInArray(uint64_t value, const std::vector<uint64_t>& values) {
  return std::find(values.begin(), values.end(), value) != values.end() ? 1 : 0;
}

// ---- SortTextsStable -----------------------------------------------------------------------------

namespace {

// The primary characters of the collation as bytes, in their order: a character below 0xFF is the
// byte of its value, any other is 0xFF and then its two bytes, high first. Byte strings compare as
// their character sequences do, and one is a prefix of another exactly when the sequences are, so
// the sort may pack bytes where it means characters. German text needs one byte per character, and a
// word of eight of them decides most comparisons.
//
// The primary characters of a source character below 0xFF: "_" stands for a blank, umlauts and "ß"
// expand to two characters, everything is upper-cased (ToUpper without a code page).
struct PrimaryTable {
  uint8_t first[0xFF];
  uint8_t second[0xFF];  // 0: none
};

constexpr PrimaryTable MakePrimaryTable() {
  PrimaryTable t{};
  for (int c = 0; c < 0xFF; ++c) {
    const bool lower = (c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE);
    t.first[c] = static_cast<uint8_t>(lower ? c - 32 : c);
    t.second[c] = 0;
  }
  t.first['_'] = ' ';
  const int expansions[][3] = {{0xC4, 'A', 'E'}, {0xE4, 'A', 'E'}, {0xD6, 'O', 'E'}, {0xF6, 'O', 'E'},
                               {0xDC, 'U', 'E'}, {0xFC, 'U', 'E'}, {0xDF, 'S', 'Z'}};
  for (const auto& e : expansions) {
    t.first[e[0]] = static_cast<uint8_t>(e[1]);
    t.second[e[0]] = static_cast<uint8_t>(e[2]);
  }
  return t;
}

constexpr PrimaryTable kPrimary = MakePrimaryTable();

// Writes the primary bytes [from, from + max) of text[start...] to out and returns how many there
// are; `more` tells whether further bytes follow.
size_t PrimaryBytes(std::u16string_view text, size_t start, size_t from, size_t max, uint8_t* out, bool* more) {
  const size_t end = from + max;
  size_t k = 0;
  auto put = [&](uint8_t b) {
    if (k >= from && k < end) out[k - from] = b;
    ++k;
  };
  // One byte beyond the end tells whether the text goes on.
  for (size_t pos = start; pos < text.size() && k <= end; ++pos) {
    const char16_t c = text[pos];
    if (c < 0xFF) {
      put(kPrimary.first[c]);
      if (kPrimary.second[c] != 0) put(kPrimary.second[c]);
    } else {
      put(0xFF);
      put(static_cast<uint8_t>(c >> 8));
      put(static_cast<uint8_t>(c));
    }
  }
  *more = k > end;
  return k <= from ? 0 : std::min(k, end) - from;
}

// One text in the sort: a chunk of 24 primary bytes packed into three words (the first byte highest,
// zeros after the text's end), how many of the 24 the text has, whether it goes on beyond them, and
// its position. invariant: more implies count == kChunkBytes.
constexpr size_t kChunkWords = 3;
constexpr size_t kChunkBytes = 8 * kChunkWords;
struct TextEntry {
  uint64_t prefix[kChunkWords];
  uint32_t id;
  uint8_t count;
  bool more;
};
constexpr size_t kInsertionRun = 32;
constexpr size_t kBucketFrom = 4096;  // fewer texts are sorted in one range
constexpr size_t kBuckets = 65536;    // the first two primary bytes

// Sorts by the primary bytes 24 at a time: all texts by their first 24, then each run of texts that
// agree in those (and go on beyond them) by the next 24, and so on. Large inputs are first spread
// into buckets by their first two bytes. Every sort is a stable merge sort on the packed words, so a
// text is read once per level, not once per comparison. Texts whose primary characters agree up to
// the end of the shorter one are decided by StrCompare itself (lengths and tie-break); numbers in
// numeric mode by their values.
class TextSorter {
 public:
  TextSorter(const std::vector<std::u16string_view>& texts, int caseSensitive, int numeric, int skipLeadingBlanks,
             int reverse)
      : texts_(texts), caseSensitive_(caseSensitive), numeric_(numeric), skip_(skipLeadingBlanks), reverse_(reverse) {}

  int Run(std::vector<int64_t>& index, KwProgress* progress) {
    const size_t n = texts_.size();
    index.clear();
    if (n == 0) return 1;
    if (numeric_) ReadNumbers();
    struct Range {
      size_t lo, hi, depth;
    };
    std::vector<Range> work, top;
    entries_.resize(n);
    if (numeric_ || n < kBucketFrom) {
      for (size_t i = 0; i < n; ++i) Load(entries_[i], static_cast<uint32_t>(i), 0);
      top.push_back({0, n, 0});
      scratch_.resize(n);
    } else {
      // The first two primary bytes spread the texts into buckets: where both texts have them they
      // decide, and a text that ends before (zeros) precedes every text that goes on. Each text goes
      // straight to its place in its bucket, in order.
      std::vector<uint32_t> start(kBuckets + 1, 0);
      std::vector<uint16_t> bucketOf(n);
      for (size_t i = 0; i < n; ++i) {
        bucketOf[i] = FirstTwo(i);
        ++start[bucketOf[i] + 1u];
      }
      size_t largest = 0;
      for (size_t b = 0; b < kBuckets; ++b) {
        largest = std::max<size_t>(largest, start[b + 1]);
        start[b + 1] += start[b];
      }
      std::vector<uint32_t> fill(start.begin(), start.end() - 1);
      for (size_t i = 0; i < n; ++i) Load(entries_[fill[bucketOf[i]]++], static_cast<uint32_t>(i), 0);
      for (size_t b = 0; b < kBuckets; ++b)
        if (start[b + 1] > start[b]) top.push_back({start[b], start[b + 1], 0});
      scratch_.resize(largest);
    }
    size_t done = 0;
    int shown = 0;
    for (const Range& bucket : top) {
      // A single range steps the pane per merge pass; buckets step it by the share sorted.
      if (!MergeSort(bucket.lo, bucket.hi, top.size() == 1 ? progress : nullptr)) return 0;
      work.push_back(bucket);
      while (!work.empty()) {
        const Range r = work.back();
        work.pop_back();
        if (r.depth > 0) {
          for (size_t i = r.lo; i < r.hi; ++i) Load(entries_[i], entries_[i].id, r.depth);
          MergeSort(r.lo, r.hi, nullptr);
        }
        // Runs that agree in this chunk and all go on beyond it are ordered by the next chunk.
        for (size_t i = r.lo; i < r.hi;) {
          size_t j = i + 1;
          if (entries_[i].more)
            while (j < r.hi && entries_[j].more && SameChunk(entries_[i], entries_[j])) ++j;
          if (j - i >= 2) work.push_back({i, j, r.depth + 1});
          i = j;
        }
      }
      done += bucket.hi - bucket.lo;
      const auto percent = static_cast<int>(done * 100 / n);
      if (top.size() > 1 && progress != nullptr && percent > shown) {
        shown = percent;
        if (progress->Step(percent) == 0) return 0;
      }
    }
    index.resize(n);
    for (size_t i = 0; i < n; ++i) index[i] = entries_[i].id;
    return 1;
  }

 private:
  size_t Start(std::u16string_view text) const {
    size_t start = 0;
    if (skip_)
      while (start < text.size() && text[start] == u' ') ++start;
    return start;
  }

  // The bucket of a text: its first two primary bytes (zeros after its end), in the order of the sort.
  uint16_t FirstTwo(size_t i) const {
    const std::u16string_view text = texts_[i];
    uint8_t bytes[2] = {0, 0};
    bool more = false;
    PrimaryBytes(text, Start(text), 0, 2, bytes, &more);
    const unsigned key = (bytes[0] << 8) | bytes[1];
    return static_cast<uint16_t>(reverse_ ? 0xFFFF - key : key);
  }

  // Fills an entry with chunk `depth` of text `id` (its bytes from 24 * depth on). A deeper chunk is
  // read from the text's start again: few texts need one, and they are short.
  void Load(TextEntry& e, uint32_t id, size_t depth) const {
    const std::u16string_view text = texts_[id];
    uint8_t bytes[kChunkBytes] = {};
    bool more = false;
    e.id = id;
    e.count = static_cast<uint8_t>(PrimaryBytes(text, Start(text), depth * kChunkBytes, kChunkBytes, bytes, &more));
    e.more = more;
    for (size_t w = 0; w < kChunkWords; ++w) {
      uint64_t packed = 0;
      for (size_t b = 0; b < 8; ++b) packed = (packed << 8) | bytes[8 * w + b];
      e.prefix[w] = packed;
    }
  }

  void ReadNumbers() {
    const size_t n = texts_.size();
    values_.resize(n);
    isNumber_.resize(n);
    for (size_t i = 0; i < n; ++i) {
      const std::u16string_view text = texts_[i];
      int level = kNumberEmpty;
      values_[i] = text.empty() ? 0.0 : GetDouble(text.data(), 0, static_cast<int64_t>(text.size()), 1, &level);
      isNumber_[i] = level <= kNumberEmpty ? 1 : 0;
    }
  }

  static bool SameChunk(const TextEntry& a, const TextEntry& b) {
    for (size_t w = 0; w < kChunkWords; ++w)
      if (a.prefix[w] != b.prefix[w]) return false;
    return true;
  }

  // StrCompare's result for the texts of two entries, from scratch.
  int Collate(const TextEntry& a, const TextEntry& b) const {
    const std::u16string_view x = texts_[a.id], y = texts_[b.id];
    if (x == y) return 0;
    return StrCompare(x.data(), static_cast<int64_t>(x.size()), y.data(), static_cast<int64_t>(y.size()),
                      caseSensitive_, 0, skip_);
  }

  // The order of two entries at the present depth: -1 or 1 when decided, 0 when both agree in this
  // chunk and go on beyond it (the next depth decides).
  int Compare(const TextEntry& a, const TextEntry& b) const {
    if (numeric_) {
      const bool na = isNumber_[a.id], nb = isNumber_[b.id];
      if (na && nb) {
        const double x = values_[a.id], y = values_[b.id];
        if (x < y - 1e-7) return -1;
        if (x > y + 1e-7) return 1;
      } else if (na) {
        return -1;
      } else if (nb) {
        return 1;
      }
    }
    // The first differing primary byte decides when both texts still have it.
    for (size_t w = 0; w < kChunkWords; ++w) {
      const uint64_t x = a.prefix[w], y = b.prefix[w];
      if (x == y) continue;
      const auto at = 8 * w + static_cast<size_t>(std::countl_zero(x ^ y) / 8);
      if (at < std::min(a.count, b.count)) return x < y ? -1 : 1;
      return Collate(a, b);
    }
    // One primary sequence ends where the other agrees with it: lengths and tie-break decide.
    return a.more && b.more ? 0 : Collate(a, b);
  }

  // Whether b must come before a.
  bool Before(const TextEntry& b, const TextEntry& a) const {
    return reverse_ ? Compare(a, b) < 0 : Compare(b, a) < 0;
  }

  // A stable merge sort of entries_[lo, hi): insertion-sorted runs, then merge passes through the
  // scratch space.
  bool MergeSort(size_t lo, size_t hi, KwProgress* progress) {
    const size_t m = hi - lo;
    TextEntry* const base = entries_.data() + lo;
    for (size_t s = 0; s < m; s += kInsertionRun) InsertionSort(base + s, std::min(m - s, kInsertionRun));
    int passes = 0;
    for (size_t width = kInsertionRun; width < m; width *= 2) ++passes;
    TextEntry* from = base;
    TextEntry* to = scratch_.data();
    int pass = 0;
    for (size_t width = kInsertionRun; width < m; width *= 2) {
      for (size_t s = 0; s < m; s += 2 * width)
        Merge(from + s, std::min(width, m - s), std::min(2 * width, m - s), to + s);
      std::swap(from, to);
      ++pass;
      if (progress != nullptr && progress->Step(pass * 100 / passes) == 0) return false;
    }
    if (from != base) std::copy(from, from + m, base);
    return true;
  }

  void InsertionSort(TextEntry* a, size_t m) const {
    for (size_t i = 1; i < m; ++i) {
      const TextEntry e = a[i];
      size_t j = i;
      while (j > 0 && Before(e, a[j - 1])) {
        a[j] = a[j - 1];
        --j;
      }
      a[j] = e;
    }
  }

  // Merges from[0, mid) and from[mid, end) into to[0, end).
  void Merge(const TextEntry* from, size_t mid, size_t end, TextEntry* to) const {
    size_t i = 0, j = mid, k = 0;
    while (i < mid && j < end) to[k++] = Before(from[j], from[i]) ? from[j++] : from[i++];
    while (i < mid) to[k++] = from[i++];
    while (j < end) to[k++] = from[j++];
  }

  const std::vector<std::u16string_view>& texts_;
  int caseSensitive_, numeric_, skip_, reverse_;
  std::vector<TextEntry> entries_;
  std::vector<TextEntry> scratch_;  // merge space for the largest range sorted at once
  std::vector<double> values_;
  std::vector<char> isNumber_;
};

}  // namespace

int SortTextsStable(const std::vector<std::u16string_view>& texts, int caseSensitive, int numeric,
                    int skipLeadingBlanks, int reverse, std::vector<int64_t>& index, KwProgress* progress) {
  // Positions and counts are 32-bit inside the sort.
  bool fits = texts.size() < UINT32_MAX;
  for (const auto& text : texts) fits = fits && text.size() < UINT32_MAX / 2;
  KW_ASSERT(fits);
  if (!fits) return 0;
  try {
    TextSorter sorter(texts, caseSensitive, numeric, skipLeadingBlanks, reverse);
    return sorter.Run(index, progress);
  } catch (const std::bad_alloc&) {
    KW_ASSERT(!"out of memory");
    return 0;
  }
}

}  // namespace kw
