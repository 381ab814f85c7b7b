#include "reference_host/parallel/LoadField.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/Vector3.h"
#include "reference_host/parallel/MeshDistribution.h"
#ifdef ZYN_WITH_CGNS
#include "tests/unit/reference_host/cgns/CgnsTestFile.h"
#endif
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"

namespace reference_host::test {
namespace {

/// A mesh with a value for every cell and every face, all of them different.
struct Sample {
  FaceMesh mesh;
  std::vector<double> cell, face;

  explicit Sample(FaceMesh const& any) : mesh(foam_test::InFoamOrder(any)) {
    for (int c = 0; c < mesh.nCells; ++c) cell.push_back(c + 0.25);
    for (int f = 0; f < mesh.nFaces(); ++f) face.push_back(1000.0 + f);
  }

  /// The boundary face with this centre.
  int FaceAt(Point const& centre) const {
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (mesh.neighbour[f] >= 0) continue;
      std::size_t const begin = mesh.faceStart[f];
      Point const own = ComputeFaceGeometry(mesh.points, mesh.faceNode.data() + begin,
                                            static_cast<int>(mesh.faceStart[f + 1] - begin))
                            .centre;
      if (Length(Difference(own, centre)) < 1e-12) return f;
    }
    return -1;
  }
};

// Cells of a hexahedral box have several faces in the patch "wall" (y=0, z=0, z=1); a cell of a row has
// three. Every rank has a cell.
std::vector<Sample> Samples() {
  return {Sample(test_meshes::HexBox(std::max(5, RankCount()), 1, 1)),
          Sample(test_meshes::Perturbed(test_meshes::PolyBox(RankCount() > 4 ? 3 : 2), 0.03))};
}

void ExpectValues(LoadedMesh& mesh, LoadedField const& field, Sample const& sample,
                  std::vector<std::string> const& ofCells = {}) {
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  ASSERT_EQ(field.value.size(), static_cast<std::size_t>(m.NCell) + 1);
  for (int c = 1; c <= m.NCell; ++c) {
    std::int64_t const global = mesh.partition->globalCell()[c];
    if (global > 0) {
      EXPECT_EQ(field.value[c], sample.cell[global - 1]) << "cell " << c;
      continue;
    }
    int const f = sample.FaceAt({m.xc[c], m.yc[c], m.zc[c]});
    ASSERT_GE(f, 0) << "ghost " << c;
    std::string const& patch = sample.mesh.patches[sample.mesh.facePatch[f]].name;
    bool const isOfCell = std::find(ofCells.begin(), ofCells.end(), patch) != ofCells.end();
    EXPECT_EQ(field.value[c], isOfCell ? sample.cell[sample.mesh.owner[f]] : sample.face[f]) << "ghost " << c;
  }
}

/// The field of a piece, from that of the whole mesh.
std::string PieceText(foam_test::Piece const& piece, Sample const& sample) {
  std::vector<double> cell, face;
  for (int const c : piece.cell) cell.push_back(sample.cell[c]);
  for (int const f : piece.face) face.push_back(sample.face[std::abs(f) - 1]);
  return foam_test::FieldText(piece.mesh, cell, face);
}

LoadedField LoadOf(LoadedMesh& mesh, std::string const& fieldSpec) {
  return LoadField(MPI_COMM_WORLD, mesh, fieldSpec);
}

}  // namespace

TEST(LoadField, GivesEveryRankItsValuesOfAWholeMesh) {
  for (Sample const& sample : Samples()) {
    SharedFolder const folder;
    if (Rank() == 0) foam_test::WriteMesh(folder.File("case/constant/polyMesh"), sample.mesh);
    if (Rank() == 0) {
      foam_test::WriteText(folder.File("case/0/T"),
                           foam_test::FieldText(sample.mesh, sample.cell, sample.face));
    }
    MPI_Barrier(MPI_COMM_WORLD);
    for (std::string const mesh : {"case", "case/constant/polyMesh", "case/constant/polyMesh/"}) {
      LoadedMesh loaded = Load(folder.File(mesh));
      for (std::string const& field : {folder.File("case/0/T"), std::string("0/T")}) {
        LoadedField const values = LoadOf(loaded, field);
        ExpectValues(loaded, values, sample);
        EXPECT_TRUE(values.patchesWithoutValues.empty());
      }
    }
  }
}

