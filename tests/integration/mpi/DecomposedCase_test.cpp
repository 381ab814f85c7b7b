#include "reference_host/openfoam/DecomposedCase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/parallel/DecomposedCaseReader.h"
#include "reference_host/parallel/MeshDistribution.h"
#include "tests/property/meshes/PartitionedGradients.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"

namespace reference_host::test {
namespace {

double Wave(Point const& p) { return std::sin(3.0 * p[0]) * p[1] + p[2] * p[2]; }

struct WholeMesh {
  char const* name;
  FaceMesh mesh;  ///< in OpenFOAM's order
};

std::vector<WholeMesh> WholeMeshes() {
  using namespace test_meshes;
  int const more = RankCount() > 4 ? 1 : 0;
  return {{"polyhedra", foam_test::InFoamOrder(Perturbed(PolyBox(2 + more), 0.03))},
          {"all types", foam_test::InFoamOrder(Perturbed(MixedBox(3 + more), 0.03))}};
}

/// Ragged parts that may meet in edges and corners only. A rank without a cell, which a case cannot have,
/// gets the cell of its own number.
std::vector<int> RaggedParts(int nCells) {
  std::vector<int> parts = test_meshes::RandomParts(nCells, RankCount());
  for (int rank = 0; rank < RankCount(); ++rank) {
    if (std::count(parts.begin(), parts.end(), rank) == 0) parts[rank] = rank;
  }
  return parts;
}

/// Compact parts and ragged ones.
std::vector<std::vector<int>> Decompositions(FaceMesh const& mesh) {
  return {PartitionMesh(mesh, RankCount()), RaggedParts(mesh.nCells)};
}

/// Collective. A case written by rank 0.
void Write(SharedFolder const& folder, FaceMesh const& whole, std::vector<int> const& partOfCell,
           bool withAddressing, std::function<void(int, foam_test::Piece&)> const& change = {}) {
  if (Rank() == 0) {
    foam_test::WriteDecomposed(folder.File("case"), whole, partOfCell, RankCount(), withAddressing, change);
  }
  MPI_Barrier(MPI_COMM_WORLD);
}

void ExpectSamePart(MeshPart const& a, MeshPart const& b) {
  EXPECT_EQ(a.part, b.part);
  EXPECT_EQ(a.nParts, b.nParts);
  EXPECT_EQ(a.points, b.points);
  EXPECT_EQ(a.globalNode, b.globalNode);
  EXPECT_EQ(a.nOwned, b.nOwned);
  EXPECT_EQ(a.globalCell, b.globalCell);
  EXPECT_EQ(a.haloPart, b.haloPart);
  EXPECT_EQ(a.haloPeriod, b.haloPeriod);
  EXPECT_EQ(a.shifts, b.shifts);
  EXPECT_EQ(a.haloNodeStart, b.haloNodeStart);
  EXPECT_EQ(a.haloNode, b.haloNode);
  EXPECT_EQ(a.faceStart, b.faceStart);
  EXPECT_EQ(a.faceNode, b.faceNode);
  EXPECT_EQ(a.owner, b.owner);
  EXPECT_EQ(a.neighbour, b.neighbour);
  EXPECT_EQ(a.facePatch, b.facePatch);
  ASSERT_EQ(a.patches.size(), b.patches.size());
  for (std::size_t p = 0; p < a.patches.size(); ++p) {
    EXPECT_EQ(a.patches[p].name, b.patches[p].name);
    EXPECT_EQ(a.patches[p].type, b.patches[p].type);
  }
}

/// Compares the gradients of every method on the loaded mesh with those of the whole mesh on one rank.
/// `wholeCell` maps a cell of the loaded mesh to one of the whole mesh, from 0.
void ExpectGradientsOfWhole(LoadedMesh& mesh, FaceMesh whole,
                            std::function<std::int64_t(int)> const& wholeCell) {
  for (Patch& patch : whole.patches) patch.group = GroupByName(patch.name, patch.type);
  for (partitioned::Method const& method : partitioned::AllMethods()) {
    SCOPED_TRACE(method.name);
    std::vector<Point> const expected = partitioned::Gradient(whole, method, Wave).gradient;
    HostPartition& own = *mesh.partition;
    COperatorGradient op;
    op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op.getPartitionFace(own.partitionFaces());
    op.getCommunication(mesh.exchange.get(), mesh.reduction.get());
    int type = method.type;
    op.getGradType(type);
    EXPECT_EQ(1, op.Initialize());
    std::vector<double> g[3];
    partitioned::CallGradient(op, method, *own.mesh(), Wave, g);
    for (int c = 1; c <= own.mesh()->NInnerCells; ++c) {
      for (std::size_t d = 0; d < 3; ++d)
        EXPECT_NEAR(g[d][c], expected[wholeCell(c)][d], 1e-12) << "cell " << c;
    }
  }
}

}  // namespace

TEST(DecomposedCase, WithAddressingGivesTheVeryPartsOfTheWholeMesh) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (WholeMesh const& whole : WholeMeshes()) {
    for (std::vector<int> const& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      SharedFolder const folder;
      Write(folder, whole.mesh, partOfCell, true);
      DecomposedPart const read = ReadDecomposedCase(world, folder.File("case"));
      ExpectSamePart(read.part, ExtractPart(whole.mesh, partOfCell, world.rank(), world.size()));
      EXPECT_EQ(read.nNodes, *std::max_element(whole.mesh.faceNode.begin(), whole.mesh.faceNode.end()) + 1);
    }
  }
}

