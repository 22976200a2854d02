#include "base/CodePages.h"

#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "base/Assert.h"
#include "base/CodePageTables.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kw {

namespace {

enum class Kind { kAnsi, kOem, kUtf8, kUtf16LE, kUtf16BE, kUnsupported };

Kind KindOf(unsigned codePage) {
  switch (codePage) {
    case kCodePageAnsi:
    case kCodePage1252: return Kind::kAnsi;
    case kCodePageOemDefault:
    case kCodePage437: return Kind::kOem;
    case kCodePageUtf8: return Kind::kUtf8;
    case kCodePageUtf16LE: return Kind::kUtf16LE;
    case kCodePageUtf16BE: return Kind::kUtf16BE;
    default: return Kind::kUnsupported;
  }
}

// A single-byte code page both ways. invariant: for every byte b, fromUnicode[toUnicode[b]] == b
// (both tables are one-to-one), and fromUnicode[c] == 0 for c != 0 means "no byte for c".
struct SingleByte {
  const char16_t* toUnicode;
  unsigned char fromUnicode[65536];

  explicit SingleByte(const char16_t* table) : toUnicode(table), fromUnicode{} {
    for (int b = 255; b > 0; --b) fromUnicode[table[b]] = static_cast<unsigned char>(b);
  }
  bool Find(char16_t c, unsigned char& b) const {
    b = fromUnicode[c];
    return b != 0 || c == 0;
  }
};

const SingleByte& Page(Kind kind) {
  if (kind == Kind::kOem) {
    static const SingleByte oem(detail::Table437());
    return oem;
  }
  static const SingleByte ansi(detail::Table1252());
  return ansi;
}

constexpr uint64_t kHighBits8 = 0x8080808080808080ULL;

// ASCII runs are widened a block at a time: sixteen bytes with SSE2 (every x86-64 has it), eight with
// plain 64-bit words elsewhere. WidenBlock writes kWide units at d, whatever the bytes are, and returns
// the number of ASCII bytes before the first other one (kWide when all are ASCII); the caller keeps the
// units of those and overwrites the rest. Both need kWide readable bytes and kWide writable units.
#if defined(__SSE2__)
constexpr int kWide = 16;

inline int WidenBlock(const unsigned char* s, char16_t* d) {
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_unpacklo_epi8(v, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), _mm_unpackhi_epi8(v, zero));
  const auto high = static_cast<unsigned>(_mm_movemask_epi8(v));
  return high == 0 ? kWide : std::countr_zero(high);
}
#else
constexpr int kWide = 8;

inline int WidenBlock(const unsigned char* s, char16_t* d) {
  // The bytes are read first, so that the compiler need not fear that a store changes them.
  unsigned char bytes[8];
  std::memcpy(bytes, s, 8);
  char16_t units[8];
  for (int k = 0; k < 8; ++k) units[k] = bytes[k];
  std::memcpy(d, units, sizeof units);
  uint64_t w;
  std::memcpy(&w, bytes, 8);
  if ((w & kHighBits8) == 0) return 8;
  if constexpr (std::endian::native == std::endian::little) return std::countr_zero(w & kHighBits8) / 8;
  int k = 0;
  while (bytes[k] < 0x80) ++k;
  return k;
}
#endif

struct ByteSink {
  char* d;
  int64_t cap;
  int64_t o = 0;
  bool Room(int64_t k) const { return d == nullptr || cap - o >= k; }
  void Put(unsigned char b) {
    if (d) d[o] = static_cast<char>(b);
    ++o;
  }
};

// The other way: NarrowBlock writes kWide units at s as bytes at d, whatever the units are, and returns
// the number of ASCII units before the first other one; the caller keeps the bytes of those.
#if defined(__SSE2__)
inline int NarrowBlock(const char16_t* s, char* d) {
  const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
  const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 8));
  const __m128i above = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(a, b));
  // One bit per unit: set when none of its bits above 0x7F is.
  const __m128i asciiA = _mm_cmpeq_epi16(_mm_and_si128(a, above), zero);
  const __m128i asciiB = _mm_cmpeq_epi16(_mm_and_si128(b, above), zero);
  const auto ascii = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(asciiA, asciiB)));
  return ascii == 0xFFFF ? kWide : std::countr_zero(~ascii);
}
#else
inline int NarrowBlock(const char16_t* s, char* d) {
  char16_t units[8];
  std::memcpy(units, s, sizeof units);
  for (int k = 0; k < 8; ++k) d[k] = static_cast<char>(units[k]);
  for (int k = 0; k < 8; ++k)
    if (units[k] >= 0x80) return k;
  return 8;
}
#endif

