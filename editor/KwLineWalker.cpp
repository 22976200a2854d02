// KwLineWalker: the sequential line walk over a document's chunks (see editor/KwLineWalker.h).
#include "editor/KwLineWalker.h"

#include "editor/KwEditBaseScan.h"

namespace kw {

namespace {

constexpr char16_t kCR = 13;
constexpr char16_t kLF = 10;
// What GetText gives for an empty line whose text is in no buffer.
constexpr char16_t kEmpty[1] = {0};

}  // namespace

KwLineWalker::KwLineWalker(KwEditBase& doc) : m_Doc(doc), m_EOL(doc.GetEOLType()), m_CRLF(m_EOL == kCR) {}

const tagTEXTDESC* KwLineWalker::NextFilled(const tagTEXTDESC* c) {
  for (c = c->next; c != nullptr && c->used == 0; c = c->next) {
  }
  return c;
}

bool KwLineWalker::Start(Line line) {
  m_Chunk = nullptr;
  if (line < 0 || line > m_Doc.GetLinesInDoc() || m_Doc.m_Head == nullptr) return false;
  m_EOL = m_Doc.GetEOLType();
  m_CRLF = m_EOL == kCR;
  const KwEditBase::LinePos* p = m_Doc.StartOfLine(line);
  if (p == nullptr) return false;
  m_Chunk = p->chunk;
  m_Offset = p->offset;
  m_ChunkStart = p->chunkStart;
  m_Line = line;
  Measure();
  return true;
}

bool KwLineWalker::Next() {
  if (m_Chunk == nullptr) return false;
  if (m_EOLLength == 0) {
    m_Chunk = nullptr;
    return false;
  }
  const tagTEXTDESC* c = m_NextChunk;
  int64_t o = m_NextOffset;
  Index cs = m_NextChunkStart;
  // A start at the end of a chunk lies at the start of the next one (the end of the text stays where
  // it is: the empty line behind a final end of line).
  while (o >= c->used && c->next != nullptr) {
    cs += c->used;
    c = c->next;
    o = 0;
  }
  m_Chunk = c;
  m_Offset = o;
  m_ChunkStart = cs;
  ++m_Line;
  Measure();
  return true;
}

void KwLineWalker::Measure() {
  const tagTEXTDESC* c = m_Chunk;
  int64_t o = m_Offset;
  Index cs = m_ChunkStart;
  m_Start = cs + o;
  m_Length = 0;
  m_EOLLength = 0;
  m_Copied = false;
  bool spread = false;  // the line has run over a chunk's end: its units are gathered in m_Buffer
  while (true) {
    const int64_t n = c->used;
    // A chunk without an end-of-line character is passed whole.
    const int64_t f = c->eols == 0 || o >= n ? n : o + scan::Find(c->text + o, n - o, m_EOL);
    if (f < n || c->next == nullptr) {
      if (spread) {
        m_Buffer.insert(m_Buffer.end(), c->text + o, c->text + f);
        m_Text = m_Buffer.empty() ? kEmpty : m_Buffer.data();
        m_Copied = true;
      } else {
        m_Text = f > o ? c->text + o : kEmpty;
      }
      m_Length += f - o;
      if (f == n) return;  // the last line: no end of line
      m_EOLLength = 1;
      m_NextChunk = c;
      m_NextOffset = f + 1;
      m_NextChunkStart = cs;
      if (m_CRLF) {
        if (f + 1 < n) {
          if (c->text[f + 1] == kLF) {
            m_EOLLength = 2;
            ++m_NextOffset;
          }
        } else if (const tagTEXTDESC* after = NextFilled(c); after != nullptr && after->text[0] == kLF) {
          // The pair is split between chunks; chunks between them are empty, so `after` starts where
          // `c` ends.
          m_EOLLength = 2;
          m_NextChunk = after;
          m_NextOffset = 1;
          m_NextChunkStart = cs + n;
        }
      }
      return;
    }
    if (!spread) {
      m_Buffer.clear();
      spread = true;
    }
    m_Buffer.insert(m_Buffer.end(), c->text + o, c->text + n);
    m_Length += n - o;
    cs += n;
    c = c->next;
    o = 0;
  }
}

const char16_t* KwLineWalker::GetTerminatedText() {
  if (m_Chunk == nullptr) return kEmpty;
  if (!m_Copied) {
    m_Buffer.assign(m_Text, m_Text + m_Length);
    m_Copied = true;
  }
  m_Buffer.resize(static_cast<size_t>(m_Length) + 1);
  m_Buffer[static_cast<size_t>(m_Length)] = 0;
  m_Text = m_Buffer.data();
  return m_Text;
}

}  // namespace kw
