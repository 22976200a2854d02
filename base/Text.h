// Text functions on UTF-16: case mapping, the library collation, searching and matching with
// wildcards, fixed-width tables, fields of delimited lines, copying into fixed fields, padding,
// wrapping and the small conversions of user-typed values.
//
// Every function is stateless and re-entrant. A character is one UTF-16 unit (no surrogate pairs
// are treated specially); a "blank" is U+0020 only unless a function says otherwise. Positions and
// lengths are signed 64-bit and count from 0. A broken calling contract (negative start, width below
// 1, a full table, null where text is required) raises KW_ASSERT and the function then returns the
// fallback named at its declaration.
//
// The collation of StrCompare is the one text order of the library: sorted lists, key searches and
// table sorts all rely on it, so its rules (umlauts expanded, case only as tie-break) are fixed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kw {

// ---------------------------------------------------------------------------------------------
// Case mapping and comparison keys

// "a".."z" and U+00E0..U+00FE map 32 codes lower; everything else is returned unchanged, so
// U+00F7 becomes U+00D7 and U+00DF, U+00FF and all letters above U+00FF stay as they are. When
// `encoding` points to 4 (OEM code page 437), a mapped letter that has no place in that code page is
// refused and `ch` is returned.
char16_t ToUpper(char16_t ch, int* encoding = nullptr);
// "A".."Z" and U+00C0..U+00DE map 32 codes higher, with the same code-page check.
char16_t ToLower(char16_t ch, int* encoding = nullptr);
// In place on positions from..to-1; `to` below 1 means the whole length (positions past the end
// are ignored).
void ToUpper(std::u16string& s, int from, int to, int* encoding);
void ToLower(std::u16string& s, int from, int to, int* encoding);
// The same on a zero-terminated buffer; `to` below 1 means its length up to the zero.
void ToUpper(char16_t* s, int64_t from, int64_t to, int* encoding);
void ToLower(char16_t* s, int64_t from, int64_t to, int* encoding);
// The per-character key of StrFind, StrMatch and StrReplace: `ch` itself when `caseSensitive` is
// non-zero, else ToUpper(ch).
char16_t ToCompare(char16_t ch, int caseSensitive);

// ---------------------------------------------------------------------------------------------
// Comparison, search and match

// The library collation; returns -1, 0 or 1. The primary order is case-blind with "_" read as a
// space, "Ä Ö Ü ä ö ü" expanded to "AE OE UE ae oe ue" and "ß" to "sz"; between texts that are equal
// in it, the first differing raw character decides (upper-cased unless `caseSensitive`), so a raw
// umlaut ranks after the plain letter of its expansion ("Müller" > "Mueller"). With `numeric`, texts
// read by GetDouble (comma as point) as numbers sort before all other texts and by value (1e-7
// tolerance). `skipLeadingBlanks` ignores leading U+0020. Lengths below 1 mean an empty text.
// Allocation-free.
int StrCompare(const char16_t* a, int64_t lenA, const char16_t* b, int64_t lenB, int caseSensitive, int numeric,
               int skipLeadingBlanks);
int StrCompare(const std::u16string& a, const std::u16string& b, int caseSensitive, int numeric,
               int skipLeadingBlanks);

// Finds `pattern` in text[start .. start+count-1]; returns its position or -1, and its length in
// `foundLen` (may be null). Without `wildcards` the comparison is exact through ToCompare and a
// `patLen` below 1 returns `start`. With `wildcards`, "*" splits the pattern into pieces found in order
// (each leftmost, "?" matching any one character); the result is the first piece's position and
// `foundLen` reaches to the end of the last piece. A pattern of "*" only is a contract error (-1).
int64_t StrFind(const char16_t* text, int64_t start, int64_t count, const char16_t* pattern, int64_t patLen,
                int caseSensitive, int wildcards, int64_t* foundLen);
// The same from `start` to the end of `text`.
int64_t StrFind(const std::u16string& text, const std::u16string& pattern, int caseSensitive, int wildcards,
                int64_t start, int64_t* foundLen);
// 1 when the whole `text` matches `pattern` ("*" any run, also empty; "?" exactly one character).
int StrMatch(const std::u16string& pattern, const std::u16string& text, int caseSensitive);

// Search (and insert) in a fixed-width table: `capacity` records of exactly `width` characters, no
// terminators, records 1..*count in use. Records compare over `width` characters like wcsncmp, or,
// when `caseSensitive` is 0, like _wcsnicmp in the C locale ("A".."Z" folded to "a".."z").
//   mode 1: linear, 0 if absent       mode 3: linear, append if absent
//   mode 4: binary, 0 if absent       mode 6: binary, insert at the sorted place if absent
// Returns the 1-based record number, or 0. Inserting into a full table is a contract error: 0 and
// the table and *count unchanged. Binary modes need a table sorted by the same comparison.
int64_t SeekString(char16_t* const table, int64_t capacity, int64_t* count, const char16_t* key, int64_t width,
                   unsigned mode, int caseSensitive);

