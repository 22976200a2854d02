#include "editor/KwUndoMemory.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "app/QueryBox.h"
#include "app/StringTable.h"
#include "base/Assert.h"
#include "platform/Platform.h"

namespace kw {

namespace {

const std::u16string kSender = u"UndoMem";

// Texts of the memory's boxes and panes.
constexpr uint32_t kIdsUndoTitle = 2640;
constexpr uint32_t kIdsRedoTitle = 2641;
constexpr uint32_t kIdsConfirmStart = 2642;
constexpr uint32_t kIdsOverflow = 2643;
constexpr uint32_t kIdsFailure = 2644;

// The question about a large group: exclamation picture, no beep, first button default.
constexpr uint32_t kQuestionPicture = 1085;
constexpr uint32_t kQuestionStyle = 0;
// The notices: exclamation picture with its beep.
constexpr uint32_t kNoticePicture = 1090;
constexpr uint32_t kNoticeStyle = 1;

}  // namespace

KwUndoMemory::KwUndoMemory(int waitThreshold) : waitThreshold_(waitThreshold) {}

KwUndoMemory::~KwUndoMemory() {
  if (baseRelease_ == 0) {
    Clear(0);  // the base FreeRecord is in force: it is the one this destructor reaches
  } else {
    // A derived FreeRecord was in force and is gone now; its destructor should have cleared.
    KW_ASSERT(records_.empty());
  }
}

void KwUndoMemory::Init() {
  if (initialised_) return;
  Clear(0);
  exception_ = 0;
  initialised_ = 1;
  tagUNDORECORD probe;  // all fields zero: a release of it releases nothing
  FreeRecord(probe);
}

tagTYPETRACK& KwUndoMemory::Track(uint32_t type) {
  if (lastTrack_ < tracks_.size() && tracks_[lastTrack_].type == type) return tracks_[lastTrack_];
  for (size_t i = 0; i < tracks_.size(); ++i) {
    if (tracks_[i].type == type) {
      lastTrack_ = i;
      return tracks_[i];
    }
  }
  if (tracks_.size() == tracks_.capacity()) tracks_.reserve(tracks_.capacity() + kGrowStep);
  tracks_.push_back(tagTYPETRACK{type, 0, 0});
  lastTrack_ = tracks_.size() - 1;
  return tracks_.back();
}

void KwUndoMemory::Append(const tagUNDORECORD& record) {
  if (records_.size() == records_.capacity()) {
    // Whole steps of kGrowStep, by half the size at least, so that a million saves copy the
    // records only a few dozen times instead of once per step.
    const size_t step = static_cast<size_t>(kGrowStep);
    size_t wanted = records_.capacity() + records_.capacity() / 2 + step;
    wanted = (wanted + step - 1) / step * step;
    records_.reserve(wanted);
  }
  records_.push_back(record);
}

void KwUndoMemory::SaveRecord(uint64_t position, int64_t value1, int64_t value2, void* data, uint32_t type) {
  Init();
  ++Track(type).count;
  tagUNDORECORD record;
  record.position = position;
  record.value1 = value1;
  record.value2 = value2;
  record.data = data;
  record.type = type;
  if (exception_) {
    FreeRecord(record);
    return;
  }
  // Records above the position can no longer be redone once something new happened.
  for (int64_t i = count() - 1; i >= position_; --i) FreeRecord(records_[static_cast<size_t>(i)]);
  records_.resize(static_cast<size_t>(position_));
  record.group = groupNumber_;
  record.ID = ID_;
  try {
    Append(record);
  } catch (const std::bad_alloc&) {
    // No room for the record: the running operation goes on unrecorded, and what is held cannot be
    // undone across it; cleared now, or at the close of the open group.
    FreeRecord(record);
    NotifyOverflow();
    SetException();
    if (groupDepth_ == 0) Clear(0);
    return;
  }
  groupNumber_ += groupStep_;
  position_ = count();
  changed_ = 1;
}

int KwUndoMemory::StartGroup(int64_t size, uint64_t ID) {
  Init();
  groupStep_ = 0;
  ++groupDepth_;
  SetID(ID);
  if (groupSizeLimit_ >= 1 && size > groupSizeLimit_) {
    const int answer = ConfirmStart();
    if (answer == 0) {
      CloseGroup();
      return 0;
    }
    if (answer == 2) SetException();
  }
  return 1;
}

int KwUndoMemory::CloseGroup() {
  if (records_.empty() && !initialised_) {
    // Closing after a clear (or on a fresh memory): nothing to number.
    groupDepth_ = 0;
    groupStep_ = 1;
    return 0;
  }
  int result = 0;
  KW_ASSERT(groupDepth_ > 0);
  if (groupDepth_ > 0) --groupDepth_;
  if (groupDepth_ == 0) {
    result = position_ > 0 && records_[static_cast<size_t>(position_ - 1)].group == groupNumber_ ? 1 : 0;
    groupStep_ = 1;
    ++groupNumber_;
    // Earlier records cannot be undone across an operation that was not recorded.
    if (exception_) Clear(0);
  }
  // Any close ends the suspension, an inner one too: the operation that was not recorded is over.
  exception_ = 0;
  return result;
}

int64_t KwUndoMemory::Undo() {
  if (!CanUndo()) return kNone;
  KW_ASSERT(groupDepth_ == 0);
  if (groupDepth_ != 0) return kNone;
  const int64_t group = records_[static_cast<size_t>(position_ - 1)].group;
  int64_t first = position_ - 1;
  while (first > 0 && records_[static_cast<size_t>(first - 1)].group == group) --first;
  const int64_t size = position_ - first;
  std::unique_ptr<KwProgress> pane;
  if (waitThreshold_ > 0 && size >= waitThreshold_) pane = GetPlatform().CreateProgress(LoadString(kIdsUndoTitle));
  int64_t result = kNone;
  for (int64_t i = 1; i <= size; ++i) {
    --position_;
    tagUNDORECORD& record = records_[static_cast<size_t>(position_)];
    const int64_t r = UndoRecord(record, pane.get());
    if (r >= 0) result = r;
    --Track(record.type).count;
    if (pane && !pane->Step(static_cast<int>(100 * i / size))) break;
  }
  pane.reset();
  changed_ = 1;
  return result;
}

int64_t KwUndoMemory::Redo() {
  if (!CanRedo()) return kNone;
  KW_ASSERT(groupDepth_ == 0);
  if (groupDepth_ != 0) return kNone;
  const int64_t group = records_[static_cast<size_t>(position_)].group;
  int64_t end = position_ + 1;
  while (end < count() && records_[static_cast<size_t>(end)].group == group) ++end;
  const int64_t size = end - position_;
  std::unique_ptr<KwProgress> pane;
  if (waitThreshold_ > 0 && size >= waitThreshold_) pane = GetPlatform().CreateProgress(LoadString(kIdsRedoTitle));
  int64_t result = kNone;
  for (int64_t i = 1; i <= size; ++i) {
    tagUNDORECORD& record = records_[static_cast<size_t>(position_)];
    const int64_t r = RedoRecord(record, pane.get());
    ++position_;
    if (r >= 0) result = r;
    ++Track(record.type).count;
    if (pane && !pane->Step(static_cast<int>(100 * i / size))) break;
  }
  pane.reset();
  changed_ = 1;
  return result;
}

void KwUndoMemory::Clear(int notify) {
  if (notify) Notice(kIdsFailure);
  for (tagUNDORECORD& record : records_) {
    if (record.data != nullptr) FreeRecord(record);
  }
  std::vector<tagUNDORECORD>().swap(records_);
  exception_ = 0;
  initialised_ = 0;
  position_ = 0;
  groupNumber_ = 1;
  groupStep_ = 1;
  groupDepth_ = 0;
  ID_ = 0;
}

const tagUNDORECORD* KwUndoMemory::GetRecord(int64_t index) const {
  KW_ASSERT(index >= 0 && index < count());
  if (index < 0 || index >= count()) return nullptr;
  return &records_[static_cast<size_t>(index)];
}

void KwUndoMemory::SetID(uint64_t ID) {
  Init();
  ID_ = ID;
}

uint64_t KwUndoMemory::GetID(int64_t index) const {
  if (index < 0) return position_ > 0 ? records_[static_cast<size_t>(position_ - 1)].ID : 0;
  KW_ASSERT(index < count());
  if (index >= count()) return 0;
  return records_[static_cast<size_t>(index)].ID;
}

int64_t KwUndoMemory::GetUndoPos(uint64_t ID) const {
  if (ID == 0) return kNone;
  int64_t steps = 0;
  int64_t i = position_ - 1;
  while (i >= 0) {
    const tagUNDORECORD& top = records_[static_cast<size_t>(i)];
    if (top.ID == ID) return steps;
    while (i >= 0 && records_[static_cast<size_t>(i)].group == top.group) --i;
    ++steps;
  }
  return kNone;
}

int64_t KwUndoMemory::GetRedoPos(uint64_t ID) const {
  if (ID == 0) return kNone;
  int64_t steps = 0;
  int64_t i = position_;
  while (i < count()) {
    const tagUNDORECORD& first = records_[static_cast<size_t>(i)];
    if (first.ID == ID) return steps;
    while (i < count() && records_[static_cast<size_t>(i)].group == first.group) ++i;
    ++steps;
  }
  return kNone;
}

namespace {

bool Listed(uint32_t type, const uint32_t* types, int n) {
  if (types == nullptr || n < 1) return true;
  for (int i = 0; i < n; ++i) {
    if (types[i] == type) return true;
  }
  return false;
}

}  // namespace

int KwUndoMemory::GetModified(const uint32_t* types, int n) const {
  for (const tagTYPETRACK& track : tracks_) {
    if (Listed(track.type, types, n) && track.count != track.savedCount) return 1;
  }
  return 0;
}

void KwUndoMemory::SetModified(int flag, const uint32_t* types, int n) {
  bool matched = false;
  for (tagTYPETRACK& track : tracks_) {
    if (!Listed(track.type, types, n)) continue;
    track.savedCount = flag ? -1 : track.count;
    matched = true;
  }
  if (matched || !flag) return;
  // Nothing to mark modified yet: a track of its own carries the state.
  Track(types != nullptr && n >= 1 ? types[0] : 0).savedCount = -1;
}

void KwUndoMemory::SetException() {
  SetModified(1);
  exception_ = 1;
}

int KwUndoMemory::Check() const {
  if (position_ < 0 || position_ > count()) return 0;
  if (records_.capacity() % static_cast<size_t>(kGrowStep) != 0) return 0;
  if (groupDepth_ < 0 || (groupDepth_ > 0) != (groupStep_ == 0)) return 0;
  for (size_t i = 0; i < records_.size(); ++i) {
    if (i > 0 && records_[i].group < records_[i - 1].group) return 0;
    if (records_[i].group > groupNumber_) return 0;
    if (groupStep_ == 1 && records_[i].group == groupNumber_) return 0;
  }
  return 1;
}

int64_t KwUndoMemory::UndoRecord(tagUNDORECORD& /*record*/, KwProgress* /*progress*/) {
  KW_ASSERT(!"the base memory cannot undo a record");
  return kNone;
}

int64_t KwUndoMemory::RedoRecord(tagUNDORECORD& /*record*/, KwProgress* /*progress*/) {
  KW_ASSERT(!"the base memory cannot redo a record");
  return kNone;
}

void KwUndoMemory::FreeRecord(tagUNDORECORD& record) {
  baseRelease_ = 0;
  std::free(record.data);
  record.data = nullptr;
}

int KwUndoMemory::ConfirmStart() {
  if (!notifyUser_) return 1;
  switch (QueryBox(kSender, 0, kQuestionPicture, kQuestionStyle, kIdsConfirmStart)) {
    case 1:
      return 1;  // add to undo
    case -2:
      return 2;  // go on without recording
    case -3:     // cancel
    case 2:      // no box could be shown: nothing is done that the user did not agree to
      return 0;
    default:
      return 1;
  }
}

void KwUndoMemory::NotifyOverflow() { Notice(kIdsOverflow); }

void KwUndoMemory::Notice(uint32_t textId) const {
  if (notifyUser_) QueryBox(kSender, 0, kNoticePicture, kNoticeStyle, textId);
}

}  // namespace kw
