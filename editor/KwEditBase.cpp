// KwEditBase: the chunk list, the recount, the line lookup and the edit primitive.
#include "editor/KwEditBase.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "base/Assert.h"
#include "editor/KwEditBaseRecount.h"
#include "editor/KwEditBaseScan.h"
#include "editor/KwEditUndo.h"
#include "platform/Memory.h"
#include "platform/Platform.h"

namespace kw {

namespace {

constexpr char16_t kCR = 13;
constexpr char16_t kLF = 10;

// Shows the wait cursor while it lives, when asked to.
class WaitCursor {
 public:
  explicit WaitCursor(bool on) : on_(on) {
    if (on_) GetPlatform().SetWaitCursor(true);
  }
  ~WaitCursor() {
    if (on_) GetPlatform().SetWaitCursor(false);
  }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;

 private:
  bool on_;
};

}  // namespace

// ---- Construction -------------------------------------------------------------------------------------

KwEditBase::KwEditBase() : m_Undo(std::make_unique<KwEditUndo>(this)) { InitEdit(); }

KwEditBase::~KwEditBase() {
  // The undo records point into this document's operations: release them while it is whole.
  m_Undo.reset();
  FreeTextList();
}

void KwEditBase::InitEdit() {
  m_Undo->Clear(0);
  m_Undo->SetModified(0);
  const KwEditParams params = EditParameters();
  m_EOLDisplayChar = params.eolDisplayChar;
  m_EOLDisplayOption = params.eolDisplayOption;
  m_SyntaxFlags.clear();
  m_BookMarks.clear();
  m_FFTable.clear();
  FreeLineMarks();
  FirstElement();
  m_StickKind = 0;
}

void KwEditBase::SetChunkUnits(int64_t units) {
  KW_ASSERT(units >= 1 && units <= kChunkUnits);
  if (units >= 1 && units <= kChunkUnits) m_ChunkUnits = units;
}

// ---- Chunks ------------------------------------------------------------------------------------------

tagTEXTDESC* KwEditBase::NewElement(int64_t length) {
  KW_ASSERT(length >= 0);
  if (length < 0) return nullptr;
  // The length rounded up to the next multiple of 256 above it, at least the chunk size.
  const int64_t least = (m_ChunkUnits + kChunkStep - 1) / kChunkStep * kChunkStep;
  const int64_t capacity = std::max(((length >> 8) + 1) << 8, least);
  if (capacity > UINT32_MAX) return nullptr;
  auto* chunk = new (std::nothrow) tagTEXTDESC;
  if (chunk == nullptr) return nullptr;
  chunk->text = static_cast<char16_t*>(AllocateTextBuffer(static_cast<size_t>(capacity) * sizeof(char16_t)));
  if (chunk->text == nullptr) {
    delete chunk;
    return nullptr;
  }
  chunk->capacity = static_cast<uint32_t>(capacity);
  chunk->used = static_cast<uint32_t>(length);
  return chunk;
}

void KwEditBase::FreeText(tagTEXTDESC* chunk) {
  FreeTextBuffer(chunk->text);
  chunk->text = nullptr;
}

void KwEditBase::FirstElement() {
  FreeTextList();
  m_Head = NewElement(0);
  InitText(1);
}

void KwEditBase::InsertAfter(tagTEXTDESC* at, tagTEXTDESC* chunk) {
  chunk->prev = at;
  chunk->next = at->next;
  if (at->next) at->next->prev = chunk;
  at->next = chunk;
}

void KwEditBase::RemoveElement(tagTEXTDESC* chunk) {
  if (chunk == nullptr) return;
  if (chunk->prev) chunk->prev->next = chunk->next;
  if (chunk->next) chunk->next->prev = chunk->prev;
  if (m_Head == chunk) m_Head = chunk->next;
  if (m_Cache.chunk == chunk) ResetCache();
  FreeText(chunk);
  delete chunk;
}

void KwEditBase::FreeTextList() {
  tagTEXTDESC* c = m_Head;
  while (c) {
    tagTEXTDESC* next = c->next;
    FreeText(c);
    delete c;
    c = next;
  }
  m_Head = nullptr;
  m_Cache = LinePos();
}

int64_t KwEditBase::GetChunkCount() const {
  int64_t n = 0;
  for (const tagTEXTDESC* c = m_Head; c; c = c->next) ++n;
  return n;
}

tagTEXTDESC* KwEditBase::SeekElement(Index index, Index* start, Index* end) const {
  tagTEXTDESC* c = m_Head;
  Index cs = 0;
  // Walk from the cached chunk when there is one: edits and lookups stay near it.
  if (m_Cache.chunk) {
    c = m_Cache.chunk;
    cs = m_Cache.chunkStart;
    while (c->prev && cs > index) {
      c = c->prev;
      cs -= c->used;
    }
  }
  while (c && c->next && cs + c->used <= index) {
    cs += c->used;
    c = c->next;
  }
  if (start) *start = cs;
  if (end) *end = c ? cs + c->used : cs;
  return c;
}

int64_t KwEditBase::CountEOLs(const char16_t* p, int64_t n) const { return scan::Count(p, n, m_EOLText[0]); }

// ---- Recount -------------------------------------------------------------------------------------------

namespace {

// Counts the ends of line in p[0, n), one chunk of the stream, for the end-of-line unit `eol`; with CR an
// LF right behind a CR belongs to that end of line and is no unit of the next line. `*line` is the
// length of the line running in from the chunks before and `*skipLF` whether p[0] may be the LF of a
// pair begun there; both are left for the next chunk. Every line ending here raises `*longest`;
// `*formFeed` is set when a unit is a form feed. Returns the number of ends of line.
int64_t CountChunk(const char16_t* p, int64_t n, char16_t eol, int64_t* line, bool* skipLF, int64_t* longest,
                   bool* formFeed) {
  if (n == 0) return 0;
  const bool pairs = eol == kCR;
  // `base` is where the running line starts, in p's positions: before p[0] for a line begun earlier.
  int64_t base = *skipLF && p[0] == kLF ? 1 : -*line;
  int64_t eols = 0;
  int64_t most = *longest;
  auto end = [&](int64_t k) {
    const int64_t length = k - base;
    if (length > most) most = length;
    ++eols;
    base = k + 1;
    if (pairs && k + 1 < n && p[k + 1] == kLF) base = k + 2;
  };
  int64_t i = 0;
  bool ff = false;
#if defined(__SSE2__)
  // Sixteen units a step: one bit per unit for the end-of-line units, form feeds only or-ed together.
  const __m128i e = _mm_set1_epi16(static_cast<short>(eol));
  const __m128i f = _mm_set1_epi16(static_cast<short>(KwEditBase::kFormFeed));
  __m128i feeds = _mm_setzero_si128();
  for (; i + 16 <= n; i += 16) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i + 8));
    feeds = _mm_or_si128(feeds, _mm_or_si128(_mm_cmpeq_epi16(a, f), _mm_cmpeq_epi16(b, f)));
    for (unsigned mask = scan::Mask16(p + i, e); mask != 0;) {
      end(i + std::countr_zero(mask));
      mask &= mask - 1;
    }
  }
  ff = _mm_movemask_epi8(feeds) != 0;
