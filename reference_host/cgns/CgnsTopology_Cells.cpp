#include <cgnslib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// The nodes of linear CGNS elements have the order that FaceMeshBuilder expects.
std::optional<CellShape> ShapeOf(int type) {
  switch (type) {
    case CGNS_ENUMV(TETRA_4):
      return CellShape::Tetrahedron;
    case CGNS_ENUMV(PYRA_5):
      return CellShape::Pyramid;
    case CGNS_ENUMV(PENTA_6):
      return CellShape::Prism;
    case CGNS_ENUMV(HEXA_8):
      return CellShape::Hexahedron;
    default:
      return std::nullopt;
  }
}

bool IsLinearSurface(int type) { return type == CGNS_ENUMV(TRI_3) || type == CGNS_ENUMV(QUAD_4); }

/// Nodes and edges are not part of the mesh, but some programs write them.
bool IsPassedOver(int type) {
  return type == CGNS_ENUMV(NODE) || type == CGNS_ENUMV(BAR_2) || type == CGNS_ENUMV(BAR_3);
}

int NodeCountOf(int type) {
  int n = 0;
  return cg_npe(static_cast<CGNS_ENUMT(ElementType_t)>(type), &n) == CG_OK ? n : 0;
}

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
    CgnsElements const elements = file_.Elements(section);
    bool const isMixed = section.type == CGNS_ENUMV(MIXED);
    for (std::int64_t i = 0; i < section.size(); ++i) {
      std::size_t begin = elements.start[i];
      std::size_t const end = elements.start[i + 1];
      if (isMixed && begin == end) FailElement(section, section.first + i, "has no type");
      int const type = isMixed ? static_cast<int>(elements.entry[begin++]) : section.type;
      AddElement(s, section.first + i, type, elements.entry.data() + begin, static_cast<int>(end - begin));
    }
  }

  void AddElement(int s, std::int64_t element, int type, std::int64_t const* nodes, int nNodes) {
    CgnsSection const& section = sections_[s];
    if (IsPassedOver(type)) return;
    std::optional<CellShape> const shape = ShapeOf(type);
    if (!shape && !IsLinearSurface(type)) {
      bool const isKnown = type >= 0 && type < NofValidElementTypes;
      file_.Fail("section " + Quoted(section.name) + ": elements of type " +
                 (isKnown ? std::string(ElementTypeName[type]) : std::to_string(type)) +
                 " cannot be read; write the mesh with linear elements");
    }
    if (nNodes != NodeCountOf(type)) FailElement(section, element, "has the wrong number of nodes");
    std::array<int, 8> const own = OwnNumbers(section, element, nodes, nNodes);
    if (shape) {
      elementOfCell_.push_back(element);
      builder_.AddCell(*shape, own.data());
      for (int i = 0; i < nNodes; ++i) isUsed_[own[i]] = 1;
    } else {
      if (result_.surfaces.size() >= kMostSurfaces) file_.Fail("more surface elements than an int can count");
      result_.surfaces.push_back({element, s, -1});
      builder_.AddSurface(own.data(), nNodes, static_cast<int>(result_.surfaces.size()));
    }
  }

  std::array<int, 8> OwnNumbers(CgnsSection const& section, std::int64_t element, std::int64_t const* nodes,
                                int nNodes) const {
    std::array<int, 8> own{};
    for (int i = 0; i < nNodes; ++i) {
      if (nodes[i] < 1 || nodes[i] > file_.nNodes()) {
        FailElement(
            section, element,
            "has node " + std::to_string(nodes[i]) + ", but there are " + std::to_string(file_.nNodes()));
      }
      own[i] = static_cast<int>(nodes[i]) - 1;
    }
    return own;
  }

  [[noreturn]] void FailElement(CgnsSection const& section, std::int64_t element,
                                std::string const& what) const {
    file_.Fail("element " + std::to_string(element) + " of section " + Quoted(section.name) + " " + what);
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
