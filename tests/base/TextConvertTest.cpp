#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/Text.h"
#include "base/Types.h"
#include "support/TestSupport.h"

using kw::StrConvert;

TEST(TextConvert, UnquotesReplacesCodesAndUpperCases) {
  int ok = -1;
  EXPECT_EQ(StrConvert(u"\"abc\"", &ok, -1, 1, 1), u"abc");
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(StrConvert(u"\"\"", &ok, -1, 1, 1), u"\"\"");  // fewer than 3 characters
  EXPECT_EQ(StrConvert(u"\"abc\"", &ok, -1, 0, 1), u"\"abc\"");
  EXPECT_EQ(StrConvert(u"a<#9>b", &ok, kw::kEncodingUtf8, 0, 1), u"a\tb");
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(StrConvert(u"<#9>", &ok, -1, 0, 1), u"<#9>");  // no encoding: no codes
  EXPECT_EQ(StrConvert(u"<#8364>x", &ok, kw::kEncodingUtf16LE, 0, 0), u"\u20acX");
  EXPECT_EQ(StrConvert(u"<#128>", &ok, kw::kEncodingAnsi, 0, 1), u"\u20ac");  // byte 0x80 of 1252
  EXPECT_EQ(StrConvert(u"<#132>", &ok, kw::kEncodingOem, 0, 1), u"\u00e4");   // byte 0x84 of 437
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(StrConvert(u"m\u00fcller", &ok, -1, 0, 0), u"M\u00dcLLER");
}

TEST(TextConvert, BadSequencesClearOkAndStayVisible) {
  int ok = 1;
  EXPECT_EQ(StrConvert(u"a<#12b", &ok, kw::kEncodingUtf8, 0, 1), u"a<#12b");
  EXPECT_EQ(ok, 0);
  EXPECT_EQ(StrConvert(u"<#>", &ok, kw::kEncodingUtf8, 0, 1), u"<#>");
  EXPECT_EQ(ok, 0);
  EXPECT_EQ(StrConvert(u"<#300>", &ok, kw::kEncodingAnsi, 0, 1), u"<#300>");
  EXPECT_EQ(ok, 0);
  EXPECT_EQ(StrConvert(u"<#300>", &ok, kw::kEncodingUtf8, 0, 1), u"\u012c");
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(StrConvert(u"<#99999999999>", &ok, kw::kEncodingUtf8, 0, 1), u"<#99999999999>");
  EXPECT_EQ(ok, 0);
  // One bad sequence does not stop the good ones after it.
  EXPECT_EQ(StrConvert(u"<#999><#65>", &ok, kw::kEncodingAnsi, 0, 1), u"<#999>A");
  EXPECT_EQ(ok, 0);
  EXPECT_EQ(StrConvert(u"x", nullptr, 0, 0, 0), u"X");
}

TEST(TextLimitInput, CodeSequencesCountAsOneAndQuotesNotAtAll) {
  std::u16string s = u"abcdef";
  EXPECT_EQ(kw::LimitInput(s, 4, 0), 1);
  EXPECT_EQ(s, u"abcd");
  EXPECT_EQ(kw::LimitInput(s, 4, 0), 0);
  EXPECT_EQ(s, u"abcd");
  s = u"a<#9>b<#10>cd";
  EXPECT_EQ(kw::LimitInput(s, 4, 0), 1);
  EXPECT_EQ(s, u"a<#9>b<#10>");
  s = u"\"abcd\"";
  EXPECT_EQ(kw::LimitInput(s, 4, 1), 0);
  EXPECT_EQ(kw::LimitInput(s, 3, 1), 1);
  EXPECT_EQ(s, u"\"abc\"");
  s = u"\"abcd\"";
  EXPECT_EQ(kw::LimitInput(s, 5, 0), 1);  // quotes count without `quoted`
  EXPECT_EQ(s, u"\"abcd");
  s = u"a<#1";  // unclosed: every character counts
  EXPECT_EQ(kw::LimitInput(s, 2, 0), 1);
  EXPECT_EQ(s, u"a<");
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(kw::LimitInput(s, 0, 0), 0);
  EXPECT_EQ(s, u"a<");
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