#endif
  for (; i < n; ++i) {
    if (p[i] == eol) end(i);
    ff = ff || p[i] == KwEditBase::kFormFeed;
  }
  *line = n - base;
  *skipLF = pairs && p[n - 1] == kCR;
  *longest = most;
  if (ff) *formFeed = true;
  return eols;
}

}  // namespace

KwEditBase::Recount::Recount(KwEditBase& doc) : doc_(doc) {
  doc_.m_TotalChars = 0;
  doc_.m_LinesInDoc = 0;
  doc_.m_LongestLine = 0;
  doc_.m_Cache = LinePos();
}

bool KwEditBase::Recount::Add(tagTEXTDESC* chunk) {
  KW_ASSERT(!cut_ && chunk != nullptr && chunk->prev == last_);
  if (cut_ || chunk == nullptr) return false;
  KwEditBase& d = doc_;
  if (d.m_TotalChars + chunk->used > d.m_MaxChars) {
    chunk->used = static_cast<uint32_t>(std::max<int64_t>(0, d.m_MaxChars - d.m_TotalChars));
    cut_ = true;
  }
  d.m_TotalChars += chunk->used;
  chunk->eols = CountChunk(chunk->text, chunk->used, d.m_EOLText[0], &lineLength_, &skipLF_, &d.m_LongestLine,
                           &formFeed_);
  d.m_LinesInDoc += chunk->eols;
  if (!d.m_LineMarks.empty() && d.m_LinesInDoc + 1 >= d.m_LineMarkCapacity) d.InitLineMarks(d.m_LinesInDoc + 1);
  if (chunk->used == 0 && chunk != d.m_Head)
    d.RemoveElement(chunk);
  else
    last_ = chunk;
  return !cut_;
}

void KwEditBase::Recount::Finish(int clearMarks) {
  KwEditBase& d = doc_;
  if (lineLength_ > d.m_LongestLine) d.m_LongestLine = lineLength_;
  if (cut_) {
    while (last_->next) d.RemoveElement(last_->next);
    QueryBox(u"EditBase", 0, 1090, 1, 1909u, d.m_MaxChars);
  }
  if (d.m_SyntaxColoring && static_cast<int64_t>(d.m_SyntaxFlags.size()) < d.m_LinesInDoc + 1)
    d.m_SyntaxFlags.assign(static_cast<size_t>(d.m_LinesInDoc + 1001), 0);
  d.ResetCache();
  d.m_StickKind = 0;
  if (clearMarks) d.ClearLineMarks();
}

// Recount after a load or an EOL change:
// 1. totals, line count and longest line restart at 0;
// 2. a chunk that would pass the maximum characters is cut to what is left (message 1909) and every
//    later chunk is removed;
// 3. each end-of-line character ends a line (a CR LF pair counts once, also across chunks); the mark
//    array grows in steps of kMarkGrowLines when marks exist and lines outgrow it;
// 4. the syntax flags are re-made when colouring is on and they are too few;
// 5. the cache, the stick selection and (clearMarks 1) the line marks are reset.
// A load makes the same steps through Recount as it reads the chunks (see ReadBlocks).
void KwEditBase::InitText(int clearMarks) {
  KW_ASSERT(m_Head != nullptr);
  Recount recount(*this);
  if (m_Head == nullptr) return;
  for (tagTEXTDESC* c = m_Head; c;) {
    tagTEXTDESC* next = c->next;  // Add may free an empty chunk
    if (!recount.Add(c)) break;
    c = next;
  }
  recount.Finish(clearMarks);
}

