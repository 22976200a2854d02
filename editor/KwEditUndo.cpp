#include "editor/KwEditUndo.h"

#include <cstdlib>

#include "base/Assert.h"
#include "editor/KwEditBase.h"

namespace kw {

namespace {

// How the document applies one record type backward and forward. A row with null operations is a
// type whose operation does not exist yet: applying it is an internal error.
struct RecordOps {
  int64_t (KwEditBase::*undo)(tagUNDORECORD&, Line, KwProgress*);
  int64_t (KwEditBase::*redo)(tagUNDORECORD&, Line, KwProgress*);
};

}  // namespace

KwEditUndo::KwEditUndo(KwEditBase* doc) : KwUndoMemory(kWaitThreshold), m_pDoc(doc) {}

// FreeRecord is overridden, so the records must be released while the override still exists.
KwEditUndo::~KwEditUndo() { Clear(0); }

int64_t KwEditUndo::RecordResult(const tagUNDORECORD& record) {
  return static_cast<int64_t>(static_cast<int32_t>(static_cast<uint32_t>(record.position & 0xFFFFFFFFu)));
}

int KwEditUndo::ConfirmStart() {
  return m_ConfirmAnswer == 1 || m_ConfirmAnswer == 2 ? m_ConfirmAnswer : KwUndoMemory::ConfirmStart();
}

int64_t KwEditUndo::UndoRecord(tagUNDORECORD& record, KwProgress* progress) {
  return Apply(record, progress, false);
}

int64_t KwEditUndo::RedoRecord(tagUNDORECORD& record, KwProgress* progress) {
  return Apply(record, progress, true);
}

int64_t KwEditUndo::Apply(tagUNDORECORD& record, KwProgress* progress, bool redo) {
  // One row per record type; the area operations and replace-all fill theirs when they exist.
  static const RecordOps kOps[kTypeCount] = {
      {nullptr, nullptr},                                         // 0: a modified-state track only
      {&KwEditBase::UndoReplace, &KwEditBase::RedoReplace},       // 1 one unit replaced
      {&KwEditBase::UndoReplace, &KwEditBase::RedoReplace},       // 2 text replaced
      {&KwEditBase::UndoReplaceAll, &KwEditBase::RedoReplaceAll}, // 3 replace-all
      {&KwEditBase::UndoReplace, &KwEditBase::RedoReplace},       // 4 text inserted
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 5 ReduceLines
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 6 InsertColumn
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 7 DeleteColumn
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 8 SortLines
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 9 TabToBlank / BlankToTab
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 10 the same, reverse mode
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 11 InflateLines
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 12 LowerUpper
      {nullptr, nullptr},                                         // 13 nothing to apply
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 14 BlankOver
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 15 BlankOver
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 16 CharToEol
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 17 EolToChar
      {&KwEditBase::UndoArea, &KwEditBase::RedoArea},             // 18 RemoveZeros
      {&KwEditBase::UndoLineMark, &KwEditBase::RedoLineMark},     // 19 line mark
  };
  if (record.type == 13) return RecordResult(record);
  const bool known = record.type < kTypeCount && kOps[record.type].undo != nullptr;
  KW_ASSERT(known);
  if (!known || m_pDoc == nullptr) return -1;
  const Line line = m_pDoc->LineFromIndex(static_cast<Index>(record.position), nullptr);
  const RecordOps& ops = kOps[record.type];
  const int64_t r = (m_pDoc->*(redo ? ops.redo : ops.undo))(record, line, progress);
  return r < 0 ? r : RecordResult(record);
}

void KwEditUndo::FreeRecord(tagUNDORECORD& record) {
  // Type 1 keeps its units in the data field itself.
  if (record.type != kReplaceChar) std::free(record.data);
  record.data = nullptr;
  record.type = 0;
}

}  // namespace kw
