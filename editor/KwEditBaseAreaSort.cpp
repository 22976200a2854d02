// SortLines of KwEditBase: the lines of a range (or its marked lines) sorted by keys. The lines change
// places but every place keeps its own end of line, so the text keeps its length and its line count
// and is rewritten in place; the undo record holds the places and the permutation.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "editor/KwEditBaseArea.h"
#include "editor/KwEditUndo.h"
#include "platform/Platform.h"

namespace kw {

namespace {

class SortWait {
 public:
  SortWait() { GetPlatform().SetWaitCursor(true); }
  ~SortWait() { GetPlatform().SetWaitCursor(false); }
  SortWait(const SortWait&) = delete;
  SortWait& operator=(const SortWait&) = delete;
};

// The lines of the sorted places, read into one buffer.
struct PlaceTexts {
  std::u16string units;           // the places' contents, one after the other (ends of line excluded)
  std::vector<int64_t> begin;     // per place: offset in units
  std::vector<int64_t> length;    // per place: content length
  const char16_t* at(size_t k) const { return units.data() + begin[k]; }
};

}  // namespace

// Reads the contents of `places` (ascending line numbers), rewrites them as `order` says (place k
// receives the content that was at place order[k]) and moves their line marks along. The text keeps its
// length: only contents move between places whose ends of line stay.
static void Rewrite(KwEditBase& doc, const std::vector<Line>& places, const std::vector<int64_t>& order,
                    const PlaceTexts& texts, std::vector<int>& marks) {
  const Line first = places.front();
  const Line last = places.back();
  const Index start = doc.LineStart(first);
  const Index end = doc.LineStart(last) + doc.LineLength(last, 0);
  std::u16string old(static_cast<size_t>(end - start), u'\0');
  doc.GetText(start, old.data(), end - start);
  std::u16string out;
  out.reserve(old.size());
  // Units between the places (their ends of line and the lines that are not sorted) stay.
  Index cursor = start;
  for (size_t k = 0; k < places.size(); ++k) {
    const Index ls = doc.LineStart(places[k]);
    out.append(old, static_cast<size_t>(cursor - start), static_cast<size_t>(ls - cursor));
    const auto src = static_cast<size_t>(order[k]);
    out.append(texts.at(src), static_cast<size_t>(texts.length[src]));
    cursor = ls + texts.length[k];
  }
  doc.SetText(start, out.data(), end - start);
  if (std::find(marks.begin(), marks.end(), 1) == marks.end()) return;
  std::vector<int> moved(places.size());
  for (size_t k = 0; k < places.size(); ++k) moved[k] = marks[static_cast<size_t>(order[k])];
  for (size_t k = 0; k < places.size(); ++k) doc.SetLineMark(places[k], moved[k]);
}

static void ReadPlaces(KwEditBase& doc, const std::vector<Line>& places, PlaceTexts& texts, std::vector<int>& marks) {
  texts.begin.resize(places.size());
  texts.length.resize(places.size());
  marks.resize(places.size());
  int64_t total = 0;
  for (size_t k = 0; k < places.size(); ++k) {
    texts.begin[k] = total;
    texts.length[k] = doc.LineLength(places[k], 0);
    total += texts.length[k];
    marks[k] = doc.GetLineMark(places[k]);
  }
  texts.units.resize(static_cast<size_t>(total));
  // Contiguous places are read in one go.
  size_t k = 0;
  while (k < places.size()) {
    size_t e = k;
    while (e + 1 < places.size() && places[e + 1] == places[e] + 1) ++e;
    const Index s = doc.LineStart(places[k]);
    const Index t = doc.LineStart(places[e]) + texts.length[e];
    std::u16string run(static_cast<size_t>(t - s), u'\0');
    doc.GetText(s, run.data(), t - s);
    // Drop the ends of line between the lines of the run.
    for (size_t j = k; j <= e; ++j) {
      const Index ls = j == k ? s : doc.LineStart(places[j]);
      std::copy_n(run.data() + (ls - s), texts.length[j], texts.units.begin() + texts.begin[j]);
    }
    k = e + 1;
  }
}

int64_t KwEditBase::ApplySort(const tagUNDORECORD& r, bool undo) {
  const int64_t n = r.value2;
  const auto* data = static_cast<const int64_t*>(r.data);
  std::vector<Line> places(data, data + n);
  std::vector<int64_t> order(data + n, data + 2 * n);
  for (const Line l : places)
    if (l < 0 || l > m_LinesInDoc) return 0;
  if (undo) {  // place order[k] gets back the content now at place k
    std::vector<int64_t> inverse(static_cast<size_t>(n));
    for (int64_t k = 0; k < n; ++k) inverse[static_cast<size_t>(order[static_cast<size_t>(k)])] = k;
    order.swap(inverse);
  }
  PlaceTexts texts;
  std::vector<int> marks;
  ReadPlaces(*this, places, texts, marks);
  Rewrite(*this, places, order, texts, marks);
  if (!m_FFTable.empty() || std::find(texts.units.begin(), texts.units.end(), kFormFeed) != texts.units.end())
    BuildFFTable();
  return n;
}

int KwEditBase::SortLines(Line line1, const std::vector<tagSORTKEY>& keys, int64_t count, int stable,
                          int markedOnly, KwProgress* progress, double fromPercent, double toPercent) {
  const bool ok = line1 >= 0 && line1 <= m_LinesInDoc && count >= 0;
  KW_ASSERT(ok);
  if (!ok || m_Head == nullptr) return 0;
  for (const auto& k : keys) {
    KW_ASSERT(k.column1 >= 0 && (k.column2 < 0 || k.column2 >= k.column1));
    if (k.column1 < 0 || (k.column2 >= 0 && k.column2 < k.column1)) return 0;
  }
  SortWait wait;
  const Line last = std::min<Line>(m_LinesInDoc, line1 + count - 1);
  std::vector<Line> places;
  for (Line l = line1; l <= last; ++l)
    if (!markedOnly || GetLineMark(l)) places.push_back(l);
  if (places.size() < 2) return 1;
  PaneSteps steps(progress, fromPercent, toPercent);
  PlaceTexts texts;
  std::vector<int> marks;
  ReadPlaces(*this, places, texts, marks);
  const size_t n = places.size();
  if (!steps.Step(1, 4)) return 1;

  // Numeric keys are read once per line.
  std::vector<std::vector<double>> numbers(keys.size());
  std::vector<std::vector<char>> isNumber(keys.size());
  auto keySpan = [&](size_t line, const tagSORTKEY& k, const char16_t** p) -> int64_t {
    const int64_t len = texts.length[line];
    const int64_t c1 = std::min(k.column1, len);
    const int64_t c2 = k.column2 < 0 ? len : std::min(k.column2, len);
    *p = texts.at(line) + c1;
    return c2 - c1;
  };
  for (size_t j = 0; j < keys.size(); ++j) {
    if (!keys[j].numeric) continue;
    numbers[j].resize(n);
    isNumber[j].resize(n);
    for (size_t i = 0; i < n; ++i) {
      const char16_t* p;
      const int64_t len = keySpan(i, keys[j], &p);
      int err = kNumberEmpty;
      const double v = len > 0 ? GetDouble(p, 0, len, 1, &err) : 0.0;
      numbers[j][i] = v;
      isNumber[j][i] = err == kNumberOk;
    }
  }
  if (!steps.Step(2, 4)) return 1;
  auto compareKey = [&](size_t j, size_t a, size_t b) -> int {
    const tagSORTKEY& k = keys[j];
    int c = 0;
    if (k.numeric && (isNumber[j][a] || isNumber[j][b])) {
      if (!isNumber[j][b])
        c = -1;
      else if (!isNumber[j][a])
        c = 1;
      else if (std::fabs(numbers[j][a] - numbers[j][b]) > 1e-7)
        c = numbers[j][a] < numbers[j][b] ? -1 : 1;
    } else {
      const char16_t *pa, *pb;
      const int64_t la = keySpan(a, k, &pa), lb = keySpan(b, k, &pb);
      c = StrCompare(pa, la, pb, lb, k.caseSensitive, 0, 0);
    }
    return k.descending ? -c : c;
  };
  auto less = [&](int64_t a, int64_t b) {
    const auto ua = static_cast<size_t>(a), ub = static_cast<size_t>(b);
    for (size_t j = 0; j < keys.size(); ++j) {
      const int c = compareKey(j, ua, ub);
      if (c != 0) return c < 0;
    }
    if (keys.empty() || !stable) {
      const int c = StrCompare(texts.at(ua), texts.length[ua], texts.at(ub), texts.length[ub], 0, 0, 0);
      if (c != 0) return c < 0;
    }
    return a < b;  // equal lines keep their order either way
  };
  std::vector<int64_t> order(n);
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), less);
  if (!steps.Step(3, 4)) return 1;
  bool same = true;
  for (size_t k = 0; k < n && same; ++k) same = order[k] == static_cast<int64_t>(k);
  if (same) return 1;
  auto* block = static_cast<int64_t*>(std::malloc(2 * n * sizeof(int64_t)));
  if (block == nullptr) {
    m_Undo->Clear(1);
    return 0;
  }
  std::copy(places.begin(), places.end(), block);
  std::copy(order.begin(), order.end(), block + n);
  Rewrite(*this, places, order, texts, marks);
  if (!m_FFTable.empty() || std::find(texts.units.begin(), texts.units.end(), kFormFeed) != texts.units.end())
    BuildFFTable();
  m_Undo->SaveRecord(static_cast<uint64_t>(LineStart(places.front())), places.front(), static_cast<int64_t>(n),
                     block, kUndoSortLines);
  steps.Step(4, 4);
  return 1;
}

}  // namespace kw
