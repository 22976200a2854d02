#include "editor/KwUndoMemory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "app/StringTable.h"
#include "support/TestSupport.h"

namespace {

using kw::KwUndoMemory;
using kw::tagUNDORECORD;

// A memory whose records are replacements in a string: position = index, value1 = length removed,
// value2 = length inserted, data = a std::malloc block with the removed text followed by the inserted.
class TextMemory : public KwUndoMemory {
 public:
  explicit TextMemory(int waitThreshold = 0) : KwUndoMemory(waitThreshold) {}
  ~TextMemory() override { Clear(0); }

  // Replaces `removed` units at `at` by `inserted` and records it.
  void Edit(size_t at, size_t removed, const std::u16string& inserted, uint32_t type = 1) {
    const std::u16string old = text.substr(at, removed);
    auto* block = static_cast<char16_t*>(std::malloc((old.size() + inserted.size() + 1) * sizeof(char16_t)));
    std::memcpy(block, old.data(), old.size() * sizeof(char16_t));
    std::memcpy(block + old.size(), inserted.data(), inserted.size() * sizeof(char16_t));
    text.replace(at, removed, inserted);
    SaveRecord(at, static_cast<int64_t>(old.size()), static_cast<int64_t>(inserted.size()), block, type);
  }
  void Type(char16_t c) { Edit(text.size(), 0, std::u16string(1, c)); }

  using KwUndoMemory::NotifyOverflow;

  std::u16string text;
  int frees = 0;     // FreeRecord calls on records with data
  int probes = 0;    // FreeRecord calls on empty records
  int64_t undone = 0;

