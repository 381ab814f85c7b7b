#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/parallel/LoadMesh.h"

namespace reference_host::test {
namespace {

std::vector<std::string> const kBoxes = {"box:6,5,4", "box:4,4,4:tet:perturb=0.1,seed=3",
                                         "box:5,4,3:prism:perturb=0.2"};

/// Numbers in the whole mesh of the cells that this rank owns.
std::vector<std::int64_t> OwnedCells(LoadedMesh& mesh) {
  std::vector<std::int64_t> const& globalCell = mesh.partition->globalCell();
  return {globalCell.begin() + 1, globalCell.begin() + 1 + mesh.partition->mesh()->NInnerCells};
}

std::vector<std::int64_t> OneTo(std::int64_t n) {
  std::vector<std::int64_t> numbers(static_cast<std::size_t>(n));
  std::iota(numbers.begin(), numbers.end(), 1);
  return numbers;
}

void ExpectEachCellOwnedOnce(LoadedMesh& mesh, std::int64_t nCells) {
  std::vector<std::int64_t> all = GatherNumbers(OwnedCells(mesh));
  std::sort(all.begin(), all.end());
  EXPECT_EQ(all, OneTo(nCells));
}

double SumOverRanks(double value) {
  MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_DOUBLE, MPI_SUM, MPI_COMM_WORLD);
  return value;
}

double TotalVolume(LoadedMesh& mesh) {
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  return SumOverRanks(std::accumulate(m.Volume + 1, m.Volume + 1 + m.NInnerCells, 0.0));
}

std::int64_t CountInnerFaces(FaceMesh const& mesh) {
  return std::count_if(mesh.neighbour.begin(), mesh.neighbour.end(), [](int cell) { return cell >= 0; });
}

}  // namespace

TEST(LoadMesh, CountsEveryCellFaceAndNodeOfABoxOnce) {
  for (std::string const& text : kBoxes) {
    SCOPED_TRACE(text);
    FaceMesh const whole = MakeBox(ParseBoxSpec(text));
    LoadedMesh mesh = Load(text);
    MeshSummary const& summary = mesh.summary;
    EXPECT_EQ(summary.nCells, whole.nCells);
    EXPECT_EQ(summary.nNodes, static_cast<std::int64_t>(whole.points.size()));
    EXPECT_EQ(summary.nInnerFaces + summary.nCutFaces, CountInnerFaces(whole));
    EXPECT_EQ(summary.nCutFaces > 0, RankCount() > 1);
    EXPECT_EQ(summary.quality.nFaces, CountInnerFaces(whole));
    ExpectEachCellOwnedOnce(mesh, whole.nCells);

    EXPECT_EQ(6u, summary.patches.size());
    std::int64_t nBoundary = 0;
    for (std::size_t p = 0; p < summary.patches.size(); ++p) {
      EXPECT_EQ(summary.patches[p].name, whole.patches[p].name);
      EXPECT_EQ(summary.patches[p].nFaces,
                std::count(whole.facePatch.begin(), whole.facePatch.end(), static_cast<int>(p)));
      nBoundary += summary.patches[p].nFaces;
    }
    EXPECT_EQ(summary.FacesOf(BoundaryGroup::Inlet), summary.patches[0].nFaces);
    EXPECT_EQ(summary.FacesOf(BoundaryGroup::Outlet), summary.patches[1].nFaces);
    EXPECT_EQ(0, summary.FacesOf(BoundaryGroup::Symmetry));
    EXPECT_EQ(summary.FacesOf(BoundaryGroup::Wall),
              nBoundary - summary.patches[0].nFaces - summary.patches[1].nFaces);
  }
}

TEST(LoadMesh, SummaryIsTheSameOnEveryRankAndTellsTheBalance) {
  LoadedMesh mesh = Load(kBoxes[0]);
  MeshSummary const& summary = mesh.summary;
  EXPECT_EQ(summary.nParts, RankCount());
  std::vector<std::int64_t> const nCells = GatherNumbers({mesh.partition->mesh()->NInnerCells});
  EXPECT_EQ(summary.minCells, *std::min_element(nCells.begin(), nCells.end()));
  EXPECT_EQ(summary.maxCells, *std::max_element(nCells.begin(), nCells.end()));
  std::vector<std::int64_t> const nCut = GatherNumbers({mesh.partition->partitionFaces()->NParInterFace()});
  EXPECT_EQ(summary.maxCutFaces, *std::max_element(nCut.begin(), nCut.end()));
  EXPECT_EQ(2 * summary.nCutFaces, std::accumulate(nCut.begin(), nCut.end(), std::int64_t{0}));
  EXPECT_EQ(summary.maxNeighbours > 0, RankCount() > 1);

  for (std::int64_t const other : {summary.nCells, summary.nCutFaces, std::int64_t{summary.maxNeighbours}}) {
    for (std::int64_t const value : GatherNumbers({other})) EXPECT_EQ(value, other);
  }
  EXPECT_NEAR(0.0, summary.quality.maxNonOrthogonality, 1e-5);  // degrees; acos near 1 halves the digits
}