/// Meshes that continue beyond cyclic patches, in OpenFOAM's order and with joined periods.
std::vector<WholeMesh> PeriodicWholeMeshes() {
  std::vector<WholeMesh> meshes;
  for (auto const& [name, mesh] : test_meshes::PeriodicMeshes()) {
    if (mesh.nCells < 2 * RankCount()) continue;
    meshes.push_back({name, foam_test::InFoamOrder(mesh)});
    JoinPeriods(meshes.back().mesh);
  }
  return meshes;
}

TEST(DecomposedCase, WithAddressingGivesTheVeryPartsOfAPeriodicMesh) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (WholeMesh const& whole : PeriodicWholeMeshes()) {
    for (std::vector<int> const& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      SharedFolder const folder;
      Write(folder, whole.mesh, partOfCell, true);
      DecomposedPart const read = ReadDecomposedCase(world, folder.File("case"));
      ExpectSamePart(read.part, ExtractPart(whole.mesh, partOfCell, world.rank(), world.size()));
    }
  }
}

// Without the addressing, the first face of a period may be another one, and the shift differ in its last bit.
TEST(DecomposedCase, WithoutAddressingGivesTheGradientsOfAPeriodicMesh) {
  for (WholeMesh const& whole : PeriodicWholeMeshes()) {
    if (whole.mesh.nCells < 8) continue;  // least squares needs neighbours in every direction
    std::vector<int> const partOfCell = Decompositions(whole.mesh).back();
    SCOPED_TRACE(whole.name);
    SharedFolder const folder;
    Write(folder, whole.mesh, partOfCell, false);
    LoadedMesh mesh = Load(folder.File("case"));
    EXPECT_EQ(mesh.summary.nPeriodicFaces,
              std::accumulate(whole.mesh.periods.begin(), whole.mesh.periods.end(), std::int64_t{0},
                              [](std::int64_t n, Period const& period) {
                                return n + static_cast<std::int64_t>(period.faces.size());
                              }));
    std::vector<std::int64_t> wholeCell;
    for (int rank = 0; rank < RankCount(); ++rank) {
      for (int c = 0; c < whole.mesh.nCells; ++c) {
        if (partOfCell[c] == rank) wholeCell.push_back(c);
      }
    }
    ExpectGradientsOfWhole(mesh, whole.mesh,
                           [&](int c) { return wholeCell[mesh.partition->globalCell()[c] - 1]; });
  }
}

// With a group for one side, both sides are boundaries, also where the decomposition has cut them.
TEST(DecomposedCase, GroupsMakeBoundariesOfCutCyclicPatches) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh whole =
      foam_test::InFoamOrder(test_meshes::Periodic(test_meshes::HexBox(2 * RankCount(), 3, 3), "xy"));
  JoinPeriods(whole);
  std::vector<int> const partOfCell = test_meshes::RandomParts(whole.nCells, RankCount());
  SharedFolder const folder;
  Write(folder, whole, partOfCell, true);
  auto const makeWalls = [](std::vector<Patch>& patches, std::vector<std::int64_t> const& nFaces) {
    for (std::size_t p = 0; p < patches.size(); ++p) {
      if (patches[p].name != "low_x" && patches[p].name != "high_x") continue;
      EXPECT_EQ(nFaces[p], 9);
      patches[p].group = BoundaryGroup::Wall;
    }
  };
  DecomposedPart const read = ReadDecomposedCase(world, folder.File("case"), makeWalls);
  makeWalls(whole.patches, std::vector<std::int64_t>(whole.patches.size(), 9));
  JoinPeriods(whole);
  EXPECT_EQ(whole.periods.size(), 1u);
  ExpectSamePart(read.part, ExtractPart(whole, partOfCell, world.rank(), world.size()));
}