 protected:
  int64_t UndoRecord(tagUNDORECORD& r, kw::KwProgress*) override {
    const auto* block = static_cast<const char16_t*>(r.data);
    text.replace(r.position, static_cast<size_t>(r.value2), block, static_cast<size_t>(r.value1));
    ++undone;
    return static_cast<int64_t>(r.position);
  }
  int64_t RedoRecord(tagUNDORECORD& r, kw::KwProgress*) override {
    const auto* block = static_cast<const char16_t*>(r.data);
    text.replace(r.position, static_cast<size_t>(r.value1), block + r.value1, static_cast<size_t>(r.value2));
    return static_cast<int64_t>(r.position);
  }
  void FreeRecord(tagUNDORECORD& r) override {
    (r.data ? frees : probes)++;
    std::free(r.data);
    r.data = nullptr;
  }
};

class UndoMemoryTest : public kwtest::PlatformTest {};

TEST_F(UndoMemoryTest, GroupsAreNumberedAndUndoneAsOneStep) {
  TextMemory m;
  EXPECT_EQ(m.CloseGroup(), 0);  // fresh memory: nothing to close, no complaint
  EXPECT_EQ(asserts_.count(), 0u);
  EXPECT_EQ(m.probes, 0);

  EXPECT_EQ(m.StartGroup(1, 0), 1);
  EXPECT_EQ(m.CloseGroup(), 0);  // empty group: result 0 but the number 1 is used up
  EXPECT_EQ(m.probes, 1);  // initialisation asks the release once, with an empty record
  m.Type(u'a');
  EXPECT_EQ(m.GetRecord(0)->group, 2);
  m.Type(u'b');
  EXPECT_EQ(m.GetRecord(1)->group, 3);

  EXPECT_EQ(m.StartGroup(1, 0), 1);
  m.Type(u'c');
  EXPECT_EQ(m.StartGroup(1, 0), 1);
  EXPECT_EQ(m.GetGroupDepth(), 2);
  m.Type(u'd');
  EXPECT_EQ(m.StartGroup(1, 0), 1);
  EXPECT_EQ(m.CloseGroup(), 0);  // empty inner group consumes no number
  EXPECT_EQ(m.CloseGroup(), 0);  // an inner close never reports
  m.Type(u'e');
  EXPECT_EQ(m.CloseGroup(), 1);
  EXPECT_EQ(m.GetGroupDepth(), 0);
  for (int64_t i = 2; i <= 4; ++i) EXPECT_EQ(m.GetRecord(i)->group, 4) << i;
  m.Type(u'f');
  EXPECT_EQ(m.GetRecord(5)->group, 5);
  EXPECT_EQ(m.text, u"abcdef");
  EXPECT_TRUE(m.Check());

  EXPECT_EQ(m.Undo(), 5);
  EXPECT_EQ(m.Undo(), 2);  // last non-negative result: the lowest record of the step
  EXPECT_EQ(m.text, u"ab");
  EXPECT_EQ(m.GetPos(), 2);
  EXPECT_EQ(m.Redo(), 4);
  EXPECT_EQ(m.text, u"abcde");
  EXPECT_EQ(m.Undo(), 2);
  EXPECT_EQ(m.Undo(), 1);
  EXPECT_EQ(m.Undo(), 0);
  EXPECT_EQ(m.Undo(), -1);
  EXPECT_EQ(m.text, u"");
  EXPECT_FALSE(m.CanUndo());
  EXPECT_TRUE(m.CanRedo());
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(UndoMemoryTest, SavingAfterUndoDiscardsRedoRecords) {
  TextMemory m;
  m.Type(u'a');
  m.Type(u'b');
  m.Type(u'c');
  m.Undo();
  m.Undo();
  m.ResetChanged();
  EXPECT_EQ(m.frees, 0);
  m.Type(u'x');
  EXPECT_EQ(m.frees, 2);  // b and c released
  EXPECT_EQ(m.GetCount(), 2);
  EXPECT_EQ(m.GetPos(), 2);
  EXPECT_FALSE(m.CanRedo());
  EXPECT_EQ(m.Redo(), -1);
  EXPECT_TRUE(m.WasChanged());
  EXPECT_EQ(m.text, u"ax");
}

TEST_F(UndoMemoryTest, DontAddSuspendsRecordingAndClearsAtTheClose) {
  TextMemory m;
  m.SetGroupSize(10);
  m.Type(u'a');
  m.SetModified(0);
  platform_.answers = {-2};
  EXPECT_EQ(m.StartGroup(11, 0), 1);
  EXPECT_EQ(m.GetException(), 1);
  EXPECT_EQ(m.GetModified(), 1);
  m.Type(u'b');
  m.Type(u'c');
  EXPECT_EQ(m.GetCount(), 1);  // not kept ...
  EXPECT_EQ(m.frees, 2);       // ... and released at once
  EXPECT_EQ(m.GetTypeTracks()[0].count, 3);  // but counted
  EXPECT_EQ(m.CloseGroup(), 0);
  EXPECT_EQ(m.GetException(), 0);
  EXPECT_EQ(m.GetCount(), 0);  // the earlier record cannot be undone across the unrecorded step
  EXPECT_FALSE(m.CanUndo());
  EXPECT_EQ(m.GetModified(), 1);  // the clear keeps the modified state
  m.Type(u'd');
  EXPECT_EQ(m.GetRecord(0)->group, 1);  // the clear restarted the numbering
  EXPECT_EQ(m.probes, 2);               // and the next save initialised again
  EXPECT_EQ(m.Undo(), 3);
  EXPECT_EQ(m.text, u"abc");
  EXPECT_TRUE(m.Check());
}

TEST_F(UndoMemoryTest, InnerCloseEndsTheOuterSuspension) {
  TextMemory m;
  m.SetGroupSize(10);
  m.Type(u'a');
  platform_.answers = {-2};
  ASSERT_EQ(m.StartGroup(100, 0), 1);
  m.Type(u'b');  // not recorded
  m.StartGroup(1, 0);
  EXPECT_EQ(m.GetException(), 1);
  EXPECT_EQ(m.CloseGroup(), 0);
  EXPECT_EQ(m.GetException(), 0);  // suspension over, no clear at depth 1
  EXPECT_EQ(m.GetCount(), 1);
  m.Type(u'c');  // recorded again
  EXPECT_EQ(m.CloseGroup(), 1);
  EXPECT_EQ(m.GetCount(), 2);  // nothing cleared at the outer close
  EXPECT_EQ(m.frees, 1);

  // A question inside a group suspends until the inner close only.
  m.StartGroup(1, 0);
  platform_.answers = {-2};
  m.StartGroup(50, 0);
  m.Type(u'x');
  EXPECT_EQ(m.CloseGroup(), 0);
  EXPECT_EQ(m.GetCount(), 2);
  m.Type(u'y');
  EXPECT_EQ(m.CloseGroup(), 1);
  EXPECT_EQ(m.GetCount(), 3);
  EXPECT_EQ(m.text, u"abcxy");
}

TEST_F(UndoMemoryTest, SizeQuestionAnswers) {
  struct Row {
    std::vector<int> answers;  // empty: no box could be shown (2)
    int started;
    int exception;
  };
  const Row rows[] = {{{1}, 1, 0}, {{-2}, 1, 1}, {{-3}, 0, 0}, {{}, 0, 0}, {{-4}, 1, 0}};
  for (const Row& row : rows) {
    TextMemory m;
    m.SetGroupSize(5);
    platform_.boxes.clear();
    platform_.answers.assign(row.answers.begin(), row.answers.end());
    SCOPED_TRACE(row.answers.empty() ? 2 : row.answers[0]);
    EXPECT_EQ(m.StartGroup(6, 0), row.started);
    EXPECT_EQ(m.GetException(), row.exception);
    EXPECT_EQ(m.GetGroupDepth(), row.started);
    ASSERT_EQ(platform_.boxes.size(), 1u);
    EXPECT_EQ(platform_.boxes[0].text, kw::LoadString(2642));
    EXPECT_EQ(platform_.boxes[0].labels.size(), 3u);
    EXPECT_EQ(platform_.boxes[0].pictureId, 1085u);
    if (row.started) m.CloseGroup();
  }
  EXPECT_EQ(asserts_.count(), 0u);

  TextMemory m;
  platform_.boxes.clear();
  m.SetGroupSize(5);
  EXPECT_EQ(m.StartGroup(5, 0), 1);  // at the limit: no question
  m.SetGroupSize(0);
  EXPECT_EQ(m.StartGroup(1000000, 0), 1);  // no limit
  m.SetGroupSize(5);
  m.NotifyUser(0);
  EXPECT_EQ(m.StartGroup(6, 0), 1);  // not notified: recorded without a question
  EXPECT_EQ(m.GetException(), 0);
  EXPECT_TRUE(platform_.boxes.empty());
}

TEST_F(UndoMemoryTest, NoticesForClearAndOverflow) {
  TextMemory m;
  m.Type(u'a');
  m.Clear(0);
  EXPECT_TRUE(platform_.boxes.empty());
  m.Type(u'a');
  m.Clear(1);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].text, kw::LoadString(2644));
  EXPECT_EQ(m.GetCount(), 0);
  EXPECT_EQ(m.frees, 2);
  m.NotifyOverflow();
  ASSERT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(platform_.boxes[1].text, kw::LoadString(2643));
  m.NotifyUser(0);
  m.Clear(1);
  m.NotifyOverflow();
  EXPECT_EQ(platform_.boxes.size(), 2u);
}

