#include "base/CodePages.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>
#include <utility>

#include "support/TestSupport.h"

using namespace kw;

namespace {

// Decodes one byte with the C library's iconv, or -1 when it has no mapping for it.
int IconvByte(const char* codePage, unsigned char byte) {
  iconv_t cd = iconv_open("UTF-16LE", codePage);
  if (cd == reinterpret_cast<iconv_t>(-1)) return -2;
  char in[1] = {static_cast<char>(byte)};
  unsigned char out[4] = {};
  char* inp = in;
  char* outp = reinterpret_cast<char*>(out);
  size_t inLeft = 1, outLeft = sizeof out;
  const size_t r = iconv(cd, &inp, &inLeft, &outp, &outLeft);
  iconv_close(cd);
  if (r == static_cast<size_t>(-1) || outLeft != 2) return -1;
  return out[0] | (out[1] << 8);
}

std::u16string Decode(unsigned codePage, const std::string& bytes) {
  std::u16string out(bytes.size() + 1, u'\0');
  int64_t used = 0, written = 0;
  EXPECT_EQ(DecodeBytes(codePage, bytes.data(), static_cast<int64_t>(bytes.size()), out.data(),
                        static_cast<int64_t>(out.size()), true, &used, &written),
            kErrorSuccess);
  EXPECT_EQ(used, static_cast<int64_t>(bytes.size()));
  out.resize(static_cast<size_t>(written));
  return out;
}

std::string Encode(unsigned codePage, const std::u16string& text, unsigned long flags = 0,
                   const char* defaultChar = nullptr, int* usedDefault = nullptr, uint32_t* error = nullptr) {
  std::string out(3 * text.size() + 1, '\0');
  int len = -5;
  const uint32_t e = Unicode2CodePage(text.data(), out.data(), codePage, static_cast<int>(text.size()), &len,
                                      flags, defaultChar, usedDefault);
  if (error) *error = e;
  else EXPECT_EQ(e, kErrorSuccess);
  out.resize(static_cast<size_t>(len));
  return out;
}

}  // namespace

TEST(CodePages, SingleByteTablesAgreeWithIconv) {
  for (int b = 0; b < 256; ++b) {
    const int ansi = GetUnicodeCodePoint(b, kEncodingAnsi);
    const int ref1252 = IconvByte("CP1252", static_cast<unsigned char>(b));
    ASSERT_NE(ref1252, -2) << "iconv lacks CP1252";
    if (ref1252 == -1) EXPECT_EQ(ansi, b) << "undefined 1252 byte " << b << " is its control character";
    else EXPECT_EQ(ansi, ref1252) << "byte " << b;
    EXPECT_EQ(GetUnicodeCodePoint(b, kEncodingOem), IconvByte("CP437", static_cast<unsigned char>(b)))
        << "byte " << b;
  }
  // And back: every byte of both pages survives a round trip.
  std::string all(256, '\0');
  for (int b = 0; b < 256; ++b) all[b] = static_cast<char>(b);
  for (unsigned cp : {1252u, 0u, 437u, 1u}) EXPECT_EQ(Encode(cp, Decode(cp, all), kNoBestFitChars), all) << cp;
}

TEST(CodePages, CodePointsByEncoding) {
  EXPECT_EQ((std::vector<int>{GetCodePageID(0), GetCodePageID(1), GetCodePageID(2), GetCodePageID(3), GetCodePageID(4)}),
            (std::vector<int>{0, 65001, 1200, 1201, 437}));
  const int unicode[][3] = {// code, encoding, GetUnicodeCodePoint
                            {300, 0, -1},   {300, 2, 300},     {65536, 1, 65536}, {65537, 1, -1},
                            {-1, 4, -1},    {0x80, 0, 0x20AC}, {0x84, 4, 0xE4},   {0x41, 7, -1}};
  for (const auto& row : unicode) EXPECT_EQ(GetUnicodeCodePoint(row[0], row[1]), row[2]) << row[0] << " " << row[1];
  struct Row {
    int code, encoding;
    unsigned long flags;
    const char* defaultChar;
    int expected, used;
  };
  const Row rows[] = {
      {0xE4, 4, kNoBestFitChars, nullptr, 0x84, 0}, {0x20AC, 4, kNoBestFitChars, nullptr, '#', 1},
      {0x20AC, 0, 0, nullptr, 0x80, 0},             {0x1E9E, 3, kNoBestFitChars, nullptr, 0x1E9E, -1},  // itself
      {0x0100, 4, kNoBestFitChars, "?", '?', 1},    {0x0100, 4, 0, "?", 'A', 0},  // best fit
  };
  for (const Row& row : rows) {
    int used = -1;
    EXPECT_EQ(GetCodePageCodePoint(row.code, row.encoding, row.flags, row.defaultChar, &used), row.expected) << row.code;
    EXPECT_EQ(used, row.used) << row.code;
  }
}