// ---- Line lookup ------------------------------------------------------------------------------------

void KwEditBase::ResetCache() {
  m_Cache = LinePos();
  if (m_Head == nullptr) return;
  m_Cache.chunk = m_Head;
  MeasureLine(m_Cache);
}

bool KwEditBase::IsLFAfterCR(const tagTEXTDESC* chunk, int64_t offset) const {
  if (m_EOLText[0] != kCR || chunk == nullptr || offset >= chunk->used || chunk->text[offset] != kLF) return false;
  if (offset > 0) return chunk->text[offset - 1] == kCR;
  const tagTEXTDESC* prev = chunk->prev;
  while (prev && prev->used == 0) prev = prev->prev;
  return prev && prev->text[prev->used - 1] == kCR;
}

void KwEditBase::MeasureLine(LinePos& pos) {
  const char16_t eol = m_EOLText[0];
  pos.length = 0;
  pos.eolLength = 0;
  const tagTEXTDESC* c = pos.chunk;
  int64_t o = pos.offset;
  while (c) {
    const int64_t n = c->used;
    // A chunk without an end-of-line character (or with all of them before o) is skipped whole.
    const int64_t f = c->eols == 0 ? n - o : scan::Find(c->text + o, n - o, eol);
    if (o + f < n) {
      pos.length += f;
      pos.eolLength = 1;
      if (eol == kCR) {
        const int64_t after = o + f + 1;
        if (after < n) {
          if (c->text[after] == kLF) pos.eolLength = 2;
        } else {
          const tagTEXTDESC* next = c->next;
          while (next && next->used == 0) next = next->next;
          if (next && next->text[0] == kLF) pos.eolLength = 2;
        }
      }
      return;
    }
    pos.length += n - o;
    c = c->next;
    o = 0;
  }
}

const KwEditBase::LinePos* KwEditBase::StartOfLine(Line line, int mode) {
  KW_ASSERT(m_Head != nullptr);
  KW_ASSERT(line >= 0 && line <= m_LinesInDoc);
  if (m_Head == nullptr || line < 0 || line > m_LinesInDoc) return nullptr;
  if (m_Cache.chunk == nullptr) ResetCache();
  if (line == m_Cache.line && mode == 0) return &m_Cache;

  // Start point: the cache when the line lies at or after it, or when it is nearer than the head
  // (unless mode 1 forbids scanning backward); else the head.
  tagTEXTDESC* c;
  Index cs;
  int64_t cl;
  int64_t distance;
  if (line >= m_Cache.line || (line > m_Cache.line - line && mode != 1)) {
    c = m_Cache.chunk;
    cs = m_Cache.chunkStart;
    cl = m_Cache.chunkLine;
    distance = line >= m_Cache.line ? line - m_Cache.line : m_Cache.line - line;
  } else {
    c = m_Head;
    cs = 0;
    cl = 0;
    distance = line;
  }
  WaitCursor wait(distance > kWaitLines);

  LinePos p;
  p.line = line;
  if (line == 0) {
    p.chunk = m_Head;
  } else {
    // The line's end-of-line character number `line` lies in chunk c when cl < line <= cl + c->eols;
    // whole chunks are skipped by their counts, backward or forward.
    while (cl >= line && c->prev) {
      c = c->prev;
      cl -= c->eols;
      cs -= c->used;
    }
    while (cl + c->eols < line && c->next) {
      cl += c->eols;
      cs += c->used;
      c = c->next;
    }
    // In the chunk, scan from the nearest known point: on from the cached line start, back from it,
    // or from whichever end of the chunk is nearer.
    const int64_t k = line - cl;  // the line's end-of-line character number k of this chunk ends line - 1
    const char16_t eol = m_EOLText[0];
    int64_t at;
    if (c == m_Cache.chunk && m_Cache.line < line)
      at = m_Cache.offset + scan::FindNth(c->text + m_Cache.offset, c->used - m_Cache.offset, eol, line - m_Cache.line);
    else if (c == m_Cache.chunk)
      at = scan::FindNthBack(c->text, m_Cache.offset, eol, m_Cache.line - line + 1);
    else if (k > c->eols / 2)
      at = scan::FindNthBack(c->text, c->used, eol, c->eols - k + 1);
    else
      at = scan::FindNth(c->text, c->used, eol, k);
    KW_ASSERT(at >= 0 && at < c->used);
    int64_t off = at + 1;
    if (m_EOLText[0] == kCR) {
      if (off < c->used) {
        if (c->text[off] == kLF) ++off;
      } else if (c->next && c->next->used > 0 && c->next->text[0] == kLF) {
        cl += c->eols;
        cs += c->used;
        c = c->next;
        off = 1;
      }
    }
    // A start at the end of a chunk lies at the start of the next one.
    while (off == c->used && c->next) {
      cl += c->eols;
      cs += c->used;
      c = c->next;
      off = 0;
    }
    p.chunk = c;
    p.offset = off;
    p.chunkStart = cs;
    p.chunkLine = cl;
    p.index = cs + off;
  }
  MeasureLine(p);
  m_Cache = p;
  return &m_Cache;
}

