#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "reference_host/cgns/CgnsElement.h"
#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// Passes the elements of all sections to a FaceMeshBuilder, which matches their faces.
class CellJoiner {
 public:
  CellJoiner(CgnsFile const& file, std::vector<CgnsSection> const& sections)
      : file_(file),
        sections_(sections),
        // Each surface is a patch of its own, counted from 1, to identify it later; 0 means not covered.
        builder_(file.Name(), file.Points(), {{"unnamed", "", {}}}),
        isUsed_(static_cast<std::size_t>(file.nNodes()), 0) {
    builder_.SetCellNamer([this](int cell) { return NameOfElement(sections_, elementOfCell_[cell]); });
  }

  CgnsTopology Join() {
    for (std::size_t s = 0; s < sections_.size(); ++s) AddSection(static_cast<int>(s));
    if (static_cast<std::int64_t>(elementOfCell_.size()) != file_.nCells()) {
      file_.Fail("the zone has " + std::to_string(file_.nCells()) + " cells, its sections have " +
                 std::to_string(elementOfCell_.size()));
    }
    result_.mesh = builder_.Build();
    result_.mesh.patches.clear();
    FindSurfacesAgain();
    NumberPoints();
    NameParts();
    return std::move(result_);
  }

 private:
  void AddSection(int s) {
    CgnsSection const& section = sections_[s];
    ForEachStandardElement(file_, section, file_.Elements(section), section.first,
                           [&](CgnsStandardElement const& element) { AddElement(s, element); });
  }

  void AddElement(int s, CgnsStandardElement const& element) {
    std::array<int, 8> nodes{};
    for (int i = 0; i < element.nNodes; ++i) nodes[i] = static_cast<int>(element.nodes[i]);
    if (element.isCell) {
      elementOfCell_.push_back(element.element);
      builder_.AddCell(element.shape, nodes.data());
      for (int i = 0; i < element.nNodes; ++i) isUsed_[nodes[i]] = 1;
    } else {
      if (result_.surfaces.size() >= kMostSurfaces) file_.Fail("more surface elements than an int can count");
      result_.surfaces.push_back({element.element, s, -1});
      builder_.AddSurface(nodes.data(), element.nNodes, static_cast<int>(result_.surfaces.size()));
    }
  }

  void FindSurfacesAgain() {
    FaceMesh& mesh = result_.mesh;
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (mesh.facePatch[f] > 0) result_.surfaces[mesh.facePatch[f] - 1].face = f;
      mesh.facePatch[f] = -1;
    }
  }

  /// The builder keeps the points that cells use, and their order.
  void NumberPoints() {
    int next = 0;
    result_.pointOfNode.reserve(isUsed_.size());
    for (char const isUsed : isUsed_) result_.pointOfNode.push_back(isUsed != 0 ? next++ : -1);
  }

  void NameParts() {
    result_.mesh.names = std::make_shared<const MeshNames>(
        MeshNames{"node",
                  [nodes = builder_.KeptPoints()](int node) { return nodes[node] + std::int64_t{1}; },
                  [sections = sections_, elements = std::move(elementOfCell_)](int cell) {
                    return NameOfElement(sections, elements[cell]);
                  },
                  {}});
  }

  static constexpr std::size_t kMostSurfaces = std::numeric_limits<int>::max() - 1;

  CgnsFile const& file_;
  std::vector<CgnsSection> const& sections_;
  FaceMeshBuilder builder_;
  std::vector<std::int64_t> elementOfCell_;
  std::vector<char> isUsed_;  // [node]
  CgnsTopology result_;
};

}  // namespace

std::string NameOfElement(std::vector<CgnsSection> const& sections, std::int64_t element) {
  std::string name = "element " + std::to_string(element);
  auto const behind = std::upper_bound(
      sections.begin(), sections.end(), element,
      [](std::int64_t wanted, CgnsSection const& section) { return wanted < section.first; });
  if (behind == sections.begin() || element > (behind - 1)->last) return name;
  return name + " of section " + Quoted((behind - 1)->name);
}

CgnsTopology JoinCgnsCells(CgnsFile const& file, std::vector<CgnsSection> const& sections) {
  return CellJoiner(file, sections).Join();
}

}  // namespace reference_host
