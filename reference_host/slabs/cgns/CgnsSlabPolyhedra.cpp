#include <mpi.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "reference_host/cgns/CgnsElement.h"
#include "reference_host/cgns/CgnsSectionReader.h"
#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/Vector3.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/FirstFailure.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/MpiRounds.h"
#include "reference_host/slabs/NumberSet.h"
#include "reference_host/slabs/SlabFaces.h"
#include "reference_host/slabs/UsedNodes.h"
#include "reference_host/slabs/cgns/CgnsSlabTopology.h"

namespace reference_host {
namespace {

/// Polygons or polyhedra that are read at a time: a few megabytes, unless they are very large.
constexpr std::int64_t kPolyhedraOfPiece = std::int64_t{1} << 14;

/// The elements of several sections, numbered from 0 one section after the other.
class ConsecutiveElements {
 public:
  void Add(CgnsSection const& section) {
    sections_.push_back(section);
    start_.push_back(start_.back() + section.size());
  }

  std::int64_t size() const { return start_.back(); }

  std::int64_t ElementOf(std::int64_t number) const {
    std::size_t const s = SectionOf(number);
    return sections_[s].first + number - start_[s];
  }

  /// -1: none of them.
  std::int64_t NumberOf(std::int64_t element) const {
    auto const section =
        std::lower_bound(sections_.begin(), sections_.end(), element,
                         [](CgnsSection const& one, std::int64_t wanted) { return one.last < wanted; });
    if (section == sections_.end() || section->first > element) return -1;
    return start_[static_cast<std::size_t>(section - sections_.begin())] + element - section->first;
  }

  /// Calls visit(section, first, n) for the pieces of begin .. end - 1 that lie in one section each; `first` counts
  /// from 0 within it.
  template <class Visit>
  void ForEachPiece(std::int64_t begin, std::int64_t end, Visit const& visit) const {
    for (std::size_t s = begin < end ? SectionOf(begin) : sections_.size();
         s < sections_.size() && begin < end; ++s) {
      std::int64_t const n = std::min(end, start_[s + 1]) - begin;
      visit(sections_[s], begin - start_[s], n);
      begin += n;
    }
  }

 private:
  std::size_t SectionOf(std::int64_t number) const {
    return static_cast<std::size_t>(std::upper_bound(start_.begin(), start_.end(), number) - start_.begin()) -
           1;
  }

  std::vector<CgnsSection> sections_;
  std::vector<std::int64_t> start_ = {0};
};

/// A face of a cell as the list of the cell has it.
struct SideOfCell {
  std::int64_t face;
  std::int64_t cell;
  std::int64_t pointsOut;  ///< 1: the face points out of the cell, 0: into it
};

/// As the class that reads the whole: faces come from NGON_n sections. Their cells come from NFACE_n sections, where a
/// face with positive sign points out of the cell; or else from the parent elements of the faces, where a face points
/// from the first to the second.
class PolyhedronSlabReader {
 public:
  PolyhedronSlabReader(MpiCommunicator const& communicator, CgnsFile const& file,
                       std::vector<CgnsSection> const& sections)
      : communicator_(communicator),
        rank_(communicator.rank()),
        file_(file),
        sections_(sections),
        mesh_(result_.mesh) {}

  CgnsSlabTopology Read() {
    SortSections();
    mesh_.faces = BlockRanges::Even(polygons_.size(), communicator_.size());
    mesh_.nodes = BlockRanges::Even(file_.nNodes(), communicator_.size());
    RunTogether(communicator_, [this] {
      ReadPoints();
      ReadFaces();
    });
    auto const nFaces = static_cast<std::size_t>(mesh_.faces.Size(rank_));
    mesh_.facePatch.assign(nFaces, -1);
    if (polyhedra_.size() > 0) {
      mesh_.owner.assign(nFaces, -1);
      mesh_.neighbour.assign(nFaces, -1);
      AttachCells();
    } else {
      AttachParents();
    }
    mesh_.cells = BlockRanges::Even(file_.nCells(), communicator_.size());
    OrientFaces();
    DropUnusedNodes();
    NameParts();
    return std::move(result_);
  }

 private:
  void SortSections() {
    for (CgnsSection const& section : sections_) {
      if (IsCgnsPolygons(section)) {
        polygons_.Add(section);
      } else if (IsCgnsPolyhedra(section)) {
        polyhedra_.Add(section);
      } else if (!IsCgnsEdge(section)) {
        file_.Fail("section " + Quoted(section.name) +
                   " has standard elements besides polygons (NGON_n); only one or the other can be read");
      }
    }
  }

