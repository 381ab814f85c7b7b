#pragma once

#include <cstddef>

/// Writes `text` to standard output, by way of std::cout, and flushes it at once, so that a line is seen before
/// whatever comes next. Its bytes do not depend on what the program set in std::cout (flags, width, fill, locale),
/// and all of that stays: a pending width waits for the program's own next output.
void PrintFlushed(char const* text);

/// The same for a text made by printf's rules, numbers with a decimal point whatever the program's locale; at most
/// 1023 characters of it.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void PrintFormatted(char const* format, ...);

/// A text made by printf's rules, numbers with a decimal point whatever the program's locale; what does not fit into
/// `text` is cut off.
#if defined(__GNUC__)
__attribute__((format(printf, 3, 4)))
#endif
void FormatText(char* text, std::size_t size, char const* format, ...);