Index KwEditBase::LineStart(Line line) {
  const LinePos* p = StartOfLine(line);
  return p ? p->index : -1;
}

int64_t KwEditBase::LineLength(Line line, int withEOL) {
  const LinePos* p = StartOfLine(line);
  if (p == nullptr) return -1;
  return p->length + (withEOL ? p->eolLength : 0);
}

Line KwEditBase::LineFromIndex(Index index, int64_t* column) {
  KW_ASSERT(index >= 0);
  KW_ASSERT(m_Head != nullptr);
  if (m_Head == nullptr) return -1;
  if (index < 0) index = 0;
  if (index > m_TotalChars) index = m_TotalChars;
  if (m_Cache.chunk == nullptr) ResetCache();
  Line line;
  const LinePos& k = m_Cache;
  if (index >= k.index && (index < k.index + k.length + k.eolLength || (k.eolLength == 0))) {
    line = k.line;  // inside the cached line (the last line takes everything behind its start)
  } else {
    Index cs;
    tagTEXTDESC* c = SeekElement(index, &cs, nullptr);
    // Lines before the chunk: walk the counts from the cached chunk, which SeekElement started from.
    int64_t cl = k.chunkLine;
    Index ks = k.chunkStart;
    for (const tagTEXTDESC* w = k.chunk; w != c;) {
      if (ks < cs) {
        cl += w->eols;
        ks += w->used;
        w = w->next;
      } else {
        w = w->prev;
        cl -= w->eols;
        ks -= w->used;
      }
    }
    // Count within the chunk from the nearest known point: the cached line start, or either chunk end.
    const int64_t off = index - cs;
    if (c == k.chunk && off >= k.offset)
      line = k.line + CountEOLs(c->text + k.offset, off - k.offset);
    else if (c == k.chunk && k.offset - off < off)
      line = k.line - CountEOLs(c->text + off, k.offset - off);
    else if (c->used - off < off)
      line = cl + c->eols - CountEOLs(c->text + off, c->used - off);
    else
      line = cl + CountEOLs(c->text, off);
    // The LF of a CR LF pair belongs to the line that the pair ends.
    if (IsLFAfterCR(c, off) && line > 0) --line;
  }
  if (column) *column = index - LineStart(line);
  return line;
}

// ---- Reading and overwriting units ----------------------------------------------------------------

int64_t KwEditBase::GetText(Index index, char16_t* buffer, int64_t count) {
  KW_ASSERT(index >= 0 && count >= 0 && buffer != nullptr);
  if (index < 0 || count < 0 || buffer == nullptr || m_Head == nullptr) return 0;
  Index cs;
  tagTEXTDESC* c = SeekElement(index, &cs, nullptr);
  int64_t off = index - cs;
  int64_t done = 0;
  while (c && done < count) {
    const int64_t n = std::min<int64_t>(count - done, static_cast<int64_t>(c->used) - off);
    if (n > 0) {
      std::memcpy(buffer + done, c->text + off, static_cast<size_t>(n) * sizeof(char16_t));
      done += n;
    }
    c = c->next;
    off = 0;
  }
  return done;
}

int64_t KwEditBase::SetText(Index index, const char16_t* text, int64_t count) {
  KW_ASSERT(index >= 0 && count >= 0 && text != nullptr);
  if (index < 0 || count < 0 || text == nullptr || m_Head == nullptr) return 0;
  Index cs;
  tagTEXTDESC* c = SeekElement(index, &cs, nullptr);
  int64_t off = index - cs;
  int64_t done = 0;
  bool linesTouched = false;
  const char16_t eol = m_EOLText[0];
  while (c && done < count) {
    const int64_t n = std::min<int64_t>(count - done, static_cast<int64_t>(c->used) - off);
    if (n > 0) {
      char16_t* p = c->text + off;
      const int64_t before = scan::Count(p, n, eol);
      const int64_t lfBefore = eol == kCR ? scan::Count(p, n, kLF) : 0;
      std::memcpy(p, text + done, static_cast<size_t>(n) * sizeof(char16_t));
      const int64_t after = scan::Count(p, n, eol);
      const int64_t lfAfter = eol == kCR ? scan::Count(p, n, kLF) : 0;
      if (before || after || lfBefore || lfAfter) linesTouched = true;
      c->eols += after - before;
      m_LinesInDoc += after - before;
      done += n;
    }
    c = c->next;
    off = 0;
  }
  if (linesTouched) ResetCache();
  return done;
}

// ---- The edit primitive ------------------------------------------------------------------------------

