// Index sorting: build sorts with equal-key gathering, the string quicksort with progress, the
// apply sorts and the helpers on arrays.
#include "base/IndexSort.h"

#include <algorithm>
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

// One text in the sort: its first four primary characters packed big-endian into one word, the
// number of its primary characters, and its position.
struct TextEntry {
  uint64_t prefix;
  uint32_t length;
  uint32_t id;
};

constexpr size_t kPrefixChars = 4;
constexpr int64_t kInsertionRun = 32;

// The primary characters of the collation, stored byte-swapped (big-endian) so that memcmp over them
// orders them as unsigned 16-bit codes.
class PrimaryKeys {
 public:
  void Reserve(size_t units) { arena_.reserve(units); }

  // Appends the primary characters of `text`; returns their number.
  size_t Add(std::u16string_view text) {
    const size_t before = arena_.size();
    for (const char16_t c : text) {
      switch (c) {
        case u'_': Put(u' '); break;
        case u'\u00C4': case u'\u00E4': Put(u'A'); Put(u'E'); break;
        case u'\u00D6': case u'\u00F6': Put(u'O'); Put(u'E'); break;
        case u'\u00DC': case u'\u00FC': Put(u'U'); Put(u'E'); break;
        case u'\u00DF': Put(u'S'); Put(u'Z'); break;
        default: Put(ToUpper(c, nullptr)); break;
      }
    }
    return arena_.size() - before;
  }
  const uint16_t* At(size_t offset) const { return arena_.data() + offset; }
  size_t Size() const { return arena_.size(); }

 private:
  void Put(char16_t c) { arena_.push_back(static_cast<uint16_t>((c >> 8) | (c << 8))); }
  std::vector<uint16_t> arena_;
};

class TextSorter {
 public:
  TextSorter(const std::vector<std::u16string_view>& texts, int caseSensitive, int numeric, int skipLeadingBlanks,
             int reverse)
      : texts_(texts), caseSensitive_(caseSensitive), numeric_(numeric), skip_(skipLeadingBlanks), reverse_(reverse) {}

  int Run(std::vector<int64_t>& index, KwProgress* progress) {
    const size_t n = texts_.size();
    BuildKeys();
    std::vector<TextEntry> buffer(n);
    // Insertion-sorted runs, then merge passes; both keep equal entries in order.
    for (size_t lo = 0; lo < n; lo += kInsertionRun) InsertionSort(lo, std::min(n, lo + kInsertionRun));
    int passes = 0;
    for (size_t width = kInsertionRun; width < n; width *= 2) ++passes;
    int pass = 0;
    for (size_t width = kInsertionRun; width < n; width *= 2) {
      for (size_t lo = 0; lo < n; lo += 2 * width)
        Merge(lo, std::min(n, lo + width), std::min(n, lo + 2 * width), buffer);
      entries_.swap(buffer);
      ++pass;
      if (progress != nullptr && progress->Step(pass * 100 / passes) == 0) return 0;
    }
    index.resize(n);
    for (size_t i = 0; i < n; ++i) index[i] = entries_[i].id;
    return 1;
  }

 private:
  void BuildKeys() {
    const size_t n = texts_.size();
    entries_.resize(n);
    offsets_.resize(n);
    size_t units = 0;
    for (const auto& t : texts_) units += t.size();
    keys_.Reserve(units + units / 8);
    if (numeric_) {
      values_.resize(n);
      isNumber_.resize(n);
    }
    for (size_t i = 0; i < n; ++i) {
      std::u16string_view text = texts_[i];
      if (numeric_) {
        int level = kNumberEmpty;
        values_[i] = text.empty() ? 0.0 : GetDouble(text.data(), 0, static_cast<int64_t>(text.size()), 1, &level);
        isNumber_[i] = level <= kNumberEmpty ? 1 : 0;
      }
      if (skip_)
        while (!text.empty() && text.front() == u' ') text.remove_prefix(1);
      offsets_[i] = keys_.Size();
      const size_t length = keys_.Add(text);
      const uint16_t* key = keys_.At(offsets_[i]);
      uint64_t prefix = 0;
      for (size_t k = 0; k < kPrefixChars; ++k) {
        const uint16_t be = k < length ? key[k] : 0;
        prefix = (prefix << 16) | static_cast<uint16_t>((be >> 8) | (be << 8));
      }
      entries_[i] = {prefix, static_cast<uint32_t>(std::min<size_t>(length, UINT32_MAX)), static_cast<uint32_t>(i)};
    }
  }

  // StrCompare's result for the texts of two entries.
  int Collate(const TextEntry& a, const TextEntry& b) const {
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
    const uint32_t common = std::min(a.length, b.length);
    if (a.prefix != b.prefix) {
      // The first differing primary character decides when both texts still have it.
      const auto at = static_cast<uint32_t>(__builtin_clzll(a.prefix ^ b.prefix) / 16);
      if (at < common) return a.prefix < b.prefix ? -1 : 1;
    } else if (common > kPrefixChars) {
      const int c = std::memcmp(keys_.At(offsets_[a.id] + kPrefixChars), keys_.At(offsets_[b.id] + kPrefixChars),
                                (common - kPrefixChars) * sizeof(uint16_t));
      if (c != 0) return c < 0 ? -1 : 1;
    }
    // One primary sequence is a prefix of the other: the lengths and the tie-break decide.
    const std::u16string_view x = texts_[a.id], y = texts_[b.id];
    if (x == y) return 0;
    return StrCompare(x.data(), static_cast<int64_t>(x.size()), y.data(), static_cast<int64_t>(y.size()),
                      caseSensitive_, 0, skip_);
  }

  // Whether b must come before a.
  bool Before(const TextEntry& b, const TextEntry& a) const {
    return reverse_ ? Collate(a, b) < 0 : Collate(b, a) < 0;
  }

  void InsertionSort(size_t lo, size_t hi) {
    for (size_t i = lo + 1; i < hi; ++i) {
      const TextEntry e = entries_[i];
      size_t j = i;
      while (j > lo && Before(e, entries_[j - 1])) {
        entries_[j] = entries_[j - 1];
        --j;
      }
      entries_[j] = e;
    }
  }

  void Merge(size_t lo, size_t mid, size_t hi, std::vector<TextEntry>& out) const {
    size_t i = lo, j = mid, k = lo;
    while (i < mid && j < hi) out[k++] = Before(entries_[j], entries_[i]) ? entries_[j++] : entries_[i++];
    while (i < mid) out[k++] = entries_[i++];
    while (j < hi) out[k++] = entries_[j++];
  }

  const std::vector<std::u16string_view>& texts_;
  int caseSensitive_, numeric_, skip_, reverse_;
  std::vector<TextEntry> entries_;
  std::vector<size_t> offsets_;
  PrimaryKeys keys_;
  std::vector<double> values_;
  std::vector<char> isNumber_;
};

}  // namespace

int SortTextsStable(const std::vector<std::u16string_view>& texts, int caseSensitive, int numeric,
                    int skipLeadingBlanks, int reverse, std::vector<int64_t>& index, KwProgress* progress) {
  KW_ASSERT(texts.size() < UINT32_MAX);
  if (texts.size() >= UINT32_MAX) return 0;
  try {
    TextSorter sorter(texts, caseSensitive, numeric, skipLeadingBlanks, reverse);
    return sorter.Run(index, progress);
  } catch (const std::bad_alloc&) {
    KW_ASSERT(!"out of memory");
    return 0;
  }
}

}  // namespace kw