  void ReadPoints() {
    std::int64_t const n = mesh_.nodes.Size(rank_);
    if (n > 0 || file_.nNodes() == 0) mesh_.points = file_.Points(mesh_.nodes.First(rank_), n);
  }

  void ReadFaces() {
    mesh_.faceStart.reserve(static_cast<std::size_t>(mesh_.faces.Size(rank_)) + 1);
    polygons_.ForEachPiece(mesh_.faces.First(rank_), mesh_.faces.End(rank_),
                           [this](CgnsSection const& section, std::int64_t first, std::int64_t n) {
                             CgnsSectionReader const reader(file_, section);
                             for (std::int64_t done = 0; done < n; done += kPolyhedraOfPiece) {
                               std::int64_t const nOfPiece = std::min(kPolyhedraOfPiece, n - done);
                               AddFaces(section, first + done, reader.Read(first + done, nOfPiece));
                             }
                             if (polyhedra_.size() == 0) KeepParents(section, reader, first, n);
                           });
  }

  void AddFaces(CgnsSection const& section, std::int64_t first, CgnsElements const& elements) {
    for (std::size_t i = 0; i + 1 < elements.start.size(); ++i) {
      for (std::size_t k = elements.start[i]; k < elements.start[i + 1]; ++k) {
        std::int64_t const node = elements.entry[k];
        if (node < 1 || node > file_.nNodes()) {
          file_.Fail(NameOfElement(sections_, section.first + first + static_cast<std::int64_t>(i)) +
                     " has node " + std::to_string(node) + ", but there are " +
                     std::to_string(file_.nNodes()));
        }
        mesh_.faceNode.push_back(node - 1);
      }
      mesh_.faceStart.push_back(mesh_.faceNode.size());
    }
  }

  /// Owner and neighbour are the numbers in the file for the time being.
  void KeepParents(CgnsSection const& section, CgnsSectionReader const& reader, std::int64_t first,
                   std::int64_t n) {
    if (!section.hasParents) {
      file_.Fail("section " + Quoted(section.name) +
                 " has neither parent elements nor a section of cells (NFACE_n) that uses it");
    }
    std::vector<std::int64_t> const parents = reader.ReadParents(first, n);
    mesh_.owner.insert(mesh_.owner.end(), parents.begin(), parents.begin() + n);
    mesh_.neighbour.insert(mesh_.neighbour.end(), parents.begin() + n, parents.end());
  }

  // NFACE_n: the faces of a cell by their element number, negative where they point into the cell. Each rank reads a
  // block of the cells and tells the ranks of the faces.
  void AttachCells() {
    BlockRanges const blocks = BlockRanges::Even(polyhedra_.size(), communicator_.size());
    std::int64_t const begin = blocks.First(rank_), end = blocks.End(rank_);
    std::size_t const nRounds = CountRounds(communicator_, static_cast<std::size_t>(end - begin),
                                            static_cast<std::size_t>(kPolyhedraOfPiece));
    std::vector<SideOfCell> sides;
    for (std::size_t round = 0; round < nRounds; ++round) {
      std::int64_t const first = std::min(end, begin + static_cast<std::int64_t>(round) * kPolyhedraOfPiece);
      sides.clear();
      RunTogether(communicator_, [&] { ReadCells(first, std::min(end, first + kPolyhedraOfPiece), sides); });
      RankLists<SideOfCell> const here =
          SwapLists(communicator_, ListsByRank<SideOfCell>(
                                       communicator_.size(), sides.size(),
                                       [&](std::size_t i) { return mesh_.faces.BlockOf(sides[i].face); },
                                       [&](std::size_t i) { return sides[i]; }));
      for (SideOfCell const& side : here.items) Attach(side);
    }
    reader_.reset();
    failure_.ThrowIfAny(communicator_);
    if (polyhedra_.size() != file_.nCells()) {
      file_.Fail("the zone has " + std::to_string(file_.nCells()) + " cells, its sections have " +
                 std::to_string(polyhedra_.size()));
    }
  }

