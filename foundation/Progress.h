#pragma once

/// Writes `text` to standard output and flushes it at once, so that a line is seen before whatever comes
/// next.
void PrintFlushed(char const* text);

/// The same for a text made by printf's rules; at most 1023 characters of it.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void PrintFormatted(char const* format, ...);
