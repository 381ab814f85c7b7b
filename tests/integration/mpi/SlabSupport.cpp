#include "SlabSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "reference_host/mesh/MeshNames.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host::test {
namespace {

BlockRanges UnevenRanges(std::int64_t nItems, int nBlocks, std::mt19937& random) {
  std::vector<std::int64_t> starts = {0, nItems};
  for (int block = 1; block < nBlocks; ++block) {
    bool const repeats = random() % 3 == 0;  // leaves a block empty
    starts.push_back(repeats ? starts[random() % starts.size()]
                             : static_cast<std::int64_t>(random() % static_cast<unsigned>(nItems + 1)));
  }
  std::sort(starts.begin(), starts.end());
  return BlockRanges(std::move(starts));
}

SlabNames SlabNamesOf(std::shared_ptr<const MeshNames> const& names) {
  SlabNames result;
  if (!names) return result;
  result.nodeWord = names->nodeWord;
  if (names->nodeNumber) {
    result.nodeNumber = [names](std::int64_t node) {
      return static_cast<std::int64_t>(names->nodeNumber(static_cast<int>(node)));
    };
  }
  if (names->cell) result.cell = [names](std::int64_t cell) { return names->cell(static_cast<int>(cell)); };
  if (names->face) result.face = [names](std::int64_t face) { return names->face(static_cast<int>(face)); };
  return result;
}

SlabPeriod SlabPeriodOf(Period const& period, BlockRanges const& faces, int rank) {
  SlabPeriod result;
  result.description = period;
  result.description.faces.clear();
  result.description.turn.clear();
  for (std::size_t pair = 0; pair < period.faces.size(); ++pair) {
    auto const [a, b] = period.faces[pair];
    if (faces.BlockOf(a) != rank) continue;
    result.faces.push_back({a, b});
    result.place.push_back(static_cast<std::int64_t>(pair));
    if (!period.turn.empty()) result.turn.push_back(period.turn[pair]);
  }
  return result;
}

/// Collective. The items of all ranks, rank after rank.
template <class T>
std::vector<T> ItemsOfAll(MpiCommunicator const& communicator, std::vector<T> const& own) {
  std::size_t const n = own.size();
  auto const lists = ListsByRank<T>(
      communicator.size(), n * static_cast<std::size_t>(communicator.size()),
      [n](std::size_t i) { return static_cast<int>(i / n); }, [&](std::size_t i) { return own[i % n]; });
  return SwapLists(communicator, lists).items;
}

Period GatherPeriod(SlabPeriod const& own, MpiCommunicator const& communicator) {
  auto const faces = ItemsOfAll(communicator, own.faces);
  auto const turn = ItemsOfAll(communicator, own.turn);
  auto const place = ItemsOfAll(communicator, own.place);
  std::vector<std::size_t> order(faces.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (!place.empty()) {
    EXPECT_EQ(place.size(), faces.size());
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) { return place[i] < place[j]; });
  }
  Period period = own.description;
  for (std::size_t const i : order) {
    period.faces.emplace_back(static_cast<int>(faces[i][0]), static_cast<int>(faces[i][1]));
    if (!turn.empty()) period.turn.push_back(turn[i]);
  }
  return period;
}

void ExpectEqualPatches(std::vector<Patch> const& patches, std::vector<Patch> const& expected) {
  ASSERT_EQ(patches.size(), expected.size());
  for (std::size_t p = 0; p < patches.size(); ++p) {
    EXPECT_EQ(patches[p].name, expected[p].name);
    EXPECT_EQ(patches[p].type, expected[p].type);
    EXPECT_EQ(patches[p].group, expected[p].group);
    EXPECT_EQ(patches[p].reason, expected[p].reason);
    EXPECT_EQ(patches[p].partners, expected[p].partners);
  }
}

void ExpectEqualPeriods(std::vector<Period> const& periods, std::vector<Period> const& expected) {
  ASSERT_EQ(periods.size(), expected.size());
  for (std::size_t p = 0; p < periods.size(); ++p) {
    EXPECT_EQ(periods[p].patch, expected[p].patch);
    EXPECT_EQ(periods[p].partner, expected[p].partner);
    EXPECT_EQ(periods[p].name, expected[p].name);
    EXPECT_EQ(periods[p].refusal, expected[p].refusal);
    EXPECT_EQ(periods[p].tolerance, expected[p].tolerance);
    EXPECT_EQ(periods[p].vector, expected[p].vector);
    EXPECT_TRUE(periods[p].faces == expected[p].faces);
    EXPECT_EQ(periods[p].shift, expected[p].shift);
    EXPECT_TRUE(periods[p].turn == expected[p].turn);
  }
}

}  // namespace

