// The library's own message and question box. It sizes itself to its text and the number of its
// answer buttons; the whole box (caption, message, labels, default button, picture and every
// rectangle) is computed here and handed to the platform, which only draws it and returns the
// pressed button. Built and run by QueryBox; it lives only for one call.
//
// The layout is computed in units of a 200 x 150 grid laid over the dialog's client area and then
// converted to pixels with the scales of that area (percent, integer arithmetic throughout).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace kw {

// The box layout in grid units, kept for inspection. Rectangles are left, top, right, bottom.
struct QueryDlgUnits {
  int margin = 0;       // room left of the text for the picture: 34 with a picture, else 0
  int widestLabel = 4;  // characters of the widest label (" OK " has 4)
  int buttonWidth = 0;
  int longestWord = 0;  // characters of the longest blank-separated word of the message
  int textWidth = 0;
  int rowWidth = 0;     // width the first button row needs
  int width = 0;        // the box, at least 150
  int wrapChars = 0;    // characters per text line
  int64_t lines = 1;    // text lines the message needs at wrapChars
  int rows = 1;         // button rows: 1, or 2 for more than three buttons
  int textHeight = 0;
  int height = 0;       // the box, at most 300
  BoxRect text;
  std::vector<BoxRect> buttons;
};

class KwQueryDlg {
 public:
  static constexpr uint32_t kDialogId = 1070;       // the dialog resource
  static constexpr uint32_t kTextControlId = 1071;  // the static text
  static constexpr uint32_t kFirstButtonId = 1072;  // six push buttons, 1072..1077
  static constexpr int kMaxButtons = 6;
  // Client area of the dialog resource in pixels: 200 x 150 dialog units at the common dialog font
  // (6 x 13 pixels per 4 x 8 units). A window-system platform with another font gets other scales
  // from the same grid; the console and test platforms draw at this size.
  static constexpr int kClientWidth = 300;
  static constexpr int kClientHeight = 244;
  static constexpr int kGridWidth = 200;
  static constexpr int kGridHeight = 150;
  static constexpr int kMaxExtent = 300;  // the box is never wider or higher than this, in units

  // `caption` is the window title; `text` the formatted message with its labels after "|";
  // `msgLen` the length of the message part as QueryBox settled it (not beyond the text's length).
  KwQueryDlg(std::u16string caption, std::u16string text, int32_t msgLen, WindowId owner);

  void SetHelpID(uint32_t helpId) { m_HelpId = helpId; }
  void SetPicture(uint32_t pictureId) { m_PictureId = pictureId; }
  // The default button, 0-based; an index outside 0..5 is a broken contract but is kept all the same.
  void SetDefaultButton(int32_t index);

  // Lays the box out, shows it through the platform and returns the pressed button's result:
  // 1 for the first button, -(k+1) for the button at index k, 2 when the box was cancelled.
  int64_t DoModal();

  // The two stages of DoModal, public so that the layout can be inspected without showing it.
  void OnInitDialog();  // scales, units, pixels, labels
  void OnSetActive();   // checks and sets the default button

  const QueryBoxLayout& GetLayout() const { return m_Layout; }
  const QueryDlgUnits& GetUnits() const { return m_Units; }
  int GetButtonCount() const { return m_Buttons; }
  int GetHScale() const { return m_HScale; }
  int GetVScale() const { return m_VScale; }

 private:
  BoxRect SetRect(int left, int top, int width, int height) const;  // units to pixels
  void CountButtons();

  std::u16string m_Caption;
  std::u16string m_Text;  // formatted, labels included
  int32_t m_MsgLen;
  WindowId m_Owner;
  uint32_t m_HelpId = 0;
  uint32_t m_PictureId = 0;  // 0 = no picture
  int32_t m_Default = 0;
  int32_t m_HScale = 0;      // pixels per 100 units, horizontally
  int32_t m_VScale = 0;
  int32_t m_Buttons = 1;     // 1..6 once laid out
  QueryDlgUnits m_Units;
  QueryBoxLayout m_Layout;
};

}  // namespace kw
