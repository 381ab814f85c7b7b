#include "reference_host/partition/HostNumbering.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/partition/CuthillMcKee.h"

namespace reference_host {
namespace {

void CheckCount(std::size_t count, char const* what) {
  // Below the largest int, so that the length of a 1-based array is an int, too.
  if (count >= static_cast<std::size_t>(INT_MAX)) {
    throw MeshError("mesh has " + std::to_string(count) + " " + what + " in one partition, more than " +
                    std::to_string(INT_MAX - 1) + ": use more partitions");
  }
}

bool IsOwned(MeshPart const& part, int cell) { return cell >= 0 && cell < part.nOwned; }

int OtherCell(MeshPart const& part, int face, int cell) {
  return part.owner[face] == cell ? part.neighbour[face] : part.owner[face];
}

FaceKind KindOfBoundaryFace(MeshPart const& part, int face) {
  int const patch = part.facePatch[face];
  if (patch < 0 || patch >= static_cast<int>(part.patches.size())) {
    throw MeshError("boundary face of cell " + std::to_string(part.globalCell[part.owner[face]] + 1) +
                    " belongs to no patch");
  }
  if (!part.patches[patch].group) {
    throw MeshError("patch '" + part.patches[patch].name + "' has no boundary group");
  }
  return KindOf(*part.patches[patch].group);
}

void FindFaceKinds(MeshPart const& part, HostNumbering& numbering) {
  numbering.kind.resize(part.owner.size());
  for (int f = 0; f < part.nFaces(); ++f) {
    if (part.neighbour[f] < 0) {
      numbering.kind[f] = KindOfBoundaryFace(part, f);
    } else {
      bool const isInner = IsOwned(part, part.owner[f]) && IsOwned(part, part.neighbour[f]);
      numbering.kind[f] = isInner ? FaceKind::Inner : FaceKind::Partition;
    }
  }
}

/// Collects the faces of each owned cell by counting: lengths, starts, entries.
void CollectCellFaces(MeshPart const& part, HostNumbering& numbering) {
  std::vector<std::size_t>& start = numbering.cellFaceStart;
  start.assign(part.nOwned + 1, 0);
  for (int f = 0; f < part.nFaces(); ++f) {
    for (int const c : {part.owner[f], part.neighbour[f]}) {
      if (IsOwned(part, c)) ++start[c + 1];
    }
  }
  std::partial_sum(start.begin(), start.end(), start.begin());

  std::vector<std::size_t> next(start.begin(), start.end() - 1);
  numbering.cellFace.resize(start.back());
  for (int f = 0; f < part.nFaces(); ++f) {
    for (int const c : {part.owner[f], part.neighbour[f]}) {
      if (IsOwned(part, c)) numbering.cellFace[next[c]++] = f;
    }
  }
}

/// The owned cells in Cuthill-McKee order, which keeps neighbours close together in memory.
std::vector<int> OrderOwnedCells(MeshPart const& part, HostNumbering const& numbering) {
  std::vector<std::size_t> rowStart(1, 0);
  rowStart.reserve(part.nOwned + 1);
  std::vector<int> columns;
  columns.reserve(numbering.cellFace.size());
  for (int c = 0; c < part.nOwned; ++c) {
    for (std::size_t i = numbering.cellFaceStart[c]; i < numbering.cellFaceStart[c + 1]; ++i) {
      int const f = numbering.cellFace[i];
      if (numbering.kind[f] == FaceKind::Inner) columns.push_back(OtherCell(part, f, c));
    }
    rowStart.push_back(columns.size());
  }
  return CuthillMcKee(rowStart, columns);
}

void NumberInteriorCells(MeshPart const& part, HostNumbering& numbering) {
  std::vector<int> const order = OrderOwnedCells(part, numbering);
  numbering.nInterior = part.nOwned;
  numbering.cell.assign(part.globalCell.size(), 0);
  numbering.partCell.assign(1, -1);
  numbering.partCell.insert(numbering.partCell.end(), order.begin(), order.end());
  for (int c = 1; c <= numbering.nInterior; ++c) numbering.cell[numbering.partCell[c]] = c;
}

std::array<int, kFaceKinds> CountKinds(HostNumbering const& numbering) {
  std::array<int, kFaceKinds> count{};
  for (FaceKind const kind : numbering.kind) ++count[IndexOf(kind)];
  return count;
}

void PlaceGhostCells(MeshPart const& part, std::array<int, kFaceKinds> const& nFaces,
                     HostNumbering& numbering) {
  std::size_t nCells = part.globalCell.size();
  for (FaceKind const kind : kGhostOrder) nCells += nFaces[IndexOf(kind)];
  CheckCount(nCells, "cells, ghost and halo cells included,");

  for (FaceKind const kind : kGhostOrder) {
    numbering.ghostsBefore[IndexOf(kind)] = numbering.nInterior + numbering.nGhost;
    numbering.nGhost += nFaces[IndexOf(kind)];
  }
}

/// Numbers the halo cells after all others, by owning part, then by number in the whole mesh and period, which
/// is their order in the part. So the cells of one neighbour are contiguous.
void NumberHaloCells(MeshPart const& part, HostNumbering& numbering) {
  std::vector<int> order(part.nHalo());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&part](int a, int b) { return part.haloPart[a] < part.haloPart[b]; });
  numbering.nHalo = part.nHalo();
  int next = numbering.nInterior + numbering.nGhost;
  for (int const h : order) numbering.cell[part.nOwned + h] = ++next;
}

