#include "app/QueryBox.h"

#include <algorithm>
#include <climits>

#include "app/KwQueryDlg.h"
#include "app/KwWinApp.h"
#include "platform/Platform.h"

namespace kw {
namespace {

// Boxes open in this process. The library runs on one thread, so a plain counter.
int g_OpenBoxes = 0;

// Keeps the counter right however the box ends.
class OpenBox {
 public:
  OpenBox() { ++g_OpenBoxes; }
  ~OpenBox() { --g_OpenBoxes; }
  OpenBox(const OpenBox&) = delete;
  OpenBox& operator=(const OpenBox&) = delete;
};

constexpr uint32_t kIdsMessageFrom = 1078;   // "Message from %s"
constexpr uint32_t kIdsQuestionFrom = 1079;  // "Question from %s"

}  // namespace

int QueryBoxesOpen() { return g_OpenBoxes; }

BeepClass QueryBoxBeep(uint32_t pictureId) {
  if (pictureId >= 1105 && pictureId <= 1115) return BeepClass::Stop;
  if (pictureId >= 1085 && pictureId <= 1100) return BeepClass::Exclamation;
  return BeepClass::Asterisk;
}

int64_t QueryBoxArgs(const std::u16string& sender, uint32_t helpId, uint32_t pictureId, uint32_t style,
                     std::u16string_view rawText, std::span<const FormatArg> args) {
  Platform& platform = GetPlatform();
  const bool tracing = IsKwWinApp() && GetKwWinApp()->GetTraceMode();
  if (tracing)
    GetKwWinApp()->Trace(u"QueryBox III: pMainWnd = %x Sender=%s Text=%s", platform.GetMainWindow(), sender, rawText);
  if (platform.GetMainWindow() == 0) return 2;
  if (tracing) GetKwWinApp()->Trace(u"QueryBox III: ReferenceCount = %d", g_OpenBoxes);
  if (g_OpenBoxes != 0) return 2;  // boxes never nest
  OpenBox open;

  // The message part ends at the first "|". A text that begins with "|" counts as all message, so
  // its bars make no question of it: "|&Go on|&Cancel" alone is captioned as a message.
  const std::u16string raw(rawText);
  size_t msgLen = std::min(raw.find(u'|'), raw.size());
  if (msgLen == 0) msgLen = raw.size();
  const auto bars = std::count(raw.begin() + static_cast<std::ptrdiff_t>(msgLen), raw.end(), u'|');

  const std::u16string captionFormat = LoadString(bars > 1 ? kIdsQuestionFrom : kIdsMessageFrom);
  std::u16string caption;
  if (!TryFormat(caption, captionFormat, sender)) caption = captionFormat;

  std::u16string text;
  if (!TryFormatArgs(text, raw, args)) text = raw;  // a rejected format is shown as it stands
  // Whatever the formatting added or took away is counted to the message part.
  const int64_t grown = static_cast<int64_t>(text.size()) - static_cast<int64_t>(raw.size());
  const int64_t length = static_cast<int64_t>(msgLen) + grown;

  if (style % 10 != 0) platform.Beep(QueryBoxBeep(pictureId));

  const WindowId owner = platform.GetActiveWindow();
  KwQueryDlg dlg(caption, text, static_cast<int32_t>(std::clamp<int64_t>(length, INT32_MIN, INT32_MAX)), owner);
  dlg.SetHelpID(helpId);
  if (pictureId != 0) dlg.SetPicture(pictureId);
  if (style / 10 != 0) dlg.SetDefaultButton(static_cast<int32_t>(std::min<uint32_t>(style / 10, INT32_MAX)));
  return dlg.DoModal();
}

int64_t EndOfMemory(const std::u16string& sender, uint64_t limit) {
  return QueryBox(sender, 0, 1105, 1, 1000, limit);
}

int64_t InternalError(const std::u16string& sender, int choice) {
  std::u16string text = LoadString(1001);
  if (choice != 0) text += LoadString(1002);
  return QueryBox(sender, 0, 1095, 1, text);
}

int64_t NotYetImplemented(const std::u16string& sender) { return QueryBox(sender, 0, 1065, 0, 1003); }

int64_t NothingDone(const std::u16string& sender) { return QueryBox(sender, 0, 1050, 0, 1004); }

int64_t ReportLastError(const std::u16string& sender) {
  Platform& platform = GetPlatform();
  const std::u16string text = platform.GetErrorText(platform.GetLastError());
  return QueryBox(sender, 0, 1090, 1, text);
}

int64_t LowResources(const std::u16string& sender) { return QueryBox(sender, 0, 1105, 1, 1006); }

}  // namespace kw