TEST(LoadField, ReadsTheFoldersOfADecomposedCase) {
  for (Sample const& sample : Samples()) {
    int const nCells = sample.mesh.nCells;
    for (std::vector<int> const& parts :
         {test_meshes::RunParts(nCells, RankCount()), PartitionMesh(sample.mesh, RankCount())}) {
      SharedFolder const folder;
      std::string const name = folder.File("case");
      if (Rank() == 0) {
        foam_test::WriteDecomposed(
            name, sample.mesh, parts, RankCount(), true, [&](int part, foam_test::Piece& piece) {
              foam_test::WriteText(name + "/processor" + std::to_string(part) + "/0.5/T",
                                   PieceText(piece, sample));
            });
      }
      MPI_Barrier(MPI_COMM_WORLD);
      LoadedMesh loaded = Load(name);
      for (std::string const& field : {std::string("0.5/T"), name + "/0.5/T", name + "/processor0/0.5/T"}) {
        LoadedField const values = LoadOf(loaded, field);
        ExpectValues(loaded, values, sample);
        EXPECT_TRUE(values.patchesWithoutValues.empty());
      }
    }
  }
}

// Cells are then numbered rank by rank, which does not change the numbers of contiguous parts.
TEST(LoadField, ReadsADecomposedCaseWithoutAddressing) {
  Sample const sample(test_meshes::HexBox(5, 2, 2));
  std::vector<int> const parts = test_meshes::RunParts(sample.mesh.nCells, RankCount());
  SharedFolder const folder;
  std::string const name = folder.File("case");
  if (Rank() == 0) {
    foam_test::WriteDecomposed(
        name, sample.mesh, parts, RankCount(), false, [&](int part, foam_test::Piece& piece) {
          foam_test::WriteText(name + "/processor" + std::to_string(part) + "/0/T", PieceText(piece, sample));
        });
  }
  MPI_Barrier(MPI_COMM_WORLD);
  LoadedMesh loaded = Load(name);
  ExpectValues(loaded, LoadOf(loaded, "0/T"), sample);
}

TEST(LoadField, NamesThePatchesWhoseCellsStandIn) {
  Sample const sample(test_meshes::HexBox(5, 2, 2));
  SharedFolder const folder;
  std::string text = foam_test::FieldText(sample.mesh, sample.cell, sample.face);
  std::size_t const wall = text.find("wall {");
  text.replace(text.find("value", wall), 5, "other");
  if (Rank() == 0) foam_test::WriteMesh(folder.File("case/constant/polyMesh"), sample.mesh);
  if (Rank() == 0) foam_test::WriteText(folder.File("case/0/T"), text);
  MPI_Barrier(MPI_COMM_WORLD);
  LoadedMesh loaded = Load(folder.File("case"));
  LoadedField const values = LoadOf(loaded, "0/T");
  ExpectValues(loaded, values, sample, {"wall"});
  EXPECT_EQ(std::vector<std::string>{"wall"}, values.patchesWithoutValues);
}

TEST(LoadField, RefusesFieldsThatDoNotGoWithTheMesh) {
  LoadedMesh box = Load("box:6,2,2");
  auto const refusal = [](LoadedMesh& mesh, std::string const& fieldSpec) {
    return ErrorOnEveryRank([&] { LoadOf(mesh, fieldSpec); });
  };
  EXPECT_EQ("0/T: an OpenFOAM field needs an OpenFOAM mesh (other fields: FILE.cgns:ARRAY)",
            refusal(box, "0/T"));
  EXPECT_EQ("case.cgns: name an array of the file, as in case.cgns:ARRAY", refusal(box, "case.cgns"));
  EXPECT_EQ(0U, refusal(box, "none.cgns:T").rfind("none.cgns: ", 0));

  Sample const sample(test_meshes::HexBox(4, 2, 2)), other(test_meshes::HexBox(3, 2, 2));
  SharedFolder const folder;
  std::string const name = folder.File("case");
  if (Rank() == 0) {
    foam_test::WriteMesh(name + "/constant/polyMesh", sample.mesh);
    foam_test::WriteText(name + "/0/T", foam_test::FieldText(other.mesh, other.cell, other.face));
  }
  MPI_Barrier(MPI_COMM_WORLD);
  LoadedMesh mesh = Load(name);
  EXPECT_EQ("0/p: no such file, here or in the case", refusal(mesh, "0/p"));
  if (Rank() == 0) {
    EXPECT_EQ(0, mkfifo((name + "/0/pipe").c_str(), 0600));
  }
  EXPECT_EQ(refusal(mesh, "0/pipe"), name + "/0/pipe: a pipe (FIFO), not a regular file");
  EXPECT_EQ(refusal(mesh, "constant"), name + "/constant: a folder, not a regular file");
  EXPECT_EQ(refusal(mesh, "0/T"), name + "/0/T: 12 values for 16 cells");
}