// Finds field `field` (0-based) of the zero-terminated `text`, storing its start and end
// (exclusive) in range[0] and range[1]. `exact` 0: runs of delimiters separate words and leading
// delimiters open no field. `exact` non-zero: every delimiter ends a field, so empty fields count
// and an empty text holds one empty field. A non-zero `quote` toggles an inside-quotes state in
// which delimiters are ordinary; quotes stay in the field. `quote` must not be a delimiter (contract
// error; quoting is then off). Returns 1 when the field exists, else 0 with `range` untouched.
int LimitText(const char16_t* text, const char16_t* delimiters, int64_t field, int64_t* range, int exact,
              char16_t quote);

// First position >= `start` holding `ch`, or std::u16string::npos (all ones). A negative start is
// a contract error (npos).
size_t FindChar(const std::u16string& s, char16_t ch, int start);
// Occurrences of `ch` outside quotes; a `quote` of 0 means no quoting, otherwise each `quote`
// toggles the inside-quotes state (and is itself not counted).
int64_t StrCountOf(const std::u16string& s, char16_t ch, char16_t quote);
// The first of `candidates` (in their order) that occurs in `s` outside quotes, or 0. Used to guess
// the column delimiter of a line from candidates such as tab, semicolon, comma.
char16_t StrDelimOf(const std::u16string& s, const std::u16string& candidates, char16_t quote);

// ---------------------------------------------------------------------------------------------
// Copying, padding and cutting. The forms ending in A take 8-bit text in the ANSI code page.

// Characters before the terminating zero (0 for null).
int64_t StrSize(const char16_t* s);
// Length without trailing spaces, tabs and zero characters.
int64_t StrLen(const std::u16string& s);
// The same on a buffer of `len` characters; `len` below 1 means up to the terminating zero.
int64_t StrLen(const char16_t* s, int64_t len);
int64_t StrLenA(const char* s, int64_t len);
// Fills `n` characters with `ch`, no terminator.
void StrSet(char16_t* s, int64_t n, char16_t ch);
void StrSetA(char* s, int64_t n, char ch);

// Copies into a buffer and returns the characters written.
//  n > 0: exactly n characters (no terminator), at most dstLimit when dstLimit > 0.
//  n < 0: `dst` is a zero-terminated template; -n characters go to its first "*" (at most
//         dstLimit - that offset when dstLimit > 0). Without a "*" nothing is copied (0).
//  n = 0: up to and including the zero; the count includes the zero. With dstLimit >= 1 the copy
//         first runs within dstLimit characters; when the zero is not met there, the limit is
//         disregarded and the whole source is copied again from its start. Callers rely on getting
//         the whole text, so the destination must hold all of it; this rule is kept as it is.
int64_t StrCopy(char16_t* dst, const char16_t* src, int64_t n, int64_t dstLimit);
// The same modes from a string: n = 0 is the whole string, n > 0 takes at most its length, and no
// terminator is written.
int64_t StrCopy(char16_t* dst, const std::u16string& src, int64_t n, int64_t dstLimit);
// Copies string-table text `id`, cut to size-1 characters when `size` > 0, always terminated;
// returns the characters written including the zero (1 for an unknown id).
int64_t StrCopy(char16_t* dst, unsigned id, int64_t size);
// `dst` becomes the first `n` characters of `src` (n = 0: up to the zero); returns the length.
// A negative `n` is a contract error (0, `dst` unchanged).
int64_t StrCopy(std::u16string& dst, const char16_t* src, int64_t n);
// The buffer form on ANSI text, through the wide form. 0 and `dst` untouched when memory fails.
int64_t StrCopyA(char* dst, const char* src, int64_t n, int64_t dstLimit);

// Writes `src` into a field of `width` characters that is first filled with spaces. `leftAligned`:
// from the left, stopping at `width`. Otherwise from the right end, taking the tail of a long
// source. `squeezeBlanks` drops a space that follows a kept space. `srcLen` below 1 means StrLen of
// the source. Returns the characters placed; a `width` below 1 is a contract error (0).
int64_t StrEntry(char16_t* field, int64_t width, const char16_t* src, int64_t srcLen, int leftAligned,
                 int squeezeBlanks);
// The same from ANSI text (0 and the field untouched when memory fails).
int64_t StrEntry(char16_t* field, int64_t width, const char* src, int64_t srcLen, int leftAligned,
                 int squeezeBlanks);
