#include "reference_host/openfoam/FoamSyntax.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// Bytes of an item of a list that a binary file holds as bytes; 0: the list is text.
std::size_t BytesOfItem(std::string_view listType, FoamFormat const& format) {
  struct Known {
    std::string_view listType;
    std::size_t nScalars, nLabels, nBytes;
  };
  constexpr std::array<Known, 7> kKnown = {{{"List<scalar>", 1, 0, 0},
                                            {"List<vector>", 3, 0, 0},
                                            {"List<sphericalTensor>", 1, 0, 0},
                                            {"List<symmTensor>", 6, 0, 0},
                                            {"List<tensor>", 9, 0, 0},
                                            {"List<label>", 0, 1, 0},
                                            {"List<bool>", 0, 0, 1}}};
  for (Known const& known : kKnown) {
    if (known.listType == listType) {
      return known.nScalars * static_cast<std::size_t>(format.scalarBytes) +
             known.nLabels * static_cast<std::size_t>(format.labelBytes) + known.nBytes;
    }
  }
  return 0;
}

void SkipBinaryList(TextCursor& text, std::size_t bytesOfItem) {
  std::size_t const n = text.Count("the length of a list", bytesOfItem);
  if (n == 0) return;  // whatever brackets follow are text
  text.SkipBytes("a binary list", n * bytesOfItem);
}

/// The number behind "label=" or "scalar=" in the header's entry arch, 32 or 64.
int BytesIn(TextCursor& text, std::string_view arch, std::string_view key) {
  std::size_t const at = arch.find(key);
  if (at != std::string_view::npos) {
    std::string_view const bits = arch.substr(at + key.size(), 2);
    if (bits == "32") return 4;
    if (bits == "64") return 8;
  }
  text.Fail("arch " + Quoted(arch) + " cannot be read; it has to have " + std::string(key) + "32 or " +
            std::string(key) + "64");
}

/// "LSB;label=32;scalar=64"
void ReadArch(TextCursor& text, FoamFormat& format) {
  std::string_view const arch = text.QuotedString("the entry arch");
  if (arch.substr(0, 3) != "LSB") {
    text.Fail("arch " + Quoted(arch) + " cannot be read; only LSB, the byte order of most processors, can");
  }
  format.labelBytes = BytesIn(text, arch, "label=");
  format.scalarBytes = BytesIn(text, arch, "scalar=");
}

}  // namespace

FoamHeader ReadFoamHeader(TextCursor& text) {
  if (text.AtEnd() || text.Name("FoamFile") != "FoamFile") {
    text.Fail("not an OpenFOAM file: it does not begin with FoamFile");
  }
  FoamHeader header;
  text.Expect('{');
  for (std::string key = ReadFoamKeyword(text); !key.empty(); key = ReadFoamKeyword(text)) {
    if (key == "arch" && text.Peek() == '"') ReadArch(text, header.format);
    std::string const value = ReadFoamValue(text, FoamFormat());
    if (key == "format" && value != "ascii" && value != "binary") {
      text.Fail("format " + Quoted(value) + " cannot be read; it has to be ascii or binary");
    }
    if (key == "format") header.format.isBinary = value == "binary";
    if (key == "class") header.className = value;
  }
  return header;
}

std::string ReadFoamKeyword(TextCursor& text) {
  if (text.Accept('}')) return {};
  std::string_view const keyword = text.Name("a keyword or '}'");
  if (keyword.front() == '#' || keyword.front() == '$') text.Fail("directives and macros cannot be read");
  return std::string(keyword);
}

std::string ReadFoamValue(TextCursor& text, FoamFormat const& format) {
  std::string first;
  int depth = 0;  // of parentheses and braces; an entry ends with ';' or by closing its first brace
  for (bool isFirst = true;; isFirst = false) {
    char const c = text.Peek();
    if (c == '(' || c == '{') {
      text.Expect(c);
      ++depth;
    } else if (c == ')' || c == '}') {
      text.Expect(c);
      if (--depth < 0) text.Fail("an entry is not closed by ';'");
      if (depth == 0 && c == '}') return first;
    } else if (c == ';') {
      text.Expect(c);
      if (depth == 0) return first;
    } else if (c == '"') {
      text.QuotedString("a text");
    } else if (c == '$') {
      text.Macro();  // its name may be in braces
    } else {
      std::string_view const word = text.Word("the end of an entry");
      if (isFirst) first = word;
      std::size_t const bytesOfItem = format.isBinary ? BytesOfItem(word, format) : 0;
      if (word == "#" && text.Peek() == '{') text.Verbatim();
      if (bytesOfItem > 0) SkipBinaryList(text, bytesOfItem);
    }
  }
}

}  // namespace reference_host
