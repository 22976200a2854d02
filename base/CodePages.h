// Code pages and text encodings: conversion between the library's UTF-16 and the 8-bit and foreign
// forms in which files and older interfaces arrive, and the guess of a file's encoding.
//
// The converter is the library's own, not the operating system's:
//  - code page 1252 (the ANSI page, ids 0 and 1252) and 437 (the OEM page, ids 1 and 437) are
//    table-driven. The five bytes that 1252 leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) map to the
//    control characters U+0081.. of the same value and back, so that any byte sequence read as ANSI
//    is written back byte for byte. Bytes 0x00-0x1F and 0x7F of 437 are the control characters
//    U+0000-U+001F and U+007F (not the graphics that the DOS screen font shows for them).
//  - UTF-8 (65001) and UTF-16 little-endian (1200) and big-endian (1201) are handled directly.
//  - UTF-7 (65000) is not supported: it and every unknown code page give kErrorInvalidParameter.
//
// Bad input never crashes and never loses the valid text around it:
//  - Each byte of an invalid or truncated UTF-8 sequence (also overlong forms, encoded surrogates and
//    values above U+10FFFF) becomes the lone low surrogate U+DC80 + (byte - 0x80), a "surrogate
//    escape". When UTF-16 is encoded to UTF-8, a lone U+DC80..U+DCFF is written back as that raw byte,
//    so that any byte sequence read as UTF-8 is written back byte for byte. Every other lone surrogate
//    is written in its three-byte form, or fails with kErrorNoUnicodeTranslation when kErrInvalidChars
//    is given (which then refuses escapes too).
//  - An odd trailing byte of UTF-16 input becomes U+FFFD.
//
// Characters that code page 1252 or 437 cannot represent: with kNoBestFitChars they become the default
// character ("#" when none is given) and the used-default report is set. Without the flag a best fit is
// tried first (the library's own table, see BestFit in CodePages.cpp): accented Latin letters become
// their base letter (À -> A, ł -> l), typographic quotes, dashes and spaces become their ASCII forms,
// full-width ASCII becomes ASCII, a few signs their look-alike (© -> c, × -> x); then the default.
// A surrogate pair outside the target is one default character. For the UTF-8 and UTF-7 code pages the
// default character and the report are dropped (never read, never written).
//
// Results are the platform's error codes (0 success, 87 invalid parameter, 122 insufficient buffer,
// 1004 invalid flags, 1113 no mapping). Flags allowed: kNoBestFitChars for 1252/437, kErrInvalidChars
// for UTF-8, both (ignored) for UTF-16; anything else is kErrorInvalidFlags.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/Types.h"

