#include "foundation/Progress.h"

#include <cstdarg>
#include <cstdio>
#include <iostream>

void PrintFlushed(char const* text) { std::cout << text << std::flush; }

void PrintFormatted(char const* format, ...) {
  char text[1024] = "";
  std::va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is what initialises it
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  PrintFlushed(text);
}
