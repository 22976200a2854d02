// Broken calling contracts. Every library function that finds its contract broken reports
// (source, line, expression) through one replaceable handler and then returns its documented
// fallback; the program goes on. The checks are active in every build.
#pragma once

namespace kw {

// Called with the module name (or the fixed source a message names, such as "QUERYBOX"),
// the line and the failed expression. Must return.
using AssertionHandler = void (*)(const char* source, int line, const char* expression);

// Installs a handler (null restores the default) and returns the previous one.
// The default handler writes one line to the platform's debug output.
AssertionHandler SetAssertionHandler(AssertionHandler handler);
AssertionHandler GetAssertionHandler();

// Reports a failed contract. `file` may be a file name such as "Text.cpp"; the extension is
// dropped so that the handler sees the module name.
void ReportAssertion(const char* file, int line, const char* expression);

}  // namespace kw

// KW_ASSERT(cond): reports with this file's module name and line.
#define KW_ASSERT(cond) ((cond) ? (void)0 : ::kw::ReportAssertion(__FILE_NAME__, __LINE__, #cond))
// KW_ASSERT_AT(source, line, cond): reports a fixed source and line that user-facing
// documentation names (for example "QUERYBOX", 691).
#define KW_ASSERT_AT(source, line, cond) ((cond) ? (void)0 : ::kw::ReportAssertion(source, line, #cond))