// `srcLen` characters of `src` from position `from` (all the rest when `srcLen` < 1); an empty
// source only blanks the field and returns 0.
int64_t StrEntry(char16_t* field, int64_t width, const std::u16string& src, int from, int64_t srcLen,
                 int leftAligned, int squeezeBlanks);

// The text without leading spaces, up to `len` characters or the first zero (`len` < 1: up to the
// zero); trailing spaces removed too when `trimRight` is non-zero.
std::u16string StrLeft(const char16_t* s, int64_t len, int trimRight);
std::u16string StrLeft(const std::u16string& s, int trimRight);
// The text trimmed on both sides, right-justified in `width` characters; a longer text loses its
// leftmost characters. A `width` below 1 is a contract error (empty result).
std::u16string StrRight(int64_t width, const char16_t* s, int64_t len);
std::u16string StrRight(int64_t width, const std::u16string& s);
// `s` centred with spaces: left pad (width - length) * 0.5 truncated, right pad the rest; a text
// at least `width` long is returned as it is.
std::u16string StrCenter(int width, const std::u16string& s);

// Breaks `s` in place into lines of at most `width` characters, the first without and the others
// with `indent` leading spaces, joined by `lineSep` (null: "\r\n"). A line ends after the last
// character of `breakAfter` seen in it (null or none seen: hard wrap at the width). Nothing is
// trimmed. Needs width >= 1 and 0 <= indent < width (else contract error, `s` unchanged).
void StrWrap(std::u16string& s, const char16_t* breakAfter, int width, int indent, const char16_t* lineSep);

// Turns a typed value into its internal form: with `unquote`, a text of 3 or more characters in
// double quotes loses them; with `encoding` >= 0 each "<#n>" becomes GetUnicodeCodePoint(n,
// encoding) when n <= 65536 (encodings 1..3) or n <= 255 (others); unless `keepCase`, the result is
// upper-cased (ToUpper with `encoding`). `*ok` (may be null) is 1, or 0 when a "<#" was not
// followed by digits and ">" (kept as typed) or its number was out of range or has no character in
// the encoding (the "<" kept, the rest read as plain text).
std::u16string StrConvert(const std::u16string& s, int* ok, int encoding, int unquote, int keepCase);
// Cuts `s` after `maxVisible` visible characters, a "<#...>" sequence counting as one. With
// `quoted` and `s` enclosed in double quotes, the quotes are not counted and the closing quote is
// kept after a cut. Returns 1 when it cut, else 0 (also for `maxVisible` < 1, a contract error).
int LimitInput(std::u16string& s, int maxVisible, int quoted);

// Non-zero when `s` equals an element of `a`.
int IsStrInArray(const std::u16string& s, const std::vector<std::u16string>& a);

// Justifies a fixed field of `len` characters in place. `toLeft`: content moved to the start,
// returns the position after the last non-blank, at least 1 (also for an all-blank field or
// `len` < 1). Otherwise content moved to the end, returns the position of the first non-blank
// (`len` - 1 for an all-blank field, 0 for `len` < 1).
int64_t StrMove(char16_t* s, int64_t len, int toLeft);
// Every occurrence of `find` replaced, left to right without overlap, through ToCompare; inserted
// text is not scanned again. An empty `find` is a contract error and gives an empty string.
std::u16string StrReplace(const std::u16string& text, const std::u16string& find,
                          const std::u16string& replacement, int caseSensitive);
// `s` without any "&"; with `stopAtTab`, also without the first tab and all after it (the
// accelerator part of a menu text).
std::u16string RemoveAmpersAnd(const std::u16string& s, int stopAtTab);
// Position of the first "#" or "*" among the first `max` characters of the zero-terminated picture
// `s` (its first digit position), or -1.
int64_t SeekStart(const char16_t* const s, int64_t max);

// ---------------------------------------------------------------------------------------------
// Parts of a delimited string and numbered names

// Part `n` (0-based) of `text` split at every `separator` (no quoting; an empty text is one empty
// part); empty when the text has fewer parts. A negative `n` is a contract error (empty).
std::u16string StrPart(const std::u16string& text, int64_t n, char16_t separator);
// Replaces part `n` of `text` with `part`, first appending separators when the text has fewer
// parts, so that StrPart(text, n, separator) == part afterwards (when `part` holds no separator).
// Returns 1, or 0 for a negative `n` (contract error, `text` unchanged).
int StrSetPart(std::u16string& text, int64_t n, char16_t separator, const std::u16string& part);
// Advances the number at the end of `name` by one in decimal, keeping its width with leading
// zeros and growing it on a carry ("Plan009" -> "Plan010", "A99" -> "A100"); a name without a
// trailing digit gets "1" appended ("Plan" -> "Plan1"). Returns 1 when a trailing number was
// advanced, 0 when "1" was appended.
int IncrementName(std::u16string& name);

}  // namespace kw