// Narrows the ASCII run at s[i] into the sink a block at a time while both have room for a block;
// stops at the first other unit (or near the end), which the caller takes one by one.
inline void NarrowAscii(const char16_t* s, int64_t n, int64_t& i, ByteSink& out) {
  if (out.d == nullptr) return;
  while (n - i >= kWide && out.cap - out.o >= kWide) {
    const int k = NarrowBlock(s + i, out.d + out.o);
    i += k;
    out.o += k;
    if (k < kWide) return;
  }
}

inline bool IsHigh(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
inline bool IsLow(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
inline bool IsEscape(char16_t c) { return c >= 0xDC80 && c <= 0xDCFF; }

uint32_t DecodeSingle(Kind kind, const unsigned char* s, int64_t n, char16_t* d, int64_t cap,
                      int64_t* srcUsed, int64_t* dstUsed) {
  // Both pages keep ASCII as it is: runs of it are widened a block at a time, and each other byte
  // goes through the table before the next block is tried.
  const char16_t* table = Page(kind).toUnicode;
  const int64_t m = n < cap ? n : cap;
  int64_t i = 0;
  while (m - i >= kWide) {
    const int ascii = WidenBlock(s + i, d + i);
    // A whole block of ASCII goes on by a constant step, so that the next block's load need not
    // wait for this block's compare.
    if (ascii == kWide) {
      i += kWide;
      continue;
    }
    i += ascii;
    d[i] = table[s[i]];
    ++i;
  }
  for (; i < m; ++i) d[i] = table[s[i]];
  *srcUsed = *dstUsed = m;
  return m < n ? kErrorInsufficientBuffer : kErrorSuccess;
}

uint32_t DecodeUtf8(const unsigned char* s, int64_t n, char16_t* d, int64_t cap, bool final,
                    int64_t* srcUsed, int64_t* dstUsed) {
  int64_t i = 0, o = 0;
  uint32_t result = kErrorSuccess;
  while (i < n) {
    // Fast path: ASCII a block at a time, and the two-byte characters that interrupt it (the
    // umlauts and other Latin letters of European text) decoded in place, so that the loop goes on with
    // the next block; anything else leaves it for the general loop below.
    while (n - i >= kWide && cap - o >= kWide) {
      const int ascii = WidenBlock(s + i, d + o);
      i += ascii;
      o += ascii;
      if (ascii == kWide) continue;
      const unsigned char b = s[i];
      if (b >= 0xC2 && b <= 0xDF && i + 1 < n && (s[i + 1] & 0xC0) == 0x80) {
        d[o++] = static_cast<char16_t>(((b & 0x1F) << 6) | (s[i + 1] & 0x3F));
        i += 2;
        continue;
      }
      break;
    }
    if (i >= n) break;
    if (o >= cap) { result = kErrorInsufficientBuffer; break; }
    const unsigned char b = s[i];
    if (b < 0x80) {
      d[o++] = b;
      ++i;
      continue;
    }
    // Two-byte characters (Latin letters such as the umlauts) without the general checks.
    if (b >= 0xC2 && b <= 0xDF && i + 1 < n && (s[i + 1] & 0xC0) == 0x80) {
      d[o++] = static_cast<char16_t>(((b & 0x1F) << 6) | (s[i + 1] & 0x3F));
      i += 2;
      continue;
    }
    int need;
    uint32_t c;
    unsigned char lo = 0x80, hi = 0xBF;  // allowed range of the first continuation byte
    if (b >= 0xC2 && b <= 0xDF) {
      need = 1;
      c = b & 0x1F;
    } else if (b >= 0xE0 && b <= 0xEF) {
      need = 2;
      c = b & 0x0F;
      if (b == 0xE0) lo = 0xA0;       // overlong
      else if (b == 0xED) hi = 0x9F;  // surrogates
    } else if (b >= 0xF0 && b <= 0xF4) {
      need = 3;
      c = b & 0x07;
      if (b == 0xF0) lo = 0x90;       // overlong
      else if (b == 0xF4) hi = 0x8F;  // above U+10FFFF
    } else {
      d[o++] = static_cast<char16_t>(0xDC00 + b);  // surrogate escape of a byte that starts nothing
      ++i;
      continue;
    }
    int k = 0;
    bool bad = false;
    for (; k < need && i + 1 + k < n; ++k) {
      const unsigned char t = s[i + 1 + k];
      if (k == 0 ? (t < lo || t > hi) : (t & 0xC0) != 0x80) {
        bad = true;
        break;
      }
      c = (c << 6) | (t & 0x3F);
    }
    if (!bad && k < need) {
      if (!final) break;  // the rest of this character comes with the next block
      bad = true;
    }
    if (bad) {
      // Only the lead byte is escaped here; its continuation bytes are escaped one by one in turn.
      d[o++] = static_cast<char16_t>(0xDC00 + b);
      ++i;
      continue;
    }
    if (c >= 0x10000) {
      if (cap - o < 2) { result = kErrorInsufficientBuffer; break; }
      c -= 0x10000;
      d[o++] = static_cast<char16_t>(0xD800 + (c >> 10));
      d[o++] = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      d[o++] = static_cast<char16_t>(c);
    }
    i += need + 1;
  }
  *srcUsed = i;
  *dstUsed = o;
  return result;
}

uint32_t DecodeUtf16(bool bigEndian, const unsigned char* s, int64_t n, char16_t* d, int64_t cap, bool final,
                     int64_t* srcUsed, int64_t* dstUsed) {
  const int64_t pairs = n / 2;
  const int64_t m = pairs < cap ? pairs : cap;
  if (bigEndian) {
    for (int64_t k = 0; k < m; ++k) d[k] = static_cast<char16_t>((s[2 * k] << 8) | s[2 * k + 1]);
  } else {
    for (int64_t k = 0; k < m; ++k) d[k] = static_cast<char16_t>(s[2 * k] | (s[2 * k + 1] << 8));
  }
  int64_t i = 2 * m, o = m;
  uint32_t result = kErrorSuccess;
  if (m < pairs) {
    result = kErrorInsufficientBuffer;
  } else if ((n & 1) && final) {
    if (o < cap) {
      d[o++] = 0xFFFD;
      ++i;
    } else {
      result = kErrorInsufficientBuffer;
    }
  }
  *srcUsed = i;
  *dstUsed = o;
  return result;
}

// Writes one byte when there is room (or only counts when d is null).
uint32_t EncodeSingle(Kind kind, const char16_t* s, int64_t n, ByteSink& out, unsigned long flags,
                      const char* defaultChar, int* usedDefault, bool final, int64_t* srcUsed) {
  // Both pages keep ASCII as it is: runs of it are narrowed a block at a time, and each other unit
  // goes through the table before the next block is tried.
  const SingleByte& page = Page(kind);
  const unsigned char def = defaultChar ? static_cast<unsigned char>(defaultChar[0]) : '#';
  int64_t i = 0;
  uint32_t result = kErrorSuccess;
  for (; i < n; ++i) {
    NarrowAscii(s, n, i, out);
    if (i >= n) break;
    if (!out.Room(1)) { result = kErrorInsufficientBuffer; break; }
    const char16_t c = s[i];
    unsigned char b;
    if (page.Find(c, b)) {
      out.Put(b);
      continue;
    }
    if (IsHigh(c)) {
      if (i + 1 >= n && !final) break;          // its partner comes with the next block
      if (i + 1 < n && IsLow(s[i + 1])) ++i;    // one default for the whole pair
    } else if (!(flags & kNoBestFitChars)) {
      const char fit = detail::BestFit(c);
      if (fit && page.Find(static_cast<unsigned char>(fit), b)) {
        out.Put(b);
        continue;
      }
    }
    out.Put(def);
    if (usedDefault) *usedDefault = 1;
  }
  *srcUsed = i;
  return result;
}

uint32_t EncodeUtf8(const char16_t* s, int64_t n, ByteSink& out, unsigned long flags, bool final,
                    int64_t* srcUsed) {
  int64_t i = 0;
  uint32_t result = kErrorSuccess;
  const bool strict = (flags & kErrInvalidChars) != 0;
  while (i < n) {
    NarrowAscii(s, n, i, out);
    if (i >= n) break;
    const char16_t c = s[i];
    if (c < 0x80) {
      if (!out.Room(1)) { result = kErrorInsufficientBuffer; break; }
      out.Put(static_cast<unsigned char>(c));
      ++i;
    } else if (c < 0x800 && out.d && out.cap - out.o >= 2) {  // Latin letters such as the umlauts
      out.d[out.o] = static_cast<char>(0xC0 | (c >> 6));
      out.d[out.o + 1] = static_cast<char>(0x80 | (c & 0x3F));
      out.o += 2;
      ++i;
    } else if (c < 0x800) {
      if (!out.Room(2)) { result = kErrorInsufficientBuffer; break; }
      out.Put(static_cast<unsigned char>(0xC0 | (c >> 6)));
      out.Put(static_cast<unsigned char>(0x80 | (c & 0x3F)));
      ++i;
    } else if (IsHigh(c) && i + 1 < n && IsLow(s[i + 1])) {
      if (!out.Room(4)) { result = kErrorInsufficientBuffer; break; }
      const uint32_t cp = 0x10000 + ((static_cast<uint32_t>(c) - 0xD800) << 10) + (s[i + 1] - 0xDC00);
      out.Put(static_cast<unsigned char>(0xF0 | (cp >> 18)));
      out.Put(static_cast<unsigned char>(0x80 | ((cp >> 12) & 0x3F)));
      out.Put(static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F)));
      out.Put(static_cast<unsigned char>(0x80 | (cp & 0x3F)));
      i += 2;
    } else if (IsHigh(c) && i + 1 >= n && !final) {
      break;  // its partner comes with the next block
    } else if ((IsHigh(c) || IsLow(c)) && strict) {
      result = kErrorNoUnicodeTranslation;
      break;
    } else if (IsEscape(c)) {
      if (!out.Room(1)) { result = kErrorInsufficientBuffer; break; }
      out.Put(static_cast<unsigned char>(c - 0xDC00));  // a byte that was not UTF-8 goes back as it was
      ++i;
    } else {
      if (!out.Room(3)) { result = kErrorInsufficientBuffer; break; }
      out.Put(static_cast<unsigned char>(0xE0 | (c >> 12)));
      out.Put(static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F)));
      out.Put(static_cast<unsigned char>(0x80 | (c & 0x3F)));
      ++i;
    }
  }
  *srcUsed = i;
  return result;
}

