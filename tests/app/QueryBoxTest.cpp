#include "app/QueryBox.h"

#include <gtest/gtest.h>

#include "support/TestSupport.h"

namespace {

using kw::BeepClass;
using kw::QueryBox;
using Labels = std::vector<std::u16string>;

class QueryBoxTest : public kwtest::PlatformTest {
 protected:
  const kw::QueryBoxLayout& Last() const { return platform_.boxes.back(); }
};

TEST_F(QueryBoxTest, BarsDecideButtonsAndCaption) {
  struct Row {
    std::u16string text;
    std::u16string caption;
    std::u16string message;
    Labels labels;
  };
  const Row rows[] = {
      {u"File x not found", u"Message from File", u"File x not found", {u" OK "}},
      {u"File x not found|", u"Message from File", u"File x not found", {u" OK "}},  // trailing bar
      {u"Save?|&Yes", u"Message from File", u"Save?", {u"&Yes"}},                   // one bar: a message
      {u"Save?|&Yes|&No", u"Question from File", u"Save?", {u"&Yes", u"&No"}},
      {u"Save?|&Yes|&No|", u"Question from File", u"Save?", {u"&Yes", u"&No"}},
      {u"Pick|&A||&B", u"Question from File", u"Pick", {u"&A", u"&A", u"&B"}},  // empty repeats
      {u"Pick||&B", u"Question from File", u"Pick", {u" OK ", u"&B"}},
      // Leading bar: the whole text counts as message, so no bars are counted for the caption.
      {u"|&Go on|&Cancel", u"Message from File", u"", {u"&Go on", u"&Cancel"}},
      {u"", u"Message from File", u"", {u" OK "}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(QueryBox(u"File", 0, 0, 0, row.text), 2);  // the scripted queue is empty: cancelled
    const auto& box = Last();
    SCOPED_TRACE(std::string(row.text.begin(), row.text.end()));
    EXPECT_EQ(box.caption, row.caption);
    EXPECT_EQ(box.message, row.message);
    EXPECT_EQ(box.labels, row.labels);
    EXPECT_EQ(box.text, row.text);
  }
}

TEST_F(QueryBoxTest, TextIdOverloadFormatsAndReturnsEachButton) {
  platform_.answers = {1, -2, -3};
  for (int64_t expected : {1, -2, -3}) {
    EXPECT_EQ(QueryBox(u"File", 0, 1090, 0, 1104, u"out.txt"), expected);
    EXPECT_EQ(Last().caption, u"Question from File");
    EXPECT_EQ(Last().message, u"The output file out.txt already exists.");
    EXPECT_EQ(Last().labels, (Labels{u"&Overwrite", u"&Append", u"&Cancel"}));
  }
  EXPECT_EQ(QueryBox(u"File", 0, 0, 0, 1102, u"a.txt"), 2);  // nothing queued: cancelled
  EXPECT_EQ(Last().text, u"File a.txt not found");
  EXPECT_EQ(Last().labels, Labels{u" OK "});
  EXPECT_EQ(kw::QueryBoxesOpen(), 0);
}

TEST_F(QueryBoxTest, HelpIdOwnerPictureAndDefaultReachTheBox) {
  platform_.activeWindow = 7;
  platform_.answers = {-2};
  EXPECT_EQ(QueryBox(u"Data", 4711, 1085, 10, u"Go?|&Yes|&No"), -2);
  EXPECT_EQ(Last().helpId, 4711u);
  EXPECT_EQ(Last().owner, 7u);
  EXPECT_EQ(Last().pictureId, 1085u);
  EXPECT_EQ(Last().defaultButton, 1);
  EXPECT_TRUE(platform_.beeps.empty());  // units digit 0: silent
  platform_.activeWindow = 0;            // no active window: the box has no owner
  QueryBox(u"Data", 0, 0, 0, u"Go?");
  EXPECT_EQ(Last().owner, 0u);
}

class NestingPlatform : public kw::ScriptedPlatform {
 public:
  int64_t inner = 0;
  int openInside = 0;
  int RunQueryBox(const kw::QueryBoxLayout& box) override {
    openInside = kw::QueryBoxesOpen();
    inner = QueryBox(u"Inner", 0, 1105, 1, u"Nested|&A|&B");
    return ScriptedPlatform::RunQueryBox(box);
  }
};

TEST_F(QueryBoxTest, BoxesNeverNest) {
  NestingPlatform nesting;
  kw::ScopedPlatform scope(nesting);
  nesting.answers = {-2};
  EXPECT_EQ(QueryBox(u"Outer", 0, 0, 1, u"Outer|&A|&B"), -2);
  EXPECT_EQ(nesting.openInside, 1);
  EXPECT_EQ(nesting.inner, 2);
  EXPECT_EQ(nesting.boxes.size(), 1u);  // the inner box showed nothing ...
  EXPECT_EQ(nesting.beeps, std::vector<BeepClass>{BeepClass::Asterisk});  // ... and did not beep
  EXPECT_EQ(kw::QueryBoxesOpen(), 0);
  nesting.answers = {1};
  EXPECT_EQ(QueryBox(u"Outer", 0, 0, 0, u"Again"), 1);  // the counter went back down
}

TEST_F(QueryBoxTest, NoMainWindowShowsNothing) {
  platform_.mainWindow = 0;
  platform_.answers = {1};
  EXPECT_EQ(QueryBox(u"File", 0, 1105, 1, 1102, u"a.txt"), 2);
  EXPECT_EQ(kw::NothingDone(u"File"), 2);
  EXPECT_TRUE(platform_.boxes.empty());
  EXPECT_TRUE(platform_.beeps.empty());
  EXPECT_EQ(kw::QueryBoxesOpen(), 0);
}

TEST_F(QueryBoxTest, RejectedFormatShowsRawText) {
  QueryBox(u"File", 0, 0, 0, u"File %s not found|&Retry|&Stop", 42);  // a number for %s
  EXPECT_EQ(Last().text, u"File %s not found|&Retry|&Stop");
  EXPECT_EQ(Last().message, u"File %s not found");
  QueryBox(u"File", 0, 0, 0, u"Done to 100%");  // a bare "%" at the end
  EXPECT_EQ(Last().message, u"Done to 100%");
  QueryBox(u"File", 0, 0, 0, u"Done to 100%%");  // a valid format is formatted
  EXPECT_EQ(Last().message, u"Done to 100%");
  QueryBox(u"File", 0, 0, 0, u"Line %d of %d", 3);  // too few arguments
  EXPECT_EQ(Last().message, u"Line %d of %d");
}

TEST_F(QueryBoxTest, BarsInInsertedTextAreTheCallersJob) {
  // The box cannot tell an inserted bar from a separator; callers replace "|" by U+00A6 first.
  QueryBox(u"Data", 0, 0, 0, u"Name %s is not valid", u"a|b");
  EXPECT_EQ(Last().caption, u"Message from Data");  // the caption is decided on the raw text
  EXPECT_EQ(Last().message, u"Name a");
  EXPECT_EQ(Last().labels, Labels{u"b is not valid"});
  QueryBox(u"Data", 0, 0, 0, u"Name %s is not valid", u"a\u00A6b");
  EXPECT_EQ(Last().message, u"Name a\u00A6b is not valid");
  EXPECT_EQ(Last().labels, Labels{u" OK "});
}

TEST_F(QueryBoxTest, FormattingGrowthCountsToTheMessageWidth) {
  // The message part is 2 characters raw; the 98 that %s adds make it 100, so the text asks for
  // 200 units of width. Without the growth the box would stay at its least width, 150.
  std::u16string name;
  for (int i = 0; i < 50; ++i) name += u"n ";  // short words: the width comes from the length
  QueryBox(u"Data", 0, 0, 0, u"%s|&A", name);
  EXPECT_EQ(Last().window.right, 200 * 150 / 100 + 6);
}

TEST_F(QueryBoxTest, BeepFollowsThePictureClass) {
  struct Row {
    uint32_t picture;
    BeepClass beep;
  };
  const Row rows[] = {{1105, BeepClass::Stop},        {1110, BeepClass::Stop},        {1115, BeepClass::Stop},
                      {1085, BeepClass::Exclamation}, {1090, BeepClass::Exclamation}, {1100, BeepClass::Exclamation},
                      {1080, BeepClass::Asterisk},    {1050, BeepClass::Asterisk},    {0, BeepClass::Asterisk}};
  for (const auto& row : rows) {
    platform_.beeps.clear();
    QueryBox(u"T", 0, row.picture, 1, u"x");
    EXPECT_EQ(platform_.beeps, std::vector<BeepClass>{row.beep}) << row.picture;
    platform_.beeps.clear();
    QueryBox(u"T", 0, row.picture, 10, u"x|&A|&B");
    EXPECT_TRUE(platform_.beeps.empty()) << row.picture;
  }
}

TEST_F(QueryBoxTest, StyleTensChooseTheDefaultButton) {
  QueryBox(u"T", 0, 1090, 21, u"Which?|&A|&B|&C");
  EXPECT_EQ(Last().defaultButton, 2);
  EXPECT_EQ(platform_.beeps, std::vector<BeepClass>{BeepClass::Exclamation});
  EXPECT_EQ(asserts_.count(), 0u);

  QueryBox(u"T", 0, 0, 60, u"Which?|&A|&B|&C");  // index 6: outside 0..5, no such button
  EXPECT_TRUE(asserts_.Fired("QUERYBOX", 691));
  EXPECT_TRUE(asserts_.Fired("QUERYBOX", 651));
  EXPECT_TRUE(asserts_.Fired("QUERYBOX", 653));
  EXPECT_EQ(Last().defaultButton, -1);
  EXPECT_EQ(kw::QueryBoxesOpen(), 0);

  asserts_.Clear();
  QueryBox(u"T", 0, 0, 40, u"Which?|&A|&B");  // a button of the dialog, but not shown
  EXPECT_FALSE(asserts_.Fired("QUERYBOX", 691));
  EXPECT_TRUE(asserts_.Fired("QUERYBOX", 651));
  EXPECT_FALSE(asserts_.Fired("QUERYBOX", 653));
  EXPECT_EQ(Last().defaultButton, -1);
}

TEST_F(QueryBoxTest, FixedReports) {
  struct Row {
    int64_t (*report)(const std::u16string&);
    uint32_t text;
    uint32_t picture;
    bool beeps;
  };
  const Row rows[] = {{kw::NotYetImplemented, 1003, 1065, false},
                      {kw::NothingDone, 1004, 1050, false},
                      {kw::LowResources, 1006, 1105, true}};
  for (const auto& row : rows) {
    platform_.beeps.clear();
    platform_.answers = {1};
    EXPECT_EQ(row.report(u"Terms"), 1);
    EXPECT_EQ(Last().text, kw::LoadString(row.text));
    EXPECT_EQ(Last().pictureId, row.picture);
    EXPECT_EQ(Last().caption, u"Message from Terms");
    EXPECT_EQ(Last().labels, Labels{u" OK "});
    EXPECT_EQ(Last().helpId, 0u);
    EXPECT_EQ(platform_.beeps.size(), row.beeps ? 1u : 0u) << row.text;
  }

  platform_.beeps.clear();
  kw::EndOfMemory(u"Data", 64000);
  EXPECT_EQ(Last().pictureId, 1105u);
  EXPECT_EQ(Last().message.rfind(u"The application defined limit of 64000 is exhausted.", 0), 0u);
  EXPECT_EQ(platform_.beeps, std::vector<BeepClass>{BeepClass::Stop});

  platform_.answers = {1};
  EXPECT_EQ(kw::InternalError(u"ListCore", 0), 1);
  EXPECT_EQ(Last().text, kw::LoadString(1001));
  EXPECT_EQ(Last().pictureId, 1095u);
  EXPECT_EQ(Last().labels, Labels{u" OK "});
  platform_.answers = {-2};
  EXPECT_EQ(kw::InternalError(u"ListCore", 1), -2);
  EXPECT_EQ(Last().message, kw::LoadString(1001));
  EXPECT_EQ(Last().labels, (Labels{u"&Go on", u"&Cancel"}));
  EXPECT_EQ(Last().caption, u"Question from ListCore");

  platform_.beeps.clear();
  platform_.lastError = 5;
  platform_.errorTexts[5] = u"Access is denied at 100%.";  // shown raw: the format is rejected
  kw::ReportLastError(u"WinApp");
  EXPECT_EQ(Last().text, u"Access is denied at 100%.");
  EXPECT_EQ(Last().pictureId, 1090u);
  EXPECT_EQ(platform_.beeps, std::vector<BeepClass>{BeepClass::Exclamation});
}

}  // namespace
