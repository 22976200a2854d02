// The editor's undo memory driven through its document: records, groups, redo, the modified state,
// the progress pane and the record types still to come.
#include "editor/KwEditUndo.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "base/CodePages.h"
#include "editor/KwEditBase.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using kw::KwEditUndo;

class EditUndoTest : public kwtest::PlatformTest {};

TEST_F(EditUndoTest, ResultIsThePositionCutTo32BitsAndSignExtended) {
  struct Row {
    uint64_t position;
    int64_t result;
  };
  const Row rows[] = {{5, 5}, {0x100000005ull, 5}, {0xFFFFFFFFull, -1}, {0x80000000ull, -2147483648LL},
                      {0x7FFFFFFFull, 2147483647}};
  for (const auto& r : rows) {
    kw::tagUNDORECORD record;
    record.position = r.position;
    EXPECT_EQ(KwEditUndo::RecordResult(record), r.result) << r.position;
  }
}

TEST_F(EditUndoTest, TypesOfLaterOperationsAreInternalErrorsForNow) {
  KwEditBase doc;
  doc.AddText(u"abc", 0, 0);
  for (const uint32_t type : {3u, 5u, 11u, 18u, 20u}) {
    asserts_.Clear();
    doc.GetUndo()->SaveRecord(1, 0, 0, nullptr, type);
    EXPECT_EQ(doc.UndoEdit(nullptr), -1) << type;
    EXPECT_EQ(asserts_.count(), 1u) << type;
    EXPECT_EQ(doc.GetAllText(), u"abc");
  }
  // Type 13 has nothing to apply and reports its position.
  doc.GetUndo()->SaveRecord(2, 0, 0, nullptr, 13);
  asserts_.Clear();
  EXPECT_EQ(doc.UndoEdit(nullptr), 2);
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(EditUndoTest, AGroupIsOneStepAndRedoIsDiscardedByANewEdit) {
  KwEditBase doc;
  doc.SetChunkUnits(2);
  doc.InitEdit();
  doc.AddText(u"line\r\n", 1, 0);
  const int64_t group1 = doc.GetUndo()->GetRecord(0)->group;
  EXPECT_EQ(doc.StartUndoGroup(3), 1);
  doc.SelReplaceAt(0, 0, u"A", 1, 1);
  doc.SelReplaceAt(1, 1, u"BC", 2, 1);
  doc.SelReplaceAt(3, 6, nullptr, 0, 1);
  EXPECT_EQ(doc.CloseUndoGroup(), 1);
  EXPECT_EQ(doc.GetAllText(), u"ABCe\r\n");
  auto* undo = doc.GetUndo();
  ASSERT_EQ(undo->GetCount(), 4);
  EXPECT_EQ(undo->GetRecord(1)->group, group1 + 1);
  EXPECT_EQ(undo->GetRecord(3)->group, group1 + 1);
  // An empty group consumes a number but closes with 0.
  doc.StartUndoGroup(1);
  EXPECT_EQ(doc.CloseUndoGroup(), 0);
  int64_t line = -1;
  EXPECT_EQ(doc.UndoEdit(&line), 0);  // the last undone record of the step is the first one
  EXPECT_EQ(doc.GetAllText(), u"line\r\n");
  EXPECT_EQ(line, 0);
  EXPECT_EQ(doc.GetUndoPos(), 1);
  EXPECT_EQ(doc.RedoEdit(&line), 3);
  EXPECT_EQ(doc.GetAllText(), u"ABCe\r\n");
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.CanRedo(), 1);
  doc.SelReplaceAt(0, 0, u"x", 1, 1);
  EXPECT_EQ(doc.CanRedo(), 0);
  EXPECT_EQ(undo->GetCount(), 2);
  EXPECT_EQ(doc.RedoEdit(nullptr), -1);
  // Undo while a group is open is an internal error and does nothing.
  doc.StartUndoGroup(1);
  EXPECT_EQ(doc.UndoEdit(nullptr), -1);
  EXPECT_EQ(asserts_.count(), 1u);
  doc.CloseUndoGroup();
  EXPECT_EQ(doc.GetAllText(), u"xline\r\n");
}

