#include "reference_host/slabs/SlabNaming.h"

#include <algorithm>
#include <cstddef>

namespace reference_host {
namespace {

bool IsIn(BlockRanges const& ranges, std::int64_t item) { return item >= 0 && item < ranges.nItems(); }

}  // namespace

FirstOfAll FindFirst(MpiCommunicator const& communicator, std::int64_t own) {
  std::vector<std::int64_t> all(static_cast<std::size_t>(communicator.size()));
  MPI_Allgather(&own, 1, MPI_INT64_T, all.data(), 1, MPI_INT64_T, communicator.get());
  auto const first = std::min_element(all.begin(), all.end());
  return {*first, static_cast<int>(first - all.begin())};
}

bool SlabNaming::HasNames() const { return slab_.names.nodeNumber || slab_.names.cell || slab_.names.face; }

std::int64_t SlabNaming::NodeNumber(std::int64_t node) const {
  std::int64_t number = node + 1;
  if (!slab_.names.nodeNumber || !IsIn(slab_.nodes, node)) return number;
  int const from = slab_.nodes.BlockOf(node);
  if (from == communicator_.rank()) number = slab_.names.nodeNumber(node);
  MPI_Bcast(&number, 1, MPI_INT64_T, from, communicator_.get());
  return number;
}

std::string SlabNaming::Node(std::int64_t node) const {
  return (HasNames() ? slab_.names.nodeWord : "node") + " " + std::to_string(NodeNumber(node));
}

std::string SlabNaming::Cell(std::int64_t cell) const {
  std::string name = "cell " + std::to_string(cell + 1);
  if (!slab_.names.cell || !IsIn(slab_.cells, cell)) return name;
  int const from = slab_.cells.BlockOf(cell);
  if (from == communicator_.rank()) name = slab_.names.cell(cell);
  return ShareText(communicator_, from, name);
}

// "3, 5 and 9"; only the beginning of a long list.
std::string SlabNaming::NodesOfFace(FaceInQuestion const& face) const {
  constexpr std::size_t kMost = 8;
  std::string list;
  for (std::size_t i = 0; i < face.node.size(); ++i) {
    if (i == kMost) return list + ", ...";
    if (i > 0) list += i + 1 < face.node.size() ? ", " : " and ";
    list += std::to_string(NodeNumber(face.node[i]));
  }
  return list;
}

std::string SlabNaming::Face(FaceInQuestion const& face) const {
  if (!HasNames()) return "face " + std::to_string(face.number + 1);
  if (!slab_.names.face) return "the face of nodes " + NodesOfFace(face) + " of " + Cell(face.owner);
  int const from = slab_.faces.BlockOf(face.number);
  std::string name = from == communicator_.rank() ? slab_.names.face(face.number) : "";
  return ShareText(communicator_, from, name);
}

FaceInQuestion BroadcastFace(MpiCommunicator const& communicator, int from, FaceInQuestion const& face) {
  FaceInQuestion result = face;
  std::int64_t sizes[3] = {face.number, face.owner, static_cast<std::int64_t>(face.node.size())};
  MPI_Bcast(sizes, 3, MPI_INT64_T, from, communicator.get());
  result.number = sizes[0];
  result.owner = sizes[1];
  result.node.resize(static_cast<std::size_t>(sizes[2]));
  MPI_Bcast(result.node.data(), static_cast<int>(sizes[2]), MPI_INT64_T, from, communicator.get());
  return result;
}

std::string ShareText(MpiCommunicator const& communicator, int from, std::string const& text) {
  std::string shared = text;
  int length = static_cast<int>(shared.size());
  MPI_Bcast(&length, 1, MPI_INT, from, communicator.get());
  shared.resize(static_cast<std::size_t>(length));
  MPI_Bcast(shared.data(), length, MPI_CHAR, from, communicator.get());
  return shared;
}

}  // namespace reference_host
