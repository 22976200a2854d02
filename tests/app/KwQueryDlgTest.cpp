#include "app/KwQueryDlg.h"

#include <gtest/gtest.h>

#include "support/TestSupport.h"

namespace {

using kw::KwQueryDlg;

class QueryDlgLayout : public kwtest::PlatformTest {
 protected:
  // Lays out a box as QueryBox would for an unformatted text.
  KwQueryDlg& Lay(const std::u16string& text, uint32_t picture = 0) {
    const size_t bar = text.find(u'|');
    int32_t msgLen = static_cast<int32_t>(bar == std::u16string::npos ? text.size() : bar);
    if (msgLen == 0) msgLen = static_cast<int32_t>(text.size());
    dlg_ = std::make_unique<KwQueryDlg>(u"Message from T", text, msgLen, 0);
    if (picture != 0) dlg_->SetPicture(picture);
    dlg_->OnInitDialog();
    dlg_->OnSetActive();
    return *dlg_;
  }
  std::unique_ptr<KwQueryDlg> dlg_;
};

TEST_F(QueryDlgLayout, ButtonTableForOneToSixButtons) {
  struct Row {
    int width, height, rows;
    std::vector<int> lefts, tops;
  };
  const Row rows[] = {
      {150, 48, 1, {50}, {27}},
      {150, 48, 1, {23, 77}, {27, 27}},
      {174, 48, 1, {7, 62, 117}, {27, 27, 27}},
      {174, 67, 2, {35, 89, 35, 89}, {27, 27, 46, 46}},
      {174, 67, 2, {7, 62, 117, 35, 89}, {27, 27, 27, 46, 46}},
      {174, 67, 2, {7, 62, 117, 7, 62, 117}, {27, 27, 27, 46, 46, 46}},
  };
  std::u16string text = u"Q";
  for (int n = 1; n <= 6; ++n) {
    text += u"|&" + std::u16string(1, static_cast<char16_t>(u'0' + n));
    const auto& u = Lay(text).GetUnits();
    const Row& row = rows[n - 1];
    SCOPED_TRACE(n);
    EXPECT_EQ(dlg_->GetButtonCount(), n);
    EXPECT_EQ(u.buttonWidth, 50);
    EXPECT_EQ(u.width, row.width);
    EXPECT_EQ(u.height, row.height);
    EXPECT_EQ(u.rows, row.rows);
    EXPECT_EQ(u.textHeight, 22);
    ASSERT_EQ(u.buttons.size(), static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(u.buttons[i].left, row.lefts[i]) << i;
      EXPECT_EQ(u.buttons[i].top, row.tops[i]) << i;
      EXPECT_EQ(u.buttons[i].right - u.buttons[i].left, 50);
      EXPECT_EQ(u.buttons[i].bottom - u.buttons[i].top, 14);
    }
    EXPECT_EQ(dlg_->GetLayout().buttonRects.size(), static_cast<size_t>(n));
  }
}

TEST_F(QueryDlgLayout, UnitsBecomePixelsWithTheClientAreaScales) {
  const auto& layout = Lay(u"File a.txt not found").GetLayout();
  EXPECT_EQ(dlg_->GetHScale(), 150);  // 300 px over 200 units
  EXPECT_EQ(dlg_->GetVScale(), 162);  // 244 px over 150 units, rounded down
  // Box 150 x 48 units; the button at (50, 27)-(100, 41); the text at (0, 7)-(148, 22).
  EXPECT_EQ(layout.window.right, 231);
  EXPECT_EQ(layout.window.bottom, 77);
  EXPECT_EQ(layout.buttonRects[0].left, 75);
  EXPECT_EQ(layout.buttonRects[0].top, 43);
  EXPECT_EQ(layout.buttonRects[0].right, 150);
  EXPECT_EQ(layout.buttonRects[0].bottom, 66);
  EXPECT_EQ(layout.textRect.top, 11);
  EXPECT_EQ(layout.textRect.right, 222);
  EXPECT_EQ(layout.textRect.bottom, 35);
  EXPECT_EQ(layout.wrapChars, 37);
}

TEST_F(QueryDlgLayout, HeightIsCappedAt300) {
  std::u16string many;
  for (int i = 0; i < 40; ++i) many += u"a\n";
  auto u = Lay(many + u"|&1|&2|&3|&4").GetUnits();  // two button rows
  EXPECT_EQ(u.lines, 41);
  EXPECT_EQ(u.height, 300);
  EXPECT_EQ(u.textHeight, 265);  // kept as the applications know it, although 255 would fit
  EXPECT_EQ(u.buttons[0].top, 270);
  EXPECT_EQ(u.buttons[3].top, 289);
  EXPECT_EQ(dlg_->GetLayout().window.bottom, 486);

  u = Lay(many + u"|&1").GetUnits();
  EXPECT_EQ(u.height, 300);
  EXPECT_EQ(u.textHeight, 274);
  EXPECT_EQ(u.buttons[0].top, 279);
}

TEST_F(QueryDlgLayout, LongUnbrokenTextWrapsAtTheWidthCap) {
  const std::u16string text(500, u'x');
  auto u = Lay(text).GetUnits();
  EXPECT_EQ(u.longestWord, 500);
  EXPECT_EQ(u.width, 300);
  EXPECT_EQ(u.wrapChars, 74);
  EXPECT_EQ(u.lines, 7);  // 1 + 500 / 74
  EXPECT_EQ(u.textHeight, 70);
  EXPECT_EQ(u.height, 96);

  u = Lay(text, 1105).GetUnits();  // the picture takes 34 units of the line
  EXPECT_EQ(u.margin, 34);
  EXPECT_EQ(u.width, 300);
  EXPECT_EQ(u.wrapChars, 66);
  EXPECT_EQ(u.lines, 8);
  EXPECT_EQ(u.text.left, 34);
  EXPECT_EQ(u.text.right, 298);
  EXPECT_EQ(dlg_->GetLayout().pictureId, 1105u);
}

TEST_F(QueryDlgLayout, LineBreaksAndWrapsCountLines) {
  std::u16string words;
  for (int i = 0; i < 20; ++i) words += u"word ";  // 100 characters
  const auto& u = Lay(words + u"\n" + words).GetUnits();
  EXPECT_EQ(u.width, 300);
  EXPECT_EQ(u.wrapChars, 74);
  EXPECT_EQ(u.lines, 4);  // each half wraps once
  EXPECT_EQ(u.textHeight, 46);
}

TEST_F(QueryDlgLayout, PictureKeepsRoomForItself) {
  const auto& u = Lay(u"Hi", 1050).GetUnits();
  EXPECT_EQ(u.textWidth, 49);    // the least text width: margin + longest word + 7
  EXPECT_EQ(u.width, 150);
  EXPECT_EQ(u.textHeight, 41);   // at least as high as the picture
  EXPECT_EQ(u.height, 67);
}

TEST_F(QueryDlgLayout, LabelWidthIgnoresSurroundingBlanks) {
  auto u = Lay(u"Q|   &Save the changes   |&No").GetUnits();
  EXPECT_EQ(u.widestLabel, 17);
  EXPECT_EQ(u.buttonWidth, 76);
  EXPECT_EQ(u.width, 171);
  EXPECT_EQ(dlg_->GetLayout().labels[0], u"   &Save the changes   ");  // shown as it stands
  u = Lay(u"Q|&No|   &Save the changes   ").GetUnits();  // the last label, ended by the text's end
  EXPECT_EQ(u.widestLabel, 17);
  u = Lay(u"Q|&Overwrite").GetUnits();
  EXPECT_EQ(u.widestLabel, 10);
  EXPECT_EQ(u.buttonWidth, 50);  // 48 is below the least button width
}

TEST_F(QueryDlgLayout, BrokenContracts) {
  KwQueryDlg tooLong(u"c", u"ab", 3, 0);  // message longer than the text
  EXPECT_TRUE(asserts_.Fired("QUERYBOX", 116));

  Lay(u"Q|1|2|3|4|5|6|7");
  EXPECT_TRUE(asserts_.Fired("KwQueryDlg"));
  EXPECT_EQ(dlg_->GetButtonCount(), 6);
  EXPECT_EQ(dlg_->GetLayout().labels.back(), u"6");
}

}  // namespace