// The modified state of the whole memory against undo and redo is followed by the random sequence below.
TEST_F(UndoMemoryTest, ModifiedPerType) {
  TextMemory m;
  m.Type(u'a');
  const uint32_t one[] = {1};
  const uint32_t two[] = {2};
  const uint32_t both[] = {2, 1};
  m.SetModified(0);
  m.Edit(0, 0, u"z", 2);
  EXPECT_EQ(m.GetModified(one, 1), 0);
  EXPECT_EQ(m.GetModified(two, 1), 1);
  EXPECT_EQ(m.GetModified(both, 2), 1);
  EXPECT_EQ(m.GetModified(two, 0), 1);  // n below 1: every type
  m.SetModified(0, two, 1);
  EXPECT_EQ(m.GetModified(), 0);
  m.SetModified(1, one, 1);
  EXPECT_EQ(m.GetModified(one, 1), 1);
  EXPECT_EQ(m.GetModified(two, 1), 0);
  m.Undo();  // undoing a forced state does not unmark it
  EXPECT_EQ(m.GetModified(one, 1), 1);

  TextMemory fresh;
  fresh.SetModified(1);
  ASSERT_EQ(fresh.GetTypeTracks().size(), 1u);
  EXPECT_EQ(fresh.GetTypeTracks()[0].type, 0u);
  EXPECT_EQ(fresh.GetModified(), 1);
  fresh.SetModified(0);
  EXPECT_EQ(fresh.GetModified(), 0);

  TextMemory listed;
  const uint32_t seven[] = {7, 8};
  listed.SetModified(0, seven, 2);  // unmarking creates nothing
  EXPECT_TRUE(listed.GetTypeTracks().empty());
  listed.SetModified(1, seven, 2);
  ASSERT_EQ(listed.GetTypeTracks().size(), 1u);
  EXPECT_EQ(listed.GetTypeTracks()[0].type, 7u);
  EXPECT_EQ(listed.GetModified(seven + 1, 1), 0);
  EXPECT_EQ(listed.GetModified(seven, 1), 1);
}