TEST(LoadMesh, CentresAndVolumesEqualThoseOfTheWholeMeshBitForBit) {
  for (std::string const& text : kBoxes) {
    SCOPED_TRACE(text);
    FaceMesh const whole = MakeBox(ParseBoxSpec(text));
    CellGeometry const expected = ComputeCellGeometry(whole, whole.nCells);
    LoadedMesh mesh = Load(text);
    CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
    for (int c = 1; c <= m.NCell; ++c) {
      std::int64_t const global = mesh.partition->globalCell()[c];
      if (global == 0) continue;  // ghost cell
      EXPECT_EQ((Point{m.xc[c], m.yc[c], m.zc[c]}), expected.centre[global - 1]) << "cell " << c;
      if (c <= m.NInnerCells) {
        EXPECT_EQ(m.Volume[c], expected.volume[global - 1]) << "cell " << c;
      }
    }
  }
}

TEST(LoadMesh, WeightsOfPartitionFacesAreThoseOfBothSides) {
  LoadedMesh mesh = Load(kBoxes[1]);
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  CPartitionFace_DLL& faces = *mesh.partition->partitionFaces();
  for (int f = 1; f <= faces.NParInterFace(); ++f) {
    int const cv = faces.ijParCV()[f], other = faces.ijPar()[f];
    double const sx = faces.ijParSx()[f], sy = faces.ijParSy()[f], sz = faces.ijParSz()[f];
    double const x = faces.ijParxc()[f], y = faces.ijParyc()[f], z = faces.ijParzc()[f];
    double const near = sx * (x - m.xc[cv]) + sy * (y - m.yc[cv]) + sz * (z - m.zc[cv]);
    double const far = sx * (m.xc[other] - x) + sy * (m.yc[other] - y) + sz * (m.zc[other] - z);
    EXPECT_NEAR(faces.ParInterFace_Lamda()[f], near / (near + far), 1e-14);
  }
}

TEST(LoadMesh, BringsAGmshFileToAllRanks) {
  SharedFolder const folder;
  folder.Write("cubes.msh", GmshTextOfCubes(4, 3, 2, "inlet"));
  LoadedMesh mesh = Load(folder.File("cubes.msh"));
  MeshSummary const& summary = mesh.summary;
  EXPECT_EQ(24, summary.nCells);
  EXPECT_EQ(60, summary.nNodes);
  EXPECT_EQ(summary.nInnerFaces + summary.nCutFaces, 3 * 6 + 2 * 8 + 12);
  EXPECT_EQ(6, summary.FacesOf(BoundaryGroup::Inlet));
  EXPECT_EQ(6, summary.FacesOf(BoundaryGroup::Outlet));
  EXPECT_EQ(40, summary.FacesOf(BoundaryGroup::Wall));
  ExpectEachCellOwnedOnce(mesh, 24);
  EXPECT_NEAR(24.0, TotalVolume(mesh), 1e-12);

  std::vector<double> x(mesh.partition->mesh()->xc,
                        mesh.partition->mesh()->xc + mesh.partition->mesh()->NCell + 1);
  std::vector<double> const expected = x;
  for (int c = 1; c <= mesh.partition->mesh()->NCell; ++c) {
    if (c > mesh.partition->mesh()->NInnerCells && mesh.partition->globalCell()[c] > 0) x[c] = -1.0;
  }
  mesh.exchange->DDM_Exch(x.data());
  EXPECT_EQ(x, expected);
}

TEST(LoadMesh, UserGroupsGoBeforeTheNamesOfPatches) {
  LoadedMesh box = LoadMesh(MPI_COMM_WORLD, "box:4,3,2", {{"wall_ymin", BoundaryGroup::Symmetry}}, {});
  EXPECT_EQ(8, box.summary.FacesOf(BoundaryGroup::Symmetry));
  EXPECT_EQ(8.0, SumOverRanks(box.partition->mesh()->NSymmetry));

  SharedFolder const folder;
  folder.Write("cubes.msh", GmshTextOfCubes(4, 3, 2, "hub"));
  LoadedMesh file = LoadMesh(MPI_COMM_WORLD, folder.File("cubes.msh"), {{"hub", BoundaryGroup::Inlet}}, {});
  EXPECT_EQ(6, file.summary.FacesOf(BoundaryGroup::Inlet));
}