TEST(DecomposedCase, GradientsAgreeWithThoseOfTheUndecomposedCase) {
  for (WholeMesh const& whole : WholeMeshes()) {
    for (std::vector<int> const& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      SharedFolder const folder;
      Write(folder, whole.mesh, partOfCell, true);
      LoadedMesh mesh = Load(folder.File("case"));
      EXPECT_EQ(mesh.summary.nCells, whole.mesh.nCells);
      ExpectGradientsOfWhole(mesh, whole.mesh, [&](int c) { return mesh.partition->globalCell()[c] - 1; });
    }
  }
}

TEST(DecomposedCase, WithoutAddressingNumbersRankByRankAndGivesTheSameGradients) {
  for (WholeMesh const& whole : WholeMeshes()) {
    for (std::vector<int> const& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      SharedFolder const folder;
      Write(folder, whole.mesh, partOfCell, false);
      LoadedMesh mesh = Load(folder.File("case"));

      std::vector<std::int64_t> wholeCell;  // of the cells in the order of ranks
      for (int rank = 0; rank < RankCount(); ++rank) {
        for (int c = 0; c < whole.mesh.nCells; ++c) {
          if (partOfCell[c] == rank) wholeCell.push_back(c);
        }
      }
      ExpectGradientsOfWhole(mesh, whole.mesh,
                             [&](int c) { return wholeCell[mesh.partition->globalCell()[c] - 1]; });
    }
  }
}

// Parts of one layer of cells each, so that the parts at every node share faces.
TEST(DecomposedCase, WithoutAddressingCountsSharedNodesOnce) {
  FaceMesh const whole = foam_test::InFoamOrder(test_meshes::HexBox(3, 3, 4));
  for (std::vector<int> const& partOfCell : Decompositions(whole)) {
    SharedFolder const folder;
    Write(folder, whole, partOfCell, false);
    MpiCommunicator const world(MPI_COMM_WORLD);
    DecomposedPart const read = ReadDecomposedCase(world, folder.File("case"));
    // The hexahedra around a node are connected by faces, if only through cells of other ranks.
    EXPECT_EQ(read.nNodes, 4 * 4 * 5);
    std::vector<std::int64_t> numbers = GatherNumbers(read.part.globalNode);
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_EQ(numbers.size(), 4U * 4U * 5U);
    EXPECT_EQ(numbers.back(), 4 * 4 * 5 - 1);
  }
}

TEST(DecomposedCase, SumsUpPatchesThatSomeRanksHaveNoFacesOf) {
  FaceMesh const whole = foam_test::InFoamOrder(test_meshes::HexBox(6, 2, 2));
  SharedFolder const folder;
  Write(folder, whole, test_meshes::RunParts(whole.nCells, RankCount()), true);
  LoadedMesh const mesh = Load(folder.File("case"));
  for (std::size_t p = 0; p < whole.patches.size(); ++p) {
    EXPECT_EQ(mesh.summary.patches[p].name, whole.patches[p].name);
    EXPECT_EQ(mesh.summary.patches[p].nFaces,
              std::count(whole.facePatch.begin(), whole.facePatch.end(), static_cast<int>(p)));
  }
}

TEST(DecomposedCase, TakesFacesThatBeginWithAnotherNode) {
  FaceMesh const whole = foam_test::InFoamOrder(test_meshes::PolyBox(2));
  std::vector<int> const partOfCell = PartitionMesh(whole, RankCount());
  SharedFolder const folder;
  Write(folder, whole, partOfCell, true, [](int part, foam_test::Piece& piece) {
    FaceMesh& mesh = piece.mesh;
    for (int f = 0; f < mesh.nFaces(); ++f) {
      auto const begin = mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]);
      auto const end = mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]);
      if (piece.face[f] < 0) std::rotate(begin, begin + 1 + part % 2, end);
    }
  });
  MpiCommunicator const world(MPI_COMM_WORLD);
  DecomposedPart const read = ReadDecomposedCase(world, folder.File("case"));
  ExpectSamePart(read.part, ExtractPart(whole, partOfCell, world.rank(), world.size()));
}

