#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "base/Text.h"
#include "base/Types.h"
#include "support/TestSupport.h"

using kw::StrConvert;

namespace {

// StrConvert's result and its ok flag.
std::pair<std::u16string, int> Convert(const char16_t* s, int encoding, int unquote, int keepCase) {
  int ok = -1;
  std::u16string out = StrConvert(s, &ok, encoding, unquote, keepCase);
  return {out, ok};
}
using Converted = std::pair<std::u16string, int>;

}  // namespace

TEST(TextConvert, UnquotesReplacesCodesAndUpperCases) {
  EXPECT_EQ(Convert(u"\"abc\"", -1, 1, 1), Converted(u"abc", 1));
  EXPECT_EQ(Convert(u"\"\"", -1, 1, 1), Converted(u"\"\"", 1));  // fewer than 3 characters
  EXPECT_EQ(Convert(u"\"abc\"", -1, 0, 1), Converted(u"\"abc\"", 1));
  EXPECT_EQ(Convert(u"a<#9>b", kw::kEncodingUtf8, 0, 1), Converted(u"a\tb", 1));
  EXPECT_EQ(Convert(u"<#9>", -1, 0, 1), Converted(u"<#9>", 1));  // no encoding: no codes
  EXPECT_EQ(Convert(u"<#8364>x", kw::kEncodingUtf16LE, 0, 0), Converted(u"\u20acX", 1));
  EXPECT_EQ(Convert(u"<#128>", kw::kEncodingAnsi, 0, 1), Converted(u"\u20ac", 1));  // byte 0x80 of 1252
  EXPECT_EQ(Convert(u"<#132>", kw::kEncodingOem, 0, 1), Converted(u"\u00e4", 1));   // byte 0x84 of 437
  EXPECT_EQ(Convert(u"m\u00fcller", -1, 0, 0), Converted(u"M\u00dcLLER", 1));
  EXPECT_EQ(Convert(u"<#300>", kw::kEncodingUtf8, 0, 1), Converted(u"\u012c", 1));
  // Bad sequences clear ok and stay visible; one does not stop the good ones after it.
  EXPECT_EQ(Convert(u"a<#12b", kw::kEncodingUtf8, 0, 1), Converted(u"a<#12b", 0));
  EXPECT_EQ(Convert(u"<#>", kw::kEncodingUtf8, 0, 1), Converted(u"<#>", 0));
  EXPECT_EQ(Convert(u"<#300>", kw::kEncodingAnsi, 0, 1), Converted(u"<#300>", 0));
  EXPECT_EQ(Convert(u"<#99999999999>", kw::kEncodingUtf8, 0, 1), Converted(u"<#99999999999>", 0));
  EXPECT_EQ(Convert(u"<#999><#65>", kw::kEncodingAnsi, 0, 1), Converted(u"<#999>A", 0));
  EXPECT_EQ(StrConvert(u"x", nullptr, 0, 0, 0), u"X");
}

TEST(TextLimitInput, CodeSequencesCountAsOneAndQuotesNotAtAll) {
  auto limit = [](std::u16string s, int max, int quoted) {
    const int cut = kw::LimitInput(s, max, quoted);
    return std::pair<int, std::u16string>(cut, s);
  };
  using Cut = std::pair<int, std::u16string>;
  EXPECT_EQ(limit(u"abcdef", 4, 0), Cut(1, u"abcd"));
  EXPECT_EQ(limit(u"abcd", 4, 0), Cut(0, u"abcd"));
  EXPECT_EQ(limit(u"a<#9>b<#10>cd", 4, 0), Cut(1, u"a<#9>b<#10>"));
  EXPECT_EQ(limit(u"\"abcd\"", 4, 1), Cut(0, u"\"abcd\""));
  EXPECT_EQ(limit(u"\"abcd\"", 3, 1), Cut(1, u"\"abc\""));
  EXPECT_EQ(limit(u"\"abcd\"", 5, 0), Cut(1, u"\"abcd"));  // quotes count without `quoted`
  EXPECT_EQ(limit(u"a<#1", 2, 0), Cut(1, u"a<"));  // unclosed: every character counts
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(limit(u"a<", 0, 0), Cut(0, u"a<"));
  EXPECT_EQ(asserts.count(), 1u);
}

TEST(TextAnsi, LengthsAndFills) {
  EXPECT_EQ(kw::StrLenA("ab \t", 0), 2);
  EXPECT_EQ(kw::StrLenA("ab  x", 4), 2);
  EXPECT_EQ(kw::StrLenA("\x80\xe4 ", 0), 2);
  char buf[5] = "abcd";
  kw::StrSetA(buf, 3, '\xe4');
  EXPECT_EQ(std::string(buf), "\xe4\xe4\xe4" "d");
}

TEST(TextAnsi, CopyModesThroughTheCodePage) {
  char d[12];
  std::memset(d, '~', sizeof d);
  EXPECT_EQ(kw::StrCopyA(d, "\x80uro\xe4", 5, 0), 5);
  EXPECT_EQ(std::string(d, 6), "\x80uro\xe4~");
  std::memset(d, '~', sizeof d);
  EXPECT_EQ(kw::StrCopyA(d, "abcdefg", 0, 3), 8);  // the whole source anyway
  EXPECT_EQ(std::string(d, 9), std::string("abcdefg\0~", 9));
  std::memset(d, '~', sizeof d);
  EXPECT_EQ(kw::StrCopyA(d, "abcdef", 6, 2), 2);
  EXPECT_EQ(std::string(d, 3), "ab~");
  char t[12] = "Nr. *   ";
  EXPECT_EQ(kw::StrCopyA(t, "\xfc\xdf" "9", -3, 0), 3);
  EXPECT_EQ(std::string(t), "Nr. \xfc\xdf" "9 ");
  char none[8] = "abc";
  EXPECT_EQ(kw::StrCopyA(none, "x", -1, 0), 0);
  EXPECT_EQ(std::string(none), "abc");
}

TEST(TextAnsi, EntryFromAnsiText) {
  std::u16string f(5, u'~');
  EXPECT_EQ(kw::StrEntry(f.data(), 5, "\x80 1", 0, 0, 0), 3);
  EXPECT_EQ(f, u"  \u20ac 1");
  EXPECT_EQ(kw::StrEntry(f.data(), 5, "a  b  ", 0, 1, 1), 3);
  EXPECT_EQ(f, u"a b  ");
  EXPECT_EQ(kw::StrEntry(f.data(), 5, "", 0, 1, 0), 0);
  EXPECT_EQ(f, u"     ");
}