uint32_t EncodeUtf16(bool bigEndian, const char16_t* s, int64_t n, ByteSink& out, int64_t* srcUsed) {
  int64_t m = n;
  if (out.d && (out.cap - out.o) / 2 < n) m = (out.cap - out.o) / 2;
  if (out.d) {
    auto* d = reinterpret_cast<unsigned char*>(out.d + out.o);
    if (bigEndian) {
      for (int64_t k = 0; k < m; ++k) {
        d[2 * k] = static_cast<unsigned char>(s[k] >> 8);
        d[2 * k + 1] = static_cast<unsigned char>(s[k]);
      }
    } else {
      for (int64_t k = 0; k < m; ++k) {
        d[2 * k] = static_cast<unsigned char>(s[k]);
        d[2 * k + 1] = static_cast<unsigned char>(s[k] >> 8);
      }
    }
  }
  out.o += 2 * m;
  *srcUsed = m;
  return m < n ? kErrorInsufficientBuffer : kErrorSuccess;
}

bool FlagsAllowed(Kind kind, unsigned long flags) {
  switch (kind) {
    case Kind::kAnsi:
    case Kind::kOem: return (flags & ~kNoBestFitChars) == 0;
    case Kind::kUtf8: return (flags & ~kErrInvalidChars) == 0;
    default: return (flags & ~(kNoBestFitChars | kErrInvalidChars)) == 0;
  }
}

}  // namespace

