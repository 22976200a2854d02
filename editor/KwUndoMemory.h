// A linear undo and redo memory: a list of records, a position in it, numbered groups that are undone
// and redone as one step, a per-record-type bookkeeping that tells whether the document is modified,
// and the questions shown when an operation is too large to record.
//
// The memory knows nothing of what a record means. A derived memory gives records their meaning by
// overriding UndoRecord and RedoRecord, and FreeRecord when its data blocks are not std::malloc blocks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/KwProgress.h"

namespace kw {

// One recorded step.
struct tagUNDORECORD {
  uint64_t position = 0;  // first argument of SaveRecord (in an editor: the character index of the step)
  int64_t value1 = 0;     // second argument (in an editor: the length removed, or a line number)
  int64_t value2 = 0;     // third argument (in an editor: the length inserted)
  // Owned by the record from SaveRecord on; handed to FreeRecord exactly once, which releases it.
  // May be null.
  void* data = nullptr;
  uint32_t type = 0;  // record type; also the key of the modified bookkeeping
  int64_t group = 0;  // consecutive records with equal group number form one undo step
  uint64_t ID = 0;    // the memory's ID when the record was saved
};

// Modified bookkeeping for one record type.
struct tagTYPETRACK {
  uint32_t type = 0;
  int32_t count = 0;       // records of this type saved or redone, minus those undone
  int32_t savedCount = 0;  // count when last marked unmodified; -1 forces the modified state
};

class KwUndoMemory {
 public:
  static constexpr int64_t kGrowStep = 2048;          // arrays hold whole multiples of this many entries
  static constexpr int64_t kDefaultGroupSize = 2048;  // announced group size above which the user is asked
  static constexpr int64_t kNone = -1;                // "no result", "no step", "no such group"

  // `waitThreshold`: records in one undo or redo step from which a progress pane is shown; 0 = never.
  explicit KwUndoMemory(int waitThreshold);
  // Releases all records when the base FreeRecord is in force. A derived memory that overrides
  // FreeRecord must call Clear(0) in its own destructor (its override is gone by the time this runs);
  // records left then are reported as an internal error and their data is not released.
  virtual ~KwUndoMemory();
  // Records own their data blocks and the derived memory holds an owner: a copy would release twice.
  KwUndoMemory(const KwUndoMemory&) = delete;
  KwUndoMemory& operator=(const KwUndoMemory&) = delete;

  // Appends a record, discarding every redo record first. The memory takes ownership of `data` at once,
  // also when the record is not kept (recording suspended, no memory): it is then released at once.
  void SaveRecord(uint64_t position, int64_t value1, int64_t value2, void* data, uint32_t type);

  // Opens a group (groups nest; the records of the outermost group form one step) and sets the ID.
  // When `size` exceeds the group size limit, ConfirmStart is asked: 1 records, 2 goes on without
  // recording (the memory is cleared at the outermost close), 0 cancels: the group is closed again
  // and 0 is returned. Returns 1 to go on.
  virtual int StartGroup(int64_t size, uint64_t ID);
  // Closes a group. At the outermost close returns 1 if the group holds at least one record in force;
  // an inner close returns 0. Every close ends a suspension of recording.
  virtual int CloseGroup();
  // Announced group size above which StartGroup asks; below 1 never asks.
  void SetGroupSize(int64_t limit) { groupSizeLimit_ = limit; }

  // Undoes (redoes) one step. Returns the last non-negative result of UndoRecord (RedoRecord), or -1
  // when there was none or nothing could be undone (redone). With a group open: assertion, -1.
  int64_t Undo();
  int64_t Redo();
  int CanUndo() const { return count() > 0 && position_ > 0; }
  int CanRedo() const { return count() >= 1 && position_ < count(); }

  // Releases every record and returns to the empty, uninitialised state; the modified state is kept.
  // With `notify` set (and the user notified) tells the user first that the steps cannot be undone.
  void Clear(int notify);
  // The record at `index` (below GetCount()); beyond it: assertion, null. The pointer lives until the
  // next SaveRecord, Clear or destruction.
  const tagUNDORECORD* GetRecord(int64_t index) const;
  int64_t GetPos() const { return position_; }  // records in force; those at and above it are redo records
  int64_t GetCount() const { return count(); }