TEST_F(UndoMemoryTest, ProgressPaneFromTheThresholdAndStopInsideAStep) {
  TextMemory m(100);
  m.StartGroup(99, 0);
  for (int i = 0; i < 99; ++i) m.Type(u'a');
  m.CloseGroup();
  m.StartGroup(150, 0);
  for (int i = 0; i < 150; ++i) m.Type(u'b');
  m.CloseGroup();

  platform_.stopProgressAtStep = 50;
  EXPECT_EQ(m.Undo(), 199);  // stopped after 50 of 150
  ASSERT_EQ(platform_.progressTitles.size(), 1u);
  EXPECT_EQ(platform_.progressTitles[0], u"Undo - Process");
  ASSERT_EQ(platform_.progressSteps.size(), 50u);
  EXPECT_EQ(platform_.progressSteps.front(), 0);  // 100 * 1 / 150
  EXPECT_EQ(platform_.progressSteps.back(), 33);
  EXPECT_EQ(m.GetPos(), 199);
  EXPECT_EQ(m.text, std::u16string(99, u'a') + std::u16string(100, u'b'));

  // Redo from inside the step finishes the step: 50 records, below the threshold.
  EXPECT_EQ(m.Redo(), 248);
  EXPECT_EQ(m.GetPos(), 249);
  EXPECT_EQ(platform_.progressTitles.size(), 1u);

  platform_.stopProgressAtStep = -1;
  EXPECT_EQ(m.Undo(), 99);
  EXPECT_EQ(m.GetPos(), 99);
  EXPECT_EQ(platform_.progressSteps.back(), 100);
  EXPECT_EQ(m.Undo(), 0);  // 99 records: no pane
  EXPECT_EQ(platform_.progressTitles.size(), 2u);
  EXPECT_EQ(m.Redo(), 98);
  EXPECT_EQ(m.Redo(), 248);
  ASSERT_EQ(platform_.progressTitles.size(), 3u);
  EXPECT_EQ(platform_.progressTitles[2], u"Redo - Process");
  EXPECT_EQ(m.text, std::u16string(99, u'a') + std::u16string(150, u'b'));

  TextMemory never(0);
  never.StartGroup(1, 0);
  for (int i = 0; i < 300; ++i) never.Type(u'c');
  never.CloseGroup();
  never.Undo();
  EXPECT_EQ(platform_.progressTitles.size(), 3u);
}

TEST_F(UndoMemoryTest, IdsAndStepDistances) {
  TextMemory m;
  m.SetID(5);
  m.Type(u'a');
  m.SetID(6);
  m.Type(u'b');
  m.StartGroup(2, 7);
  m.Type(u'c');
  m.Type(u'd');
  m.CloseGroup();
  EXPECT_EQ(m.GetID(-1), 7u);
  EXPECT_EQ(m.GetID(1), 6u);
  EXPECT_EQ(m.GetUndoPos(7), 0);
  EXPECT_EQ(m.GetUndoPos(6), 1);
  EXPECT_EQ(m.GetUndoPos(5), 2);
  EXPECT_EQ(m.GetUndoPos(9), -1);
  EXPECT_EQ(m.GetUndoPos(0), -1);
  EXPECT_EQ(m.GetRedoPos(7), -1);
  m.Undo();
  m.Undo();
  EXPECT_EQ(m.GetID(-1), 5u);
  EXPECT_EQ(m.GetUndoPos(5), 0);
  EXPECT_EQ(m.GetUndoPos(7), -1);
  EXPECT_EQ(m.GetRedoPos(6), 0);
  EXPECT_EQ(m.GetRedoPos(7), 1);
  m.Undo();
  EXPECT_EQ(m.GetID(-1), 0u);
  EXPECT_EQ(m.GetRedoPos(7), 2);
  m.Clear(0);
  m.Type(u'e');
  EXPECT_EQ(m.GetID(0), 0u);  // a clear resets the ID
  EXPECT_EQ(asserts_.count(), 0u);
}

class CountingFree : public KwUndoMemory {
 public:
  CountingFree() : KwUndoMemory(0) {}
  int released = 0;

 protected:
  void FreeRecord(tagUNDORECORD& r) override { released += r.data != nullptr; }
};