uint32_t DecodeBytes(unsigned codePage, const char* src, int64_t srcLen, char16_t* dst, int64_t dstCap,
                     bool final, int64_t* srcUsed, int64_t* dstUsed) {
  int64_t dummyS = 0, dummyD = 0;
  if (!srcUsed) srcUsed = &dummyS;
  if (!dstUsed) dstUsed = &dummyD;
  *srcUsed = *dstUsed = 0;
  const Kind kind = KindOf(codePage);
  if (kind == Kind::kUnsupported || srcLen < 0 || dstCap < 0 || (srcLen > 0 && (!src || !dst)))
    return kErrorInvalidParameter;
  const auto* s = reinterpret_cast<const unsigned char*>(src);
  switch (kind) {
    case Kind::kUtf8: return DecodeUtf8(s, srcLen, dst, dstCap, final, srcUsed, dstUsed);
    case Kind::kUtf16LE: return DecodeUtf16(false, s, srcLen, dst, dstCap, final, srcUsed, dstUsed);
    case Kind::kUtf16BE: return DecodeUtf16(true, s, srcLen, dst, dstCap, final, srcUsed, dstUsed);
    default: return DecodeSingle(kind, s, srcLen, dst, dstCap, srcUsed, dstUsed);
  }
}

uint32_t EncodeUnits(unsigned codePage, const char16_t* src, int64_t srcLen, char* dst, int64_t dstCap,
                     unsigned long flags, const char* defaultChar, int* usedDefault, bool final,
                     int64_t* srcUsed, int64_t* dstUsed) {
  int64_t dummyS = 0, dummyD = 0;
  if (!srcUsed) srcUsed = &dummyS;
  if (!dstUsed) dstUsed = &dummyD;
  *srcUsed = *dstUsed = 0;
  const Kind kind = KindOf(codePage);
  if (kind == Kind::kUnsupported || srcLen < 0 || dstCap < 0 || (srcLen > 0 && !src))
    return kErrorInvalidParameter;
  if (!FlagsAllowed(kind, flags)) return kErrorInvalidFlags;
  ByteSink out{dst, dstCap};
  uint32_t result;
  switch (kind) {
    case Kind::kUtf8: result = EncodeUtf8(src, srcLen, out, flags, final, srcUsed); break;
    case Kind::kUtf16LE: result = EncodeUtf16(false, src, srcLen, out, srcUsed); break;
    case Kind::kUtf16BE: result = EncodeUtf16(true, src, srcLen, out, srcUsed); break;
    default: result = EncodeSingle(kind, src, srcLen, out, flags, defaultChar, usedDefault, final, srcUsed);
  }
  *dstUsed = out.o;
  return result;
}