  void ReadCells(std::int64_t begin, std::int64_t end, std::vector<SideOfCell>& sides) {
    polyhedra_.ForEachPiece(begin, end, [&](CgnsSection const& section, std::int64_t first, std::int64_t n) {
      if (!reader_ || readerSection_ != section.index) {
        reader_ = std::make_unique<CgnsSectionReader>(file_, section);
        readerSection_ = section.index;
      }
      CgnsElements const elements = reader_->Read(first, n);
      for (std::size_t i = 0; i + 1 < elements.start.size(); ++i) {
        std::int64_t const element = section.first + first + static_cast<std::int64_t>(i);
        std::int64_t const cell = polyhedra_.NumberOf(element);
        for (std::size_t k = elements.start[i]; k < elements.start[i + 1]; ++k) {
          AddSide(cell, element, elements.entry[k], sides);
        }
      }
    });
  }

  void AddSide(std::int64_t cell, std::int64_t element, std::int64_t signedFace,
               std::vector<SideOfCell>& sides) {
    bool const pointsOut = signedFace > 0;
    // The number whose negative overflows is not an element, either.
    bool const fits = signedFace != std::numeric_limits<std::int64_t>::min();
    std::int64_t const elementOfFace = pointsOut || !fits ? signedFace : -signedFace;
    std::int64_t const face = polygons_.NumberOf(elementOfFace);
    if (face < 0) {
      failure_.Note(cell, file_.Name() + ": " + NameOfElement(sections_, element) + " has face " +
                              std::to_string(elementOfFace) + ", which is not a polygon (NGON_n)");
    } else {
      sides.push_back({face, cell, pointsOut ? 1 : 0});
    }
  }

  /// The cells of one face may come in any order. Of those on one side, the lowest stays, and reading in order would
  /// find fault with the next one.
  void Attach(SideOfCell const& side) {
    auto const f = static_cast<std::size_t>(side.face - mesh_.faces.First(rank_));
    std::int64_t& held = side.pointsOut != 0 ? mesh_.owner[f] : mesh_.neighbour[f];
    if (held >= 0) {
      std::int64_t const first = std::min(held, side.cell), second = std::max(held, side.cell);
      failure_.Note(second, file_.Name() + ": " + NameOfFaceElement(side.face) + " points " +
                                (side.pointsOut != 0 ? "out of" : "into") + " two cells, " +
                                NameOfCellElement(first) + " and " + NameOfCellElement(second));
      held = first;
    } else {
      held = side.cell;
    }
  }

  std::string NameOfFaceElement(std::int64_t face) const {
    return NameOfElement(sections_, polygons_.ElementOf(face));
  }
  std::string NameOfCellElement(std::int64_t cell) const {
    return NameOfElement(sections_, polyhedra_.ElementOf(cell));
  }

  /// Parents are element numbers of cells, which have no section; the lowest number is the first cell.
  void AttachParents() {
    std::int64_t lowest = std::numeric_limits<std::int64_t>::max(), highest = 0;
    for (auto const* parents : {&mesh_.owner, &mesh_.neighbour}) {
      for (std::int64_t const cell : *parents) {
        if (cell != 0) lowest = std::min(lowest, cell);
        highest = std::max(highest, cell);
      }
    }
    MPI_Allreduce(MPI_IN_PLACE, &lowest, 1, MPI_INT64_T, MPI_MIN, communicator_.get());
    MPI_Allreduce(MPI_IN_PLACE, &highest, 1, MPI_INT64_T, MPI_MAX, communicator_.get());
    if (lowest < 1 || highest - lowest + 1 != file_.nCells()) {
      file_.Fail("the parent elements are cells " + std::to_string(lowest) + " to " +
                 std::to_string(highest) + ", but the zone has " + std::to_string(file_.nCells()) + " cells");
    }
    // A cell has at least four faces.
    if (file_.nCells() > 2 * polygons_.size() / 4) {
      file_.Fail("the zone has " + std::to_string(file_.nCells()) + " cells, which " +
                 std::to_string(polygons_.size()) + " faces cannot close");
    }
    firstCell_ = lowest;
    for (auto* parents : {&mesh_.owner, &mesh_.neighbour}) {
      for (std::int64_t& cell : *parents) cell = cell == 0 ? -1 : cell - lowest;
    }
  }

