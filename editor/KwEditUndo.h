// KwEditUndo: the undo memory of an editor document. Its records are editing steps of the document
// that owns it; it applies them backward and forward through that document.
//
// Record types (position = the character index of the step):
//   1  one unit replaced: value1 / value2 = units removed / inserted (0 or 1); the two units are kept
//      in the record itself, packed into the data field (removed in bits 0-15, inserted in 16-31), so
//      type 1 has no data block
//   2  text replaced: value1 / value2 = units removed / inserted; data = removed then inserted units
//   4  text inserted: value2 = units inserted; data = the inserted units, zero-terminated
//   3  replace-all: every match of a line range replaced; value1 / value2 = length of the span from
//      the first match to the last one's end before / after; data = the matches and both texts (see
//      editor/KwEditBaseFindReplace.cpp)
//   19 a line mark set by a step: value1 = the line; no data
//   5-18 the area operations: see editor/KwEditArea.h
// Every data block is a std::malloc block, released by FreeRecord.
#pragma once

#include <cstdint>

#include "editor/KwUndoMemory.h"

namespace kw {

class KwEditBase;

class KwEditUndo : public KwUndoMemory {
 public:
  static constexpr int kWaitThreshold = 100;
  // Record types.
  static constexpr uint32_t kReplaceChar = 1;
  static constexpr uint32_t kReplaceText = 2;
  static constexpr uint32_t kReplaceAll = 3;
  static constexpr uint32_t kInsertText = 4;
  static constexpr uint32_t kLineMark = 19;
  static constexpr uint32_t kTypeCount = 20;

  // `doc` owns this memory and outlives it.
  explicit KwEditUndo(KwEditBase* doc);
  ~KwEditUndo() override;

  // The result of an editor record: its position cut to the low 32 bits and sign-extended. Kept so on
  // purpose: callers have always received it in this form.
  static int64_t RecordResult(const tagUNDORECORD& record);

  // How the question whether a large operation is recorded (ConfirmStart) is answered: 0 asks the user
  // as usual; 1 records and 2 goes on without recording, both without a question. A batch program that
  // never undoes answers 2: its large edits then skip building records nobody will use.
  void SetConfirmAnswer(int answer) { m_ConfirmAnswer = answer; }
  int GetConfirmAnswer() const { return m_ConfirmAnswer; }

 protected:
  int64_t UndoRecord(tagUNDORECORD& record, KwProgress* progress) override;
  int64_t RedoRecord(tagUNDORECORD& record, KwProgress* progress) override;
  void FreeRecord(tagUNDORECORD& record) override;
  int ConfirmStart() override;

 private:
  int64_t Apply(tagUNDORECORD& record, KwProgress* progress, bool redo);
  KwEditBase* m_pDoc;
  int m_ConfirmAnswer = 0;
};

}  // namespace kw
