#include "reference_host/gmsh/GmshContentReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "reference_host/gmsh/GmshSections.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

// $MeshFormat version, 0 text or 1 binary, bytes of a real number binary: the number 1 in 4 bytes, which
// shows the byte order $EndMeshFormat
std::unique_ptr<GmshSections> ReadFormat(GmshCursor& cursor, GmshContent& content, GmshBlocks* blocks) {
  TextCursor& text = cursor.Text();
  if (text.Name("$MeshFormat") != "$MeshFormat")
    text.Fail("not a Gmsh mesh: it does not begin with $MeshFormat");

  std::string_view const version = text.Word("the version");
  bool const is2 = version == "2.2";
  if (!is2 && version != "4.1") {
    text.Fail("Gmsh format " + Quoted(version) + " cannot be read; save the mesh as version 4.1 or 2.2");
  }
  std::int64_t const encoding = text.Integer("0 (text) or 1 (binary)");
  if (encoding != 0 && encoding != 1) text.Fail("0 (text) or 1 (binary) expected");
  if (text.Integer("the size of a real number") != 8) text.Fail("only real numbers of 8 bytes can be read");

  if (encoding == 1) {
    cursor.SkipLineBreak();
    cursor.SetBinary();
    int const one = cursor.Int("the number 1");
    if (one == 0x01000000) cursor.Fail("the file has the byte order of another machine");
    if (one != 1) cursor.Fail("the number 1 that shows the byte order is missing");
  }
  cursor.EndSection("MeshFormat");
  if (blocks != nullptr) blocks->is2 = is2;
  if (is2) return std::make_unique<GmshSections2>(cursor, content, blocks);
  return std::make_unique<GmshSections4>(cursor, content, blocks);
}

// $PhysicalNames
// number of names
// dimension tag "name"
void ReadPhysicalNames(TextCursor& text, GmshContent& content) {
  std::size_t const nNames = text.Count("the number of physical names", 6);
  for (std::size_t i = 0; i < nNames; ++i) {
    std::int64_t const dimension = text.Integer("the dimension of a physical name");
    std::int64_t const tag = text.Integer("a physical tag");
    std::string const name(text.QuotedString("a physical name"));
    bool const printable = std::all_of(
        name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7f; });
    if (name.empty() || !printable) text.Fail("a physical name is empty or has unprintable characters");
    if (dimension == 2 && !content.surfaceName.emplace(tag, name).second) {
      text.Fail("physical surface " + std::to_string(tag) + " is named twice");
    }
  }
}

/// Reads everything after the format; skips sections that are not needed.
void ReadSections(GmshCursor& cursor, GmshSections& sections, GmshContent& content) {
  TextCursor& text = cursor.Text();
  std::set<std::string> seen;
  while (!text.AtEnd()) {
    std::string_view const mark = text.Name("a section");
    if (mark.size() < 2 || mark[0] != '$') text.Fail("a section expected instead of " + Quoted(mark));
    std::string const section(mark.substr(1));
    if (section == "PhysicalNames") {
      ReadPhysicalNames(text, content);
    } else if (!sections.Read(section)) {
      cursor.SkipSection(section);
      continue;
    }
    if (!seen.insert(section).second) text.Fail("a second section $" + section);
    cursor.EndSection(section);
  }
  for (char const* const needed : {"Nodes", "Elements"}) {
    if (seen.count(needed) == 0) text.Fail(std::string("the file ends without a section $") + needed);
  }
}

}  // namespace

void ReadGmshContent(GmshCursor& cursor, GmshContent& content, GmshBlocks* blocks) {
  std::unique_ptr<GmshSections> const sections = ReadFormat(cursor, content, blocks);
  ReadSections(cursor, *sections, content);
}

}  // namespace reference_host
