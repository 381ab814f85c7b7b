#include "reference_host/parallel/LoadField.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "foundation/FaceGroups.h"
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
  std::vector<double> const& value = field.value[0];
  ASSERT_EQ(field.nComponents, 1);
  ASSERT_EQ(value.size(), static_cast<std::size_t>(m.NCell) + 1);
  for (int c = 1; c <= m.NCell; ++c) {
    std::int64_t const global = mesh.partition->globalCell()[c];
    if (global > 0) {
      EXPECT_EQ(value[c], sample.cell[global - 1]) << "cell " << c;
      continue;
    }
    int const f = sample.FaceAt({m.xc[c], m.yc[c], m.zc[c]});
    ASSERT_GE(f, 0) << "ghost " << c;
    std::string const& patch = sample.mesh.patches[sample.mesh.facePatch[f]].name;
    bool const isOfCell = std::find(ofCells.begin(), ofCells.end(), patch) != ofCells.end();
    EXPECT_EQ(value[c], isOfCell ? sample.cell[sample.mesh.owner[f]] : sample.face[f]) << "ghost " << c;
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

/// The patches whose values the file should have.
std::vector<std::string> PatchesWithoutValues(LoadedField const& field) {
  std::vector<std::string> names;
  for (PatchValues const& patch : field.patches)
    if (patch.isMissing) names.push_back(patch.patch);
  return names;
}

/// A case that OpenFOAM wrote.
std::string OpenFoamCase(std::string const& name) {
  return std::string(ZYN_TEST_DATA) + "/openfoam_cases/" + name;
}

LoadedMesh LoadOpenFoamCase(std::string const& name) {
  GroupRules rules;
  rules.fallback = BoundaryGroup::Wall;
  return LoadMesh(MPI_COMM_WORLD, OpenFoamCase(name), rules, {});
}

FaceValues ValuesAt(LoadedField const& field, std::string const& patch) {
  for (PatchValues const& one : field.patches)
    if (one.patch == patch) return one.values;
  ADD_FAILURE() << "no patch " << patch;
  return FaceValues::File;
}

/// The interior cell beside a ghost cell.
int CellBeside(LoadedMesh& mesh, int ghost) {
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  for (FaceKind const kind : face_groups::kGreenGaussBoundary) {
    FaceGroup const faces = FacesOf(kind, m);
    for (int f = 1; f <= faces.count; ++f)
      if (faces.other[f] == ghost) return faces.cv[f];
  }
  return 0;
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
        EXPECT_TRUE(PatchesWithoutValues(values).empty());
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
        EXPECT_TRUE(PatchesWithoutValues(values).empty());
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
  EXPECT_EQ(std::vector<std::string>{"wall"}, PatchesWithoutValues(values));
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
  EXPECT_EQ("0/p: no such file, here or in the case; fields of time 0: T", refusal(mesh, "0/p"));
  EXPECT_EQ("1/T: no such file, here or in the case; times: 0", refusal(mesh, "1/T"));
  EXPECT_EQ("T: no such file, here or in the case; name its time, as in 0/T; times: 0", refusal(mesh, "T"));
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

// A vector has the file's values on the lid, and those of its cells on the faces across, whose normal it has no part along.
TEST(LoadField, ReadsVectorsThatOpenFoamWrote) {
  LoadedMesh mesh = LoadOpenFoamCase("cavity");
  LoadedField const field = LoadOf(mesh, "0.4/U");
  ASSERT_EQ(3, field.nComponents);
  EXPECT_EQ(FaceValues::File, ValuesAt(field, "lid"));
  EXPECT_EQ(FaceValues::File, ValuesAt(field, "sides"));
  EXPECT_EQ(FaceValues::Cell, ValuesAt(field, "frontAndBack"));
  EXPECT_TRUE(PatchesWithoutValues(field).empty());
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  for (int c = 1; c <= m.NCell; ++c) {
    std::array<double, 3> const value = {field.value[0][c], field.value[1][c], field.value[2][c]};
    if (mesh.partition->globalCell()[c] == 64) {  // the last one of the file
      EXPECT_EQ(value, (std::array<double, 3>{0.179251202809, -0.112977099969, 0.0}));
    }
    int const patch = mesh.partition->patchOfGhost()[c];
    if (patch < 0) continue;
    std::string const& name = mesh.partition->patches()[patch].name;
    int const beside = CellBeside(mesh, c);
    std::array<double, 3> expected = {field.value[0][beside], field.value[1][beside], field.value[2][beside]};
    if (name == "lid") expected = {1.0, 0.0, 0.0};
    if (name == "sides") expected = {0.0, 0.0, 0.0};
    EXPECT_EQ(value, expected) << name;
  }
}

TEST(LoadField, TakesTheNormalPartFromVectorsAtPlanesOfSymmetry) {
  LoadedMesh mesh = LoadOpenFoamCase("symmetry");
  LoadedField const field = LoadOf(mesh, "0.05/U");
  EXPECT_EQ(FaceValues::Tangential, ValuesAt(field, "top"));
  EXPECT_EQ(FaceValues::Tangential, ValuesAt(field, "sides"));
  EXPECT_EQ(FaceValues::Cell, ValuesAt(field, "outlet"));
  EXPECT_EQ(FaceValues::Cell, ValuesAt(LoadOf(mesh, "0.05/p"), "top"));
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  int nFound = 0;
  for (int c = 1; c <= m.NCell; ++c) {
    int const patch = mesh.partition->patchOfGhost()[c];
    std::string const name = patch < 0 ? "" : mesh.partition->patches()[patch].name;
    if (name != "top" && name != "sides") continue;
    // The planes are normal to axes, so that the normal part is one component.
    int const beside = CellBeside(mesh, c);
    int nGone = 0;
    for (int d = 0; d < 3; ++d) {
      if (field.value[d][c] == field.value[d][beside]) continue;
      EXPECT_EQ(field.value[d][c], 0.0) << name << " component " << d;
      ++nGone;
    }
    EXPECT_EQ(nGone, 1) << name;
    ++nFound;
  }
  if (RankCount() == 1) {
    EXPECT_GT(nFound, 0);
  }
}

// The sides of the wedge see the cell's vector turned about the axis: its radial part stays radial.
TEST(LoadField, TurnsVectorsToTheSidesOfAWedge) {
  LoadedMesh mesh = LoadOpenFoamCase("wedge");
  LoadedField const field = LoadOf(mesh, "0.02/U");
  EXPECT_EQ(FaceValues::Turned, ValuesAt(field, "front"));
  EXPECT_EQ(FaceValues::Turned, ValuesAt(field, "back"));
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  for (int c = 1; c <= m.NCell; ++c) {
    int const patch = mesh.partition->patchOfGhost()[c];
    std::string const name = patch < 0 ? "" : mesh.partition->patches()[patch].name;
    if (name != "front" && name != "back") continue;
    int const beside = CellBeside(mesh, c);
    double const angle = std::atan2(m.zc[c], m.yc[c]);  // of the face, in the plane across the axis x
    double const uy = field.value[1][beside], uz = field.value[2][beside];
    EXPECT_NEAR(field.value[0][c], field.value[0][beside], 1e-15);
    EXPECT_NEAR(field.value[1][c], std::cos(angle) * uy - std::sin(angle) * uz, 1e-15);
    EXPECT_NEAR(field.value[2][c], std::sin(angle) * uy + std::cos(angle) * uz, 1e-15);
  }
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
    for (char const* const component : {"VelocityX", "VelocityY", "VelocityZ"}) {
      file.Array(component, values);
      for (double& value : values) value += 1000.0;
    }
  }
  MPI_Barrier(MPI_COMM_WORLD);
  LoadedMesh mesh = LoadMesh(MPI_COMM_WORLD, name, {{"unnamed", BoundaryGroup::Wall}}, {});
  EXPECT_EQ(kCells, mesh.summary.nCells);
  EXPECT_EQ(1, mesh.summary.FacesOf(BoundaryGroup::Inlet));
  LoadedField const field = LoadOf(mesh, name + ":Pressure");
  EXPECT_EQ((std::vector<std::string>{"inlet", "unnamed"}), PatchesWithoutValues(field));
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  for (int c = 1; c <= m.NCell; ++c) {
    // Centres of cells at 0.5, 1.5, ...; those of ghost cells lie on a face of the cell, which may be its end.
    bool const isGhost = mesh.partition->globalCell()[c] == 0;
    if (isGhost && m.xc[c] == std::floor(m.xc[c])) continue;
    double const i = std::floor(m.xc[c]);
    EXPECT_EQ(field.value[0][c], i * i - 0.5) << "cell " << c;
  }
  LoadedField const vector = LoadOf(mesh, name + ":Velocity");
  ASSERT_EQ(3, vector.nComponents);
  EXPECT_EQ(1, LoadOf(mesh, name + ":VelocityY").nComponents);
  EXPECT_EQ(vector.value[0], field.value[0]);
  for (int c = 1; c <= m.NCell; ++c)
    for (int d = 1; d < 3; ++d) EXPECT_EQ(vector.value[d][c], field.value[0][c] + 1000.0 * d) << "cell " << c;
  EXPECT_EQ(ErrorOnEveryRank([&] { LoadOf(mesh, name + ":Mach"); }),
            name +
                ": no array 'Mach'; arrays at cell centres: 'Flow/Pressure', 'Flow/VelocityX', "
                "'Flow/VelocityY', 'Flow/VelocityZ'");

  LoadedMesh other = Load("box:5,2,2");
  EXPECT_EQ(ErrorOnEveryRank([&] { LoadOf(other, name + ":Pressure"); }),
            name + ":Pressure: " + std::to_string(kCells) + " values for the 20 cells of the mesh");
}
#endif

}  // namespace reference_host::test
