#include <algorithm>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

// A closed cell has at least this many faces.
constexpr long long kFewestFaces = 4;
// No mesh comes near these limits. They catch a count that was never set before the checker reads that many
// elements or allocates marks for them.
constexpr long long kMostFaces = 1000;             // faces of a cell, on average
constexpr long long kMostNodes = 1000;             // nodes of a face, on average
constexpr long long kMostCellsPerInterior = 1000;  // ghost and halo cells for each interior cell

/// Compares the counts of one partition with each other before any array is read. Sums are wider than int.
class CountCheck {
 public:
  CountCheck(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL* partitionFaces,
             HostCheckOptions const& options, HostCheckReport& report)
      : mesh_(mesh),
        knowsPartitionFaces_(partitionFaces != nullptr),
        nPar_(partitionFaces != nullptr ? partitionFaces->NParInterFace() : 0),
        options_(options),
        report_(report) {}

  bool Check() {
    CheckSigns();
    if (!areSound_) return false;  // sums of negative counts mean nothing
    CheckCells();
    CheckFaces();
    if (options_.nodeTables) CheckNodes();
    return areSound_;
  }

 private:
  template <class... Words>
  void Tell(Words const&... words) {
    areSound_ = false;
    report_.Add(HostBreach::BadCount, 0, [&] { return Text(words...); });
  }

  long long BoundaryFaces() const {
    long long sum = 0;
    for (FaceGroupMembers const& members : face_groups::kTable) {
      if (IsBoundary(members.kind)) sum += mesh_.*members.count;
    }
    return sum;
  }

  void CheckSigns() {
    CheckSign("NCell", mesh_.NCell);
    CheckSign("NInnerCells", mesh_.NInnerCells);
    CheckSign("NInnerFaces", mesh_.NInnerFaces);
    CheckSign("NNode", mesh_.NNode);
    for (FaceGroupMembers const& members : face_groups::kTable) {
      if (IsBoundary(members.kind)) CheckSign(members.countName, mesh_.*members.count);
    }
    CheckSign("NParInterFace()", nPar_);
  }

  void CheckSign(char const* name, int count) {
    if (count < 0) Tell(name, " = ", count, " is negative");
  }

  void CheckCells() {
    long long const nBeyond = static_cast<long long>(mesh_.NCell) - mesh_.NInnerCells;
    long long const nBoundary = BoundaryFaces();
    if (nBeyond < 0) {
      Tell("NInnerCells = ", mesh_.NInnerCells, " is more than NCell = ", mesh_.NCell,
           ", which counts all cells");
    } else if (nBoundary > nBeyond) {
      Tell("NWall + NInlet + NOutlet + NSymmetry = ", nBoundary,
           " is more than NCell - NInnerCells = ", nBeyond,
           ", but every boundary face has a ghost cell of its own");
    } else if (nPar_ > 0 && nBoundary == nBeyond) {
      Tell("NParInterFace() = ", nPar_, ", but the ", nBoundary,
           " ghost cells of the boundary faces leave no halo cell of NCell - NInnerCells = ", nBeyond);
    } else if (nBeyond - nBoundary > kMostCellsPerInterior * (mesh_.NInnerCells + 1LL)) {
      Tell("NCell = ", mesh_.NCell, " has ", nBeyond, " cells beyond the ", mesh_.NInnerCells,
           " interior ones, but only ", nBoundary, " boundary and ", nPar_, " partition faces");
    }
  }

  void CheckFaces() {
    long long const nSides = 2LL * mesh_.NInnerFaces + BoundaryFaces() + nPar_;
    if (mesh_.NInnerCells == 0 && nSides > 0) {
      Tell("NInnerCells = 0, but there are ", mesh_.NInnerFaces, " inner, ", BoundaryFaces(),
           " boundary and ", nPar_, " partition faces");
    } else if (mesh_.NInnerFaces > 0 && mesh_.NInnerCells < 2) {
      Tell("NInnerFaces = ", mesh_.NInnerFaces, ", but NInnerCells = ", mesh_.NInnerCells,
           ": an inner face joins two interior cells");
    } else if (knowsPartitionFaces_ && nSides < kFewestFaces * mesh_.NInnerCells) {
      Tell("NInnerCells = ", mesh_.NInnerCells, ", but ", mesh_.NInnerFaces, " inner, ", BoundaryFaces(),
           " boundary and ", nPar_, " partition faces are fewer than ", kFewestFaces, " for each cell");
    } else if (nSides > kMostFaces * mesh_.NInnerCells) {
      Tell("NInnerCells = ", mesh_.NInnerCells, ", but ", mesh_.NInnerFaces, " inner, ", BoundaryFaces(),
           " boundary and ", nPar_, " partition faces are more than ", kMostFaces, " for each cell");
    }
  }

