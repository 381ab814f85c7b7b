#include "reference_host/DecomposedCase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/BoundaryGroups.h"
#include "reference_host/CellGeometry.h"
#include "reference_host/DecomposedCaseReader.h"
#include "reference_host/MeshDistribution.h"
#include "tests/property/meshes/PartitionedGradients.h"
#include "tests/unit/reference_host/FoamTestCase.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace reference_host::test {
namespace {

double Wave(Point const& p) { return std::sin(3.0 * p[0]) * p[1] + p[2] * p[2]; }

struct WholeMesh {
  const char* name;
  FaceMesh mesh;  ///< in OpenFOAM's order
};

std::vector<WholeMesh> WholeMeshes() {
  using namespace test_meshes;
  const int more = RankCount() > 4 ? 1 : 0;
  return {{"polyhedra", foam_test::InFoamOrder(Perturbed(PolyBox(2 + more), 0.03))},
          {"all types", foam_test::InFoamOrder(Perturbed(MixedBox(3 + more), 0.03))}};
}

/// Ragged parts where ranks meet in edges and corners only. Chance may leave a rank without a cell, which a case cannot
/// have: it then gets the one of its own number.
std::vector<int> RaggedParts(int nCells) {
  std::vector<int> parts = test_meshes::RandomParts(nCells, RankCount());
  for (int rank = 0; rank < RankCount(); ++rank) {
    if (std::count(parts.begin(), parts.end(), rank) == 0) parts[rank] = rank;
  }
  return parts;
}

/// Compact parts and ragged ones.
std::vector<std::vector<int>> Decompositions(const FaceMesh& mesh) {
  return {PartitionMesh(mesh, RankCount()), RaggedParts(mesh.nCells)};
}

/// Collective. A case written by rank 0.
void Write(const SharedFolder& folder, const FaceMesh& whole, const std::vector<int>& partOfCell,
           bool withAddressing, const std::function<void(int, foam_test::Piece&)>& change = {}) {
  if (Rank() == 0) {
    foam_test::WriteDecomposed(folder.File("case"), whole, partOfCell, RankCount(), withAddressing, change);
  }
  MPI_Barrier(MPI_COMM_WORLD);
}

void ExpectSamePart(const MeshPart& a, const MeshPart& b) {
  EXPECT_EQ(a.part, b.part);
  EXPECT_EQ(a.nParts, b.nParts);
  EXPECT_EQ(a.points, b.points);
  EXPECT_EQ(a.globalNode, b.globalNode);
  EXPECT_EQ(a.nOwned, b.nOwned);
  EXPECT_EQ(a.globalCell, b.globalCell);
  EXPECT_EQ(a.haloPart, b.haloPart);
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

/// Gradients of every method on the mesh loaded, against those of the whole mesh on one rank. `wholeCell` gives the cell
/// of the whole mesh, from 0, for one of the loaded mesh.
void ExpectGradientsOfWhole(LoadedMesh& mesh, FaceMesh whole,
                            const std::function<std::int64_t(int)>& wholeCell) {
  for (Patch& patch : whole.patches) patch.group = GroupByName(patch.name, patch.type);
  for (const partitioned::Method& method : partitioned::AllMethods()) {
    SCOPED_TRACE(method.name);
    const std::vector<Point> expected = partitioned::Gradient(whole, method, Wave).gradient;
    HostPartition& own = *mesh.partition;
    COperatorGradient op;
    op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op.getPartitionFace(own.partitionFaces());
    op.getCommunication(mesh.exchange.get(), mesh.reduction.get());
    int type = method.type;
    op.getGradType(type);
    EXPECT_EQ(op.Initialize(), 1);
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
  const MpiCommunicator world(MPI_COMM_WORLD);
  for (const WholeMesh& whole : WholeMeshes()) {
    for (const std::vector<int>& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      const SharedFolder folder;
      Write(folder, whole.mesh, partOfCell, true);
      const DecomposedPart read = ReadDecomposedCase(world, folder.File("case"));
      ExpectSamePart(read.part, ExtractPart(whole.mesh, partOfCell, world.rank(), world.size()));
      EXPECT_EQ(read.nNodes, *std::max_element(whole.mesh.faceNode.begin(), whole.mesh.faceNode.end()) + 1);
    }
  }
}

TEST(DecomposedCase, GradientsAgreeWithThoseOfTheUndecomposedCase) {
  for (const WholeMesh& whole : WholeMeshes()) {
    for (const std::vector<int>& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      const SharedFolder folder;
      Write(folder, whole.mesh, partOfCell, true);
      LoadedMesh mesh = Load(folder.File("case"));
      EXPECT_EQ(mesh.summary.nCells, whole.mesh.nCells);
      ExpectGradientsOfWhole(mesh, whole.mesh, [&](int c) { return mesh.partition->globalCell()[c] - 1; });
    }
  }
}

TEST(DecomposedCase, WithoutAddressingNumbersRankByRankAndGivesTheSameGradients) {
  for (const WholeMesh& whole : WholeMeshes()) {
    for (const std::vector<int>& partOfCell : Decompositions(whole.mesh)) {
      SCOPED_TRACE(whole.name);
      const SharedFolder folder;
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

// Parts of one layer of cells each, so that every node lies on parts that share faces with each other.
TEST(DecomposedCase, WithoutAddressingCountsSharedNodesOnce) {
  const FaceMesh whole = foam_test::InFoamOrder(test_meshes::HexBox(3, 3, 4));
  for (const std::vector<int>& partOfCell : Decompositions(whole)) {
    const SharedFolder folder;
    Write(folder, whole, partOfCell, false);
    const MpiCommunicator world(MPI_COMM_WORLD);
    const DecomposedPart read = ReadDecomposedCase(world, folder.File("case"));
    // Hexahedra around a node touch each other by faces, if only through cells of other ranks.
    EXPECT_EQ(read.nNodes, 4 * 4 * 5);
    std::vector<std::int64_t> numbers = GatherNumbers(read.part.globalNode);
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_EQ(numbers.size(), 4U * 4U * 5U);
    EXPECT_EQ(numbers.back(), 4 * 4 * 5 - 1);
  }
}

TEST(DecomposedCase, SumsUpPatchesThatSomeRanksHaveNoFacesOf) {
  const FaceMesh whole = foam_test::InFoamOrder(test_meshes::HexBox(6, 2, 2));
  const SharedFolder folder;
  Write(folder, whole, test_meshes::RunParts(whole.nCells, RankCount()), true);
  const LoadedMesh mesh = Load(folder.File("case"));
  for (std::size_t p = 0; p < whole.patches.size(); ++p) {
    EXPECT_EQ(mesh.summary.patches[p].name, whole.patches[p].name);
    EXPECT_EQ(mesh.summary.patches[p].nFaces,
              std::count(whole.facePatch.begin(), whole.facePatch.end(), static_cast<int>(p)));
  }
}

TEST(DecomposedCase, TakesFacesThatBeginWithAnotherNode) {
  const FaceMesh whole = foam_test::InFoamOrder(test_meshes::PolyBox(2));
  const std::vector<int> partOfCell = PartitionMesh(whole, RankCount());
  const SharedFolder folder;
  Write(folder, whole, partOfCell, true, [](int part, foam_test::Piece& piece) {
    FaceMesh& mesh = piece.mesh;
    for (int f = 0; f < mesh.nFaces(); ++f) {
      const auto begin = mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]);
      const auto end = mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]);
      if (piece.face[f] < 0) std::rotate(begin, begin + 1 + part % 2, end);
    }
  });
  const MpiCommunicator world(MPI_COMM_WORLD);
  const DecomposedPart read = ReadDecomposedCase(world, folder.File("case"));
  ExpectSamePart(read.part, ExtractPart(whole, partOfCell, world.rank(), world.size()));
}

namespace {

/// What loading the case says, behind its folder, after `spoil` has been at it on rank 0.
std::string Refusal(const std::function<void(int, foam_test::Piece&)>& change,
                    const std::function<void(const std::string&)>& spoil = {}, int nMore = 0) {
  const FaceMesh whole = foam_test::InFoamOrder(test_meshes::HexBox(8, 2, 2));
  const SharedFolder folder;
  if (Rank() == 0) {
    const int nParts = RankCount() + nMore;
    const std::vector<int> parts = test_meshes::RunParts(whole.nCells, nParts);
    foam_test::WriteDecomposed(folder.File("case"), whole, parts, nParts, true, change);
    if (spoil) spoil(folder.File("case"));
  }
  MPI_Barrier(MPI_COMM_WORLD);
  const std::string text = ErrorOnEveryRank([&] { Load(folder.File("case")); });
  EXPECT_EQ(text.rfind(folder.File("case"), 0), 0U) << text;
  return text.substr(std::min(text.size(), folder.File("case").size()));
}

/// An action on the piece of the last rank alone.
std::function<void(int, foam_test::Piece&)> OfLastRank(const std::function<void(foam_test::Piece&)>& change) {
  return [change](int part, foam_test::Piece& piece) {
    if (part == RankCount() - 1) change(piece);
  };
}

/// The first position of a text in another; fails if it is not there.
void ExpectHas(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), std::string::npos) << "'" << part << "' is not in '" << text << "'";
}

}  // namespace