int GetCodePageID(int encoding) {
  switch (encoding) {
    case kEncodingAnsi: return static_cast<int>(kCodePageAnsi);
    case kEncodingUtf8: return static_cast<int>(kCodePageUtf8);
    case kEncodingUtf16LE: return static_cast<int>(kCodePageUtf16LE);
    case kEncodingUtf16BE: return static_cast<int>(kCodePageUtf16BE);
    case kEncodingOem: return static_cast<int>(kCodePage437);
    default: return -1;
  }
}

uint32_t CodePage2Unicode(const char* src, char16_t* dst, unsigned codePage, int srcLen) {
  if (KindOf(codePage) == Kind::kUnsupported || !src || srcLen < -1) return kErrorInvalidParameter;
  const int64_t n = srcLen == -1 ? static_cast<int64_t>(std::strlen(src)) + 1 : srcLen;
  if (n == 0) return kErrorSuccess;
  if (!dst) return kErrorInvalidParameter;
  return DecodeBytes(codePage, src, n, dst, n, true, nullptr, nullptr);
}

uint32_t Unicode2CodePage(const char16_t* src, char* dst, unsigned codePage, int srcLen, int* dstLen,
                          unsigned long flags, const char* defaultChar, int* usedDefault) {
  if (dstLen) *dstLen = 0;
  const Kind kind = KindOf(codePage);
  if (codePage == kCodePageUtf7 || codePage == kCodePageUtf8) {
    defaultChar = nullptr;
    usedDefault = nullptr;
  }
  if (kind == Kind::kUnsupported || !src || srcLen < -1) return kErrorInvalidParameter;
  if (!FlagsAllowed(kind, flags)) return kErrorInvalidFlags;
  int64_t n = srcLen;
  if (n == -1) {
    n = 0;
    while (src[n]) ++n;
    ++n;
  }
  if (usedDefault) *usedDefault = 0;
  if (n == 0) return kErrorSuccess;
  if (!dst) return kErrorInvalidParameter;
  // Only the strict UTF-8 form can fail half-way; size it first so that a failure writes nothing.
  if (flags & kErrInvalidChars) {
    const uint32_t sized = EncodeUnits(codePage, src, n, nullptr, 0, flags, defaultChar, nullptr, true,
                                       nullptr, nullptr);
    if (sized != kErrorSuccess) return sized;
  }
  int64_t written = 0;
  const uint32_t result = EncodeUnits(codePage, src, n, dst, INT64_MAX, flags, defaultChar, usedDefault,
                                      true, nullptr, &written);
  if (result == kErrorSuccess && dstLen) *dstLen = static_cast<int>(written);
  return result;
}