SlabBlocks EvenBlocks(FaceMesh const& whole, MpiCommunicator const& communicator) {
  int const nRanks = communicator.size();
  return {BlockRanges::Even(static_cast<std::int64_t>(whole.points.size()), nRanks),
          BlockRanges::Even(whole.nCells, nRanks), BlockRanges::Even(whole.nFaces(), nRanks)};
}

SlabBlocks UnevenBlocks(FaceMesh const& whole, MpiCommunicator const& communicator, unsigned seed) {
  std::mt19937 random(seed);
  SlabBlocks blocks;
  blocks.nodes = UnevenRanges(static_cast<std::int64_t>(whole.points.size()), communicator.size(), random);
  blocks.cells = UnevenRanges(whole.nCells, communicator.size(), random);
  blocks.faces = UnevenRanges(whole.nFaces(), communicator.size(), random);
  return blocks;
}

MeshSlab SlabOf(FaceMesh const& whole, MpiCommunicator const& communicator) {
  return SlabOf(whole, communicator, EvenBlocks(whole, communicator));
}

MeshSlab SlabOf(FaceMesh const& whole, MpiCommunicator const& communicator, SlabBlocks const& blocks) {
  int const rank = communicator.rank();
  MeshSlab slab;
  slab.nodes = blocks.nodes;
  slab.cells = blocks.cells;
  slab.faces = blocks.faces;
  slab.points.assign(whole.points.begin() + blocks.nodes.First(rank),
                     whole.points.begin() + blocks.nodes.End(rank));
  auto const begin = static_cast<std::size_t>(blocks.faces.First(rank));
  auto const end = static_cast<std::size_t>(blocks.faces.End(rank));
  for (std::size_t f = begin; f < end; ++f) {
    slab.faceNode.insert(slab.faceNode.end(),
                         whole.faceNode.begin() + static_cast<std::ptrdiff_t>(whole.faceStart[f]),
                         whole.faceNode.begin() + static_cast<std::ptrdiff_t>(whole.faceStart[f + 1]));
    slab.faceStart.push_back(slab.faceNode.size());
    slab.owner.push_back(whole.owner[f]);
    slab.neighbour.push_back(whole.neighbour[f]);
    slab.facePatch.push_back(whole.facePatch[f]);
  }
  slab.patches = whole.patches;
  for (Period const& period : whole.periods) {
    slab.periods.push_back(SlabPeriodOf(period, blocks.faces, rank));
  }
  slab.names = SlabNamesOf(whole.names);
  return slab;
}

FaceMesh Gather(MeshSlab const& slab, MpiCommunicator const& communicator) {
  EXPECT_EQ(slab.faces.Size(communicator.rank()), static_cast<std::int64_t>(slab.nOwnFaces()));
  EXPECT_EQ(slab.nodes.Size(communicator.rank()), static_cast<std::int64_t>(slab.points.size()));
  std::vector<std::int64_t> ownSize(slab.nOwnFaces());
  for (std::size_t f = 0; f < ownSize.size(); ++f) {
    ownSize[f] = static_cast<std::int64_t>(slab.faceStart[f + 1] - slab.faceStart[f]);
  }
  FaceMesh mesh;
  for (std::int64_t const size : ItemsOfAll(communicator, ownSize)) {
    mesh.faceStart.push_back(mesh.faceStart.back() + static_cast<std::size_t>(size));
  }
  auto const toInts = [](std::vector<std::int64_t> const& numbers) {
    return std::vector<int>(numbers.begin(), numbers.end());
  };
  mesh.faceNode = toInts(ItemsOfAll(communicator, slab.faceNode));
  mesh.owner = toInts(ItemsOfAll(communicator, slab.owner));
  mesh.neighbour = toInts(ItemsOfAll(communicator, slab.neighbour));
  mesh.facePatch = ItemsOfAll(communicator, slab.facePatch);
  mesh.points = ItemsOfAll(communicator, slab.points);
  mesh.nCells = static_cast<int>(slab.cells.nItems());
  mesh.patches = slab.patches;
  for (SlabPeriod const& period : slab.periods) {
    mesh.periods.push_back(GatherPeriod(period, communicator));
  }
  return mesh;
}

void ExpectEqual(FaceMesh const& mesh, FaceMesh const& expected) {
  EXPECT_EQ(mesh.nCells, expected.nCells);
  EXPECT_TRUE(mesh.points == expected.points);
  EXPECT_TRUE(mesh.faceStart == expected.faceStart);
  EXPECT_TRUE(mesh.faceNode == expected.faceNode);
  EXPECT_TRUE(mesh.owner == expected.owner);
  EXPECT_TRUE(mesh.neighbour == expected.neighbour);
  EXPECT_TRUE(mesh.facePatch == expected.facePatch);
  ExpectEqualPatches(mesh.patches, expected.patches);
  ExpectEqualPeriods(mesh.periods, expected.periods);
}

}  // namespace reference_host::test
