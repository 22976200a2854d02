// Code pages and text encodings: conversion between the library's UTF-16 and the 8-bit and foreign
// forms in which files and older interfaces arrive, and the guess of a file's encoding.
//
// The converter is the library's own: table-driven for the ANSI code page 1252 and the OEM code page
// 437, and it handles UTF-8 and UTF-16 in both byte orders itself. Results are error codes as the
// platform's converter returns them (0 = success).
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

int GetCodePageID(int encoding);

uint32_t CodePage2Unicode(const char* src, char16_t* dst, unsigned codePage, int srcLen);
uint32_t Unicode2CodePage(const char16_t* src, char* dst, unsigned codePage, int srcLen, int* dstLen,
                          unsigned long flags, const char* defaultChar, int* usedDefault);

int GetUnicodeCodePoint(int code, int encoding);
int GetCodePageCodePoint(int code, int encoding, unsigned long flags, const char* defaultChar, int* usedDefault);

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

std::string ToCodePage(const std::string& s, unsigned fromCodePage, unsigned toCodePage);
std::u16string Oem2Ansi(const std::u16string& s);
uint64_t utf8len(const char* s, uint64_t n);

// Guesses the encoding of a file from its byte-order mark; `lineEnd` (may be null) receives 13 or 10.
int GetFileEncoding(const std::u16string& fileName, unsigned char* lineEnd);

// UTF-8 for terminals, command lines and file names of the operating system.
std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

}  // namespace kw