/// Visits the cells in host order and their faces, so that every group is sorted by its CV cell. The inner
/// and partition faces of one cell are sorted by the other cell.
void NumberFaces(MeshPart const& part, std::array<int, kFaceKinds> const& nFaces, HostNumbering& numbering) {
  for (std::size_t k = 0; k < kFaceKinds; ++k) {
    numbering.partFace[k].reserve(nFaces[k] + 1);
    numbering.partFace[k].push_back(-1);
  }
  std::vector<std::pair<int, int>> toOtherCells;  // (host number of the other cell, part face)
  for (int c = 1; c <= numbering.nInterior; ++c) {
    int const partCell = numbering.partCell[c];
    toOtherCells.clear();
    for (std::size_t i = numbering.cellFaceStart[partCell]; i < numbering.cellFaceStart[partCell + 1]; ++i) {
      int const f = numbering.cellFace[i];
      FaceKind const kind = numbering.kind[f];
      if (IsBoundary(kind)) {
        numbering.partFace[IndexOf(kind)].push_back(f);
        continue;
      }
      // An inner face belongs to its lower cell. Halo cells have the highest numbers of all.
      int const other = numbering.cell[OtherCell(part, f, partCell)];
      if (other > c) toOtherCells.emplace_back(other, f);
    }
    std::sort(toOtherCells.begin(), toOtherCells.end());
    for (auto const& toOther : toOtherCells) {
      numbering.partFace[IndexOf(numbering.kind[toOther.second])].push_back(toOther.second);
    }
  }

  numbering.face.resize(part.owner.size());
  for (std::vector<int> const& partFaces : numbering.partFace) {
    for (std::size_t f = 1; f < partFaces.size(); ++f) numbering.face[partFaces[f]] = static_cast<int>(f);
  }
}

}  // namespace

HostNumbering NumberPartition(MeshPart const& part) {
  CheckCount(part.owner.size(), "faces");
  CheckCount(part.points.size(), "nodes");

  HostNumbering numbering;
  FindFaceKinds(part, numbering);
  CollectCellFaces(part, numbering);
  NumberInteriorCells(part, numbering);
  std::array<int, kFaceKinds> const nFaces = CountKinds(numbering);
  PlaceGhostCells(part, nFaces, numbering);
  NumberHaloCells(part, numbering);
  NumberFaces(part, nFaces, numbering);
  return numbering;
}

std::vector<ExchangeList> BuildExchangeLists(MeshPart const& part, HostNumbering const& numbering) {
  // A neighbour needs the owned cells that share a face with one of its cells, once for each period: what is
  // beyond period k here has this side beyond period -k. A part may be its own neighbour. Both sides order
  // the cells by their numbers in the whole mesh, as part cells are, and by the period of the receiver.
  struct Message {
    int neighbourPart, cell, period;
    bool operator<(Message const& b) const {
      return std::tie(neighbourPart, cell, period) < std::tie(b.neighbourPart, b.cell, b.period);
    }
    bool operator==(Message const& b) const {
      return neighbourPart == b.neighbourPart && cell == b.cell && period == b.period;
    }
  };
  std::vector<Message> sent, received;
  for (std::size_t f = 0; f < part.owner.size(); ++f) {
    if (numbering.kind[f] != FaceKind::Partition) continue;
    bool const ownerIsOwned = IsOwned(part, part.owner[f]);
    int const owned = ownerIsOwned ? part.owner[f] : part.neighbour[f];
    int const halo = ownerIsOwned ? part.neighbour[f] : part.owner[f];
    int const neighbourPart = part.haloPart[halo - part.nOwned];
    int const period = part.haloPeriod[halo - part.nOwned];
    sent.push_back({neighbourPart, owned, -period});
    received.push_back({neighbourPart, halo, period});
  }
  std::vector<ExchangeList> lists;
  auto const addSorted = [&lists, &numbering](std::vector<Message>& messages,
                                              std::vector<int> ExchangeList::*cells) {
    std::sort(messages.begin(), messages.end());
    messages.erase(std::unique(messages.begin(), messages.end()), messages.end());
    std::size_t list = 0;
    for (Message const& message : messages) {
      while (list < lists.size() && lists[list].part < message.neighbourPart) ++list;
      if (list == lists.size()) lists.push_back({message.neighbourPart, {}, {}});
      (lists[list].*cells).push_back(numbering.cell[message.cell]);
    }
  };
  addSorted(sent, &ExchangeList::send);
  addSorted(received, &ExchangeList::receive);
  return lists;
}

}  // namespace reference_host