void KwEditBase::DeleteUnits(Index start, int64_t count, bool* cacheChunkGone) {
  Index cs;
  tagTEXTDESC* c = SeekElement(start, &cs, nullptr);
  int64_t off = start - cs;
  int64_t rest = count;
  while (c && rest > 0) {
    const int64_t n = std::min<int64_t>(rest, static_cast<int64_t>(c->used) - off);
    tagTEXTDESC* next = c->next;
    if (n > 0) {
      c->eols -= CountEOLs(c->text + off, n);
      std::memmove(c->text + off, c->text + off + n, static_cast<size_t>(c->used - off - n) * sizeof(char16_t));
      c->used = static_cast<uint32_t>(c->used - n);
      rest -= n;
    }
    if (c->used == 0 && (c->prev || c->next)) {
      if (c == m_Cache.chunk) *cacheChunkGone = true;
      // Keep the cache's chunk pointer from being reset here: the caller decides.
      const LinePos keep = m_Cache;
      RemoveElement(c);
      if (!*cacheChunkGone) m_Cache = keep;
    }
    c = next;
    off = 0;
  }
}

int64_t KwEditBase::InsertUnits(Index start, const char16_t* text, int64_t length, int64_t* eolsInserted) {
  Index cs;
  tagTEXTDESC* c = SeekElement(start, &cs, nullptr);
  const int64_t off = start - cs;
  const int64_t used = c->used;
  auto fill = [&](char16_t* dst, int64_t from, int64_t n) {
    if (text)
      std::memcpy(dst, text + from, static_cast<size_t>(n) * sizeof(char16_t));
    else
      std::fill(dst, dst + n, u' ');
  };
  auto countIn = [&](const char16_t* p, int64_t n) { return CountEOLs(p, n); };

  if (used + length <= std::min<int64_t>(c->capacity, MaxChunkUsed())) {
    // In place: shift the tail of the chunk.
    std::memmove(c->text + off + length, c->text + off, static_cast<size_t>(used - off) * sizeof(char16_t));
    fill(c->text + off, 0, length);
    c->used = static_cast<uint32_t>(used + length);
    *eolsInserted = countIn(c->text + off, length);
    c->eols += *eolsInserted;
    return length;
  }
  if (used + length <= MaxChunkUsed()) {
    // Grow the chunk to the next step of 256 units.
    tagTEXTDESC* grown = NewElement(used + length);
    if (grown != nullptr) {
      std::memcpy(grown->text, c->text, static_cast<size_t>(off) * sizeof(char16_t));
      fill(grown->text + off, 0, length);
      std::memcpy(grown->text + off + length, c->text + off, static_cast<size_t>(used - off) * sizeof(char16_t));
      FreeText(c);
      c->text = grown->text;
      c->capacity = grown->capacity;
      c->used = static_cast<uint32_t>(used + length);
      *eolsInserted = countIn(c->text + off, length);
      c->eols += *eolsInserted;
      grown->text = nullptr;
      delete grown;
      return length;
    }
  }
  // Too large for one chunk: the chunk keeps its head, the text goes into new chunks of the chunk size
  // behind it, and its tail into one more.
  tagTEXTDESC* at = c;
  const int64_t tail = used - off;
  if (off == 0 && c->prev) at = c->prev;  // the whole chunk is tail: insert before it
  tagTEXTDESC* tailChunk = nullptr;
  if (off > 0 && tail > 0) {
    tailChunk = NewElement(tail);
    if (tailChunk == nullptr) return 0;  // out of memory: the insertion is lost, the text stays whole
    std::memcpy(tailChunk->text, c->text + off, static_cast<size_t>(tail) * sizeof(char16_t));
    tailChunk->eols = countIn(tailChunk->text, tail);
    c->eols -= tailChunk->eols;
    c->used = static_cast<uint32_t>(off);
  }
  bool intoHead = off == 0 && c->prev == nullptr;  // insert before the head chunk
  tagTEXTDESC* last = intoHead ? nullptr : at;
  int64_t done = 0;
  while (done < length) {
    const int64_t n = std::min(length - done, m_ChunkUnits);
    tagTEXTDESC* piece = NewElement(n);
    if (piece == nullptr) break;  // out of memory: what fitted stays
    fill(piece->text, done, n);
    piece->eols = countIn(piece->text, n);
    *eolsInserted += piece->eols;
    if (last == nullptr) {
      piece->next = m_Head;
      m_Head->prev = piece;
      m_Head = piece;
    } else {
      InsertAfter(last, piece);
    }
    last = piece;
    done += n;
  }
  if (tailChunk) InsertAfter(last ? last : c, tailChunk);
  // Text put in front of the cached line's chunk is now where that line starts (the edit is at it).
  if (off == 0 && m_Cache.chunk == c && done > 0) {
    tagTEXTDESC* firstPiece = c->prev;
    for (int64_t n = done; n > firstPiece->used; n -= firstPiece->used) firstPiece = firstPiece->prev;
    m_Cache.chunk = firstPiece;
  }
  if (c->used == 0 && (c->prev || c->next)) RemoveElement(c);
  return done;
}

