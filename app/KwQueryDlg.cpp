#include "app/KwQueryDlg.h"

#include <algorithm>
#include <utility>

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "base/Text.h"

namespace kw {
namespace {

// The label of a button that has none of its own.
constexpr char16_t kOkLabel[] = u" OK ";

// Longest run of characters between blanks.
int LongestWord(const std::u16string& message) {
  int64_t longest = 0;
  int64_t range[2] = {0, 0};
  for (int64_t field = 0; LimitText(message.c_str(), u" ", field, range, 0, 0) != 0; ++field)
    longest = std::max(longest, range[1] - range[0]);
  return static_cast<int>(std::min<int64_t>(longest, 1 << 20));
}

// Writes a window rectangle to the application's trace, when it traces.
void TraceRect(const char16_t* format, const BoxRect& r) {
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(format, r.top, r.bottom, r.left, r.right);
}

}  // namespace

KwQueryDlg::KwQueryDlg(std::u16string caption, std::u16string text, int32_t msgLen, WindowId owner)
    : m_Caption(std::move(caption)), m_Text(std::move(text)), m_MsgLen(msgLen), m_Owner(owner) {
  KW_ASSERT_AT("QUERYBOX", 116, msgLen >= 0 && static_cast<size_t>(msgLen) <= m_Text.size());
  m_MsgLen = std::clamp<int32_t>(msgLen, 0, static_cast<int32_t>(std::min<size_t>(m_Text.size(), INT32_MAX)));
}

void KwQueryDlg::SetDefaultButton(int32_t index) {
  KW_ASSERT_AT("QUERYBOX", 691, index >= 0 && index < kMaxButtons);
  m_Default = index;
}

int64_t KwQueryDlg::DoModal() {
  OnInitDialog();
  OnSetActive();
  return GetPlatform().RunQueryBox(m_Layout);
}

BoxRect KwQueryDlg::SetRect(int left, int top, int width, int height) const {
  // Edges are converted, not sizes, so that rectangles that touch in units touch in pixels.
  BoxRect r;
  r.left = left * m_HScale / 100;
  r.top = top * m_VScale / 100;
  r.right = (left + width) * m_HScale / 100;
  r.bottom = (top + height) * m_VScale / 100;
  TraceRect(u"QueryDlg.SetRect: Window top=%d bottom=%d left=%d right=%d", r);
  return r;
}

// Labels follow the first "|". Each "|" and the text's last character close a label, so a "|" as
// the very last character opens no empty button. A label's length runs from its first non-blank to
// its last character that is neither blank nor "|".
void KwQueryDlg::CountButtons() {
  int64_t count = 0, widest = 4;
  const size_t n = m_Text.size();
  const size_t bar = m_Text.find(u'|');
  if (bar != std::u16string::npos) {
    size_t start = bar + 1;
    for (size_t i = start; i < n; ++i) {
      if (m_Text[i] != u'|' && i != n - 1) continue;
      ++count;
      size_t first = start;
      while (first <= i && m_Text[first] == u' ') ++first;
      size_t end = i + 1;
      while (end > first && (m_Text[end - 1] == u' ' || m_Text[end - 1] == u'|')) --end;
      widest = std::max<int64_t>(widest, static_cast<int64_t>(end - first));
      start = i + 1;
    }
  }
  KW_ASSERT(count <= kMaxButtons);  // at most six labels may be given
  m_Buttons = static_cast<int32_t>(std::clamp<int64_t>(count, 1, kMaxButtons));
  m_Units.widestLabel = static_cast<int>(std::min<int64_t>(widest, 1 << 20));
}

void KwQueryDlg::OnInitDialog() {
  m_HScale = kClientWidth * 100 / kGridWidth;
  m_VScale = kClientHeight * 100 / kGridHeight;
  QueryDlgUnits& u = m_Units;
  u = QueryDlgUnits{};

  u.margin = m_PictureId != 0 ? 34 : 0;
  const std::u16string message = StrPart(m_Text, 0, u'|');
  CountButtons();
  u.buttonWidth = std::max(u.widestLabel * 4 + 8, 50);
  u.longestWord = LongestWord(message);

  int64_t tw = u.margin + int64_t{m_MsgLen} * 2;
  tw = std::max<int64_t>(tw, u.margin + int64_t{u.longestWord} * 4 + 7);
  u.textWidth = static_cast<int>(std::min<int64_t>(tw, kMaxExtent));

  const int perRow = std::min(m_Buttons, 3);
  u.rowWidth = (perRow - 1) * (u.buttonWidth + 5) + u.buttonWidth + 14;
  u.width = std::max({u.textWidth, u.rowWidth, 150});
  u.wrapChars = (u.width - u.margin - 2) / 4;

  // A line break adds a line plus the lines its run of characters wraps into.
  int64_t lines = 1, run = 0;
  for (char16_t ch : message) {
    if (ch == u'\n') {
      lines += 1 + run / u.wrapChars;
      run = 0;
    } else {
      ++run;
    }
  }
  lines += run / u.wrapChars;
  u.lines = lines;

  u.rows = m_Buttons > 3 ? 2 : 1;
  const int64_t th = std::max<int64_t>(lines * 8 + 14, u.margin + 7);
  const int R = u.rows;
  int64_t height = th + R * 14 + 5 + (R - 1) * 5 + 7;
  if (height > kMaxExtent) {
    height = kMaxExtent;
    // The (R - 1) * 5 is added here although the height subtracts it: a two-row box capped at 300
    // gets a text height of 265. Boxes of the applications are measured on this; keep it.
    u.textHeight = 295 - R * 14 + (R - 1) * 5 - 7;
  } else {
    u.textHeight = static_cast<int>(th);
  }
  u.height = static_cast<int>(height);

  // Button centres, row by row.
  const int half = u.width / 2, bw = u.buttonWidth, d = bw + 5;
  const std::vector<int> two = {half - d / 2, half + d / 2};
  const std::vector<int> three = {half - bw - 5, half, half + bw + 5};
  std::vector<std::pair<int, int>> centres;  // centre, row (1 or 2)
  auto addRow = [&](const std::vector<int>& row, int number) {
    for (int c : row) centres.emplace_back(c, number);
  };
  switch (m_Buttons) {
    case 1: centres.emplace_back(half, 1); break;
    case 2: addRow(two, 1); break;
    case 3: addRow(three, 1); break;
    case 4: addRow(two, 1), addRow(two, 2); break;
    case 5: addRow(three, 1), addRow(two, 2); break;
    default: addRow(three, 1), addRow(three, 2); break;
  }

  m_Layout = QueryBoxLayout{};
  m_Layout.caption = m_Caption;
  m_Layout.text = m_Text;
  m_Layout.message = message;
  m_Layout.pictureId = m_PictureId;
  m_Layout.helpId = m_HelpId;
  m_Layout.owner = m_Owner;
  m_Layout.wrapChars = u.wrapChars;
  m_Layout.window = {0, 0, m_HScale * u.width / 100 + 6, m_VScale * u.height / 100};
  TraceRect(u"QueryDlg.OnInitDialog: Window top=%d bottom=%d left=%d right=%d", m_Layout.window);
  // The platform centres the box over its owner when it shows it; the rectangle handed over is the
  // one at the origin, so that is what the centred trace line can name.
  TraceRect(u"QueryDlg.OnInitDialog: Centered Window top=%d bottom=%d left=%d right=%d", m_Layout.window);

  u.text = {u.margin, 7, u.width - 2, u.textHeight};
  m_Layout.textRect = SetRect(u.margin, 7, u.width - u.margin - 2, u.textHeight - 7);

  // An empty label repeats the one before it; the first falls back to " OK ".
  std::u16string label = kOkLabel;
  for (int i = 0; i < m_Buttons; ++i) {
    const auto [centre, row] = centres[static_cast<size_t>(i)];
    const int left = centre - bw / 2, top = u.textHeight + (row - 1) * 19 + 5;
    u.buttons.push_back({left, top, left + bw, top + 14});
    m_Layout.buttonRects.push_back(SetRect(left, top, bw, 14));
    std::u16string part = StrPart(m_Text, i + 1, u'|');
    if (!part.empty()) label = std::move(part);
    m_Layout.labels.push_back(label);
  }
}

void KwQueryDlg::OnSetActive() {
  KW_ASSERT_AT("QUERYBOX", 651, m_Default >= 0 && m_Default < m_Buttons);
  KW_ASSERT_AT("QUERYBOX", 653, m_Default >= 0 && m_Default < kMaxButtons);  // the button exists
  // A default beyond the shown buttons would be a hidden button: the box then has no default.
  m_Layout.defaultButton = m_Default >= 0 && m_Default < m_Buttons ? m_Default : -1;
  TraceRect(u"QueryDlg.OnSetActive: Window top=%d bottom=%d left=%d right=%d", m_Layout.window);
}

}  // namespace kw