  void TurnFace(std::size_t f) {
    std::reverse(mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f]),
                 mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f + 1]));
  }

  /// Gives every face an owner that it points out of.
  void OrientFaces() {
    RunTogether(communicator_, [this] {
      for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) {
        if (mesh_.owner[f] >= 0) continue;
        if (mesh_.neighbour[f] < 0) {
          file_.Fail(NameOfFaceElement(mesh_.NumberOfFace(f, rank_)) + " belongs to no cell");
        }
        std::swap(mesh_.owner[f], mesh_.neighbour[f]);
        TurnFace(f);
      }
    });
    // Some programs reverse all directions. The sign of the volume inside the boundary shows it.
    if (polygons_.size() > 0 && HasFullFaces() && SignedVolume3() < 0.0) {
      for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) TurnFace(f);
    }
  }

  /// Faces of fewer than three nodes have no fan; the mesh check rejects them.
  bool HasFullFaces() const {
    std::int64_t nSmall = 0;
    for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) {
      if (mesh_.faceStart[f + 1] - mesh_.faceStart[f] < 3) ++nSmall;
    }
    return SumOverRanks(communicator_, nSmall) == 0;
  }

  /// Three times the volume inside the boundary of the whole mesh, negative if its faces point inwards.
  double SignedVolume3() const {
    std::vector<std::int64_t> node;
    for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) {
      if (mesh_.neighbour[f] >= 0) continue;
      node.insert(node.end(), mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f]),
                  mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f + 1]));
    }
    std::sort(node.begin(), node.end());
    node.erase(std::unique(node.begin(), node.end()), node.end());
    std::vector<Point> points(node.size());
    FetchInRounds<Point>(
        communicator_, mesh_.nodes, node,
        [this](std::int64_t own) { return mesh_.points[static_cast<std::size_t>(own)]; },
        [&](std::size_t i, Point const& point) { points[i] = point; });
    int const rankOfFirst = mesh_.nodes.BlockOf(0);
    Point reference = rank_ == rankOfFirst ? mesh_.points.front() : Point{};
    MPI_Bcast(reference.data(), 3, MPI_DOUBLE, rankOfFirst, communicator_.get());

    double volume3 = 0.0;
    std::vector<int> face;
    for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) {
      if (mesh_.neighbour[f] >= 0) continue;
      face.clear();
      for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
        face.push_back(
            static_cast<int>(std::lower_bound(node.begin(), node.end(), mesh_.faceNode[i]) - node.begin()));
      }
      FaceFan const fan = ComputeFaceFan(points, face.data(), static_cast<int>(face.size()));
      volume3 += Dot(fan.area, Difference(fan.apex, reference));
    }
    MPI_Allreduce(MPI_IN_PLACE, &volume3, 1, MPI_DOUBLE, MPI_SUM, communicator_.get());
    return volume3;
  }

  void DropUnusedNodes() {
    NumberSet set(file_.nNodes());
    for (std::int64_t const node : mesh_.faceNode) set.Insert(node);
    set.Count();
    std::vector<std::int64_t> used = set.Ascending();
    BlockRanges const fileNodes = mesh_.nodes;
    NumberedNodes numbered = NumberUsedNodes(communicator_, fileNodes,
                                             CountUsers(communicator_, fileNodes, used), mesh_.points, used);
    for (std::int64_t& node : mesh_.faceNode) node = used[static_cast<std::size_t>(set.PlaceOf(node))];
    mesh_.names.nodeNumber = NamesOfUsedNodes(numbered, fileNodes, rank_);
    mesh_.nodes = std::move(numbered.nodes);
  }

  void NameParts() {
    mesh_.names.cell = [sections = sections_, polyhedra = polyhedra_, first = firstCell_](std::int64_t cell) {
      return NameOfElement(sections, polyhedra.size() > 0 ? polyhedra.ElementOf(cell) : first + cell);
    };
    mesh_.names.face = [sections = sections_, polygons = polygons_](std::int64_t face) {
      return NameOfElement(sections, polygons.ElementOf(face));
    };
    result_.elementOfFace.reserve(mesh_.nOwnFaces());
    for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) {
      bool const isBoundary = mesh_.neighbour[f] < 0;
      result_.elementOfFace.push_back(isBoundary ? polygons_.ElementOf(mesh_.NumberOfFace(f, rank_)) : -1);
    }
  }

  MpiCommunicator const& communicator_;
  int rank_;
  CgnsFile const& file_;
  std::vector<CgnsSection> const& sections_;
  CgnsSlabTopology result_;
  MeshSlab& mesh_;
  ConsecutiveElements polygons_, polyhedra_;
  std::unique_ptr<CgnsSectionReader> reader_;  // of cells
  int readerSection_ = 0;
  FirstFailure failure_;
  std::int64_t firstCell_ = 0;  // of the parents
};

}  // namespace

CgnsSlabTopology JoinCgnsSlabPolyhedra(MpiCommunicator const& communicator, CgnsFile const& file,
                                       std::vector<CgnsSection> const& sections) {
  return PolyhedronSlabReader(communicator, file, sections).Read();
}

}  // namespace reference_host