TEST_F(EditUndoTest, ModifiedStateFollowsSaveUndoAndRedo) {
  const std::filesystem::path file = Temp("m.txt");
  WriteBytes(file, "text\r\n");
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(kw::FromUtf8(file.string()), 0, nullptr), 1);
  doc.SetInteractive(0);
  EXPECT_EQ(doc.GetModified(), 0);
  doc.SelReplaceAt(0, 1, u"T", 1, 1);
  EXPECT_EQ(doc.GetModified(), 1);
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetModified(), 0);
  doc.RedoEdit(nullptr);
  EXPECT_EQ(doc.GetModified(), 1);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(doc.GetModified(), 0);
  doc.UndoEdit(nullptr);  // back behind the saved state
  EXPECT_EQ(doc.GetModified(), 1);
  doc.RedoEdit(nullptr);
  EXPECT_EQ(doc.GetModified(), 0);
  // A load starts unmodified with an empty memory.
  doc.SelReplaceAt(0, 0, u"x", 1, 1);
  ASSERT_EQ(doc.ReadFile(kw::FromUtf8(file.string()), 0, nullptr), 1);
  EXPECT_EQ(doc.GetModified(), 0);
  EXPECT_EQ(doc.CanUndo(), 0);
  // Modified without any record (as an encoding change does), then saved.
  doc.SetModified(1);
  EXPECT_EQ(doc.GetModified(), 1);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(doc.GetModified(), 0);
}

// A step of 100 or more records shows the pane; stopping it leaves the position inside the step, and
// the text matches exactly the records undone so far.
TEST_F(EditUndoTest, StoppingTheProgressPaneLeavesThePositionInsideTheStep) {
  KwEditBase doc;
  doc.SetChunkUnits(8);
  doc.InitEdit();
  doc.StartUndoGroup(150);
  std::u16string model;
  for (int i = 0; i < 150; ++i) {
    const char16_t c = static_cast<char16_t>(u'a' + i % 26);
    doc.SelReplaceAt(doc.GetTotalChars(), doc.GetTotalChars(), &c, 1, 1);
    model.push_back(c);
  }
  doc.CloseUndoGroup();
  platform_.stopProgressAtStep = 50;
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetUndoPos(), 100);
  EXPECT_EQ(doc.GetAllText(), model.substr(0, 100));
  ASSERT_EQ(platform_.progressTitles.size(), 1u);
  EXPECT_EQ(platform_.progressTitles[0], u"Undo - Process");
  // The rest of the step is undone by the next undo (100 records: the pane again).
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetTotalChars(), 0);
  EXPECT_EQ(platform_.progressTitles.size(), 2u);
  doc.RedoEdit(nullptr);
  EXPECT_EQ(doc.GetAllText(), model);
  EXPECT_EQ(platform_.progressTitles.back(), u"Redo - Process");
  EXPECT_EQ(doc.Check(), 1);
}

TEST_F(EditUndoTest, AnUnrecordedLargeGroupClearsTheMemoryAtItsClose) {
  KwEditBase doc;
  doc.AddText(u"abc", 1, 0);
  doc.GetUndo()->SetGroupSize(10);
  platform_.answers = {-2};  // do not add to undo
  EXPECT_EQ(doc.StartUndoGroup(11), 1);
  doc.SelReplaceAt(0, 1, u"X", 1, 1);
  EXPECT_EQ(doc.GetUndo()->GetCount(), 1);  // not kept
  doc.CloseUndoGroup();
  EXPECT_EQ(doc.CanUndo(), 0);
  EXPECT_EQ(doc.GetModified(), 1);
  EXPECT_EQ(doc.GetAllText(), u"Xbc");
}

}  // namespace
