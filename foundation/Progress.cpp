#include "foundation/Progress.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "foundation/CNumbers.h"

namespace {

void Format(char* text, std::size_t size, char const* format, std::va_list arguments) {
  CNumbers const withPoint;
  text[0] = '\0';
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller initialises it
  std::vsnprintf(text, size, format, arguments);
}

}  // namespace

// Unformatted: a width, a base or a sign that the program set for its own next number is none of the text's.
void PrintFlushed(char const* text) {
  std::cout.write(text, static_cast<std::streamsize>(std::strlen(text)));
  std::cout.flush();
}

void PrintFormatted(char const* format, ...) {
  char text[1024];
  std::va_list arguments;
  va_start(arguments, format);
  Format(text, sizeof(text), format, arguments);
  va_end(arguments);
  PrintFlushed(text);
}

void FormatText(char* text, std::size_t size, char const* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(text, size, format, arguments);
  va_end(arguments);
}