TEST(LoadMesh, WorksWithOneCellARank) {
  int const n = RankCount();
  LoadedMesh box = Load("box:" + std::to_string(n) + ",1,1");
  EXPECT_EQ(1, box.partition->mesh()->NInnerCells);
  EXPECT_EQ(box.summary.nCutFaces, n - 1);

  SharedFolder const folder;
  folder.Write("row.msh", GmshTextOfCubes(n, 1, 1, "inlet"));
  LoadedMesh file = Load(folder.File("row.msh"));
  EXPECT_EQ(1, file.partition->mesh()->NInnerCells);
  EXPECT_EQ(1, file.summary.minCells);
  EXPECT_EQ(file.summary.nCutFaces, n - 1);
  EXPECT_NEAR(TotalVolume(file), n, 1e-14);
}

TEST(LoadMesh, SameMeshGivesTheSamePartitionsAgain) {
  SharedFolder const folder;
  folder.Write("cubes.msh", GmshTextOfCubes(9, 8, 7, "inlet"));
  for (std::string const& text : {folder.File("cubes.msh"), kBoxes[1]}) {
    LoadedMesh a = Load(text), b = Load(text);
    EXPECT_EQ(a.partition->globalCell(), b.partition->globalCell());
    EXPECT_EQ(a.partition->globalNode(), b.partition->globalNode());
    EXPECT_EQ(a.summary.quality.sumSkewness, b.summary.quality.sumSkewness);
  }
}

TEST(LoadMesh, ReportsItsStagesOnRank0InOrder) {
  SharedFolder const folder;
  folder.Write("cubes.msh", GmshTextOfCubes(5, 2, 2, "inlet"));
  std::vector<std::string> stages;
  auto const progress = [&stages](std::string const& stage) { stages.push_back(stage); };
  LoadMesh(MPI_COMM_WORLD, folder.File("cubes.msh"), {}, progress);
  LoadMesh(MPI_COMM_WORLD, "box:8,8,1", {}, progress);
  std::vector<std::string> const expected = {"reading", "partitioning", "distributing",
                                             "tables",  "generating",   "tables"};
  EXPECT_EQ(stages, Rank() == 0 ? expected : std::vector<std::string>());
}

TEST(LoadMesh, MissingFileIsTheSameErrorOnEveryRank) {
  std::string const error = ErrorOnEveryRank([] { Load("no/such/mesh.msh"); });
  EXPECT_NE(error.find("no/such/mesh.msh"), std::string::npos) << error;
}

TEST(LoadMesh, BoundaryWithoutAGroupIsTheSameErrorOnEveryRank) {
  SharedFolder const folder;
  folder.Write("cubes.msh", GmshTextOfCubes(4, 3, 2, "hub"));
  std::string error = ErrorOnEveryRank([&] { Load(folder.File("cubes.msh")); });
  EXPECT_NE(error.find("'hub' (6 faces)"), std::string::npos) << error;

  error = ErrorOnEveryRank([] { LoadMesh(MPI_COMM_WORLD, "box:4,3,2", {{"hub", BoundaryGroup::Wall}}, {}); });
  EXPECT_NE(error.find("'hub'"), std::string::npos) << error;
}

TEST(LoadMesh, MoreRanksThanCellsIsTheSameErrorOnEveryRank) {
  int const nCells = RankCount() - 1;
  if (nCells == 0) GTEST_SKIP() << "needs two ranks";
  std::string error = ErrorOnEveryRank([&] { Load("box:" + std::to_string(nCells) + ",1,1"); });
  EXPECT_NE(error.find("box:"), std::string::npos) << error;

  SharedFolder const folder;
  folder.Write("row.msh", GmshTextOfCubes(nCells, 1, 1, "inlet"));
  error = ErrorOnEveryRank([&] { Load(folder.File("row.msh")); });
  EXPECT_NE(error.find("the mesh has " + std::to_string(nCells) + " cells, fewer than the " +
                       std::to_string(RankCount()) + " ranks"),
            std::string::npos)
      << error;
}

TEST(LoadMesh, BadBoxesAreTheSameErrorOnEveryRank) {
  std::string error = ErrorOnEveryRank([] { Load("box:4,0,2"); });
  EXPECT_NE(error.find("must be 1 or more"), std::string::npos) << error;
  error = ErrorOnEveryRank([] { Load("box:6,6,6:tet:perturb=0.49,seed=1"); });
  EXPECT_NE(error.find("moved too far"), std::string::npos) << error;
}

TEST(LoadMesh, FailureOfTheProgressReportReachesEveryRank) {
  auto const progress = [](std::string const& stage) { throw std::runtime_error("cannot report " + stage); };
  EXPECT_EQ("cannot report generating",
            ErrorOnEveryRank([&] { LoadMesh(MPI_COMM_WORLD, "box:4,4,4", {}, progress); }));
}

}  // namespace reference_host::test