TEST(CodePages, CodePointOutOfRangeIsAContractBreak) {
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(GetCodePageCodePoint(70000, 0, 0, nullptr, nullptr), -1);
  EXPECT_EQ(asserts.count(), 1u);
}

TEST(CodePages, DefaultCharacterItsReportAndBestFit) {
  // code page, text, flags, default character, bytes, default used
  const struct {
    unsigned codePage;
    std::u16string text;
    unsigned long flags;
    const char* defaultChar;
    std::string bytes;
    int used;
  } rows[] = {
      {437, u"\u20AC", kNoBestFitChars, nullptr, "#", 1},  // the euro sign has no place in 437
      {437, u"a\u20ACb", kNoBestFitChars, "*", "a*b", 1},
      {437, u"\u00E4\u00DF", kNoBestFitChars, "*", "\x84\xE1", 0},
      {1252, u"x\U0001F600y", 0, nullptr, "x#y", 1},  // outside the BMP: one default character, not two
      {1252, std::u16string(u"a") + char16_t(0xD800) + u"b", 0, nullptr, "a#b", 1},  // a lone surrogate
      // Letters missing in 437 fall back to their base letter, quotes and dashes to ASCII ...
      {437, u"\u00C0\u0142\u201Eok\u201C \u2013 \u00E9", 0, nullptr, "Al\"ok\" - \x82", 0},
      {437, u"\u00C0\u0142\u201E", kNoBestFitChars, nullptr, "###", 1},  // ... unless forbidden
      {1252, u"\u0151\u2212\uFF21\u03A9", 0, nullptr, "o-A#", 1},
  };
  for (const auto& row : rows) {
    int used = -1;
    uint32_t error = 99;
    EXPECT_EQ(Encode(row.codePage, row.text, row.flags, row.defaultChar, &used, &error), row.bytes) << row.bytes;
    EXPECT_EQ(error, kErrorSuccess);
    EXPECT_EQ(used, row.used) << row.bytes;
  }
}

TEST(CodePages, Utf8DropsDefaultCharAndReportAndFlagsAreChecked) {
  int used = 7;
  EXPECT_EQ(Encode(65001, u"\u20AC", 0, "*", &used), "\xE2\x82\xAC");
  EXPECT_EQ(used, 7);  // not touched
  const std::pair<unsigned, unsigned long> refused[] = {
      {65001, kNoBestFitChars}, {437, kErrInvalidChars}, {65000, 0}, {850, 0}};
  const uint32_t errors[] = {kErrorInvalidFlags, kErrorInvalidFlags, kErrorInvalidParameter, kErrorInvalidParameter};
  for (size_t i = 0; i < std::size(refused); ++i) {
    uint32_t error = 0;
    Encode(refused[i].first, u"x", refused[i].second, nullptr, nullptr, &error);
    EXPECT_EQ(error, errors[i]) << refused[i].first;
  }
  char16_t dst[4] = {};
  EXPECT_EQ(CodePage2Unicode("x", dst, 65000, 1), kErrorInvalidParameter);
}

