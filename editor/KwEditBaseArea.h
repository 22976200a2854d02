// Internal to the area operations of KwEditBase: the line-wise area walk, the progress stepping and the
// builders of their undo records.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"
#include "editor/KwUndoMemory.h"

namespace kw {

// One line of an area as the walk hands it over.
struct KwEditBase::AreaLine {
  Line line = 0;
  Index start = 0;       // character index of the line start
  int64_t length = 0;    // units of the line without its end of line
  int eolLength = 0;     // 0 for the last line
  int64_t from = 0;      // the area's columns of the line: [from, to), to <= length
  int64_t to = 0;
  bool eol = false;      // the line's end of line lies in the area
  tagTEXTDESC* chunk = nullptr;  // chunk and offset of the line start
  int64_t offset = 0;

  // Calls f(units, count, index of units[0]) for the chunk pieces of the columns [c1, c2).
  template <class F>
  void ForPieces(int64_t c1, int64_t c2, F&& f) const {
    const tagTEXTDESC* c = chunk;
    int64_t off = offset + c1;
    while (c && off >= static_cast<int64_t>(c->used) && c->next) {
      off -= c->used;
      c = c->next;
    }
    Index at = start + c1;
    int64_t n = c2 - c1;
    while (c && n > 0) {
      const int64_t k = std::min<int64_t>(n, static_cast<int64_t>(c->used) - off);
      if (k > 0) {
        f(c->text + off, k, at);
        at += k;
        n -= k;
      }
      c = c->next;
      off = 0;
    }
  }
  // The columns [c1, c2) as a string.
  void Copy(int64_t c1, int64_t c2, std::u16string& out) const {
    out.clear();
    ForPieces(c1, c2, [&](const char16_t* p, int64_t n, Index) { out.append(p, static_cast<size_t>(n)); });
  }
};

// Percentages for a progress pane: a step only when the percentage changes, scaled into
// [fromPercent, toPercent].
class PaneSteps {
 public:
  PaneSteps(KwProgress* pane, double fromPercent, double toPercent)
      : pane_(pane), from_(fromPercent), to_(toPercent) {}
  // `done` of `total`; false when the user stopped.
  bool Step(int64_t done, int64_t total) {
    if (pane_ == nullptr || total <= 0) return true;
    const double share = static_cast<double>(done) / static_cast<double>(total);
    const int percent = static_cast<int>(from_ + (to_ - from_) * share);
    if (percent == last_) return true;
    last_ = percent;
    return pane_->Step(percent) != 0;
  }
  // Moves the range (the second pass of an operation takes the second half of its range).
  void SetRange(double fromPercent, double toPercent) {
    from_ = fromPercent;
    to_ = toPercent;
    last_ = -1;
  }

 private:
  KwProgress* pane_;
  double from_, to_;
  int last_ = -1;
};

struct KwEditBase::AreaWalk {
  unsigned area = 0;
  Line line1 = 0;
  int64_t column1 = 0;
  Line line2 = 0;
  int64_t column2 = 0;
  PaneSteps* steps = nullptr;
  std::function<void(const AreaLine&)> visit;
};

// The units one operation overwrites in place: ascending indexes and the units that were there.
struct UnitChanges {
  std::vector<int64_t> indexes;
  std::u16string old;
  UnitChanges() {
    indexes.reserve(64000);
    old.reserve(64000);
  }
  // Geometric growth: steps of a fixed size would copy the array over and over in a large document.
  void Add(Index at, char16_t was) {
    indexes.push_back(at);
    old.push_back(was);
  }
  // data block: the indexes, then (withOld) the old units. Null when memory ran out.
  void* Block(bool withOld) const {
    const size_t n = indexes.size();
    const size_t bytes = n * sizeof(int64_t) + (withOld ? n * sizeof(char16_t) : 0);
    void* b = std::malloc(bytes ? bytes : 1);
    if (b == nullptr) return nullptr;
    std::memcpy(b, indexes.data(), n * sizeof(int64_t));
    if (withOld) std::memcpy(static_cast<char*>(b) + n * sizeof(int64_t), old.data(), n * sizeof(char16_t));
    return b;
  }
};

// A list of replacements inside the text, in the order they are made: entry k replaces `removed`
// units at `index` by `inserted` units, its index valid once entries 0..k-1 are made. The data block
// holds the entries (3 int64 each) and then, per entry, its removed and its inserted units.
struct EditList {
  std::vector<int64_t> entries;
  std::u16string units;
  int64_t delta = 0;  // inserted minus removed so far: maps indexes of the old text to the new one

  // `at` is an index of the text before any entry is made; entries come in ascending order.
  // `inserted` null: blanks.
  void Add(Index at, const char16_t* removed, int64_t nr, const char16_t* inserted, int64_t ni) {
    entries.push_back(at + delta);
    entries.push_back(nr);
    entries.push_back(ni);
    units.append(removed, static_cast<size_t>(nr));
    if (inserted)
      units.append(inserted, static_cast<size_t>(ni));
    else
      units.append(static_cast<size_t>(ni), u' ');
    delta += ni - nr;
  }
  int64_t size() const { return static_cast<int64_t>(entries.size() / 3); }
  Index first() const { return entries.empty() ? 0 : entries[0]; }
  void* Block() const {
    const size_t eb = entries.size() * sizeof(int64_t);
    const size_t bytes = eb + units.size() * sizeof(char16_t);
    void* b = std::malloc(bytes ? bytes : 1);
    if (b == nullptr) return nullptr;
    std::memcpy(b, entries.data(), eb);
    std::memcpy(static_cast<char*>(b) + eb, units.data(), units.size() * sizeof(char16_t));
    return b;
  }
};

}  // namespace kw