void KwEditBase::ReplaceText(Index start, int64_t removed, const char16_t* text, int64_t length) {
  KW_ASSERT(m_Head != nullptr);
  KW_ASSERT(start >= 0 && removed >= 0 && length >= 0 && start + removed <= m_TotalChars);
  if (m_Head == nullptr || start < 0 || removed < 0 || length < 0 || start + removed > m_TotalChars) return;
  if (removed == 0 && length == 0) return;
  // Put the cache at the line of the edit: every change happens behind its start, so it stays valid.
  const Line startLine = LineFromIndex(start, nullptr);
  // Marks and the other line tables belong to the text of a line: an edit at a line's start moves
  // that line's own entry with its text; inside a line, the line keeps it.
  const Line moveFrom = StartOfLine(startLine)->index == start ? startLine : startLine + 1;
  const Line linesBefore = m_LinesInDoc;
  int64_t removedEOLs = 0;
  int64_t insertedEOLs = 0;
  const int64_t givenLength = length;
  bool cacheGone = false;
  if (removed == length) {
    // As many units in as out: overwrite in place, nothing shifts.
    Index cs;
    tagTEXTDESC* c = SeekElement(start, &cs, nullptr);
    int64_t off = start - cs;
    for (int64_t done = 0; c && done < length; c = c->next, off = 0) {
      const int64_t n = std::min<int64_t>(length - done, static_cast<int64_t>(c->used) - off);
      if (n <= 0) continue;
      char16_t* p = c->text + off;
      const int64_t before = CountEOLs(p, n);
      if (text)
        std::memcpy(p, text + done, static_cast<size_t>(n) * sizeof(char16_t));
      else
        std::fill(p, p + n, u' ');
      const int64_t after = CountEOLs(p, n);
      c->eols += after - before;
      removedEOLs += before;
      insertedEOLs += after;
      done += n;
    }
    removed = length = 0;  // nothing left for the shifting paths below
  }
  if (removed > 0) {
    Index cs;
    // Count the end-of-line characters of the removed range chunk by chunk, then remove it.
    const tagTEXTDESC* c = SeekElement(start, &cs, nullptr);
    int64_t off = start - cs;
    int64_t rest = removed;
    while (c && rest > 0) {
      const int64_t n = std::min<int64_t>(rest, static_cast<int64_t>(c->used) - off);
      removedEOLs += CountEOLs(c->text + off, n);
      rest -= n;
      c = c->next;
      off = 0;
    }
    DeleteUnits(start, removed, &cacheGone);
  }
  if (length > 0) {
    // An allocation failure may keep only part of the text.
    length = InsertUnits(start, text, length, &insertedEOLs);
  }
  m_TotalChars += length - removed;
  m_LinesInDoc = linesBefore - removedEOLs + insertedEOLs;

  // Settle the cache: normalise its start to the chunk holding the first unit, step over an LF that now
  // follows the CR before it, and measure the line again.
  if (cacheGone || m_Cache.chunk == nullptr) {
    ResetCache();
  } else {
    LinePos& k = m_Cache;
    while (k.offset == k.chunk->used && k.chunk->next) {
      k.chunkLine += k.chunk->eols;
      k.chunkStart += k.chunk->used;
      k.chunk = k.chunk->next;
      k.offset = 0;
    }
    if (k.line > 0 && IsLFAfterCR(k.chunk, k.offset)) {
      ++k.offset;
      ++k.index;
      while (k.offset == k.chunk->used && k.chunk->next) {
        k.chunkLine += k.chunk->eols;
        k.chunkStart += k.chunk->used;
        k.chunk = k.chunk->next;
        k.offset = 0;
      }
    }
    MeasureLine(k);
  }

  // Removed lines take their entries with them; inserted lines come without any. A bulk replacement
  // (ApplySplices) moves the line tables once for all its splices instead.
  const bool moveTables = !m_KeepLineTables;
  const bool hadFF = !m_FFTable.empty() && moveTables;
  if (moveTables && removedEOLs > 0) {
    MoveLineMarks(moveFrom, -removedEOLs);
    MoveBookMarks(moveFrom, -removedEOLs);
    MoveFFs(moveFrom, -removedEOLs);
    MoveSyntaxColorFlags(moveFrom, -removedEOLs);
  }
  if (moveTables && insertedEOLs > 0) {
    MoveLineMarks(moveFrom, insertedEOLs);
    MoveBookMarks(moveFrom, insertedEOLs);
    MoveFFs(moveFrom, insertedEOLs);
    MoveSyntaxColorFlags(moveFrom, insertedEOLs);
  }
  if (m_SyntaxColoring && static_cast<int64_t>(m_SyntaxFlags.size()) < m_LinesInDoc + 1)
    m_SyntaxFlags.resize(static_cast<size_t>(m_LinesInDoc + 1001), 0);
  const bool ffInText = text != nullptr && scan::Count(text, givenLength, kFormFeed) > 0;
  // One line more: an edit at the LF of a CR LF pair changes the line behind it.
  if (moveTables && (hadFF || ffInText)) RecheckFFs(startLine, startLine + insertedEOLs + 1);
  // The edited and inserted lines may be longer than the longest known.
  for (Line l = startLine; l <= startLine + insertedEOLs; ++l) {
    const int64_t n = LineLength(l, 0);
    if (n > m_LongestLine) m_LongestLine = n;
  }
  StartOfLine(startLine);
}

// ---- Recorded edits --------------------------------------------------------------------------------

