#include "cli/base/DisplayText.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace zyngrad {
namespace {

struct Range {
  std::uint32_t first, last;
};

constexpr Range kCombining[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A}, {0x064B, 0x065F},
    {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
    {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
};

constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},   {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};

template <std::size_t N>
bool IsIn(const Range (&ranges)[N], std::uint32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [code](Range const& range) { return range.first <= code && code <= range.last; });
}

/// @param[in] length  of the character in bytes, 1 to 4
std::uint32_t CodeOf(std::string const& text, std::size_t at, std::size_t length) {
  auto const byte = [&](std::size_t k) { return static_cast<unsigned char>(text[at + k]); };
  if (length == 1) return byte(0);
  std::uint32_t code = byte(0) & (0xFFU >> (length + 1));
  for (std::size_t k = 1; k < length; ++k) code = code << 6U | (byte(k) & 0x3FU);
  return code;
}

/// A character, or a byte that belongs to no character and counts as one.
struct Step {
  std::size_t bytes, columns;
};

Step StepAt(std::string const& text, std::size_t at) {
  std::size_t const length = CharacterLength(text, at);
  if (length < 2) return {1, 1};
  std::uint32_t const code = CodeOf(text, at, length);
  if (IsIn(kCombining, code)) return {length, 0};
  return {length, IsIn(kWide, code) ? 2U : 1U};
}

}  // namespace

std::size_t CharacterLength(std::string const& text, std::size_t at) {
  auto const lead = static_cast<unsigned char>(text[at]);
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
    if (!IsContinuation(text[at + i])) return 0;
  }
  return length;
}

std::size_t DisplayWidth(std::string const& text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    Step const step = StepAt(text, at);
    width += step.columns;
    at += step.bytes;
  }
  return width;
}

std::string Shortened(std::string const& text, std::size_t widest) {
  std::size_t const width = DisplayWidth(text);
  if (width <= widest) return text;
  std::string const gap = "...";
  std::size_t const kept = widest - gap.size(), tail = kept / 3, head = kept - tail;
  std::string beginning, end;
  std::size_t before = 0;  // columns before `at`
  for (std::size_t at = 0; at < text.size();) {
    Step const step = StepAt(text, at);
    if (before + step.columns <= head)
      beginning.append(text, at, step.bytes);
    else if (before >= width - tail && (!end.empty() || step.columns > 0))
      end.append(text, at, step.bytes);
    before += step.columns;
    at += step.bytes;
  }
  return beginning + gap + end;
}

}  // namespace zyngrad
