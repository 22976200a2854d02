// The library-wide message and question box, and the fixed reports built on it.
//
// A message text carries its own answer buttons after vertical bars:
//   "The output file %s already exists.|&Overwrite|&Append|&Cancel"
// The message is everything before the first "|"; each further "|" ends a button label, the end of the
// text ends the last one, and a "|" as the very last character opens no empty button. "&" marks a
// label's mnemonic, "\n" starts a new line of the message. At most six labels; with none the box has
// one button " OK ". Text that a caller inserts from its user must have its "|" replaced (by U+00A6)
// by the caller: the box cannot tell an inserted bar from a label separator.
//
// Results: the first button returns 1, the button at 0-based index k returns -(k+1) (-2..-6), and 2
// means that no box could be shown (no main window, another box open) or that it was cancelled.
//
// Style: decimal digits. A non-zero units digit sounds the beep of the picture's class; style / 10 is
// the 0-based index of the default button (0..5).
//
// Pictures are groups of three images at id, id+1, id+2, group ids every 5 from 1050 to 1115; 0 = none.
// Their class decides the beep: 1105..1115 stop, 1085..1100 exclamation, every other id asterisk.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "app/StringTable.h"
#include "base/Format.h"
#include "platform/Platform.h"

namespace kw {

// The box with the arguments already captured; both QueryBox overloads end here.
int64_t QueryBoxArgs(const std::u16string& sender, uint32_t helpId, uint32_t pictureId, uint32_t style,
                     std::u16string_view text, std::span<const FormatArg> args);

// `text` is a printf-style format (kw::Format) for `args`; a format the formatter rejects is shown
// as it stands.
template <class... A>
int64_t QueryBox(const std::u16string& sender, uint32_t helpId, uint32_t pictureId, uint32_t style,
                 std::u16string_view text, const A&... args) {
  const FormatArg list[] = {FormatArg(args)..., FormatArg(0)};
  return QueryBoxArgs(sender, helpId, pictureId, style, text, std::span<const FormatArg>(list, sizeof...(A)));
}

// The same with the text taken from the string table.
template <class... A>
int64_t QueryBox(const std::u16string& sender, uint32_t helpId, uint32_t pictureId, uint32_t style,
                 uint32_t textId, const A&... args) {
  const std::u16string text = LoadString(textId);
  return QueryBox(sender, helpId, pictureId, style, std::u16string_view(text), args...);
}

// Boxes open now (0 or 1: boxes never nest).
int QueryBoxesOpen();

// The picture's beep class.
BeepClass QueryBoxBeep(uint32_t pictureId);

// Fixed reports; all pass help id 0 and return QueryBox's result.
int64_t EndOfMemory(const std::u16string& sender, uint64_t limit);  // 1000, picture 1105, beep
// 1001, picture 1095, beep; with `choice` non-zero the buttons "&Go on" (1) and "&Cancel" (-2).
int64_t InternalError(const std::u16string& sender, int choice);
int64_t NotYetImplemented(const std::u16string& sender);  // 1003, picture 1065, silent
int64_t NothingDone(const std::u16string& sender);        // 1004, picture 1050, silent
// The platform's text for its last error code; picture 1090, beep.
int64_t ReportLastError(const std::u16string& sender);
int64_t LowResources(const std::u16string& sender);  // 1006, picture 1105, beep

}  // namespace kw
