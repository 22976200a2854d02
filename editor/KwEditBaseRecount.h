// KwEditBase::Recount: the recount of the text (total characters, lines, longest line, chunk counts),
// one chunk at a time in list order. InitText runs it over the whole list; a load runs it on each chunk
// right after reading it, while the chunk's units are still in the cache, so that loading a large file
// needs no second pass over its text. The rules live here only.
#pragma once

#include <cstdint>

#include "editor/KwEditBase.h"

namespace kw {

class KwEditBase::Recount {
 public:
  // Starts over: total characters, line count and longest line become 0 and the line cache is dropped
  // (the chunk counts are stale until Finish).
  explicit Recount(KwEditBase& doc);
  Recount(const Recount&) = delete;
  Recount& operator=(const Recount&) = delete;

  // Counts `chunk`, which must be the next chunk of the list in order (the head first). A chunk that
  // would pass the maximum characters is cut to what is left; an empty chunk other than the head is
  // removed from the list (and freed). The line-mark array grows when marks exist and the lines
  // outgrow it. Returns false when this chunk was cut: nothing behind it is kept, so no further chunk
  // may be added (Finish removes those that are in the list).
  bool Add(tagTEXTDESC* chunk);
  // Whether a chunk counted so far held a form feed (in the part kept).
  bool SawFormFeed() const { return formFeed_; }
  // Completes the recount: removes the chunks behind a cut and shows message 1909, re-makes the syntax
  // flags when colouring is on and they are too few, resets the line cache and the stick selection
  // and, with clearMarks 1, clears the line marks.
  void Finish(int clearMarks);

 private:
  KwEditBase& doc_;
  tagTEXTDESC* last_ = nullptr;  // the last chunk counted and kept
  int64_t lineLength_ = 0;       // units of the line that runs on into the next chunk
  bool skipLF_ = false;          // the last unit counted was a CR ending a line: an LF next belongs to it
  bool cut_ = false;
  bool formFeed_ = false;
};

}  // namespace kw
