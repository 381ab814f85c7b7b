#include "reference_host/gmsh/GmshReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "reference_host/gmsh/GmshChecks.h"
#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/gmsh/GmshContentReader.h"
#include "reference_host/gmsh/GmshCursor.h"
#include "reference_host/gmsh/GmshElementType.h"
#include "reference_host/gmsh/GmshPatches.h"
#include "reference_host/gmsh/GmshPeriods.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/MeshNames.h"

namespace reference_host {
namespace {

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

  [[noreturn]] void FailTwice(std::int64_t tag) const { throw MeshError(GmshNodeTwice(file_, tag)); }

  std::string const& file_;
  std::vector<int> table_;
  std::vector<std::pair<std::int64_t, int>> sorted_;
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
      throw MeshError(GmshNodeUnknown(file, elements.tag[e], elements.nodeTag[next]));
    }
    visit(e, type, nodes.data());
  }
}

FaceMesh MakeMesh(std::string const& file, GmshContent& content) {
  NodeIndex const nodeIndex(file, content.nodeTag);
  std::set<std::int64_t> physicals(content.physicalOfSurface.begin(), content.physicalOfSurface.end());
  GmshPatches const patchIndex(content.surfaceName, physicals);
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
  ReadGmshContent(cursor, content);
  return content;
}

}  // namespace

FaceMesh ReadGmsh(std::string const& file) {
  GmshContent content = ReadContent(file);
  CheckGmshIsWhole(file, content.nPartitions, content.partitionsWithVolumes);
  if (content.volumes.type.empty()) throw MeshError(GmshWithoutVolumes(file));
  return MakeMesh(file, content);
}

}  // namespace reference_host