TEST(DecomposedCase, IsRefusedOnAnotherNumberOfRanks) {
  const std::string ranks = std::to_string(RankCount()) + (RankCount() == 1 ? " rank" : " ranks");
  const std::string folders = std::to_string(RankCount() + 1);
  EXPECT_EQ(Refusal({}, {}, 1), ": decomposed for " + folders + " processors, but this run has " + ranks +
                                    "; start " + folders + ", or give constant/polyMesh of the whole mesh");
}

TEST(DecomposedCase, IsRefusedInTheCollatedFormat) {
  ExpectHas(Refusal({},
                    [](const std::string& folder) {
                      for (int part = 0; part < RankCount(); ++part) {
                        std::filesystem::remove_all(folder + "/processor" + std::to_string(part));
                      }
                      std::filesystem::create_directories(folder + "/processors4/constant");
                    }),
            "collated format");
}

TEST(DecomposedCase, IsRefusedWithAGapInTheFolders) {
  const std::string last = std::to_string(RankCount());
  EXPECT_EQ(
      Refusal({},
              [&](const std::string& folder) {
                std::filesystem::create_directories(folder + "/processor" + std::to_string(RankCount() + 1));
              }),
      ": there is a folder processor" + std::to_string(RankCount() + 1) + ", but no processor" + last);
}

