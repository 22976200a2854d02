// Shared fixture of the tests of the editor view's column and line tasks: a document in tiny chunks,
// a view that keeps what it records, and helpers for undo, redo and replay.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "editor/KwEditView.h"
#include "support/TestSupport.h"

namespace kwtest {

// A view that records into a list of formatted lines, as an application's macro recorder would.
class RecordingView : public kw::KwEditView {
 public:
  using kw::KwEditView::KwEditView;
  void RecordEvent(kw::KwRecordEvent* event, int /*flags*/) override { recorded.push_back(event->Format()); }
  std::vector<std::u16string> recorded;
};

class ExecuteTest : public PlatformTest {
 protected:
  // The document holds `text` (CR LF lines) in chunks of 3 units, so that every task crosses chunks.
  void Fill(const std::u16string& text) {
    doc_.SetChunkUnits(3);
    doc_.InitEdit();
    doc_.SetEOLType(13);
    doc_.AddText(text, 0, 0);
    doc_.ResetUndoStack();
  }
  std::u16string Text() { return doc_.GetAllText(); }
  // Undoes one step and checks that the text is `before`, then redoes it and checks `after`.
  void ExpectUndoRedo(const std::u16string& before, const std::u16string& after) {
    ASSERT_TRUE(doc_.CanUndo());
    doc_.UndoEdit(nullptr);
    EXPECT_EQ(Text(), before);
    EXPECT_EQ(doc_.Check(), 1);
    doc_.RedoEdit(nullptr);
    EXPECT_EQ(Text(), after);
    EXPECT_EQ(doc_.Check(), 1);
  }
  // Replays a recorded line on a fresh document holding `text` and returns the result.
  std::u16string Replay(const std::u16string& line, const std::u16string& text) {
    kw::KwEditBase doc;
    doc.SetChunkUnits(3);
    doc.InitEdit();
    doc.SetEOLType(13);
    doc.AddText(text, 0, 0);
    kw::KwEditView view(&doc);
    std::unique_ptr<kw::KwRecordEvent> event = kw::KwEditView::ParseRecordEvent(line);
    if (event == nullptr) return u"<not parsed>";
    view.SetReplaying(1);
    view.ExecuteRecordEvent(event.get());
    return doc.GetAllText();
  }

  kw::KwEditBase doc_;
  RecordingView view_{&doc_};
};

}  // namespace kwtest
