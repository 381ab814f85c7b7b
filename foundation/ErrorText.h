#pragma once

#include <cstddef>
#include <cstring>

/// The text that every failure text begins with, in all classes of the library.
constexpr char kErrorTextPrefix[] = "Operator Gradient Error = ";

/// Begins a failure text.
template <std::size_t N>
void StartErrorText(char (&buffer)[N]) {
  static_assert(N >= sizeof(kErrorTextPrefix), "the prefix must fit");
  std::memcpy(buffer, kErrorTextPrefix, sizeof(kErrorTextPrefix));
}

/// Appends `message` to the NUL-terminated text in `buffer`; what does not fit is cut off without notice.
template <std::size_t N>
void AppendErrorText(char (&buffer)[N], char const* message) {
  std::size_t const used = ::strnlen(buffer, N - 1);
  std::size_t const added = ::strnlen(message, N - 1 - used);
  std::memcpy(buffer + used, message, added);
  buffer[used + added] = '\0';
}
