#include "reference_host/slabs/SlabFaces.h"

#include "reference_host/slabs/MpiLists.h"

namespace reference_host {

FaceHead HeadOfFace(MeshSlab const& slab, std::size_t f, int rank) {
  return {slab.NumberOfFace(f, rank), slab.owner[f], slab.neighbour[f], slab.facePatch[f],
          static_cast<int>(slab.faceStart[f + 1] - slab.faceStart[f])};
}

FaceRows FetchFaces(MpiCommunicator const& communicator, MeshSlab const& slab,
                    std::vector<std::int64_t> const& faces) {
  auto const rankOf = [&](std::size_t i) { return slab.faces.BlockOf(faces[i]); };
  auto const nRanks = static_cast<std::size_t>(communicator.size());
  RankLists<FaceHead> heads;
  RankLists<std::int64_t> nodes;
  {
    RankLists<std::int64_t> const asked =
        SwapLists(communicator, ListsByRank<std::int64_t>(communicator.size(), faces.size(), rankOf,
                                                          [&](std::size_t i) { return faces[i]; }));
    std::int64_t const first = slab.faces.First(communicator.rank());
    heads.start = asked.start;
    nodes.start = {0};
    for (std::size_t r = 0; r < nRanks; ++r) {
      for (std::size_t i = asked.start[r]; i < asked.start[r + 1]; ++i) {
        auto const f = static_cast<std::size_t>(asked.items[i] - first);
        heads.items.push_back(HeadOfFace(slab, f, communicator.rank()));
        for (std::size_t j = slab.faceStart[f]; j < slab.faceStart[f + 1]; ++j) {
          nodes.items.push_back(slab.faceNode[j]);
        }
      }
      nodes.start.push_back(nodes.items.size());
    }
  }
  RankLists<FaceHead> const headsHere = SwapLists(communicator, heads);
  RankLists<std::int64_t> const nodesHere = SwapLists(communicator, nodes);

  FaceRows rows;
  std::vector<std::size_t> nextHead(headsHere.start.begin(), headsHere.start.end() - 1);
  std::vector<std::size_t> nextNode(nodesHere.start.begin(), nodesHere.start.end() - 1);
  for (std::size_t i = 0; i < faces.size(); ++i) {
    auto const r = static_cast<std::size_t>(rankOf(i));
    rows.head.push_back(headsHere.items[nextHead[r]++]);
    for (int j = 0; j < rows.head.back().nNodes; ++j) rows.node.push_back(nodesHere.items[nextNode[r]++]);
    rows.start.push_back(rows.node.size());
  }
  return rows;
}

std::size_t CountRounds(MpiCommunicator const& communicator, std::size_t nItems, std::size_t nARound) {
  std::uint64_t nRounds = (nItems + nARound - 1) / nARound;
  MPI_Allreduce(MPI_IN_PLACE, &nRounds, 1, MPI_UINT64_T, MPI_MAX, communicator.get());
  return static_cast<std::size_t>(nRounds);
}

}  // namespace reference_host
