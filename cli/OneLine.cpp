#include "cli/OneLine.h"

#include <cstddef>

namespace zyngrad {
namespace {

bool IsContinuation(unsigned char byte) { return (byte & 0xC0U) == 0x80U; }

/// Bytes of the UTF-8 character that begins at `at`, 0 when there is no whole one.
std::size_t CharacterLength(const std::string& text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  std::size_t length = 0;
  if (lead < 0x80U)
    length = 1;
  else if (lead >= 0xC2U && lead < 0xE0U)
    length = 2;
  else if (lead >= 0xE0U && lead < 0xF0U)
    length = 3;
  else if (lead >= 0xF0U && lead < 0xF5U)
    length = 4;
  if (length == 0 || at + length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(static_cast<unsigned char>(text[at + i]))) return 0;
  }
  return length;
}

}  // namespace

std::string OneLine(const std::string& text) {
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const std::size_t length = CharacterLength(text, at);
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

std::string Quoted(const std::string& text) {
  constexpr std::size_t kLongest = 60;
  if (text.size() <= kLongest) return '"' + OneLine(text) + '"';
  std::size_t cut = kLongest;
  while (cut > 0 && IsContinuation(static_cast<unsigned char>(text[cut]))) --cut;
  return '"' + OneLine(text.substr(0, cut)) + "...\"";
}

}  // namespace zyngrad
