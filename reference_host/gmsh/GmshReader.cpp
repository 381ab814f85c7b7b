#include "reference_host/gmsh/GmshReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/gmsh/GmshCursor.h"
#include "reference_host/gmsh/GmshElementType.h"
#include "reference_host/gmsh/GmshPeriods.h"
#include "reference_host/gmsh/GmshSections.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

// $MeshFormat version, 0 text or 1 binary, bytes of a real number binary: the number 1 in 4 bytes, which
// shows the byte order $EndMeshFormat
std::unique_ptr<GmshSections> ReadFormat(GmshCursor& cursor, GmshContent& content) {
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
  if (is2) return std::make_unique<GmshSections2>(cursor, content);
  return std::make_unique<GmshSections4>(cursor, content);
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

/// Maps the node numbers of the file to 0, 1, 2, ... in the order of the file.
class NodeIndex {
 public:
  NodeIndex(std::string const& file, std::vector<std::int64_t> const& tags) : file_(file) {
    std::int64_t highest = 0;
    for (std::int64_t const tag : tags) highest = std::max(highest, tag);
    // Tags usually have few gaps; then a table by tag is by far the fastest.
    bool const dense = static_cast<std::uint64_t>(highest) <= 4 * tags.size() + 1000;
    if (dense) table_.assign(static_cast<std::size_t>(highest) + 1, -1);
    for (std::size_t i = 0; i < tags.size(); ++i) {
      if (dense) {
        InsertInTable(tags[i], static_cast<int>(i));
      } else {
        sorted_.emplace_back(tags[i], static_cast<int>(i));
      }
    }
    SortPairs();
  }

  /// -1 if there is no such node.
  int Find(std::int64_t tag) const {
    if (!table_.empty()) return tag >= 0 && tag < static_cast<std::int64_t>(table_.size()) ? table_[tag] : -1;
    auto const found = std::lower_bound(sorted_.begin(), sorted_.end(), std::make_pair(tag, -1));
    return found != sorted_.end() && found->first == tag ? found->second : -1;
  }

 private:
  void InsertInTable(std::int64_t tag, int index) {
    if (table_[tag] >= 0) FailTwice(tag);
    table_[tag] = index;
  }

  void SortPairs() {
    std::sort(sorted_.begin(), sorted_.end());
    for (std::size_t i = 1; i < sorted_.size(); ++i) {
      if (sorted_[i].first == sorted_[i - 1].first) FailTwice(sorted_[i].first);
    }
  }

  [[noreturn]] void FailTwice(std::int64_t tag) const {
    throw MeshError(file_ + ": node " + std::to_string(tag) + " occurs twice");
  }

  std::string const& file_;
  std::vector<int> table_;
  std::vector<std::pair<std::int64_t, int>> sorted_;
};

/// Physical surfaces as patches, by ascending tag; surfaces of one name are one patch.
class PatchIndex {
 public:
  explicit PatchIndex(GmshContent const& content) {
    for (auto const& [tag, name] : content.surfaceName) patchOfTag_.emplace(tag, 0);
    for (std::int64_t const tag : content.physicalOfSurface) {
      if (tag != 0) patchOfTag_.emplace(tag, 0);
    }
    std::map<std::string, int> patchOfName;
    for (auto& [tag, patch] : patchOfTag_) {
      auto const named = content.surfaceName.find(tag);
      std::string const name =
          named != content.surfaceName.end() ? named->second : "surface_" + std::to_string(tag);
      patch = patchOfName.emplace(name, static_cast<int>(patches_.size())).first->second;
      if (patch == static_cast<int>(patches_.size())) patches_.push_back({name, "", {}});
    }
  }

  std::vector<Patch> const& Patches() const { return patches_; }
  int Find(std::int64_t tag) const { return patchOfTag_.at(tag); }

 private:
  std::vector<Patch> patches_;
  std::map<std::int64_t, int> patchOfTag_;
};

/// Calls visit(element, type, nodes) with the nodes' indices for each element.
template <class Visit>
void ForEachElement(std::string const& file, GmshElements const& elements, NodeIndex const& nodeIndex,
                    Visit const& visit) {
  std::size_t next = 0;
  for (std::size_t e = 0; e < elements.type.size(); ++e) {
    GmshElementType const& type = *FindGmshElementType(elements.type[e]);
    std::array<int, 8> nodes{};
    for (int i = 0; i < type.nNodes; ++i, ++next) {
      nodes[i] = nodeIndex.Find(elements.nodeTag[next]);
      if (nodes[i] >= 0) continue;
      throw MeshError(file + ": element " + std::to_string(elements.tag[e]) + " has node " +
                      std::to_string(elements.nodeTag[next]) + ", which the file does not have");
    }
    visit(e, type, nodes.data());
  }
}

CellShape ShapeOf(GmshElementType const& type) {
  constexpr std::array<CellShape, 4> kByType = {CellShape::Tetrahedron, CellShape::Hexahedron,
                                                CellShape::Prism, CellShape::Pyramid};
  return kByType[type.number - 4];
}

FaceMesh MakeMesh(std::string const& file, GmshContent& content) {
  NodeIndex const nodeIndex(file, content.nodeTag);
  PatchIndex const patchIndex(content);
  FaceMeshBuilder builder(file, std::move(content.point), patchIndex.Patches());
  builder.SetCellNamer([&](int cell) { return "element " + std::to_string(content.volumes.tag[cell]); });
  ForEachElement(file, content.volumes, nodeIndex,
                 [&](std::size_t, GmshElementType const& type, int const* nodes) {
                   builder.AddCell(ShapeOf(type), nodes);
                 });
  ForEachElement(file, content.surfaces, nodeIndex,
                 [&](std::size_t e, GmshElementType const& type, int const* nodes) {
                   std::int64_t const tag = content.physicalOfSurface[e];
                   if (tag != 0) builder.AddSurface(nodes, type.nNodes, patchIndex.Find(tag));
                 });
  FaceMesh mesh = builder.Build();
  std::vector<int> nodeOfPoint(content.nodeTag.size(), -1);
  for (std::size_t n = 0; n < builder.KeptPoints().size(); ++n) {
    nodeOfPoint[builder.KeptPoints()[n]] = static_cast<int>(n);
  }
  AddGmshPeriods(
      content.periodicSurfaces,
      [&](std::int64_t tag) {
        int const point = nodeIndex.Find(tag);
        return point < 0 ? -1 : nodeOfPoint[point];
      },
      mesh);
  std::vector<std::int64_t> nodeTag;
  nodeTag.reserve(mesh.points.size());
  for (int const point : builder.KeptPoints()) nodeTag.push_back(content.nodeTag[point]);
  mesh.names = std::make_shared<const MeshNames>(MeshNames{
      "node",
      [tags = std::move(nodeTag)](int node) { return tags[node]; },
      [tags = std::move(content.volumes.tag)](int cell) { return "element " + std::to_string(tags[cell]); },
      {}});
  return mesh;
}

GmshContent ReadContent(std::string const& name) {
  MeshFile file(name);
  GmshCursor cursor(file);
  GmshContent content;
  std::unique_ptr<GmshSections> const sections = ReadFormat(cursor, content);
  ReadSections(cursor, *sections, content);
  return content;
}

/// A partitioned mesh may have been saved in several files NAME_1.msh, NAME_2.msh, ... Version 4.1 says how many
/// partitions there are. In version 2.2, all elements of such a file are of one partition; a mesh in one partition
/// looks like the first of them, except for the name.
void CheckThatWhole(std::string const& file, GmshContent const& content) {
  std::set<std::int64_t> const& present = content.partitionsWithVolumes;
  if (present.empty()) return;
  std::int64_t const first = *present.begin();
  std::string const ending = "_1.msh";
  bool const isFirstOfSeveral =
      file.size() > ending.size() && file.compare(file.size() - ending.size(), ending.size(), ending) == 0;
  bool const isPiece = content.nPartitions > 0
                           ? static_cast<std::int64_t>(present.size()) < content.nPartitions
                           : present.size() == 1 && (first > 1 || isFirstOfSeveral);
  if (!isPiece) return;
  throw MeshError(file + ": only partition " + std::to_string(first) +
                  (content.nPartitions > 0 ? " of " + std::to_string(content.nPartitions) : "") +
                  " is in this file; save the mesh in one file, without Gmsh's option -part_split");
}

}  // namespace

FaceMesh ReadGmsh(std::string const& file) {
  GmshContent content = ReadContent(file);
  CheckThatWhole(file, content);
  if (content.volumes.type.empty()) {
    throw MeshError(
        file + ": no volume elements; with physical groups Gmsh saves only their elements, so one must " +
        "be a physical volume");
  }
  return MakeMesh(file, content);
}

}  // namespace reference_host
