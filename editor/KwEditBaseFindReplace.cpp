// KwEditBase: replacing every match in a line range as one undoable step (record type 3).
//
// The matches are collected first, then applied from the last to the first: each chunk is rebuilt once
// for all of its replacements, so that many replacements cost one pass over the text instead of one
// shift of a chunk each. A replacement that touches an end of line or crosses a chunk border goes
// through the edit primitive instead, which keeps the line counts and the line tables.
//
// Record type 3: position = the index of the first match, value1 / value2 = length of the text from
// the first match's start to the last match's end before / after the step; data (std::malloc):
//   int64_t count, oldUnits, newUnits;
//   int64_t entries[3 * count]: offset of the match from position (before the step), old length, new length;
//   char16_t old[oldUnits], new[newUnits]: the matched and the inserted texts, one after the other.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "app/QueryBox.h"
#include "base/Assert.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditBaseFindScan.h"
#include "editor/KwEditBaseScan.h"
#include "editor/KwEditUndo.h"

namespace kw {

namespace {

constexpr char16_t kCR = 13;
constexpr char16_t kLF = 10;

struct ReplaceAllBlock {
  int64_t count = 0, oldUnits = 0, newUnits = 0;
  const int64_t* entries = nullptr;
  const char16_t* oldText = nullptr;
  const char16_t* newText = nullptr;
};

ReplaceAllBlock ReadBlock(const void* data) {
  ReplaceAllBlock b;
  if (data == nullptr) return b;
  const auto* head = static_cast<const int64_t*>(data);
  b.count = head[0];
  b.oldUnits = head[1];
  b.newUnits = head[2];
  b.entries = head + 3;
  b.oldText = reinterpret_cast<const char16_t*>(b.entries + 3 * b.count);
  b.newText = b.oldText + b.oldUnits;
  return b;
}

// Reads the text at ascending indexes, walking the chunks forwards from where the last read ended
// instead of seeking from the head for every read (many splices would make that quadratic).
class ForwardReader {
 public:
  explicit ForwardReader(const tagTEXTDESC* head) : m_Chunk(head) {}
  void Read(Index at, char16_t* out, int64_t count) {
    while (m_Chunk && m_Start + static_cast<int64_t>(m_Chunk->used) <= at && m_Chunk->next) {
      m_Start += m_Chunk->used;
      m_Chunk = m_Chunk->next;
    }
    int64_t offset = at - m_Start;
    for (const tagTEXTDESC* c = m_Chunk; c && count > 0; c = c->next, offset = 0) {
      const int64_t n = std::min<int64_t>(count, static_cast<int64_t>(c->used) - offset);
      if (n <= 0) continue;
      std::memcpy(out, c->text + offset, static_cast<size_t>(n) * sizeof(char16_t));
      out += n;
      count -= n;
    }
  }

 private:
  const tagTEXTDESC* m_Chunk;
  Index m_Start = 0;  // index of m_Chunk->text[0]
};

// Counts the end-of-line units before ascending indexes, walking the chunks forwards (whole chunks by
// their counts), and reads single units near the last index asked: the line numbers of many splices
// in one pass instead of a line lookup for each.
class EOLCounter {
 public:
  EOLCounter(const tagTEXTDESC* head, char16_t eol) : m_Chunk(head), m_EOL(eol) {}
  // End-of-line units in [0, at); `at` must not decrease from call to call.
  int64_t Before(Index at) { return MoveTo(at, true); }
  // Moves on to `at` without reading the units passed inside a chunk: from here the counts Before
  // returns are off by the units not read, but their differences stay right (the removed lines of a
  // splice, when no line number is asked for).
  void Skip(Index at) { MoveTo(at, false); }
  // The unit at `at`; 0 outside the text.
  char16_t UnitAt(Index at) const {
    const tagTEXTDESC* c = m_Chunk;
    Index start = m_Start;
    while (at < start && c->prev) {
      c = c->prev;
      start -= c->used;
    }
    while (at >= start + static_cast<int64_t>(c->used) && c->next) {
      start += c->used;
      c = c->next;
    }
    return at >= start && at < start + static_cast<int64_t>(c->used) ? c->text[at - start] : 0;
  }