  // The ID stamped into each new record.
  void SetID(uint64_t ID);
  // The ID of the record at `index`; a negative index means the last record in force (position - 1),
  // and then 0 when nothing is in force. An index at or beyond the count: assertion, 0.
  uint64_t GetID(int64_t index) const;
  // How many undo (redo) steps lie between the position and the step whose topmost (first) record
  // carries `ID`: 0 when it is the next step. -1 when no step carries it or `ID` is 0.
  int64_t GetUndoPos(uint64_t ID) const;
  int64_t GetRedoPos(uint64_t ID) const;

  // `types`: an optional list of `n` record types; null or n below 1 means every type.
  int GetModified(const uint32_t* types = nullptr, int n = 0) const;
  // 0 marks the listed types unmodified; 1 marks them modified, creating a track for the first listed
  // type (type 0 without a list) when none exists.
  void SetModified(int flag, const uint32_t* types = nullptr, int n = 0);

  int WasChanged() const { return changed_; }  // set by every save, undo and redo
  void ResetChanged() { changed_ = 0; }
  void NotifyUser(int flag) { notifyUser_ = flag; }  // whether questions and notices are shown
  int GetException() const { return exception_; }    // recording suspended for the running operation

  int64_t GetGroupDepth() const { return groupDepth_; }
  const std::vector<tagTYPETRACK>& GetTypeTracks() const { return tracks_; }
  // Checks the invariants below; returns 1 when they hold. For tests.
  int Check() const;

 protected:
  // Apply one record to the document; return a result (>= 0) or -1. `progress` is the pane of the
  // step, or null. The base versions are internal errors and return -1.
  virtual int64_t UndoRecord(tagUNDORECORD& record, KwProgress* progress);
  virtual int64_t RedoRecord(tagUNDORECORD& record, KwProgress* progress);
  // Releases `record.data` and leaves it null. The base version frees it with std::free, so a
  // plain memory takes blocks allocated with std::malloc; a derived memory allocating otherwise
  // overrides it. Called once on an all-zero record at initialisation (see baseRelease_).
  virtual void FreeRecord(tagUNDORECORD& record);
  // Asks whether a large operation is recorded: 1 record, 2 go on without recording, 0 cancel.
  virtual int ConfirmStart();
  // Tells the user that the running operations cannot be undone because there are too many.
  virtual void NotifyOverflow();

 private:
  int64_t count() const { return static_cast<int64_t>(records_.size()); }
  void Init();
  void SetException();  // marks every type modified and suspends recording
  tagTYPETRACK& Track(uint32_t type);
  void Append(const tagUNDORECORD& record);
  // Shows a notice (2643, 2644) when the user is notified.
  void Notice(uint32_t textId) const;

  int notifyUser_ = 1;
  int changed_ = 0;
  std::vector<tagTYPETRACK> tracks_;  // one per type ever saved or marked; survives Clear
  size_t lastTrack_ = 0;              // index of the track found last; a hint only
  uint64_t ID_ = 0;
  // Invariant: records_.capacity() is a multiple of kGrowStep (or 0); group numbers never decrease.
  std::vector<tagUNDORECORD> records_;
  int initialised_ = 0;
  int64_t position_ = 0;  // invariant: 0 <= position_ <= count()
  int64_t groupNumber_ = 1;  // given to the next record; above every group number held
  int groupStep_ = 1;        // 1 outside a group, 0 inside
  int groupDepth_ = 0;       // invariant: >= 0; groupStep_ == 0 exactly when > 0 (once initialised)
  int64_t groupSizeLimit_ = kDefaultGroupSize;
  // 1 until the base FreeRecord has run once. Init calls FreeRecord on an empty record through the
  // virtual slot, so a 0 here means the base release is in force and the destructor may release.
  int baseRelease_ = 1;
  int exception_ = 0;
  int waitThreshold_;
};

}  // namespace kw