  void CheckNodes() {
    long long const nFaces = static_cast<long long>(mesh_.NInnerFaces) + BoundaryFaces() + nPar_;
    if (nFaces > 0 && mesh_.NNode < 4) {
      Tell("NNode = ", mesh_.NNode, ", but NInnerCells = ", mesh_.NInnerCells,
           ": a cell has at least 4 nodes");
    } else if (mesh_.NNode > kMostNodes * (nFaces + 1)) {
      Tell("NNode = ", mesh_.NNode, " is more than ", kMostNodes, " for each of the ", nFaces, " faces");
    }
  }

  CZYN3DFiniteVolumeMesh const& mesh_;
  bool const knowsPartitionFaces_;
  int const nPar_;
  HostCheckOptions const& options_;
  HostCheckReport& report_;
  bool areSound_ = true;
};

/// The cells of 1..NCell that ijPar names, ascending, each once.
std::vector<int> NamedHaloCells(HostView const& view) {
  CheckedFaceGroup const& group = view.PartitionGroup();
  std::vector<int> cells;
  if (group.other == nullptr) return cells;
  for (int f = 1; f <= group.count; ++f) {
    if (view.IsInterior(group.other[f]) || view.IsBeyond(group.other[f])) cells.push_back(group.other[f]);
  }
  std::sort(cells.begin(), cells.end());
  cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
  return cells;
}

/// Whether a boundary face names one of the cells. The last `excess` faces of each group are left out, since
/// they may not exist.
bool AreNamedByBoundaryFaces(HostView const& view, std::vector<int> const& cells, long long excess) {
  for (CheckedFaceGroup const& group : view.groups) {
    if (!group.LeadsToGhosts() || group.other == nullptr) continue;
    for (int f = 1; f <= group.count - excess; ++f) {
      if (std::binary_search(cells.begin(), cells.end(), group.other[f])) return true;
    }
  }
  return false;
}

}  // namespace

bool CheckCounts(CZYN3DFiniteVolumeMesh const* mesh, CPartitionFace_DLL* partitionFaces,
                 HostCheckOptions const& options, HostCheckReport& report) {
  return CountCheck(mesh != nullptr ? *mesh : CZYN3DFiniteVolumeMesh(), partitionFaces, options, report)
      .Check();
}

bool CheckHaloCount(HostView const& view, HostCheckReport& report) {
  std::vector<int> halo = NamedHaloCells(view);
  long long nBoundary = 0;
  for (CheckedFaceGroup const& group : view.groups) {
    if (group.LeadsToGhosts()) nBoundary += group.count;
  }
  long long const nBeyond = static_cast<long long>(view.nCell) - view.nInner;
  // If NInnerCells is too large, the first halo cells look like interior cells. A single wrong entry of ijPar
  // is reported with its face.
  auto const excessOf = [&] { return nBoundary + static_cast<long long>(halo.size()) - nBeyond; };
  if (!halo.empty() && halo.front() <= view.nInner - excessOf()) {
    halo.erase(halo.begin(), std::upper_bound(halo.begin(), halo.end(), view.nInner));
  }
  long long const excess = excessOf();
  // A cell that is both a ghost and a halo cell is reported with its faces.
  if (halo.empty() || excess <= 0 || AreNamedByBoundaryFaces(view, halo, excess)) return true;
  report.Add(HostBreach::BadCount, 0, [&] {
    return Text("NWall + NInlet + NOutlet + NSymmetry = ", nBoundary, " ghost cells and the ", halo.size(),
                " halo cells that ijPar names are more than NCell - NInnerCells = ", nBeyond);
  });
  return false;
}

}  // namespace host_check