TEST(CodePages, CodePage2UnicodeCopiesExactlyTheConvertedUnits) {
  char16_t dst[8];
  std::fill(std::begin(dst), std::end(dst), u'~');
  EXPECT_EQ(CodePage2Unicode("\xE4\x80", dst, 0, 2), kErrorSuccess);
  EXPECT_EQ(std::u16string(dst, 3), u"\u00E4\u20AC~");
  EXPECT_EQ(CodePage2Unicode("ab", dst, 65001, -1), kErrorSuccess);  // terminator included
  EXPECT_EQ(std::u16string(dst, 4), std::u16string(u"ab\0~", 4));
  EXPECT_EQ(CodePage2Unicode("\x00\x41\x00\xE4", dst, 1201, 4), kErrorSuccess);
  EXPECT_EQ(std::u16string(dst, 2), u"A\u00E4");
  EXPECT_EQ(CodePage2Unicode("\x41\x00\xE4\x00", dst, 1200, 4), kErrorSuccess);
  EXPECT_EQ(std::u16string(dst, 2), u"A\u00E4");
}

TEST(CodePages, Unicode2CodePageSetsLengthAndWritesOnlyOnSuccess) {
  char dst[16];
  std::memset(dst, '~', sizeof dst);
  int len = -1;
  EXPECT_EQ(Unicode2CodePage(u"\u00E4b", dst, 65001, -1, &len, 0, nullptr, nullptr), kErrorSuccess);
  EXPECT_EQ(len, 4);
  EXPECT_EQ(std::string(dst, 5), std::string("\xC3\xA4" "b\0~", 5));
  // Strict UTF-8 refuses a lone surrogate and writes nothing.
  std::memset(dst, '~', sizeof dst);
  const char16_t lone[] = {u'a', 0xD800, u'b'};
  EXPECT_EQ(Unicode2CodePage(lone, dst, 65001, 3, &len, kErrInvalidChars, nullptr, nullptr),
            kErrorNoUnicodeTranslation);
  EXPECT_EQ(len, 0);
  EXPECT_EQ(dst[0], '~');
  // Without the flag it is written in its three-byte form.
  EXPECT_EQ(Unicode2CodePage(lone, dst, 65001, 3, &len, 0, nullptr, nullptr), kErrorSuccess);
  EXPECT_EQ(std::string(dst, len), "a\xED\xA0\x80" "b");
  EXPECT_EQ(Unicode2CodePage(u"\u00E4", dst, 1201, 1, &len, 0, nullptr, nullptr), kErrorSuccess);
  EXPECT_EQ(std::string(dst, len), std::string("\x00\xE4", 2));
}

