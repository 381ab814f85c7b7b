#pragma once

#include <cstddef>
#include <string>

namespace zyngrad {

/// Whether a byte continues a UTF-8 character that began before it.
inline bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Number of bytes of the UTF-8 character that begins at `at`; 0 if there is no complete one.
std::size_t CharacterLength(std::string const& text, std::size_t at);

/// Number of columns that `text` takes on a terminal. Combining accents take none, East Asian characters and
/// pictographs take two, all others one. The ranges are a short table of our own, because the C library's answer
/// depends on the locale and this program's output must not.
std::size_t DisplayWidth(std::string const& text);

/// `text` itself if it takes at most `widest` columns, otherwise its beginning and its end joined by "...". The end
/// is kept because long names often differ only in their last characters. @pre widest > 3
std::string Shortened(std::string const& text, std::size_t widest);

}  // namespace zyngrad