TEST(LoadField, RefusesADecomposedCaseWithAFieldMissingOnOneRank) {
  Sample const sample(test_meshes::HexBox(4, 2, 2));
  SharedFolder const folder;
  std::string const name = folder.File("case");
  int const last = RankCount() - 1;
  if (Rank() == 0) {
    foam_test::WriteDecomposed(name, sample.mesh, test_meshes::RunParts(16, RankCount()), RankCount(), true,
                               [&](int part, foam_test::Piece& piece) {
                                 if (part == last) return;
                                 foam_test::WriteText(name + "/processor" + std::to_string(part) + "/0/T",
                                                      PieceText(piece, sample));
                               });
  }
  MPI_Barrier(MPI_COMM_WORLD);
  LoadedMesh mesh = Load(name);
  std::string const text = ErrorOnEveryRank([&] { LoadOf(mesh, "0/T"); });
  EXPECT_EQ(0U, text.rfind(name + "/processor" + std::to_string(last) + "/0/T: ", 0)) << text;
  EXPECT_EQ("T: a decomposed case needs the time and the field, as in 0/T",
            ErrorOnEveryRank([&] { LoadOf(mesh, "T"); }));
}

#ifdef ZYN_WITH_CGNS
// A row of cubes along x, cells and their values in the same order.
TEST(LoadField, GivesEveryRankItsCellsOfACgnsFile) {
  int const kCells = std::max(7, RankCount());
  SharedFolder const folder;
  std::string const name = folder.File("row.cgns");
  if (Rank() == 0) {
    std::vector<Point> points;
    std::vector<cgsize_t> nodes, surface;
    std::vector<double> values;
    for (int i = 0; i <= kCells; ++i) {
      for (auto const& [y, z] :
           {std::pair(0.0, 0.0), std::pair(1.0, 0.0), std::pair(1.0, 1.0), std::pair(0.0, 1.0)}) {
        points.push_back({1.0 * i, y, z});
      }
    }
    for (int i = 0; i < kCells; ++i) {
      for (int n = 1; n <= 8; ++n) nodes.push_back(4 * i + n);
      values.push_back(i * i - 0.5);
    }
    CgnsTestFile file(name);
    file.Base();
    file.Zone(points, kCells);
    file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, kCells, nodes);
    file.Section("inlet", CGNS_ENUMV(QUAD_4), kCells + 1, kCells + 1, {1, 2, 3, 4});
    file.Solution("Flow", CGNS_ENUMV(CellCenter));
    file.Array("Pressure", values);
  }
  MPI_Barrier(MPI_COMM_WORLD);
  LoadedMesh mesh = LoadMesh(MPI_COMM_WORLD, name, {{"unnamed", BoundaryGroup::Wall}}, {});
  EXPECT_EQ(kCells, mesh.summary.nCells);
  EXPECT_EQ(1, mesh.summary.FacesOf(BoundaryGroup::Inlet));
  LoadedField const field = LoadOf(mesh, name + ":Pressure");
  EXPECT_EQ((std::vector<std::string>{"inlet", "unnamed"}), field.patchesWithoutValues);
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  for (int c = 1; c <= m.NCell; ++c) {
    // Centres of cells at 0.5, 1.5, ...; those of ghost cells lie on a face of the cell, which may be its end.
    bool const isGhost = mesh.partition->globalCell()[c] == 0;
    if (isGhost && m.xc[c] == std::floor(m.xc[c])) continue;
    double const i = std::floor(m.xc[c]);
    EXPECT_EQ(field.value[c], i * i - 0.5) << "cell " << c;
  }
  EXPECT_EQ(ErrorOnEveryRank([&] { LoadOf(mesh, name + ":Mach"); }),
            name + ": no array 'Mach'; arrays at cell centres: 'Flow/Pressure'");

  LoadedMesh other = Load("box:5,2,2");
  EXPECT_EQ(ErrorOnEveryRank([&] { LoadOf(other, name + ":Pressure"); }),
            name + ":Pressure: " + std::to_string(kCells) + " values for the 20 cells of the mesh");
}
#endif

}  // namespace reference_host::test