void KwEditBase::SaveUndoRecord(int type, Index start, Index end, const char16_t* text, int64_t length) {
  const int64_t removed = type == KwEditUndo::kInsertText ? end : end - start;
  if (type == 0) {
    if (removed == 0 && length == 0) return;
    type = removed > 1 || length > 1 ? KwEditUndo::kReplaceText : KwEditUndo::kReplaceChar;
  }
  const auto position = static_cast<uint64_t>(start);
  if (type == static_cast<int>(KwEditUndo::kReplaceChar)) {
    char16_t was = 0;
    if (removed > 0) GetText(start, &was, 1);
    const char16_t now = length > 0 ? (text ? text[0] : u' ') : 0;
    // Both units live in the record's data field; type 1 has no block.
    const uintptr_t packed = static_cast<uintptr_t>(was) | (static_cast<uintptr_t>(now) << 16);
    m_Undo->SaveRecord(position, removed, length, reinterpret_cast<void*>(packed), KwEditUndo::kReplaceChar);
    return;
  }
  if (type == static_cast<int>(KwEditUndo::kReplaceText)) {
    auto* block = static_cast<char16_t*>(std::malloc(static_cast<size_t>(std::max<int64_t>(1, removed + length)) *
                                                     sizeof(char16_t)));
    if (block == nullptr) {
      m_Undo->Clear(1);
      return;
    }
    GetText(start, block, removed);
    if (text)
      std::memcpy(block + removed, text, static_cast<size_t>(length) * sizeof(char16_t));
    else
      std::fill(block + removed, block + removed + length, u' ');
    if (removed == length && std::equal(block, block + removed, block + removed)) {
      std::free(block);  // the text does not change: nothing to undo
      return;
    }
    m_Undo->SaveRecord(position, removed, length, block, KwEditUndo::kReplaceText);
    return;
  }
  if (type == static_cast<int>(KwEditUndo::kInsertText)) {
    auto* block = static_cast<char16_t*>(std::malloc(static_cast<size_t>(length + 1) * sizeof(char16_t)));
    if (block == nullptr) {
      m_Undo->Clear(1);
      return;
    }
    if (text)
      std::memcpy(block, text, static_cast<size_t>(length) * sizeof(char16_t));
    else
      std::fill(block, block + length, u' ');
    block[length] = 0;
    m_Undo->SaveRecord(position, removed, length, block, KwEditUndo::kInsertText);
    return;
  }
  KW_ASSERT(!"unknown editor record type");
}

void KwEditBase::SaveUndoRecord(Line line) {
  m_Undo->SaveRecord(0, line, 0, nullptr, KwEditUndo::kLineMark);
}

int KwEditBase::SelReplaceAt(Index start, Index end, const char16_t* text, int64_t length, int recordUndo,
                             const Line* markLines) {
  const bool ok = start >= 0 && start <= end && end <= m_TotalChars && length >= 0 &&
                  (recordUndo == 0 || recordUndo == 1 || (recordUndo == 4 && start == end));
  KW_ASSERT(ok);
  if (!ok || m_Head == nullptr) return 0;
  int64_t marks = 0;
  if (markLines)
    while (markLines[marks] >= 0) ++marks;
  const bool group = recordUndo != 0 && marks > 0;
  if (group && !m_Undo->StartGroup(marks + 1, 0)) return 0;
  if (recordUndo == 4)
    SaveUndoRecord(KwEditUndo::kInsertText, start, 0, text, length);
  else if (recordUndo)
    SaveUndoRecord(0, start, end, text, length);
  ReplaceText(start, end - start, text, length);
  for (int64_t i = 0; i < marks; ++i) {
    if (markLines[i] > m_LinesInDoc) continue;
    SetLineMark(markLines[i], 1);
    if (recordUndo) {
      // A type-19 record keeps the step's position too, so that undoing it reports the edit's place.
      m_Undo->SaveRecord(static_cast<uint64_t>(start), markLines[i], 0, nullptr, KwEditUndo::kLineMark);
    }
  }
  if (group) m_Undo->CloseGroup();
  return 1;
}

int KwEditBase::SelReplace(Line line1, int64_t column1, Line line2, int64_t column2, const char16_t* text,
                           int64_t length, int recordUndo, const Line* markLines) {
  const bool ok = line1 >= 0 && line2 >= line1 && line2 <= m_LinesInDoc && column1 >= 0 && column2 >= 0;
  KW_ASSERT(ok);
  if (!ok) return 0;
  const Index start = LineStart(line1) + column1;
  const Index end = LineStart(line2) + column2;
  if (start > end || end > m_TotalChars) {
    KW_ASSERT(start <= end && end <= m_TotalChars);
    return 0;
  }
  return SelReplaceAt(start, end, text, length, recordUndo, markLines);
}

// ---- Undo and redo of the editor records -------------------------------------------------------------

int64_t KwEditBase::UndoReplace(tagUNDORECORD& r, Line /*line*/, KwProgress* /*progress*/) {
  const auto at = static_cast<Index>(r.position);
  const int64_t removed = r.type == KwEditUndo::kInsertText ? 0 : r.value1;
  const bool ok = at >= 0 && at + r.value2 <= m_TotalChars;
  KW_ASSERT(ok);
  if (!ok) return -1;
  if (r.type == KwEditUndo::kReplaceChar) {
    const auto was = static_cast<char16_t>(reinterpret_cast<uintptr_t>(r.data) & 0xFFFF);
    ReplaceText(at, r.value2, &was, r.value1);
  } else if (r.type == KwEditUndo::kReplaceText) {
    ReplaceText(at, r.value2, static_cast<const char16_t*>(r.data), removed);
  } else {
    ReplaceText(at, r.value2, nullptr, 0);
  }
  return at;
}

