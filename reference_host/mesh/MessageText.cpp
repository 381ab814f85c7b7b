#include "reference_host/mesh/MessageText.h"

#include <algorithm>

namespace reference_host {

std::string Quoted(std::string_view text, std::size_t longest, std::string_view mark) {
  std::size_t end = std::min(longest, text.size());
  // Do not cut a character of several bytes.
  while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  std::string shown(text.substr(0, end));
  for (char& c : shown) {
    auto const byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) c = '?';
  }
  return std::string(mark) + shown + (end < text.size() ? "..." : "") + std::string(mark);
}

void NameList::Add(std::string const& name) {
  if (nNames_ < kMost) text_ += (nNames_ == 0 ? "" : ", ") + name;
  ++nNames_;
}

std::string NameList::Text() const {
  if (nNames_ == 0) return "none";
  return nNames_ <= kMost ? text_ : text_ + " and " + std::to_string(nNames_ - kMost) + " more";
}

}  // namespace reference_host