TEST_F(UndoMemoryTest, ContractBreaksAreReported) {
  TextMemory m;
  m.Type(u'a');
  m.StartGroup(1, 0);
  m.Type(u'b');
  EXPECT_EQ(m.Undo(), -1);
  EXPECT_EQ(m.Redo(), -1);
  EXPECT_EQ(asserts_.count(), 1u);  // redo had nothing to do: no report
  EXPECT_EQ(m.GetPos(), 2);
  m.CloseGroup();
  EXPECT_EQ(m.Undo(), 1);
  EXPECT_EQ(asserts_.count(), 1u);

  EXPECT_EQ(m.GetRecord(2), nullptr);
  EXPECT_EQ(m.GetID(2), 0u);
  EXPECT_EQ(asserts_.count(), 3u);
  EXPECT_EQ(m.CloseGroup(), 0);
  EXPECT_EQ(m.GetGroupDepth(), 0);
  EXPECT_EQ(asserts_.count(), 4u);
  EXPECT_TRUE(asserts_.Fired("KwUndoMemory"));

  asserts_.Clear();
  {
    KwUndoMemory plain(0);  // base release in force: malloc blocks are freed by the memory
    plain.SaveRecord(0, 0, 0, std::malloc(16), 3);
    plain.SaveRecord(0, 0, 0, nullptr, 3);
    EXPECT_EQ(plain.Undo(), -1);  // the base cannot undo
    EXPECT_EQ(plain.GetPos(), 1);
    EXPECT_EQ(plain.Redo(), -1);
    EXPECT_EQ(asserts_.count(), 2u);
  }
  EXPECT_EQ(asserts_.count(), 2u);  // destroyed with records: released by the base

  {
    CountingFree derived;  // overrides FreeRecord and forgets to clear
    derived.SaveRecord(0, 0, 0, nullptr, 0);
  }
  EXPECT_EQ(asserts_.count(), 3u);
}

// Saves, groups, undo, redo and marks in random order against a model of the states in force.
TEST_F(UndoMemoryTest, RandomSequenceFollowsModel) {
  std::mt19937 rng(20261123);
  TextMemory m;
  std::vector<std::u16string> states{u""};  // text after each step
  std::vector<int64_t> inForce{0};          // records in force after each step
  size_t at = 0;                            // current step
  int64_t marked = 0;                       // records in force when marked unmodified
  auto edit = [&] {
    const size_t pos = rng() % (m.text.size() + 1);
    const size_t del = std::min<size_t>(rng() % 3, m.text.size() - pos);
    m.Edit(pos, del, std::u16string(rng() % 3, static_cast<char16_t>(u'a' + rng() % 26)));
  };
  for (int step = 0; step < 5000; ++step) {
    const unsigned op = rng() % 10;
    if (op < 3) {
      edit();
      states.resize(at + 1);
      inForce.resize(at + 1);
      states.push_back(m.text);
      inForce.push_back(inForce[at] + 1);
      ++at;
    } else if (op < 5) {
      const int n = static_cast<int>(rng() % 4);
      m.StartGroup(n, step);
      for (int i = 0; i < n; ++i) {
        if (rng() % 4 == 0) {
          m.StartGroup(1, step);
          edit();
          m.CloseGroup();
        } else {
          edit();
        }
      }
      const int kept = m.CloseGroup();
      EXPECT_EQ(kept, n > 0 ? 1 : 0);
      if (n > 0) {
        states.resize(at + 1);
        inForce.resize(at + 1);
        states.push_back(m.text);
        inForce.push_back(inForce[at] + n);
        ++at;
      }
    } else if (op < 7) {
      const int64_t r = m.Undo();
      EXPECT_EQ(r >= 0, at > 0);
      if (at > 0) --at;
    } else if (op < 9) {
      const int64_t r = m.Redo();
      EXPECT_EQ(r >= 0, at + 1 < states.size());
      if (at + 1 < states.size()) ++at;
    } else {
      m.SetModified(0);
      marked = inForce[at];
    }
    ASSERT_EQ(m.text, states[at]) << step;
    ASSERT_EQ(m.GetPos(), inForce[at]) << step;
    ASSERT_EQ(m.GetCount(), inForce.back()) << step;
    ASSERT_EQ(m.GetModified(), inForce[at] != marked ? 1 : 0) << step;
    ASSERT_TRUE(m.Check()) << step;
  }
  EXPECT_EQ(asserts_.count(), 0u);
}

}  // namespace
