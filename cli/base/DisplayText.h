#pragma once

#include <cstddef>
#include <string>

namespace zyngrad {

/// Bytes of the UTF-8 character that begins at `at`, 0 when there is no whole one.
std::size_t CharacterLength(std::string const& text, std::size_t at);

/// Columns that `text` takes on a terminal. Accents that combine with the character before them take none,
/// characters of East Asian scripts and pictographs two, all others one. The ranges are a short table of our own:
/// the C library's answer depends on the locale, and this program's output must not.
std::size_t DisplayWidth(std::string const& text);

/// `text` itself if it takes at most `widest` columns, else its beginning and its end with "..." between them:
/// long names often differ in their last characters only. @pre widest > 3
std::string Shortened(std::string const& text, std::size_t widest);

}  // namespace zyngrad