 private:
  int64_t MoveTo(Index at, bool count) {
    while (m_Chunk->next && m_Start + static_cast<int64_t>(m_Chunk->used) <= at) {
      // A chunk read whole counts by its own count; one with units passed unread by what was read
      // of it and its rest, so that the skipped units stay out of every later count as well.
      m_Count += m_Exact ? m_Chunk->eols
                         : m_InChunk + scan::Count(m_Chunk->text + m_Offset, m_Chunk->used - m_Offset, m_EOL);
      m_Start += m_Chunk->used;
      m_Chunk = m_Chunk->next;
      m_Offset = 0;
      m_InChunk = 0;
      m_Exact = true;
    }
    const int64_t offset = std::min<int64_t>(at - m_Start, m_Chunk->used);
    if (count) m_InChunk += scan::Count(m_Chunk->text + m_Offset, offset - m_Offset, m_EOL);
    else if (offset > m_Offset) m_Exact = false;
    m_Offset = offset;
    return m_Count + m_InChunk;
  }

  const tagTEXTDESC* m_Chunk;
  char16_t m_EOL;
  Index m_Start = 0;      // index of m_Chunk->text[0]
  int64_t m_Count = 0;    // end-of-line units before m_Chunk
  int64_t m_Offset = 0;   // counted in m_Chunk up to here
  int64_t m_InChunk = 0;  // end-of-line units in m_Chunk->text[0, m_Offset) (those read, see m_Exact)
  bool m_Exact = true;    // no unit of m_Chunk before m_Offset was skipped
};

// The length of the longest line that lies wholly in text[0, n) (from behind one end of line to the
// next one), and the end-of-line units of the text into `*eols`.
int64_t LongestInside(const char16_t* text, int64_t n, char16_t eol, int64_t* eols) {
  int64_t longest = 0, count = 0;
  int64_t p = scan::Find(text, n, eol);
  while (p < n) {
    ++count;
    int64_t start = p + 1;
    if (eol == kCR && start < n && text[start] == kLF) ++start;
    const int64_t q = start + scan::Find(text + start, n - start, eol);
    if (q < n) longest = std::max(longest, q - start);
    p = q;
  }
  *eols = count;
  return longest;
}

}  // namespace

int64_t KwEditBase::ReplaceAll(Line line1, Line line2, const std::u16string& findText,
                               const std::u16string& replaceText, int options) {
  return ReplaceMatches(line1, line2, {findText}, {replaceText}, options);
}

int64_t KwEditBase::ReplaceAllByTable(Line line1, Line line2, const char16_t* texts, const int64_t* ends,
                                      int64_t count, int options) {
  const bool ok = texts != nullptr && ends != nullptr && count >= 1;
  KW_ASSERT(ok);
  if (!ok) return -1;
  std::vector<std::u16string> finds, replacements;
  int64_t from = 0;
  for (int64_t i = 0; i < 2 * count; ++i) {
    if (ends[i] < from) {
      KW_ASSERT(!"decreasing end offsets");
      return -1;
    }
    (i % 2 == 0 ? finds : replacements).emplace_back(texts + from, static_cast<size_t>(ends[i] - from));
    from = ends[i];
  }
  return ReplaceMatches(line1, line2, finds, replacements, options);
}

int64_t KwEditBase::ReplaceMatches(Line line1, Line line2, const std::vector<std::u16string>& finds,
                                   const std::vector<std::u16string>& replacements, int options) {
  const bool ok = line1 >= 0 && line1 <= line2 && line2 <= m_LinesInDoc && !finds.empty() &&
                  finds.size() == replacements.size();
  KW_ASSERT(ok);
  if (!ok) return -1;
  FindRequest r;
  if (!r.pat.Prepare(finds, options & kFindMatchCase, options & kFindWildcards)) {
    KW_ASSERT(!"an empty search text");
    return -1;
  }
  r.markedOnly = (options & kFindMarkedOnly) != 0;
  r.fixSel = (options & kFindFixSelection) != 0;
  if (r.fixSel && GetStickSelection(nullptr, nullptr, nullptr, nullptr) == 0) {
    KW_ASSERT(!"a fix-selection replacement without a fix selection");
    return -1;
  }
  std::vector<int64_t> at, len, alt;
  r.positions = &at;
  r.lengths = &len;
  r.alternatives = &alt;
  r.line = line1;
  r.column = 0;
  r.start = LineStart(line1);
  if (!r.pat.wildcards && !r.markedOnly && !r.fixSel) {
    r.rangeEnd = LineStart(line2) + LineLength(line2, 0);
    FindStream(r);
  } else {
    if (r.pat.longest >= kFindSlice) {
      if (m_Interactive) QueryBox(u"EditBase", 0, 1090, 1, 1910u);
      return -1;
    }
    std::unique_ptr<char16_t[]> buffer(new (std::nothrow) char16_t[static_cast<size_t>(kFindSlice + 1)]);
    if (!buffer) return -2;
    r.buffer = buffer.get();
    Line l1 = line1, l2 = line2;
    if (r.fixSel) {
      Line s1, s2;
      GetStickSelection(&s1, nullptr, &s2, nullptr);
      l1 = std::max(l1, std::min(s1, s2));
      l2 = std::min(l2, std::max(s1, s2));
    }
    int64_t column = 0, length = 0;
    for (Line l = l1; l <= l2; ++l) {
      if (r.markedOnly && !GetLineMark(l)) continue;
      const int64_t limit = LineLength(l, 0);
      int64_t from = 0, k;
      while ((k = FindInLine(r, l, from, limit, &column, &length)) >= 0) {
        r.Hit(k, LineStart(l) + column, length);
        from = column + length;
      }
    }
  }
  const auto n = static_cast<int64_t>(at.size());
  if (n == 0) return 0;
  std::vector<Splice> splices;
  splices.reserve(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) {
    const std::u16string& rep = replacements[static_cast<size_t>(alt[i])];
    splices.push_back({at[i], len[i], rep.data(), static_cast<int64_t>(rep.size())});
  }
  return ApplyAndRecord(splices.data(), static_cast<int64_t>(splices.size()));
}

int64_t KwEditBase::ReplaceRanges(const KwTextSplice* splices, int64_t count, int recordUndo) {
  bool ok = count >= 0 && (count == 0 || splices != nullptr) && m_Head != nullptr;
  Index end = 0;
  for (int64_t i = 0; ok && i < count; ++i) {
    const KwTextSplice& s = splices[i];
    ok = s.at >= end && s.removed >= 0 && s.length >= 0 && (s.text != nullptr || s.length == 0) &&
         s.at + s.removed <= m_TotalChars;
    end = s.at + s.removed;
  }
  KW_ASSERT(ok);
  if (!ok) return -1;
  if (count == 0) return 0;
  if (recordUndo == 0) {
    ApplySplices(splices, count);
    return count;
  }
  return ApplyAndRecord(splices, count);
}

int64_t KwEditBase::ApplyAndRecord(const Splice* in, int64_t n) {
  if (n == 0) return 0;
  // One group for the step, unless the caller has opened one: an operation of more replacements than
  // the undo memory's group size asks whether it is recorded at all. Without recording no record is
  // built: nobody could use it.
  const bool ownGroup = m_Undo->GetGroupDepth() == 0;
  if (ownGroup && m_Undo->StartGroup(n, 0) == 0) return -3;
  struct CloseAtEnd {
    KwEditUndo* undo;
    ~CloseAtEnd() {
      if (undo) undo->CloseGroup();
    }
  } close{ownGroup ? m_Undo.get() : nullptr};
  if (m_Undo->GetException() != 0) {
    ApplySplices(in, n);
    return n;
  }
  // The record's block: entries, the replaced texts as they stand, the replacements.
  int64_t oldUnits = 0, newUnits = 0;
  for (int64_t i = 0; i < n; ++i) {
    oldUnits += in[i].removed;
    newUnits += in[i].length;
  }
  const size_t bytes = sizeof(int64_t) * static_cast<size_t>(3 + 3 * n) +
                       sizeof(char16_t) * static_cast<size_t>(oldUnits + newUnits);
  auto* head = static_cast<int64_t*>(std::malloc(bytes));
  if (head == nullptr) return -2;
  const Index first = in[0].at;
  const Index oldEnd = in[n - 1].at + in[n - 1].removed;
  head[0] = n;
  head[1] = oldUnits;
  head[2] = newUnits;
  int64_t* entries = head + 3;
  auto* oldText = reinterpret_cast<char16_t*>(entries + 3 * n);
  char16_t* newText = oldText + oldUnits;
  int64_t delta = 0;
  {
    ForwardReader reader(m_Head);
    char16_t* o = oldText;
    char16_t* w = newText;
    for (int64_t i = 0; i < n; ++i) {
      const Splice& s = in[i];
      entries[3 * i] = s.at - first;
      entries[3 * i + 1] = s.removed;
      entries[3 * i + 2] = s.length;
      reader.Read(s.at, o, s.removed);
      if (s.length) std::memcpy(w, s.text, static_cast<size_t>(s.length) * sizeof(char16_t));
      o += s.removed;
      w += s.length;
      delta += s.length - s.removed;
    }
  }
  // The record's own copy of the new texts is applied: the caller's texts may be gone at redo anyway.
  std::vector<Splice, LargeBlockAllocator<Splice>> splices(static_cast<size_t>(n));
  const char16_t* w = newText;
  for (int64_t i = 0; i < n; ++i) {
    splices[static_cast<size_t>(i)] = {in[i].at, in[i].removed, w, in[i].length, in[i].removedEOLs};
    w += in[i].length;
  }
  ApplySplices(splices.data(), n);
  // The memory owns the block from here on (also when it does not keep the record).
  m_Undo->SaveRecord(static_cast<uint64_t>(first), oldEnd - first, oldEnd - first + delta, head,
                     KwEditUndo::kReplaceAll);
  return n;
}

void KwEditBase::ApplySplices(const Splice* splices, int64_t count) {
  if (count == 0) return;
  const char16_t eol = m_EOLText[0];
  // A text without end-of-line units (nor LF, which pairs with a CR) leaves the lines as they are.
  auto plain = [&](const char16_t* p, int64_t n) {
    for (int64_t i = 0; i < n; ++i)
      if (p[i] == eol || (eol == kCR && p[i] == kLF)) return false;
    return true;
  };
  // Splices that add or remove lines, in the numbers of the text before the step: the line tables
  // are moved for all of them at once at the end, instead of once per splice. The lines are counted
  // forwards along the splices, not looked up for each. Splices that keep their length and touch no
  // end of line can be written over the text where it stands.
  LineShifts shifts;
  // Only tables that exist are moved: without marks, bookmarks or syntax flags the shifts need not
  // even be collected.
  const bool tables = !m_LineMarks.empty() || !m_BookMarks.empty() || !m_SyntaxFlags.empty();
  bool lineChanges = false;
  bool overwrite = true;
  bool lengthens = false;  // a line may come out longer than the longest one so far
  // Whether [from, to) reaches the end of the text, or begins at the start of a line and ends behind
  // an end of line: removing it lengthens no line.
  auto IsWholeLines = [&](const EOLCounter& units, Index from, Index to) {
    if (to >= m_TotalChars) return true;
    const char16_t before = units.UnitAt(from - 1);
    const bool starts = from == 0 || before == eol || (eol == kCR && before == kLF && units.UnitAt(from - 2) == kCR);
    if (!starts) return false;
    const char16_t last = units.UnitAt(to - 1);
    if (eol != kCR) return last == eol;
    return (last == kCR && units.UnitAt(to) != kLF) || (last == kLF && units.UnitAt(to - 2) == kCR);
  };
  // Removals only (the lines a task deletes) are made inside each chunk, with the ends of line each
  // one removes counted here.
  bool removalsOnly = true;
  for (int64_t k = 0; k < count && removalsOnly; ++k) removalsOnly = splices[k].length == 0;
  std::vector<int64_t> removedEOLs;
  if (removalsOnly) removedEOLs.resize(static_cast<size_t>(count));
  {
    EOLCounter counter(m_Head, eol);
    for (int64_t k = 0; k < count; ++k) {
      const Splice& s = splices[k];
      const int64_t inserted = CountEOLs(s.text, s.length);
      // The line numbers are needed only to move the tables; else only the removed lines are counted.
      const bool told = !tables && s.removedEOLs >= 0;
      if (!tables) counter.Skip(told ? s.at + s.removed : s.at);
      const int64_t before = told ? 0 : counter.Before(s.at);
      const int64_t gone = told ? s.removedEOLs : s.removed > 0 ? counter.Before(s.at + s.removed) - before : 0;
      if (removalsOnly) removedEOLs[static_cast<size_t>(k)] = gone;
      if (overwrite)
        overwrite = s.length == s.removed && inserted == 0 && gone == 0 && plain(s.text, s.length) &&
                    (eol != kCR || [&] {
                      for (int64_t i = 0; i < s.removed; ++i)
                        if (counter.UnitAt(s.at + i) == kLF) return false;
                      return true;
                    }());
      // A written text may hold a longer line than any; a removal can only lengthen a line by joining
      // the rest of a line to the one it began in.
      if (!lengthens) lengthens = s.length > 0 || (gone > 0 && !IsWholeLines(counter, s.at, s.at + s.removed));
      if (inserted == 0 && gone == 0) continue;
      lineChanges = true;
      if (!tables) continue;
      // An index on the LF of a CR LF pair belongs to the line that the pair ends.
      const bool onLF = eol == kCR && counter.UnitAt(s.at) == kLF && counter.UnitAt(s.at - 1) == kCR;
      const Line startLine = before - (onLF ? 1 : 0);
      const char16_t prev = counter.UnitAt(s.at - 1);
      const bool lineStart = s.at == 0 || (!onLF && (prev == eol || (eol == kCR && prev == kLF &&
                                                                       counter.UnitAt(s.at - 2) == kCR)));
      shifts.push_back({startLine, lineStart ? startLine : startLine + 1, gone, inserted});
    }
  }
  bool formFeeds = false;
  // A form feed written or removed remakes the form-feed table; a text without form-feed lines has
  // none to remove.
  auto noteFormFeeds = [&](const char16_t* p, int64_t n) {
    if (!formFeeds) formFeeds = std::char_traits<char16_t>::find(p, static_cast<size_t>(n), kFormFeed) != nullptr;
  };
  for (int64_t k = 0; k < count; ++k) noteFormFeeds(splices[k].text, splices[k].length);
  const bool checkRemoved = !formFeeds && !m_FFTable.empty();

  if (overwrite) {
    // Every unit stays where it is: the splices' texts are written over the old ones.
    Index cs = 0;
    tagTEXTDESC* c = SeekElement(splices[0].at, &cs, nullptr);
    for (int64_t k = 0; k < count; ++k) {
      const Splice& s = splices[k];
      for (int64_t done = 0; done < s.length;) {
        while (c->next && cs + static_cast<int64_t>(c->used) <= s.at + done) {
          cs += c->used;
          c = c->next;
        }
        const int64_t off = s.at + done - cs;
        const int64_t n = std::min<int64_t>(s.length - done, static_cast<int64_t>(c->used) - off);
        if (checkRemoved) noteFormFeeds(c->text + off, n);
        std::memcpy(c->text + off, s.text + done, static_cast<size_t>(n) * sizeof(char16_t));
        done += n;
      }
    }
    ResetCache();
    if (formFeeds) BuildFFTable();
    return;
  }

  if (removalsOnly && !lengthens) {
    RemoveInPlace(splices, count, removedEOLs.data(), checkRemoved ? &formFeeds : nullptr);
    ResetCache();
    if (!shifts.empty()) MoveLineTables(shifts);
    if (formFeeds || (lineChanges && !m_FFTable.empty())) BuildFFTable();
    return;
  }

  // The text from the start of the first chunk with a splice to the end of the chunk with the last one
  // is written anew, as one stream, into buffers that are filled before the next one is begun. An old
  // chunk's buffer is taken for the stream as soon as the stream has passed it, so that the new text
  // needs fresh memory only for what it grows by; that much (and two buffers more) is set aside before
  // the first unit is written, so the stream never runs out of memory half way. A chunk the stream
  // reaches whole, with no splice in it and no new buffer begun, stays as it is.
  int64_t growth = 0;
  for (int64_t k = 0; k < count; ++k) growth += std::max<int64_t>(splices[k].length - splices[k].removed, 0);
  std::vector<tagTEXTDESC*> spare;
  {
    const int64_t least = (m_ChunkUnits + kChunkStep - 1) / kChunkStep * kChunkStep;
    const int64_t reserve = growth / least + 2;
    spare.reserve(static_cast<size_t>(reserve + 8));
    for (int64_t k = 0; k < reserve; ++k) {
      tagTEXTDESC* chunk = NewElement(0);
      if (chunk == nullptr) break;
      spare.push_back(chunk);
    }
    if (static_cast<int64_t>(spare.size()) < reserve) {
      for (tagTEXTDESC* chunk : spare) {
        FreeText(chunk);
        delete chunk;
      }
      // Out of memory: one replacement at a time from the last, as far as memory goes.
      m_KeepLineTables = lineChanges;
      for (int64_t k = count; k-- > 0;) ReplaceText(splices[k].at, splices[k].removed, splices[k].text, splices[k].length);
      m_KeepLineTables = false;
      ResetCache();
      if (!shifts.empty()) MoveLineTables(shifts);
      if (formFeeds || (lineChanges && !m_FFTable.empty())) BuildFFTable();
      return;
    }
  }
  Index cs = 0;
  tagTEXTDESC* c = SeekElement(splices[0].at, &cs, nullptr);
  m_Cache = LinePos();  // the chunks change under it; made again at the end
  tagTEXTDESC* tail = c->prev;  // the last chunk of the new list before the stream
  std::vector<const tagTEXTDESC*> edges;
  if (tail) edges.push_back(tail);
  tagTEXTDESC* out = nullptr;  // the new chunk being filled, not yet in the list
  // Puts the new chunk into the list behind `tail`, counted and measured.
  auto finish = [&] {
    if (out == nullptr) return;
    int64_t eols = 0;
    if (lengthens)
      m_LongestLine = std::max(m_LongestLine, LongestInside(out->text, out->used, eol, &eols));
    else
      eols = scan::Count(out->text, out->used, eol);
    out->eols = eols;
    m_LinesInDoc += eols;
    out->prev = tail;
    out->next = tail ? tail->next : m_Head;
    if (out->next) out->next->prev = out;
    (tail ? tail->next : m_Head) = out;
    edges.push_back(out);
    tail = out;
    out = nullptr;
  };
  auto emit = [&](const char16_t* p, int64_t n) {
    while (n > 0) {
      if (out == nullptr) {
        KW_ASSERT(!spare.empty());
        out = spare.back();
        spare.pop_back();
        out->used = 0;
      }
      const int64_t m = std::min<int64_t>(n, static_cast<int64_t>(out->capacity - out->used));
      std::memcpy(out->text + out->used, p, static_cast<size_t>(m) * sizeof(char16_t));
      out->used += static_cast<uint32_t>(m);
      p += m;
      n -= m;
      if (out->used == out->capacity) finish();
    }
  };
  Index ip = cs;  // the next old unit to read, in `c` (or at its end)
  // Reads the old text up to `to`, copying it into the stream when `copy` is set; an old chunk read to
  // its end leaves the list and its buffer serves the stream.
  auto advance = [&](Index to, bool copy) {
    while (ip < to && c != nullptr) {
      const Index end = cs + static_cast<int64_t>(c->used);
      const int64_t n = std::min(to, end) - ip;
      if (copy)
        emit(c->text + (ip - cs), n);
      else if (checkRemoved)
        noteFormFeeds(c->text + (ip - cs), n);
      ip += n;
      while (c != nullptr && ip == cs + static_cast<int64_t>(c->used)) {
        tagTEXTDESC* next = c->next;
        if (c->prev) c->prev->next = next;
        if (next) next->prev = c->prev;
        if (m_Head == c) m_Head = next;
        m_LinesInDoc -= c->eols;
        cs += c->used;
        c->prev = c->next = nullptr;
        c->eols = 0;
        spare.push_back(c);
        c = next;
      }
    }
  };
  for (int64_t k = 0; k < count; ++k) {
    const Splice& s = splices[k];
    bool kept = false;
    while (c != nullptr && c->next != nullptr && ip == cs && out == nullptr &&
           s.at >= cs + static_cast<int64_t>(c->used)) {
      tail = c;
      cs += c->used;
      ip = cs;
      c = c->next;
      kept = true;
    }
    if (kept) edges.push_back(tail);
    advance(s.at, true);
    advance(s.at + s.removed, false);
    emit(s.text, s.length);
    m_TotalChars += s.length - s.removed;
  }
  // The rest of the chunk the last splice ended in.
  if (c != nullptr && ip > cs) advance(cs + static_cast<int64_t>(c->used), true);
  finish();
  if (c != nullptr && c->used == 0 && (c->prev || c->next)) {
    // The empty chunk of an empty text, now that the stream has given it text.
    tagTEXTDESC* next = c->next;
    RemoveElement(c);
    c = next;
  }
  if (c != nullptr) edges.push_back(c);
  for (tagTEXTDESC* chunk : spare) {
    FreeText(chunk);
    delete chunk;
  }
  if (m_Head == nullptr) {
    // Everything was removed: an empty text has one empty chunk.
    m_Head = NewElement(0);
    if (m_Head != nullptr) m_Head->used = 0;
  }
  ResetCache();
  if (!shifts.empty()) MoveLineTables(shifts);
  if (formFeeds || (lineChanges && !m_FFTable.empty())) BuildFFTable();
  if (lengthens) MeasureEdges(edges);
}

void KwEditBase::RemoveInPlace(const Splice* splices, int64_t count, const int64_t* removedEOLs, bool* formFeeds) {
  // Each chunk keeps its buffer: the units behind a removal move up inside it. Nothing is allocated,
  // and a chunk's ends of line are its old ones less the removed ones (counted only for the part of a
  // removal that spans chunks), so the kept text is not read again.
  const char16_t eol = m_EOLText[0];
  m_Cache = LinePos();  // the chunks change under it; made again by the caller
  Index cs = 0;
  tagTEXTDESC* c = SeekElement(splices[0].at, &cs, nullptr);
  int64_t k = 0;
  while (c != nullptr && k < count) {
    const Index ce = cs + static_cast<int64_t>(c->used);
    char16_t* text = c->text;
    int64_t write = -1;  // where the next kept units go; -1 until the first removal in the chunk
    int64_t read = 0;    // the first old unit not yet placed
    int64_t eols = 0;    // removed from this chunk
    while (k < count && splices[k].at < ce) {
      const Splice& s = splices[k];
      const Index from = std::max(s.at, cs);
      const Index to = std::min(s.at + s.removed, ce);
      const int64_t a = from - cs, b = to - cs;
      if (write < 0) {
        write = a;
      } else if (a > read) {
        std::memmove(text + write, text + read, static_cast<size_t>(a - read) * sizeof(char16_t));
        write += a - read;
      }
      if (formFeeds != nullptr && !*formFeeds)
        *formFeeds = std::char_traits<char16_t>::find(text + a, static_cast<size_t>(b - a), kFormFeed) != nullptr;
      const bool whole = from == s.at && to == s.at + s.removed;
      eols += whole ? removedEOLs[k] : scan::Count(text + a, b - a, eol);
      read = b;
      if (to < s.at + s.removed) break;  // it goes on in the next chunk
      ++k;
    }
    tagTEXTDESC* next = c->next;
    if (write >= 0) {
      const int64_t tail = static_cast<int64_t>(c->used) - read;
      if (tail > 0 && read > write)
        std::memmove(text + write, text + read, static_cast<size_t>(tail) * sizeof(char16_t));
      m_TotalChars -= read - write;
      c->used = static_cast<uint32_t>(write + tail);
      c->eols -= eols;
      m_LinesInDoc -= eols;
      // Only a text's sole chunk may be empty.
      if (c->used == 0 && (c->prev != nullptr || c->next != nullptr)) RemoveElement(c);
    }
    cs = ce;
    c = next;
  }
}

void KwEditBase::MeasureEdges(std::vector<const tagTEXTDESC*>& edges) {
  if (edges.empty()) return;
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  Index cs = 0;
  Line cl = 0;  // ends of line before the chunk
  for (const tagTEXTDESC* c = m_Head; c != nullptr; cs += c->used, cl += c->eols, c = c->next) {
    if (c->used == 0 || !std::binary_search(edges.begin(), edges.end(), c)) continue;
    const Line first = cl;  // behind an LF that ends a CR LF pair of the chunk before: the next line
    const Line last = LineFromIndex(cs + c->used - 1, nullptr);
    m_LongestLine = std::max(m_LongestLine, LineLength(first, 0));
    if (last != first) m_LongestLine = std::max(m_LongestLine, LineLength(last, 0));
  }
}

void KwEditBase::MoveLineTables(const LineShifts& shifts) {
  // The tables end as if ReplaceText had moved them splice by splice from the last to the first:
  // each splice removes the entries of its `removed` lines from `from` on and moves the later ones
  // by inserted - removed. Followed backwards from the last splice at or before it, a line either
  // lands in a splice's removed lines (its entry goes) or moves on; its distance beyond the removed
  // lines of the splice it passed ("excess") shrinks by at most one per splice, so it is enough to
  // know, for every splice, the greatest fall of that distance among the splices before it:
  //   excess before splice k-1 = excess after splice k + c[k],  c[k] = inserted[k] + gap between
  //   splice k-1's removed lines and splice k's first line (never below -1),
  // and the line is lost when the excess becomes negative.
  const size_t n = shifts.size();
  std::vector<int64_t, LargeBlockAllocator<int64_t>> sumC(n), maxSumC(n), sumDelta(n);
  for (size_t k = 0; k < n; ++k) {
    const int64_t c = k == 0 ? 0
                             : shifts[k].inserted + shifts[k].from - shifts[k - 1].from - shifts[k - 1].removed;
    sumC[k] = (k == 0 ? 0 : sumC[k - 1]) + c;
    maxSumC[k] = k == 0 ? sumC[k] : std::max(maxSumC[k - 1], sumC[k]);
    sumDelta[k] = (k == 0 ? 0 : sumDelta[k - 1]) + shifts[k].inserted - shifts[k].removed;
  }
  // Lines must come in ascending order; `k` is the count of splices starting at or before the line.
  auto remap = [&](Line line, size_t& k) -> Line {
    while (k < n && shifts[k].from <= line) ++k;
    if (k == 0) return line;
    const size_t s = k - 1;
    const int64_t excess = line - shifts[s].from - shifts[s].removed;
    if (excess < 0) return -1;
    if (s > 0 && maxSumC[s - 1] > excess + sumC[s]) return -1;
    return line + sumDelta[s];
  };
  if (!m_LineMarks.empty()) {
    std::vector<Line> marked;
    for (Line l = GetNextLineMark(-1); l >= 0; l = GetNextLineMark(l)) marked.push_back(l);
    std::fill(m_LineMarks.begin(), m_LineMarks.end(), 0);
    size_t k = 0;
    for (Line l : marked) {
      const Line to = remap(l, k);
      if (to < 0) continue;
      if (to >= m_LineMarkCapacity) InitLineMarks(to + 1);
      SetLineMarkBit(to, 1);
    }
  }
  if (!m_BookMarks.empty()) {
    std::vector<Line> moved;
    size_t k = 0;
    for (Line l : m_BookMarks) {
      const Line to = remap(l, k);
      if (to >= 0) moved.push_back(to);
    }
    m_BookMarks = std::move(moved);
  }
  if (!m_SyntaxFlags.empty()) {
    std::vector<uint32_t> moved(m_SyntaxFlags.size() + static_cast<size_t>(std::max<int64_t>(m_LinesInDoc, 0)), 0u);
    size_t k = 0;
    size_t top = 0;
    for (size_t l = 0; l < m_SyntaxFlags.size(); ++l) {
      const Line to = remap(static_cast<Line>(l), k);
      if (to < 0 || static_cast<size_t>(to) >= moved.size()) continue;
      moved[static_cast<size_t>(to)] = m_SyntaxFlags[l];
      top = std::max(top, static_cast<size_t>(to) + 1);
    }
    moved.resize(std::max(top, static_cast<size_t>(m_LinesInDoc + 1001)));
    m_SyntaxFlags = std::move(moved);
  }
}

int64_t KwEditBase::UndoReplaceAll(tagUNDORECORD& record, Line /*line*/, KwProgress* /*progress*/) {
  const ReplaceAllBlock b = ReadBlock(record.data);
  const auto first = static_cast<Index>(record.position);
  const bool ok = record.data != nullptr && first >= 0 && first + record.value2 <= m_TotalChars;
  KW_ASSERT(ok);
  if (!ok) return -1;
  std::vector<Splice> splices;
  splices.reserve(static_cast<size_t>(b.count));
  const char16_t* o = b.oldText;
  int64_t shift = 0;
  for (int64_t i = 0; i < b.count; ++i) {
    const int64_t off = b.entries[3 * i], oldLen = b.entries[3 * i + 1], newLen = b.entries[3 * i + 2];
    splices.push_back({first + off + shift, newLen, o, oldLen});
    o += oldLen;
    shift += newLen - oldLen;
  }
  ApplySplices(splices.data(), static_cast<int64_t>(splices.size()));
  return first;
}

int64_t KwEditBase::RedoReplaceAll(tagUNDORECORD& record, Line /*line*/, KwProgress* /*progress*/) {
  const ReplaceAllBlock b = ReadBlock(record.data);
  const auto first = static_cast<Index>(record.position);
  const bool ok = record.data != nullptr && first >= 0 && first + record.value1 <= m_TotalChars;
  KW_ASSERT(ok);
  if (!ok) return -1;
  std::vector<Splice> splices;
  splices.reserve(static_cast<size_t>(b.count));
  const char16_t* w = b.newText;
  for (int64_t i = 0; i < b.count; ++i) {
    const int64_t off = b.entries[3 * i], oldLen = b.entries[3 * i + 1], newLen = b.entries[3 * i + 2];
    splices.push_back({first + off, oldLen, w, newLen});
    w += newLen;
  }
  ApplySplices(splices.data(), static_cast<int64_t>(splices.size()));
  return first;
}

}  // namespace kw