TEST(DecomposedCase, IsRefusedWithDamagedFilesOfOneRank) {
  const std::string last = "/processor" + std::to_string(RankCount() - 1) + "/constant/polyMesh";
  EXPECT_EQ(Refusal({}, [&](const std::string& folder) { std::filesystem::remove(folder + last + "/faces"); })
                .rfind(last + "/faces", 0),
            0U);
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.cell.back() = 999; })),
            last + ": cellProcAddressing has 999, which is not in 0 to 31");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.cell[0] = piece.cell[1]; })),
            "cellProcAddressing of all processors together do not name each of the 32 cells once");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.point[0] = piece.point[1]; })),
            last + ": pointProcAddressing has a negative number, or one twice");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.cell.pop_back(); })),
            last + "/cellProcAddressing");
}

TEST(DecomposedCase, IsRefusedWhenCutsDoNotFitTogether) {
  if (RankCount() == 1) return;  // no cuts
  const int last = RankCount() - 1;
  const std::string patch = "procBoundary" + std::to_string(last) + "to" + std::to_string(last - 1);
  const auto points = Refusal(OfLastRank([](foam_test::Piece& piece) {
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
            "cyclic patches that the decomposition has cut are not supported");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) { piece.mesh.patches.front().name = "other"; })),
            "the patches differ in name, type or order from those of processor0");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) {
              // The faces of the cut become faces of a wall.
              const std::string name = piece.mesh.patches.back().name;
              piece.mesh.patches.back() = {"lid", "wall", {}};
              piece.entries.erase(name);
            })),
            " leading back");
  ExpectHas(Refusal(OfLastRank([](foam_test::Piece& piece) {
              std::vector<int>& point = piece.point;
              std::swap(point.front(), point.back());
            })),
            "pointProcAddressing calls a node ");
  const auto missing = Refusal({}, [&](const std::string& folder) {
    std::filesystem::remove(foam_test::PieceFolder(folder, last) + "/pointProcAddressing");
  });
  ExpectHas(missing, "pointProcAddressing is missing, but other processor folders have it");
}

TEST(DecomposedCase, NeedsGroupsLikeTheWholeCase) {
  const auto rename = [](int, foam_test::Piece& piece) { piece.mesh.patches[0] = {"left", "cyclic", {}}; };
  const FaceMesh whole = foam_test::InFoamOrder(test_meshes::HexBox(8, 2, 2));
  const SharedFolder folder;
  Write(folder, whole, test_meshes::RunParts(whole.nCells, RankCount()), true, rename);
  ExpectHas(ErrorOnEveryRank([&] { Load(folder.File("case")); }),
            "boundary faces without a group: 'left' of type cyclic (4 faces)");
}

}  // namespace reference_host::test
