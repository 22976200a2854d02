// A document in tiny chunks (every edit crosses chunk borders) with a view on it, for the view's tests.
#pragma once

#include <string>

#include "editor/EditTestSupport.h"
#include "editor/KwEditView.h"
#include "support/TestSupport.h"

namespace kwtest {

class EditViewFixture : public PlatformTest {
 protected:
  // Replaces the text (CR ends of line) and puts the caret at the top without a selection.
  void Fill(const std::u16string& text) {
    FillDoc(doc_, text);
    view_.SetSel(0, 0, 0, 0, 0);
  }
  kw::KwEditBase doc_;
  kw::KwEditView view_{&doc_};
};

}  // namespace kwtest
