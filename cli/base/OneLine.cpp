#include "cli/base/OneLine.h"

#include <cstddef>

#include "cli/base/DisplayText.h"

namespace zyngrad {

std::string OneLine(std::string const& text) {
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    auto const byte = static_cast<unsigned char>(text[at]);
    std::size_t const length = CharacterLength(text, at);
    if (byte == '\n' || byte == '\r' || byte == '\t') {
      line += ' ';
    } else if (length == 0 || byte < 0x20U || byte == 0x7FU) {
      line += '?';
    } else {
      line.append(text, at, length);
    }
    at += length == 0 ? 1 : length;
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

std::string Quoted(std::string const& text) {
  constexpr std::size_t kLongest = 60;
  if (text.size() <= kLongest) return '"' + OneLine(text) + '"';
  std::size_t cut = kLongest;
  while (cut > 0 && IsContinuation(text[cut])) --cut;
  return '"' + OneLine(text.substr(0, cut)) + "...\"";
}

}  // namespace zyngrad