namespace {

/// The message, after the folder, of loading a case that `spoil` has damaged on rank 0.
std::string Refusal(std::function<void(int, foam_test::Piece&)> const& change,
                    std::function<void(std::string const&)> const& spoil = {}, int nMore = 0) {
  FaceMesh const whole = foam_test::InFoamOrder(test_meshes::HexBox(8, 2, 2));
  SharedFolder const folder;
  if (Rank() == 0) {
    int const nParts = RankCount() + nMore;
    std::vector<int> const parts = test_meshes::RunParts(whole.nCells, nParts);
    foam_test::WriteDecomposed(folder.File("case"), whole, parts, nParts, true, change);
    if (spoil) spoil(folder.File("case"));
  }
  MPI_Barrier(MPI_COMM_WORLD);
  std::string const text = ErrorOnEveryRank([&] { Load(folder.File("case")); });
  EXPECT_EQ(0U, text.rfind(folder.File("case"), 0)) << text;
  return text.substr(std::min(text.size(), folder.File("case").size()));
}

/// An action that changes only the piece of the last rank.
std::function<void(int, foam_test::Piece&)> OfLastRank(std::function<void(foam_test::Piece&)> const& change) {
  return [change](int part, foam_test::Piece& piece) {
    if (part == RankCount() - 1) change(piece);
  };
}

/// Expects that `text` contains `part`.
void ExpectHas(std::string const& text, std::string const& part) {
  EXPECT_NE(text.find(part), std::string::npos) << "'" << part << "' is not in '" << text << "'";
}

}  // namespace

TEST(DecomposedCase, IsRefusedOnAnotherNumberOfRanks) {
  std::string const ranks = std::to_string(RankCount()) + (RankCount() == 1 ? " rank" : " ranks");
  std::string const folders = std::to_string(RankCount() + 1);
  EXPECT_EQ(Refusal({}, {}, 1), ": decomposed for " + folders + " processors, but this run has " + ranks +
                                    "; start " + folders +
                                    " ranks, or give constant/polyMesh of the whole mesh");
}

TEST(DecomposedCase, IsRefusedInTheCollatedFormatWithoutThePiecesOfAProcessor) {
  std::string const missing = std::to_string(RankCount());
  std::string const all = std::to_string(RankCount() + 2);
  EXPECT_EQ(Refusal({},
                    [&](std::string const& folder) {
                      for (int part = 0; part < RankCount(); ++part) {
                        std::filesystem::remove_all(folder + "/processor" + std::to_string(part));
                      }
                      std::string const collated = folder + "/processors" + all;
                      std::filesystem::create_directories(collated + "_0-" + std::to_string(RankCount() - 1));
                      std::filesystem::create_directories(collated + "_" + std::to_string(RankCount() + 1) +
                                                          "-" + std::to_string(RankCount() + 1));
                    }),
            ": no folder has the pieces of processor " + missing + " of " + all + " (processorsN_A-B)");
}

TEST(DecomposedCase, IsRefusedWithAGapInTheFolders) {
  std::string const last = std::to_string(RankCount());
  EXPECT_EQ(
      Refusal({},
              [&](std::string const& folder) {
                std::filesystem::create_directories(folder + "/processor" + std::to_string(RankCount() + 1));
              }),
      ": there is a folder processor" + std::to_string(RankCount() + 1) + ", but no processor" + last);
}

TEST(DecomposedCase, IsRefusedWithDamagedFilesOfOneRank) {
  std::string const last = "/processor" + std::to_string(RankCount() - 1) + "/constant/polyMesh";
  EXPECT_EQ(0U, Refusal({}, [&](std::string const& folder) {
                  std::filesystem::remove(folder + last + "/faces");
                }).rfind(last + "/faces", 0));
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.cell.back() = 999; })),
            last + ": cellProcAddressing has 999, which is not in 0 to 31");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.cell[0] = piece.cell[1]; })),
            "the files cellProcAddressing of all processors together do not name each of the 32 cells once");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.point[0] = piece.point[1]; })),
            last + ": pointProcAddressing has a negative or repeated number");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.cell.pop_back(); })),
            last + "/cellProcAddressing");
}