int GetUnicodeCodePoint(int code, int encoding) {
  if (encoding >= kEncodingUtf8 && encoding <= kEncodingUtf16BE) return code >= 0 && code <= 65536 ? code : -1;
  if ((encoding == kEncodingAnsi || encoding == kEncodingOem) && code >= 0 && code <= 255)
    return Page(encoding == kEncodingOem ? Kind::kOem : Kind::kAnsi).toUnicode[code];
  return -1;
}

int GetCodePageCodePoint(int code, int encoding, unsigned long flags, const char* defaultChar, int* usedDefault) {
  KW_ASSERT(code >= 0 && code <= 65536);
  if (code < 0 || code > 65536) return -1;
  if (encoding >= kEncodingUtf8 && encoding <= kEncodingUtf16BE) return code;
  const int codePage = GetCodePageID(encoding);
  if (codePage < 0) return -1;
  // 65536 is no UTF-16 unit; it cannot be represented in an 8-bit page.
  const char16_t ch = code == 65536 ? char16_t{0xFFFF} : static_cast<char16_t>(code);
  char byte = 0;
  int len = 0;
  if (Unicode2CodePage(&ch, &byte, static_cast<unsigned>(codePage), 1, &len, flags, defaultChar, usedDefault) !=
          kErrorSuccess ||
      len != 1)
    return -1;
  return static_cast<unsigned char>(byte);
}

char GetAnsiChar(char16_t ch) {
  char byte = '#';
  Unicode2CodePage(&ch, &byte, kCodePageAnsi, 1, nullptr, 0, nullptr, nullptr);
  return byte;
}

char16_t GetGenericChar(char ch) { return Page(Kind::kAnsi).toUnicode[static_cast<unsigned char>(ch)]; }

void GetAnsiString(const char16_t* src, char* dst) {
  if (!src || !dst) return;
  Unicode2CodePage(src, dst, kCodePageAnsi, -1, nullptr, 0, nullptr, nullptr);
}

std::string GetAnsiString(const std::u16string& src) {
  std::string out(src.size(), '\0');
  int64_t written = 0;
  EncodeUnits(kCodePageAnsi, src.data(), static_cast<int64_t>(src.size()), out.data(),
              static_cast<int64_t>(out.size()), 0, nullptr, nullptr, true, nullptr, &written);
  out.resize(static_cast<size_t>(written));
  return out;
}

void GetGenericString(const char* src, char16_t* dst) {
  if (!src || !dst) return;
  CodePage2Unicode(src, dst, kCodePageAnsi, -1);
}

std::u16string GetGenericString(const std::string& src) {
  std::u16string out(src.size(), u'\0');
  const char16_t* table = Page(Kind::kAnsi).toUnicode;
  for (size_t i = 0; i < src.size(); ++i) out[i] = table[static_cast<unsigned char>(src[i])];
  return out;
}

const std::u16string& GetGenericString(const std::u16string& src) { return src; }
const std::u16string& GetWideString(const std::u16string& src) { return src; }

