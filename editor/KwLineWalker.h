// KwLineWalker: reads the lines of a document one after the other. One line lookup places it on its
// first line; from there it follows the chunk list, so that a task over every line of a large text
// pays one scan of the text instead of a lookup per line.
//
//   KwLineWalker walk(doc);
//   for (bool ok = walk.Start(first); ok && walk.GetLine() <= last; ok = walk.Next())
//     use(walk.GetStart(), walk.GetText(), walk.GetLength());
//
// The walker borrows the chunks: the text must not change while it walks (a task collects its changes
// and applies them behind the walk). Positions and ends of line are those of KwEditBase: with CR as
// end-of-line character a CR LF pair (also one split between chunks) ends a line with length 2, a lone
// CR with length 1, and a lone LF is an ordinary unit; any other end-of-line character is one unit.
#pragma once

#include <cstdint>
#include <vector>

#include "editor/KwEditBase.h"

namespace kw {

class KwLineWalker {
 public:
  explicit KwLineWalker(KwEditBase& doc);
  KwLineWalker(const KwLineWalker&) = delete;
  KwLineWalker& operator=(const KwLineWalker&) = delete;

  // Places the walker on `line` (one line lookup). False for a line that does not exist; the walker is
  // then done.
  bool Start(Line line);
  // Moves to the following line. False when the current line was the last one (or the walker was not
  // placed); the walker is then done.
  bool Next();
  bool Done() const { return m_Chunk == nullptr; }

  // The current line: its number, the character index of its first unit, its length without and with
  // its end of line (0 for the last line).
  Line GetLine() const { return m_Line; }
  Index GetStart() const { return m_Start; }
  // Character index of the first unit of the chunk that holds the line's first unit. The walker does
  // not read the text before it again: a task may change that text while it walks on (its indexes
  // then move; the walker's stay those of the text it began with).
  Index GetChunkStart() const { return m_ChunkStart; }
  int64_t GetLength() const { return m_Length; }
  int64_t GetLengthWithEOL() const { return m_Length + m_EOLLength; }
  int GetEOLLength() const { return m_EOLLength; }
  // The line's GetLength() units, not terminated: a pointer into the chunk when the line lies in one
  // chunk, else a copy that stays valid until the walker moves.
  const char16_t* GetText() const { return m_Text; }
  // The same units followed by a zero unit (always a copy once asked for), for readers that go on
  // until a zero.
  const char16_t* GetTerminatedText();
  // Whether the current line is the empty line behind a final end of line (no line of text).
  bool IsEmptyLastLine() const { return m_EOLLength == 0 && m_Length == 0 && m_Line > 0; }

 private:
  // Reads the line starting at m_Chunk/m_Offset: its length, end of line, text and the next start.
  void Measure();
  // The first chunk after `c` that holds text, or null.
  static const tagTEXTDESC* NextFilled(const tagTEXTDESC* c);

  KwEditBase& m_Doc;
  char16_t m_EOL;
  bool m_CRLF;  // CR is the end-of-line character: an LF behind it belongs to the end of line

  // Current line.
  const tagTEXTDESC* m_Chunk = nullptr;  // holds the line's first unit; null: done
  int64_t m_Offset = 0;
  Index m_ChunkStart = 0;  // character index of m_Chunk->text[0]
  Line m_Line = 0;
  Index m_Start = 0;
  int64_t m_Length = 0;
  int m_EOLLength = 0;
  const char16_t* m_Text = nullptr;
  bool m_Copied = false;  // m_Text points into m_Buffer

  // Where the following line starts (valid when m_EOLLength > 0).
  const tagTEXTDESC* m_NextChunk = nullptr;
  int64_t m_NextOffset = 0;
  Index m_NextChunkStart = 0;

  std::vector<char16_t> m_Buffer;  // the copy of a line spread over chunks, or the terminated copy
};

}  // namespace kw