int64_t KwEditBase::RedoReplace(tagUNDORECORD& r, Line /*line*/, KwProgress* /*progress*/) {
  const auto at = static_cast<Index>(r.position);
  const int64_t removed = r.type == KwEditUndo::kInsertText ? r.value1 : r.value1;
  const bool ok = at >= 0 && at + removed <= m_TotalChars;
  KW_ASSERT(ok);
  if (!ok) return -1;
  if (r.type == KwEditUndo::kReplaceChar) {
    const auto now = static_cast<char16_t>((reinterpret_cast<uintptr_t>(r.data) >> 16) & 0xFFFF);
    ReplaceText(at, removed, &now, r.value2);
  } else if (r.type == KwEditUndo::kReplaceText) {
    ReplaceText(at, removed, static_cast<const char16_t*>(r.data) + r.value1, r.value2);
  } else {
    ReplaceText(at, removed, static_cast<const char16_t*>(r.data), r.value2);
  }
  return at;
}

int64_t KwEditBase::UndoLineMark(tagUNDORECORD& r, Line /*line*/, KwProgress* /*progress*/) {
  SetLineMark(r.value1, 0);
  return static_cast<int64_t>(r.position);
}

int64_t KwEditBase::RedoLineMark(tagUNDORECORD& r, Line /*line*/, KwProgress* /*progress*/) {
  SetLineMark(r.value1, 1);
  return static_cast<int64_t>(r.position);
}

// ---- Undo access -----------------------------------------------------------------------------------

Index KwEditBase::UndoEdit(Line* line) {
  const int64_t r = m_Undo->Undo();
  if (line) *line = r >= 0 ? LineFromIndex(r, nullptr) : -1;
  return r;
}

Index KwEditBase::RedoEdit(Line* line) {
  const int64_t r = m_Undo->Redo();
  if (line) *line = r >= 0 ? LineFromIndex(r, nullptr) : -1;
  return r;
}

void KwEditBase::ResetUndoStack() { m_Undo->Clear(0); }
int KwEditBase::StartUndoGroup(int64_t size) { return m_Undo->StartGroup(size, 0); }
int KwEditBase::CloseUndoGroup() { return m_Undo->CloseGroup(); }
int KwEditBase::CanUndo() const { return m_Undo->CanUndo(); }
int KwEditBase::CanRedo() const { return m_Undo->CanRedo(); }
int64_t KwEditBase::GetUndoPos() const { return m_Undo->GetPos(); }

int KwEditBase::GetModified() const { return m_Undo ? m_Undo->GetModified() : 0; }

void KwEditBase::SetModified(int flag) {
  KW_ASSERT(m_Undo != nullptr || flag == 0);
  if (m_Undo) m_Undo->SetModified(flag);
}

// ---- Invariants -----------------------------------------------------------------------------------

int KwEditBase::Check() {
  if (m_Head == nullptr || m_Head->prev != nullptr) return 0;
  Index total = 0;
  Line lines = 0;
  bool cacheFound = m_Cache.chunk == nullptr;
  std::u16string all;
  for (const tagTEXTDESC* c = m_Head; c; c = c->next) {
    if (c->used > c->capacity || c->capacity % kChunkStep != 0) return 0;
    if (c->next && c->next->prev != c) return 0;
    if (c->used == 0 && (c->prev || c->next)) return 0;
    if (c->eols != CountEOLs(c->text, c->used)) return 0;
    if (c == m_Cache.chunk) {
      if (m_Cache.chunkStart != total || m_Cache.chunkLine != lines) return 0;
      cacheFound = true;
    }
    total += c->used;
    lines += c->eols;
    all.append(c->text, c->used);
  }
  if (total != m_TotalChars || lines != m_LinesInDoc || !cacheFound) return 0;
  if (m_Cache.chunk != nullptr) {
    // The cached line measured the slow way.
    const char16_t eol = m_EOLText[0];
    Index start = 0;
    for (Line l = 0; l < m_Cache.line; ++l) {
      const size_t f = all.find(eol, static_cast<size_t>(start));
      if (f == std::u16string::npos) return 0;
      start = static_cast<Index>(f) + 1;
      if (eol == kCR && start < total && all[static_cast<size_t>(start)] == kLF) ++start;
    }
    const size_t f = all.find(eol, static_cast<size_t>(start));
    const int64_t length = (f == std::u16string::npos ? total : static_cast<Index>(f)) - start;
    int eolLength = f == std::u16string::npos ? 0 : 1;
    if (eolLength && eol == kCR && static_cast<Index>(f) + 1 < total && all[f + 1] == kLF) eolLength = 2;
    if (m_Cache.index != start || m_Cache.length != length || m_Cache.eolLength != eolLength) return 0;
    if (m_Cache.chunkStart + m_Cache.offset != start) return 0;
    if (m_Cache.offset == m_Cache.chunk->used && m_Cache.chunk->next) return 0;
  }
  return 1;
}

}  // namespace kw