namespace kw {

// Code-page identifiers understood by the converter.
inline constexpr unsigned kCodePageAnsi = 0;      // the current ANSI code page (1252)
inline constexpr unsigned kCodePageOemDefault = 1; // the current OEM code page (437)
inline constexpr unsigned kCodePage1252 = 1252;
inline constexpr unsigned kCodePage437 = 437;
inline constexpr unsigned kCodePageUtf16LE = 1200;
inline constexpr unsigned kCodePageUtf16BE = 1201;
inline constexpr unsigned kCodePageUtf7 = 65000;
inline constexpr unsigned kCodePageUtf8 = 65001;

// Conversion flags and error codes, with the platform's values.
inline constexpr unsigned long kNoBestFitChars = 1024;
inline constexpr unsigned long kErrInvalidChars = 0x80;  // fail on a lone surrogate (UTF-8 target)
inline constexpr uint32_t kErrorSuccess = 0;
inline constexpr uint32_t kErrorInvalidParameter = 87;
inline constexpr uint32_t kErrorInsufficientBuffer = 122;
inline constexpr uint32_t kErrorInvalidFlags = 1004;
inline constexpr uint32_t kErrorNoUnicodeTranslation = 1113;

// The code page of an encoding number: 0 -> 0 (ANSI), 1 -> 65001, 2 -> 1200, 3 -> 1201, 4 -> 437.
// Only 0..4 are valid; there is no range check (other numbers give -1).
int GetCodePageID(int encoding);

// Converts `srcLen` bytes (-1: up to and including the zero byte; 0: nothing, success) into `dst`,
// which must hold one unit per source byte. Exactly the converted units are written; a terminator
// only when the source length included one.
uint32_t CodePage2Unicode(const char* src, char16_t* dst, unsigned codePage, int srcLen);
// Converts `srcLen` units (-1: up to and including the zero unit) into `dst`, which must hold the
// result (at most 3 bytes per unit). `*dstLen` (may be null) is 0 first and the bytes written on
// success. `defaultChar` (its first byte; null means "#") and `usedDefault` (may be null; 0 or 1) are
// dropped for 65000/65001. On failure nothing is written.
uint32_t Unicode2CodePage(const char16_t* src, char* dst, unsigned codePage, int srcLen, int* dstLen,
                          unsigned long flags, const char* defaultChar, int* usedDefault);

// Encodings 1..3 with 0 <= code <= 65536: the code itself; encodings 0 and 4 with 0 <= code <= 255: the
// UTF-16 code of that byte; anything else: -1.
int GetUnicodeCodePoint(int code, int encoding);
// `code` must be 0..65536 (else an assertion and -1). Encodings 1..3: the code itself. Otherwise the byte
// (0..255) of the character in the encoding's code page with the given flags and default;
// `usedDefault` (may be null) tells whether it could not be represented. -1 on a conversion error.
int GetCodePageCodePoint(int code, int encoding, unsigned long flags, const char* defaultChar, int* usedDefault);

// One character to / from the ANSI code page (flags 0, default "#").
char GetAnsiChar(char16_t ch);
char16_t GetGenericChar(char ch);

// Whole strings, terminator included, to and from the ANSI code page. The buffer forms write into a
// destination that must hold the whole result (one byte or unit per character, plus the terminator).
void GetAnsiString(const char16_t* src, char* dst);
std::string GetAnsiString(const std::u16string& src);
void GetGenericString(const char* src, char16_t* dst);
std::u16string GetGenericString(const std::string& src);
const std::u16string& GetGenericString(const std::u16string& src);  // identity
const std::u16string& GetWideString(const std::u16string& src);     // identity

// Re-encodes 8-bit text from one code page to another through UTF-16 (flags 0, default "#").
// Empty when a code page is not supported or memory runs out.
std::string ToCodePage(const std::string& s, unsigned fromCodePage, unsigned toCodePage);
// Writes `s` into code page 437 (no best fit, default "#") and reads those bytes back as ANSI.
std::u16string Oem2Ansi(const std::u16string& s);
// Characters in the first `n` bytes of UTF-8 text: every byte that is not 0x80..0xBF counts.
uint64_t utf8len(const char* s, uint64_t n);

// Guesses the encoding of a file from its byte-order mark alone (EF BB BF -> 1, FF FE -> 2, FE FF -> 3,
// else 0; never 4, also for DOS text: callers that want OEM text must ask the user). `lineEnd` (may be
// null) receives 13 when the first 1000 bytes hold at least as many CRs as LFs, else 10. A file that
// cannot be opened gives 0 and leaves `lineEnd` untouched.
int GetFileEncoding(const std::u16string& fileName, unsigned char* lineEnd);

// UTF-8 for terminals, command lines and file names of the operating system. Invalid bytes survive as
// surrogate escapes both ways, so any byte string goes through FromUtf8 and ToUtf8 unchanged.
std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

// ---- Block converters for files and the text buffer ----------------------------------------------
// They convert as much as fits, in whole characters, and say exactly what happened:
// `*srcUsed` / `*dstUsed` receive the bytes or units read and written. The result is 0 when the whole
// source was taken (except an incomplete tail kept back when `final` is false), kErrorInsufficientBuffer
// when the destination filled up first (convert the rest with a new buffer), or another error code with
// nothing meaningful converted. With `final` false, a character split at the end of the source (the
// start of a UTF-8 sequence, an odd UTF-16 byte, a high surrogate) is left unread so that the caller can
// put it before the next block; with `final` true it is converted as bad input (see above).

// Bytes -> UTF-16. `dst` holds `dstCap` units; one unit per source byte always suffices.
uint32_t DecodeBytes(unsigned codePage, const char* src, int64_t srcLen, char16_t* dst, int64_t dstCap,
                     bool final, int64_t* srcUsed, int64_t* dstUsed);
// UTF-16 -> bytes. `dst` holds `dstCap` bytes (3 per unit always suffice); a null `dst` only counts.
// `usedDefault` (may be null) is set to 1 when a default character was written and otherwise left alone,
// so that it can gather over several blocks.
uint32_t EncodeUnits(unsigned codePage, const char16_t* src, int64_t srcLen, char* dst, int64_t dstCap,
                     unsigned long flags, const char* defaultChar, int* usedDefault, bool final,
                     int64_t* srcUsed, int64_t* dstUsed);

}  // namespace kw