std::string ToCodePage(const std::string& s, unsigned fromCodePage, unsigned toCodePage) {
  try {
    std::u16string wide(s.size(), u'\0');
    int64_t units = 0;
    if (DecodeBytes(fromCodePage, s.data(), static_cast<int64_t>(s.size()), wide.data(),
                    static_cast<int64_t>(wide.size()), true, nullptr, &units) != kErrorSuccess)
      return {};
    std::string out(4 * s.size() + 4, '\0');
    int64_t bytes = 0;
    const bool utf = toCodePage == kCodePageUtf8 || toCodePage == kCodePageUtf7;
    if (EncodeUnits(toCodePage, wide.data(), units, out.data(), static_cast<int64_t>(out.size()), 0,
                    utf ? nullptr : "#", nullptr, true, nullptr, &bytes) != kErrorSuccess)
      return {};
    out.resize(static_cast<size_t>(bytes));
    return out;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::u16string Oem2Ansi(const std::u16string& s) {
  try {
    std::string bytes(s.size(), '\0');
    int64_t written = 0;
    if (EncodeUnits(kCodePage437, s.data(), static_cast<int64_t>(s.size()), bytes.data(),
                    static_cast<int64_t>(bytes.size()), kNoBestFitChars, "#", nullptr, true, nullptr,
                    &written) != kErrorSuccess)
      return {};
    bytes.resize(static_cast<size_t>(written));
    return GetGenericString(bytes);
  } catch (const std::bad_alloc&) {
    return {};
  }
}

uint64_t utf8len(const char* s, uint64_t n) {
  if (!s) return 0;
  uint64_t count = 0;
  for (uint64_t i = 0; i < n; ++i) count += (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80;
  return count;
}

int GetFileEncoding(const std::u16string& fileName, unsigned char* lineEnd) {
  std::FILE* file = std::fopen(ToUtf8(fileName).c_str(), "rb");
  if (!file) return kEncodingAnsi;
  unsigned char head[1000];
  const size_t n = std::fread(head, 1, sizeof head, file);
  const bool failed = std::ferror(file) != 0;  // a folder, for one, opens but cannot be read
  std::fclose(file);
  if (failed) return kEncodingAnsi;

  int lf = 0, cr = 0, oemLetters = 0, ansiLetters = 0;
  for (size_t i = 0; i < n; ++i) {
    switch (head[i]) {
      case 10: ++lf; break;
      case 13: ++cr; break;
      case 0x81: case 0x84: case 0x8E: case 0x94: case 0x99: case 0x9A: case 0xE1: ++oemLetters; break;
      case 0xC4: case 0xD6: case 0xDC: case 0xDF: case 0xE4: case 0xF6: case 0xFC: ++ansiLetters; break;
      default: break;
    }
  }
  if (lineEnd) *lineEnd = cr >= lf ? 13 : 10;
  // DOS text would be recognisable by its letters, but a guess is never made: without a byte-order mark
  // the file is ANSI, and callers that want OEM text ask the user.
  const bool looksOem = ansiLetters == 0 && oemLetters > 0;
  (void)looksOem;
  if (n >= 3 && head[0] == 0xEF && head[1] == 0xBB && head[2] == 0xBF) return kEncodingUtf8;
  if (n >= 2 && head[0] == 0xFF && head[1] == 0xFE) return kEncodingUtf16LE;
  if (n >= 2 && head[0] == 0xFE && head[1] == 0xFF) return kEncodingUtf16BE;
  return kEncodingAnsi;
}

std::string ToUtf8(std::u16string_view text) {
  std::string out(3 * text.size(), '\0');
  int64_t written = 0;
  EncodeUnits(kCodePageUtf8, text.data(), static_cast<int64_t>(text.size()), out.data(),
              static_cast<int64_t>(out.size()), 0, nullptr, nullptr, true, nullptr, &written);
  out.resize(static_cast<size_t>(written));
  return out;
}

std::u16string FromUtf8(std::string_view text) {
  std::u16string out(text.size(), u'\0');
  int64_t written = 0;
  DecodeBytes(kCodePageUtf8, text.data(), static_cast<int64_t>(text.size()), out.data(),
              static_cast<int64_t>(out.size()), true, nullptr, &written);
  out.resize(static_cast<size_t>(written));
  return out;
}

}  // namespace kw