TEST(CodePages, InvalidUtf8BecomesSurrogateEscapesAndWritesBackByteForByte) {
  struct Row {
    const char* name;
    std::string bytes;
    std::u16string text;
  };
  const Row rows[] = {
      {"stray continuation", "a\x80" "b", u"a\xDC80" u"b"},
      {"truncated two-byte", "a\xC3", u"a\xDCC3"},
      {"two-byte lead before ASCII", "\xC3" "a", u"\xDCC3" u"a"},
      {"truncated three-byte then ASCII", "\xE2\x82" "x", u"\xDCE2\xDC82x"},
      {"overlong slash", "\xC0\xAF", u"\xDCC0\xDCAF"},
      {"overlong three-byte", "\xE0\x80\xAF", u"\xDCE0\xDC80\xDCAF"},
      {"encoded surrogate", "\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},
      {"above U+10FFFF", "\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},
      {"byte FF", "\xFF", u"\xDCFF"},
      {"ANSI umlaut inside UTF-8", "gr\xFC\xC3\xBC", u"gr\xDCFC\u00FC"},
      {"four-byte character", "\xF0\x9F\x98\x80", u"\U0001F600"},
      {"max character", "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Decode(65001, row.bytes), row.text) << row.name;
    EXPECT_EQ(Encode(65001, row.text), row.bytes) << row.name;
    EXPECT_EQ(FromUtf8(row.bytes), row.text) << row.name;
    EXPECT_EQ(ToUtf8(row.text), row.bytes) << row.name;
  }
}

TEST(CodePages, OddUtf16ByteBecomesReplacementCharacter) {
  EXPECT_EQ(Decode(1200, std::string("A\0B", 3)), u"A\uFFFD");
  EXPECT_EQ(Decode(1201, std::string("\0A\0", 3)), u"A\uFFFD");
}

TEST(CodePages, StreamingKeepsSplitSequences) {
  // Every split point of a text with two-, three- and four-byte characters gives the whole text.
  const std::string utf8 = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z";
  const std::u16string expected = u"a\u00E4\u20AC\U0001F600z";
  for (size_t split = 0; split <= utf8.size(); ++split) {
    char16_t out[16];
    int64_t used = 0, written = 0;
    ASSERT_EQ(DecodeBytes(65001, utf8.data(), static_cast<int64_t>(split), out, 16, false, &used, &written), 0u);
    const std::string rest = utf8.substr(static_cast<size_t>(used));
    int64_t used2 = 0, written2 = 0;
    ASSERT_EQ(DecodeBytes(65001, rest.data(), static_cast<int64_t>(rest.size()), out + written, 16 - written,
                          true, &used2, &written2),
              0u);
    EXPECT_EQ(std::u16string(out, static_cast<size_t>(written + written2)), expected) << "split " << split;
  }
  // A UTF-16 byte and a high surrogate at the end of a block wait for the rest.
  char16_t unit[2];
  int64_t used = 0, written = 0;
  EXPECT_EQ(DecodeBytes(1200, "A\0B", 3, unit, 2, false, &used, &written), 0u);
  EXPECT_EQ(used, 2);
  EXPECT_EQ(written, 1);
  char bytes[8];
  const char16_t pair[] = {u'x', 0xD83D, 0xDE00};
  EXPECT_EQ(EncodeUnits(65001, pair, 2, bytes, 8, 0, nullptr, nullptr, false, &used, &written), 0u);
  EXPECT_EQ(used, 1);
  EXPECT_EQ(EncodeUnits(65001, pair + 1, 2, bytes, 8, 0, nullptr, nullptr, false, &used, &written), 0u);
  EXPECT_EQ(std::string(bytes, static_cast<size_t>(written)), "\xF0\x9F\x98\x80");
}

TEST(CodePages, FullDestinationStopsAtAWholeCharacter) {
  char16_t out[2];
  int64_t used = 0, written = 0;
  EXPECT_EQ(DecodeBytes(65001, "a\xF0\x9F\x98\x80", 5, out, 2, true, &used, &written), kErrorInsufficientBuffer);
  EXPECT_EQ(used, 1);
  EXPECT_EQ(written, 1);
  char bytes[3];
  EXPECT_EQ(EncodeUnits(65001, u"a\u20AC", 2, bytes, 3, 0, nullptr, nullptr, true, &used, &written),
            kErrorInsufficientBuffer);
  EXPECT_EQ(used, 1);
  EXPECT_EQ(written, 1);
  EXPECT_EQ(EncodeUnits(65001, u"a\u00E4", 2, bytes, 2, 0, nullptr, nullptr, true, &used, &written),
            kErrorInsufficientBuffer);
  EXPECT_EQ(used, 1);
  EXPECT_EQ(written, 1);
  EXPECT_EQ(EncodeUnits(65001, u"a\u20AC", 2, nullptr, 0, 0, nullptr, nullptr, true, &used, &written), 0u);
  EXPECT_EQ(written, 4);  // counting only
}

namespace {

// Decodes `bytes` byte by byte (every character through the general loop, no block ever full).
std::u16string FedByteByByte(unsigned codePage, const std::string& bytes) {
  std::u16string fed;
  std::string carry;
  for (size_t i = 0; i <= bytes.size(); ++i) {
    const bool final = i == bytes.size();
    if (!final) carry += bytes[i];
    char16_t out[8];
    int64_t used = 0, written = 0;
    EXPECT_EQ(DecodeBytes(codePage, carry.data(), static_cast<int64_t>(carry.size()), out, 8, final, &used,
                          &written),
              kErrorSuccess);
    fed.append(out, static_cast<size_t>(written));
    carry.erase(0, static_cast<size_t>(used));
  }
  return fed;
}

// Decodes `bytes` whole into destinations of `room` units at a time, as a caller with a small buffer
// does; the source is exactly as long as the text (no readable byte behind it for a block to overrun).
std::u16string DecodeInSteps(unsigned codePage, const std::string& bytes, int64_t room) {
  const std::vector<char> exact(bytes.begin(), bytes.end());
  std::u16string all;
  int64_t at = 0;
  for (int guard = 0; at < static_cast<int64_t>(exact.size()) && guard < 100000; ++guard) {
    std::vector<char16_t> out(static_cast<size_t>(room));
    int64_t used = 0, written = 0;
    const uint32_t r = DecodeBytes(codePage, exact.data() + at, static_cast<int64_t>(exact.size()) - at,
                                   out.data(), room, true, &used, &written);
    EXPECT_TRUE(r == kErrorSuccess || r == kErrorInsufficientBuffer) << r;
    all.append(out.data(), static_cast<size_t>(written));
    at += used;
  }
  return all;
}

}  // namespace

// Decoding a text whole (eight or sixteen bytes at a time where it can, two-byte characters at once)
// or in small steps gives what feeding it byte by byte gives, where every character goes through the
// general loop; encoding gives the bytes back.
TEST(CodePages, BlockPathsAgreeWithTheCharacterLoop) {
  // Every kind of character, valid or not, at every offset around the blocks, in long ASCII runs.
  const std::string kinds[] = {"\xC3\xA4", "\xC3", "\x80", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xFF",
                               "\xC3\xA4\xC3\xB6", "\xC2\x7F", "\xDF\xBF", "\xE2\x82", "\xC0\xAF"};
  for (const std::string& kind : kinds) {
    for (size_t at = 0; at < 40; ++at) {
      std::string bytes(48, 'q');
      bytes.insert(at, kind);
      bytes.resize(48);  // also cut inside the character at the end
      for (const unsigned codePage : {65001u, 1252u}) {
        const std::u16string fed = FedByteByByte(codePage, bytes);
        EXPECT_EQ(Decode(codePage, bytes), fed) << codePage << " at " << at;
        EXPECT_EQ(DecodeInSteps(codePage, bytes, 17), fed) << codePage << " at " << at;
      }
    }
  }
  // Random German-like and broken text, short and long enough for many blocks.
  std::mt19937 random(11);
  const std::string pieces[] = {"Stra",  "\xC3\x9F", "e ", "\xC3\xBC", "ber ", "\r\n", "Gr\xC3\xB6\xC3\x9F" "e",
                                "\xE2\x82\xAC", "\xFC", "\x80\xBF", "\xF0\x9F\x98\x80", "0123456789abcdefg",
                                "\xC3", "\xC3\xBF\xC2\xA0", "\xDF", "xyzxyzxyz"};
  for (int round = 0; round < 300; ++round) {
    std::string bytes;
    for (size_t k = (round % 2 ? 20 : 0) + random() % 40; k > 0; --k) bytes += pieces[random() % std::size(pieces)];
    for (const unsigned codePage : {65001u, 1252u, 437u}) {
      const std::u16string fed = FedByteByByte(codePage, bytes);
      EXPECT_EQ(Decode(codePage, bytes), fed) << codePage << " round " << round;
      EXPECT_EQ(DecodeInSteps(codePage, bytes, 16 + static_cast<int64_t>(random() % 20)), fed)
          << codePage << " round " << round;
      EXPECT_EQ(Encode(codePage, fed), bytes) << codePage << " round " << round;
    }
  }
  // Long ASCII runs with one non-ASCII character at every offset, encoded and read back.
  for (size_t at = 0; at < 20; ++at) {
    std::u16string text(24, u'x');
    text[at] = u'\u00F6';
    const std::string utf8 = ToUtf8(text);
    EXPECT_EQ(utf8.size(), 25u);
    EXPECT_EQ(FromUtf8(utf8), text) << at;
    EXPECT_EQ(Decode(1252, Encode(1252, text)), text) << at;
    EXPECT_EQ(Decode(1201, Encode(1201, text)), text) << at;
  }
}

TEST(CodePages, AnsiStringsAndCharacters) {
  EXPECT_EQ(GetAnsiChar(u'\u00DF'), '\xDF');
  EXPECT_EQ(GetAnsiChar(u'\u0394'), '#');  // Greek capital delta: no ANSI byte
  EXPECT_EQ(GetAnsiChar(u'\u201E'), '\x84');
  EXPECT_EQ(GetGenericChar('\x80'), u'\u20AC');
  EXPECT_EQ(GetGenericChar('\x9D'), u'\u009D');
  EXPECT_EQ(GetAnsiString(u"Stra\u00DFe \u20AC"), "Stra\xDF" "e \x80");
  EXPECT_EQ(GetGenericString(std::string("\xC4pfel")), u"\u00C4pfel");
  char buf[8];
  GetAnsiString(u"\u00FCber", buf);
  EXPECT_STREQ(buf, "\xFC" "ber");
  char16_t wide[8];
  GetGenericString("\xFC" "ber", wide);
  EXPECT_EQ(std::u16string(wide), u"\u00FCber");
  const std::u16string s = u"x";
  EXPECT_EQ(&GetWideString(s), &s);
  EXPECT_EQ(&GetGenericString(s), &s);
}

TEST(CodePages, ReencodingThroughUtf16) {
  EXPECT_EQ(ToCodePage("\x84\x94\x81\xE1", 437, 1252), "\xE4\xF6\xFC\xDF");
  EXPECT_EQ(ToCodePage("\xE4\x80", 1252, 65001), "\xC3\xA4\xE2\x82\xAC");
  EXPECT_EQ(ToCodePage("\x80", 1252, 437), "#");
  EXPECT_EQ(ToCodePage("x", 1252, 65000), "");
  // Oem2Ansi: through the 437 bytes, read back as ANSI.
  EXPECT_EQ(Oem2Ansi(u"\u00E4\u20AC"), u"\u201E#");
}

TEST(CodePages, Utf8Length) {
  EXPECT_EQ(utf8len("\xC3\xA4" "A", 3), 2u);
  EXPECT_EQ(utf8len("\xF0\x9F\x98\x80", 4), 1u);
  EXPECT_EQ(utf8len("\xC3\xA4", 1), 1u);
  EXPECT_EQ(utf8len("abc", 0), 0u);
}

class FileEncoding : public kwtest::PlatformTest {
 protected:
  int Guess(const std::string& bytes, unsigned char* lineEnd) {
    const auto path = Temp("guess.txt");
    WriteBytes(path, bytes);
    return GetFileEncoding(path.u16string(), lineEnd);
  }
};

TEST_F(FileEncoding, FromTheByteOrderMarkAlone) {
  struct Row {
    std::string bytes;
    int encoding;
    unsigned char lineEnd;
  };
  const Row rows[] = {
      {"", 0, 13},
      {"x", 0, 13},
      {"\xEF\xBB\xBFline\n", 1, 10},
      {"\xEF\xBB", 0, 13},
      {"\xFF\xFE\xFF\xFE", 2, 13},
      {"\xFE\xFF\x00\x41", 3, 13},
      {"\xFF\xFEx\r\ny\r\n", 2, 13},
      {"a\nb\rc\n", 0, 10},
      {"a\r\nb\r\n", 0, 13},
      // German DOS text: still ANSI, never 4.
      {"Gr\x81\xE1" "e aus K\x94ln, \x84rger\r\n\x8E\x99\x9A\r\n", 0, 13},
      {"Gr\xFC\xDF" "e\n", 0, 10},
      // Only the first thousand bytes count.
      {std::string(999, 'x') + "\r" + std::string(10, '\n'), 0, 13},
      {std::string(998, 'x') + "\r\n\n", 0, 13},
      {std::string(997, 'x') + "\r\n\n", 0, 10},
  };
  for (const Row& row : rows) {
    unsigned char lineEnd = 0;
    EXPECT_EQ(Guess(row.bytes, &lineEnd), row.encoding) << row.bytes.substr(0, 20);
    EXPECT_EQ(lineEnd, row.lineEnd) << row.bytes.substr(0, 20) << " size " << row.bytes.size();
  }
  EXPECT_EQ(Guess("\xEF\xBB\xBF", nullptr), 1);
}

TEST_F(FileEncoding, MissingFileLeavesLineEndAlone) {
  unsigned char lineEnd = 42;
  EXPECT_EQ(GetFileEncoding(Temp("missing.txt").u16string(), &lineEnd), 0);
  EXPECT_EQ(lineEnd, 42);
  EXPECT_EQ(GetFileEncoding(dir_.u16string(), &lineEnd), 0) << "a folder is no file";
  EXPECT_EQ(lineEnd, 42);
}
