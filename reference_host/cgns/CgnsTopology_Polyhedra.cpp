#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "reference_host/cgns/CgnsElement.h"
#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

constexpr std::int64_t kMostItems = std::numeric_limits<int>::max();

/// Three times the volume inside the boundary, negative if its faces point inwards.
double SignedVolume3(FaceMesh const& mesh) {
  double volume3 = 0.0;
  for (int f = 0; f < mesh.nFaces(); ++f) {
    if (mesh.neighbour[f] >= 0) continue;
    std::size_t const begin = mesh.faceStart[f];
    FaceFan const fan = ComputeFaceFan(mesh.points, mesh.faceNode.data() + begin,
                                       static_cast<int>(mesh.faceStart[f + 1] - begin));
    volume3 += Dot(fan.area, Difference(fan.apex, mesh.points.front()));
  }
  return volume3;
}

void TurnFace(FaceMesh& mesh, int f) {
  std::reverse(mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
               mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
}

/// Faces come from NGON_n sections. Their cells come from NFACE_n sections, where a face with positive sign
/// points out of the cell; or else from the parent elements of the faces, where a face points from the first
/// to the second.
class PolyhedronJoiner {
 public:
  PolyhedronJoiner(CgnsFile const& file, std::vector<CgnsSection> const& sections)
      : file_(file), sections_(sections), mesh_(result_.mesh) {}

  CgnsTopology Join() {
    CheckTypes();
    mesh_.points = file_.Points();
    for (std::size_t s = 0; s < sections_.size(); ++s) {
      if (IsCgnsPolygons(sections_[s])) AddFaces(static_cast<int>(s));
    }
    mesh_.neighbour.assign(mesh_.owner.size(), -1);
    mesh_.facePatch.assign(mesh_.owner.size(), -1);
    if (hasCells_) {
      AddCells();
    } else {
      AddCellsOfParents();
    }
    OrientFaces();
    DropUnusedPoints();
    NameParts();
    FindSurfaces();
    return std::move(result_);
  }

 private:
  void CheckTypes() {
    for (CgnsSection const& section : sections_) {
      hasCells_ = hasCells_ || IsCgnsPolyhedra(section);
      if (IsCgnsEdge(section) || IsCgnsPolyhedra(section) || IsCgnsPolygons(section)) continue;
      file_.Fail("section " + Quoted(section.name) +
                 " has standard elements besides polygons (NGON_n); only one or the other can be read");
    }
  }

  void AddFaces(int s) {
    CgnsSection const& section = sections_[s];
    if (static_cast<std::int64_t>(mesh_.owner.size()) + section.size() > kMostItems) {
      file_.Fail("more faces than an int can count");
    }
    CgnsElements elements = file_.Elements(section);
    std::size_t const nBefore = mesh_.faceNode.size();
    for (std::size_t i = 0; i + 1 < elements.start.size(); ++i) {
      for (std::size_t k = elements.start[i]; k < elements.start[i + 1]; ++k) {
        std::int64_t const node = elements.entry[k];
        if (node < 1 || node > file_.nNodes()) {
          file_.Fail(NameOfElement(sections_, section.first + static_cast<std::int64_t>(i)) + " has node " +
                     std::to_string(node) + ", but there are " + std::to_string(file_.nNodes()));
        }
        mesh_.faceNode.push_back(static_cast<int>(node) - 1);
      }
    }
    for (std::size_t i = 1; i < elements.start.size(); ++i)
      mesh_.faceStart.push_back(nBefore + elements.start[i]);
    for (std::int64_t element = section.first; element <= section.last; ++element) {
      result_.surfaces.push_back({element, s, static_cast<int>(mesh_.owner.size())});
      mesh_.owner.push_back(-1);
    }
    if (!hasCells_) KeepParents(section, std::move(elements.parent));
  }

  void KeepParents(CgnsSection const& section, std::vector<std::int64_t> parent) {
    if (parent.empty()) {
      file_.Fail("section " + Quoted(section.name) +
                 " has neither parent elements nor a section of cells (NFACE_n) that uses it");
    }
    auto const half = parent.begin() + static_cast<std::ptrdiff_t>(section.size());
    firstParent_.insert(firstParent_.end(), parent.begin(), half);
    secondParent_.insert(secondParent_.end(), half, parent.end());
  }

  int FaceOfElement(std::int64_t element) const {
    auto const found = std::lower_bound(
        result_.surfaces.begin(), result_.surfaces.end(), element,
        [](CgnsSurface const& surface, std::int64_t wanted) { return surface.element < wanted; });
    if (found == result_.surfaces.end() || found->element != element) {
      file_.Fail(NameOfElement(sections_, atWork_) + " has face " + std::to_string(element) +
                 ", which is not a polygon (NGON_n)");
    }
    return found->face;
  }

  // NFACE_n: the faces of a cell by their element number, negative where they point into the cell.
  void AddCells() {
    for (CgnsSection const& section : sections_) {
      if (!IsCgnsPolyhedra(section)) continue;
      CgnsElements const elements = file_.Elements(section);
      if (mesh_.nCells + section.size() > kMostItems) file_.Fail("more cells than an int can count");
      for (std::int64_t i = 0; i < section.size(); ++i, ++mesh_.nCells) {
        atWork_ = section.first + i;
        for (std::size_t k = elements.start[i]; k < elements.start[i + 1]; ++k) {
          std::int64_t const signedElement = elements.entry[k];
          bool const pointsOut = signedElement > 0;
          // The number whose negative overflows is not an element, either.
          bool const fits = signedElement != std::numeric_limits<std::int64_t>::min();
          Attach(FaceOfElement(pointsOut || !fits ? signedElement : -signedElement), mesh_.nCells, pointsOut);
        }
        elementOfCell_.push_back(atWork_);
      }
    }
    if (mesh_.nCells != file_.nCells()) {
      file_.Fail("the zone has " + std::to_string(file_.nCells()) + " cells, its sections have " +
                 std::to_string(mesh_.nCells));
    }
  }

  void Attach(int face, int cell, bool pointsOut) {
    int& side = pointsOut ? mesh_.owner[face] : mesh_.neighbour[face];
    if (side >= 0) {
      file_.Fail(NameOfElement(sections_, result_.surfaces[face].element) + " points " +
                 (pointsOut ? "out of" : "into") + " two cells, " + NameOfCell(side) + " and " +
                 NameOfCell(cell));
    }
    side = cell;
  }

  /// @pre the cell exists
  std::string NameOfCell(int cell) const {
    // The last cell has no entry yet: its section is the current one.
    auto const known = static_cast<std::size_t>(cell) < elementOfCell_.size();
    return NameOfElement(sections_, known ? elementOfCell_[cell] : atWork_);
  }

  /// Parents are element numbers of cells, which have no section; the lowest number is the first cell.
  void AddCellsOfParents() {
    std::int64_t lowest = std::numeric_limits<std::int64_t>::max(), highest = 0;
    for (auto const* parents : {&firstParent_, &secondParent_}) {
      for (std::int64_t const cell : *parents) {
        if (cell != 0) lowest = std::min(lowest, cell);
        highest = std::max(highest, cell);
      }
    }
    if (lowest < 1 || highest - lowest + 1 != file_.nCells()) {
      file_.Fail("the parent elements are cells " + std::to_string(lowest) + " to " +
                 std::to_string(highest) + ", but the zone has " + std::to_string(file_.nCells()) + " cells");
    }
    // A cell has at least four faces. This check comes before tables are allocated by a number that may be
    // nonsense.
    if (file_.nCells() > static_cast<std::int64_t>(2 * firstParent_.size()) / 4) {
      file_.Fail("the zone has " + std::to_string(file_.nCells()) + " cells, which " +
                 std::to_string(firstParent_.size()) + " faces cannot close");
    }
    mesh_.nCells = static_cast<int>(file_.nCells());
    firstCell_ = lowest;
    auto const ownNumber = [lowest](std::int64_t cell) {
      return cell == 0 ? -1 : static_cast<int>(cell - lowest);
    };
    for (std::size_t f = 0; f < firstParent_.size(); ++f) {
      mesh_.owner[f] = ownNumber(firstParent_[f]);
      mesh_.neighbour[f] = ownNumber(secondParent_[f]);
    }
  }

  /// Gives every face an owner that it points out of.
  void OrientFaces() {
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.owner[f] >= 0) continue;
      if (mesh_.neighbour[f] < 0) {
        file_.Fail(NameOfElement(sections_, result_.surfaces[f].element) + " belongs to no cell");
      }
      std::swap(mesh_.owner[f], mesh_.neighbour[f]);
      TurnFace(mesh_, f);
    }
    // Some programs reverse all directions. The sign of the volume inside the boundary shows it.
    if (mesh_.nFaces() > 0 && HasFullFaces() && SignedVolume3(mesh_) < 0.0) {
      for (int f = 0; f < mesh_.nFaces(); ++f) TurnFace(mesh_, f);
    }
  }

  /// Faces of fewer than three nodes have no fan; the mesh check rejects them.
  bool HasFullFaces() const {
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.faceStart[f + 1] - mesh_.faceStart[f] < 3) return false;
    }
    return true;
  }

  void DropUnusedPoints() {
    std::vector<int>& pointOfNode = result_.pointOfNode;
    pointOfNode.assign(mesh_.points.size(), -1);
    for (int const node : mesh_.faceNode) pointOfNode[node] = 0;
    int next = 0;
    for (std::size_t n = 0; n < pointOfNode.size(); ++n) {
      if (pointOfNode[n] < 0) continue;
      mesh_.points[next] = mesh_.points[n];
      pointOfNode[n] = next++;
    }
    mesh_.points.resize(next);
    for (int& node : mesh_.faceNode) node = pointOfNode[node];
  }

  void NameParts() {
    std::vector<int> node(mesh_.points.size());
    for (std::size_t n = 0; n < result_.pointOfNode.size(); ++n) {
      if (result_.pointOfNode[n] >= 0) node[result_.pointOfNode[n]] = static_cast<int>(n);
    }
    std::vector<std::int64_t> faces;
    faces.reserve(result_.surfaces.size());
    for (CgnsSurface const& surface : result_.surfaces) faces.push_back(surface.element);
    mesh_.names = std::make_shared<const MeshNames>(
        MeshNames{"node", [nodes = std::move(node)](int point) { return nodes[point] + std::int64_t{1}; },
                  [sections = sections_, first = firstCell_, cells = std::move(elementOfCell_)](int cell) {
                    return NameOfElement(sections, cells.empty() ? first + cell : cells[cell]);
                  },
                  [sections = sections_, elements = std::move(faces)](int face) {
                    return NameOfElement(sections, elements[face]);
                  }});
  }

  /// So far, every polygon counts as a surface with its face.
  void FindSurfaces() {
    for (CgnsSurface& surface : result_.surfaces) {
      if (mesh_.neighbour[surface.face] >= 0) surface.face = -1;
    }
  }

  CgnsFile const& file_;
  std::vector<CgnsSection> const& sections_;
  CgnsTopology result_;
  FaceMesh& mesh_;
  bool hasCells_ = false;
  std::vector<std::int64_t> elementOfCell_;  // of NFACE_n
  std::int64_t atWork_ = 0;                  // element whose faces are being attached
  std::int64_t firstCell_ = 0;               // of the parents
  std::vector<std::int64_t> firstParent_, secondParent_;
};

}  // namespace

CgnsTopology JoinCgnsPolyhedra(CgnsFile const& file, std::vector<CgnsSection> const& sections) {
  return PolyhedronJoiner(file, sections).Join();
}

bool HasCgnsPolygons(std::vector<CgnsSection> const& sections) {
  return std::any_of(sections.begin(), sections.end(), [](CgnsSection const& section) {
    return IsCgnsPolygons(section) || IsCgnsPolyhedra(section);
  });
}

}  // namespace reference_host
