#include "reference_host/parallel/DecomposedPartBuilder.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <tuple>

#include "reference_host/mesh/Vector3.h"
#include "reference_host/parallel/MpiAgreement.h"

namespace reference_host {

DecomposedPartBuilder::DecomposedPartBuilder(MpiCommunicator const& communicator,
                                             ProcessorMesh const& processor, ProcessorCuts const& cuts,
                                             DecomposedNumbers const& numbers)
    : communicator_(communicator), processor_(processor), cuts_(cuts), numbers_(numbers) {
  part_.part = communicator.rank();
  part_.nParts = communicator.size();
  part_.patches = processor.mesh.patches;
  part_.shifts = cuts.shifts();
}

MeshPart DecomposedPartBuilder::Build() {
  FetchHalo();
  RunTogether(communicator_, [&] {
    NumberCells();
    NumberNodes();
    AddHaloNodes();
    AddFaces();
  });
  return std::move(part_);
}

/// The nodes of the cells at the cuts, ascending by their numbers in the whole mesh; empty for other cells.
std::vector<std::vector<int>> DecomposedPartBuilder::NodesOfCutCells() const {
  FaceMesh const& mesh = processor_.mesh;
  std::vector<char> isAtCut(static_cast<std::size_t>(mesh.nCells), 0);
  for (ProcessorCut const& cut : processor_.cuts) {
    for (int k = 0; k < cut.nFaces; ++k) isAtCut[CellAtCut(cut, k)] = 1;
  }
  std::vector<std::vector<int>> nodes(isAtCut.size());
  for (int f = 0; f < mesh.nFaces(); ++f) {
    for (int const cell : {mesh.owner[f], mesh.neighbour[f]}) {
      if (cell < 0 || isAtCut[cell] == 0) continue;
      nodes[cell].insert(nodes[cell].end(),
                         mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
                         mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
    }
  }
  for (std::vector<int>& ofCell : nodes) {
    std::sort(ofCell.begin(), ofCell.end(),
              [this](int a, int b) { return numbers_.node[a] < numbers_.node[b]; });
    ofCell.erase(std::unique(ofCell.begin(), ofCell.end()), ofCell.end());
  }
  return nodes;
}

/// @param[in] mates,places  by cut: numbers and places of the neighbour's nodes at cuts_.Nodes
/// @return ascending by cell, period, node and mate, each once
std::vector<DecomposedPartBuilder::SharedNode> DecomposedPartBuilder::NodesSharedBeyondPeriods(
    std::vector<std::vector<std::int64_t>> const& mates,
    std::vector<std::vector<Point>> const& places) const {
  std::vector<SharedNode> shared;
  for (std::size_t i = 0; i < processor_.cuts.size(); ++i) {
    ProcessorCut const& cut = processor_.cuts[i];
    if (cut.period == 0) continue;
    for (int k = 0; k < cut.nFaces; ++k) {
      for (std::size_t n = cuts_.Start(i)[k]; n < cuts_.Start(i)[k + 1]; ++n) {
        shared.push_back({CellAtCut(cut, k), cut.period, cuts_.Nodes(i)[n], mates[i][n], places[i][n]});
      }
    }
  }
  auto const key = [](SharedNode const& s) { return std::tie(s.cell, s.period, s.node, s.mate); };
  std::sort(shared.begin(), shared.end(),
            [&key](SharedNode const& a, SharedNode const& b) { return key(a) < key(b); });
  shared.erase(std::unique(shared.begin(), shared.end(),
                           [&key](SharedNode const& a, SharedNode const& b) { return key(a) == key(b); }),
               shared.end());
  return shared;
}

// Sends to each neighbour the cell of every face of the cut; then, once for each of these cells, its number,
// its number of nodes and their numbers. The positions of the nodes are a list of their own. Beyond a period,
// the neighbour shares the nodes of the cell's faces in that period: it is sent its own numbers of these, as
// -1 - number, and its own positions.
void DecomposedPartBuilder::FetchHalo() {
  std::size_t const nCuts = processor_.cuts.size();
  std::vector<std::vector<std::int64_t>> cellOfFace(nCuts), words(nCuts);
  std::vector<std::vector<Point>> points(nCuts);
  std::vector<std::vector<std::int64_t>> const mates = cuts_.SwapNodeValues(numbers_.node);
  std::vector<std::vector<Point>> const places = cuts_.SwapNodeValues(processor_.mesh.points);
  RunTogether(communicator_, [&] {
    std::vector<std::vector<int>> const nodesOfCell = NodesOfCutCells();
    std::vector<SharedNode> const shared = NodesSharedBeyondPeriods(mates, places);
    for (std::size_t i = 0; i < nCuts; ++i) {
      ProcessorCut const& cut = processor_.cuts[i];
      std::vector<int> cells;
      for (int k = 0; k < cut.nFaces; ++k) {
        cells.push_back(CellAtCut(cut, k));
        cellOfFace[i].push_back(numbers_.cell[cells.back()]);
      }
      std::sort(cells.begin(), cells.end());
      cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
      for (int const cell : cells) {
        words[i].push_back(numbers_.cell[cell]);
        std::size_t const nNodesAt = words[i].size();
        words[i].push_back(0);
        auto const add = [&](std::int64_t number, Point const& place) {
          words[i].push_back(number);
          points[i].push_back(place);
          ++words[i][nNodesAt];
        };
        for (int const node : nodesOfCell[cell]) {
          auto const same = [&](SharedNode const& s) {
            return s.cell == cell && s.period == cut.period && s.node == node;
          };
          auto at = std::lower_bound(shared.begin(), shared.end(), std::make_tuple(cell, cut.period, node),
                                     [](SharedNode const& s, std::tuple<int, int, int> const& wanted) {
                                       return std::make_tuple(s.cell, s.period, s.node) < wanted;
                                     });
          if (at == shared.end() || !same(*at)) add(numbers_.node[node], processor_.mesh.points[node]);
          for (; at != shared.end() && same(*at); ++at) add(-1 - at->mate, at->place);
        }
      }
    }
  });
  cellBeyond_ = cuts_.neighbours().Swap(cellOfFace);
  words = cuts_.neighbours().Swap(words);
  points = cuts_.neighbours().Swap(points);
  RunTogether(communicator_, [&] {
    for (std::size_t i = 0; i < nCuts; ++i) UnpackHalo(i, words[i], points[i]);
  });
}

void DecomposedPartBuilder::UnpackHalo(std::size_t i, std::vector<std::int64_t> const& words,
                                       std::vector<Point> const& points) {
  ProcessorCut const& cut = processor_.cuts[i];
  std::size_t nPoints = 0;
  for (std::size_t w = 0; w < words.size();) {
    HaloCell halo = {{words[w], cut.period}, cut.neighbour, {}};
    auto const nNodes = static_cast<std::size_t>(words[w + 1]);
    w += 2;
    for (std::size_t n = 0; n < nNodes; ++n, ++w) {
      bool const isShared = words[w] < 0;
      Shifted const node = isShared ? Shifted{-1 - words[w], 0} : Shifted{words[w], cut.period};
      Point const& place = points[nPoints++];
      halo.nodes.push_back(node);
      haloPoints_.emplace_back(node,
                               node.second == 0 ? place : Sum(place, ShiftOf(part_.shifts, node.second)));
    }
    std::sort(halo.nodes.begin(), halo.nodes.end());
    halo.nodes.erase(std::unique(halo.nodes.begin(), halo.nodes.end()), halo.nodes.end());
    halo_.push_back(std::move(halo));
  }
}

void DecomposedPartBuilder::NumberCells() {
  std::size_t const n = numbers_.cell.size();
  std::vector<int> order(n);
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [this](int a, int b) { return numbers_.cell[a] < numbers_.cell[b]; });
  part_.nOwned = static_cast<int>(n);
  localCell_.resize(n);
  for (std::size_t c = 0; c < n; ++c) {
    localCell_[order[c]] = static_cast<int>(c);
    part_.globalCell.push_back(numbers_.cell[order[c]]);
  }
  std::sort(halo_.begin(), halo_.end(), [](HaloCell const& a, HaloCell const& b) { return a.cell < b.cell; });
  for (HaloCell const& halo : halo_) {
    part_.globalCell.push_back(halo.cell.first);
    part_.haloPart.push_back(halo.part);
    part_.haloPeriod.push_back(halo.cell.second);
  }
}

/// Nodes of own faces and of halo cells, ascending by their numbers in the whole mesh. A node of both keeps
/// its own position.
void DecomposedPartBuilder::NumberNodes() {
  FaceMesh const& mesh = processor_.mesh;
  localNode_.assign(mesh.points.size(), -1);
  for (int const node : mesh.faceNode) localNode_[node] = 0;
  std::vector<NumberedPoint> points;
  for (std::size_t n = 0; n < localNode_.size(); ++n) {
    if (localNode_[n] == 0) points.emplace_back(Shifted{numbers_.node[n], 0}, mesh.points[n]);
  }
  points.insert(points.end(), haloPoints_.begin(), haloPoints_.end());
  std::stable_sort(points.begin(), points.end(),
                   [](NumberedPoint const& a, NumberedPoint const& b) { return a.first < b.first; });
  points.erase(std::unique(points.begin(), points.end(),
                           [](NumberedPoint const& a, NumberedPoint const& b) { return a.first == b.first; }),
               points.end());
  for (auto const& [node, point] : points) {
    nodes_.push_back(node);
    part_.globalNode.push_back(node.first);
    part_.points.push_back(point);
  }
  for (std::size_t n = 0; n < localNode_.size(); ++n) {
    if (localNode_[n] == 0) localNode_[n] = LocalNode({numbers_.node[n], 0});
  }
}

void DecomposedPartBuilder::AddHaloNodes() {
  for (HaloCell const& halo : halo_) {
    for (Shifted const& node : halo.nodes) part_.haloNode.push_back(LocalNode(node));
    part_.haloNodeStart.push_back(part_.haloNode.size());
  }
}

/// Sorts the faces as in the whole mesh if that order is known and keeps the order of the faces in each
/// patch, which the boundary values of field files rely on. Otherwise leaves them as they are.
std::vector<int> DecomposedPartBuilder::FacesInOrder() const {
  FaceMesh const& mesh = processor_.mesh;
  std::vector<int> order(static_cast<std::size_t>(mesh.nFaces()));
  std::iota(order.begin(), order.end(), 0);
  std::vector<std::int64_t> const& address = processor_.faceAddress;
  if (address.empty()) return order;
  // Unsigned, because the file may have the number whose negative overflows.
  auto const place = [&address](int f) {
    auto const number = static_cast<std::uint64_t>(address[f]);
    return address[f] < 0 ? 0 - number : number;
  };
  for (int f = 1; f < mesh.nFaces(); ++f) {
    bool const isSamePatch = mesh.facePatch[f] >= 0 && mesh.facePatch[f] == mesh.facePatch[f - 1];
    if (isSamePatch && place(f) < place(f - 1)) return order;
  }
  std::stable_sort(order.begin(), order.end(), [&place](int a, int b) { return place(a) < place(b); });
  return order;
}

void DecomposedPartBuilder::AddFaces() {
  FaceMesh const& mesh = processor_.mesh;
  std::vector<std::pair<int, int>> cutOfFace(static_cast<std::size_t>(mesh.nFaces()), {-1, 0});
  for (std::size_t i = 0; i < processor_.cuts.size(); ++i) {
    ProcessorCut const& cut = processor_.cuts[i];
    for (int k = 0; k < cut.nFaces; ++k) cutOfFace[cut.firstFace + k] = {static_cast<int>(i), k};
  }
  for (int const f : FacesInOrder()) {
    auto const [cut, k] = cutOfFace[f];
    if (cut >= 0) {
      AddCutFace(static_cast<std::size_t>(cut), k);
    } else {
      AddOwnFace(f);
    }
  }
}

void DecomposedPartBuilder::AddOwnFace(int f) {
  FaceMesh const& mesh = processor_.mesh;
  for (std::size_t n = mesh.faceStart[f]; n < mesh.faceStart[f + 1]; ++n) {
    part_.faceNode.push_back(localNode_[mesh.faceNode[n]]);
  }
  EndFace(localCell_[mesh.owner[f]], mesh.neighbour[f] < 0 ? -1 : localCell_[mesh.neighbour[f]],
          mesh.facePatch[f]);
}

/// The cell with the lower number owns a face between two cells, as in every OpenFOAM mesh, and its side
/// determines the order of the nodes. At a period, each side has a face of its own.
void DecomposedPartBuilder::AddCutFace(std::size_t i, int k) {
  FaceMesh const& mesh = processor_.mesh;
  int const f = processor_.cuts[i].firstFace + k;
  int const own = localCell_[mesh.owner[f]];
  int const period = processor_.cuts[i].period;
  int const halo = LocalHaloCell({cellBeyond_[i][k], period});
  if (period != 0 || part_.globalCell[own] < part_.globalCell[halo]) {
    for (std::size_t n = mesh.faceStart[f]; n < mesh.faceStart[f + 1]; ++n) {
      part_.faceNode.push_back(localNode_[mesh.faceNode[n]]);
    }
    EndFace(own, halo, -1);
  } else {
    for (std::size_t n = cuts_.Start(i)[k]; n < cuts_.Start(i)[k + 1]; ++n) {
      part_.faceNode.push_back(localNode_[cuts_.Nodes(i)[n]]);
    }
    EndFace(halo, own, -1);
  }
}

void DecomposedPartBuilder::EndFace(int owner, int neighbour, int patch) {
  part_.faceStart.push_back(part_.faceNode.size());
  part_.owner.push_back(owner);
  part_.neighbour.push_back(neighbour);
  part_.facePatch.push_back(patch);
}

/// @pre the part has the node
int DecomposedPartBuilder::LocalNode(Shifted const& node) const {
  return static_cast<int>(std::lower_bound(nodes_.begin(), nodes_.end(), node) - nodes_.begin());
}

/// @pre the part has the halo cell
int DecomposedPartBuilder::LocalHaloCell(Shifted const& cell) const {
  auto const found =
      std::lower_bound(halo_.begin(), halo_.end(), cell,
                       [](HaloCell const& halo, Shifted const& wanted) { return halo.cell < wanted; });
  return part_.nOwned + static_cast<int>(found - halo_.begin());
}

}  // namespace reference_host