TEST(DecomposedCase, IsRefusedWhenCutsDoNotFitTogether) {
  if (RankCount() == 1) return;  // no cuts
  int const last = RankCount() - 1;
  std::string const patch = "procBoundary" + std::to_string(last) + "to" + std::to_string(last - 1);
  auto const points = Refusal(OfLastRank([](foam_test::Piece& piece) {
    for (Point& point : piece.mesh.points) point[1] *= 2.0;
  }));
  ExpectHas(points, " does not lie on its counterpart in processor");
  ExpectHas(Refusal(OfLastRank(
                [&](foam_test::Piece& piece) { piece.entries[patch] = "myProcNo 99; neighbProcNo 0; "; })),
            "patch '" + patch + "' says that this is processor 99");
  ExpectHas(Refusal(OfLastRank([&](foam_test::Piece& piece) {
              piece.entries[patch] = "myProcNo " + std::to_string(last) + "; neighbProcNo 99; ";
            })),
            "patch '" + patch + "' leads to processor 99 of");
  ExpectHas(Refusal(OfLastRank(
                [](foam_test::Piece& piece) { piece.mesh.patches.back().type = "processorCyclic"; })),
            "needs a referPatch of type cyclic with a neighbourPatch, not ''");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.mesh.patches.front().name = "other"; })),
            "the patches differ in name, type or order from those of processor0");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) {
              // The faces of the cut become faces of the patch before.
              piece.entries.erase(piece.mesh.patches.back().name);
              piece.mesh.patches.pop_back();
              for (int& ofFace : piece.mesh.facePatch) {
                ofFace = std::min(ofFace, static_cast<int>(piece.mesh.patches.size()) - 1);
              }
            })),
            " leading back");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) {
              std::vector<int>& point = piece.point;
              std::swap(point.front(), point.back());
            })),
            "pointProcAddressing numbers a node ");
  auto const missing = Refusal({}, [&](std::string const& folder) {
    std::filesystem::remove(foam_test::PieceFolder(folder, last) + "/pointProcAddressing");
  });
  ExpectHas(missing, "pointProcAddressing is missing, but other processor folders have it");
}

TEST(DecomposedCase, NeedsGroupsLikeTheWholeCase) {
  auto const rename = [](int, foam_test::Piece& piece) { piece.mesh.patches[0] = {"left", "cyclic", {}}; };
  FaceMesh const whole = foam_test::InFoamOrder(test_meshes::HexBox(8, 2, 2));
  SharedFolder const folder;
  Write(folder, whole, test_meshes::RunParts(whole.nCells, RankCount()), true, rename);
  ExpectHas(ErrorOnEveryRank([&] { Load(folder.File("case")); }),
            "boundary faces without a group: 'left' of type cyclic (4 faces)");
}

TEST(DecomposedCase, IsRefusedWhereCyclicPatchesDoNotFit) {
  FaceMesh whole = foam_test::InFoamOrder(test_meshes::Periodic(test_meshes::HexBox(8, 2, 2), "x"));
  std::vector<int> const partOfCell = test_meshes::RunParts(whole.nCells, RankCount());
  auto const refusal = [&](std::function<void(int, foam_test::Piece&)> const& change) {
    SharedFolder const folder;
    Write(folder, whole, partOfCell, true, change);
    return ErrorOnEveryRank([&] { Load(folder.File("case")); });
  };
  ExpectHas(refusal([](int, foam_test::Piece& piece) { piece.entries["low_x"] = "transform rotational; "; }),
            "cyclic patch 'low_x' is rotational; only translations can be joined, --group 'low_x=wall' makes "
            "walls");
  ExpectHas(
      refusal([](int, foam_test::Piece& piece) { piece.entries["low_x"] = "separationVector (2 0 0); "; }),
      "cyclic patch 'low_x' is (1 0 0) from its partner, not (2 0 0); only translations");
  ExpectHas(refusal([](int, foam_test::Piece& piece) {
              for (Point& p : piece.mesh.points) {
                if (p[0] == 1.0 && p[1] == 0.5) p[1] = 0.6;
              }
            }),
            "does not lie on its counterpart in processor");
}

}  // namespace reference_host::test
