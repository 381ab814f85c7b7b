// Every reader takes work and memory in proportion to its input. Each test doubles one thing that an input may have many
// of, or that may be long.

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/base/UsageError.h"
#include "cli/bodies/StlReader.h"
#include "cli/bodies/TriangleSurface.h"
#include "cli/bodies/WindingNumber.h"
#include "cli/field/Expression.h"
#include "cli/points/PointSet.h"
#include "reference_host/MeshReader.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/CollatedFile.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamField.h"
#include "tests/reliability/growth/Growth.h"
#include "tests/reliability/growth/Inputs.h"
#include "tests/unit/cli/bodies/TestSurfaces.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/gmsh/GmshTestFile.h"
#include "tests/unit/reference_host/openfoam/BinaryFoamFiles.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"
#ifdef ZYN_WITH_CGNS
#include "tests/unit/reference_host/cgns/CgnsTestFile.h"
#endif

namespace {

using namespace growth;  // NOLINT(google-build-using-namespace): the inputs are what these tests are about
using reference_host::FaceMesh;
using reference_host::PolyMeshBoundary;

using Work = std::function<void()>;

Work ReadAndCheck(std::string const& path) {
  return [path] { reference_host::CheckMesh(reference_host::ReadMesh(path), path); };
}

/// Work that ends with a message, which is one line of moderate length.
template <class Error>
Work Refused(Work const& work) {
  return [work] {
    try {
      work();
      ADD_FAILURE() << "not refused";
    } catch (Error const& error) {
      EXPECT_LT(std::string(error.what()).size(), 2000U);
    }
  };
}

// Gmsh.

class GmshGrowth : public testing::TestWithParam<std::pair<std::string, bool>> {
 protected:
  Work Read(GmshTestMesh const& mesh) {
    return ReadAndCheck(folder_.Write("a.msh", WriteGmsh(mesh, GetParam().first, GetParam().second)));
  }
  TemporaryFolder folder_;
};

TEST_P(GmshGrowth, IsLinearInNodesAndElements) {
  ExpectLinear(500, [&](int n) { return Read(GmshRow(n, 0)); });
}

TEST_P(GmshGrowth, IsLinearInPhysicalNames) {
  ExpectLinear(500, [&](int n) { return Read(GmshRow(n, n)); });
}

TEST_P(GmshGrowth, IsLinearInTheLengthOfAName) {
  ExpectLinear(20000, [&](int n) {
    GmshTestMesh mesh = GmshRow(1, 1);
    mesh.physicalNames = "$PhysicalNames\n1\n2 1 \"" + std::string(static_cast<std::size_t>(n), 'w') +
                         "\"\n$EndPhysicalNames\n";
    return Read(mesh);
  });
}

INSTANTIATE_TEST_SUITE_P(Formats, GmshGrowth,
                         testing::Values(std::pair("2.2", false), std::pair("2.2", true),
                                         std::pair("4.1", false), std::pair("4.1", true)));

TEST(GmshSectionsGrowth, IsLinearInUnknownSections) {
  TemporaryFolder const folder;
  ExpectLinear(2000, [&](int n) {
    std::string const whole = WriteGmsh(GmshRow(1, 0), "2.2", false);
    return ReadAndCheck(folder.Write("a.msh", whole + Times(n, "$Comment\nsome text\n$EndComment\n")));
  });
}

// polyMesh, whole and decomposed.

FaceMesh Row(int nCubes, int nPatches) {
  std::vector<reference_host::Patch> patches;
  for (int p = 0; p < nPatches; ++p) patches.push_back({"wall" + std::to_string(p), "wall", {}});
  reference_host::FaceMeshBuilder builder("row", PointsOfRow(nCubes), patches);
  for (int i = 0; i < nCubes; ++i) {
    builder.AddCell(reference_host::CellShape::Hexahedron, NodesOfCube(i).data());
    int const n = 4 * i;
    std::array<int, 4> const bottom = {n, n + 4, n + 5, n + 1};
    builder.AddSurface(bottom.data(), 4, i % nPatches);
  }
  FaceMesh mesh = builder.Build();
  mesh.patches.back().type = "wall";
  return foam_test::InFoamOrder(mesh);
}

TEST(PolyMeshGrowth, IsLinearInCells) {
  TemporaryFolder const folder;
  ExpectLinear(300, [&](int n) {
    foam_test::WriteMesh(folder.Path(), Row(n, 1));
    return ReadAndCheck(folder.Path());
  });
}

TEST(PolyMeshGrowth, IsLinearInPatches) {
  TemporaryFolder const folder;
  ExpectLinear(300, [&](int n) {
    foam_test::WriteMesh(folder.Path(), Row(n, n));
    return ReadAndCheck(folder.Path());
  });
}

TEST(PolyMeshGrowth, IsLinearInNestedEntries) {
  TemporaryFolder const folder;
  ExpectLinear(20000, [&](int n) {
    FaceMesh mesh = Row(1, 1);
    foam_test::WriteMesh(folder.Path(), mesh, {{"wall0", "more { " + Times(n, "(") + Times(n, ")") + " } "}});
    return ReadAndCheck(folder.Path());
  });
}

TEST(DecomposedCaseGrowth, IsLinearInCuts) {
  TemporaryFolder const folder;
  ExpectLinear(300, [&](int n) {
    FaceMesh mesh = Row(n, n);
    foam_test::PatchEntries entries;
    for (int p = 0; p < n; ++p) {
      mesh.patches[static_cast<std::size_t>(p)].type = "processor";
      entries[mesh.patches[static_cast<std::size_t>(p)].name] =
          "myProcNo 0; neighbProcNo " + std::to_string(n - p) + "; ";
    }
    foam_test::WriteMesh(foam_test::PieceFolder(folder.Path(), 0), mesh, entries);
    return [&folder, n] { reference_host::ReadProcessorMesh(folder.Path(), 0, n + 1); };
  });
}

TEST(BoundaryGroupsGrowth, IsLinearInPatchesWithoutAGroup) {
  ExpectLinear(2000, [](int n) {
    std::vector<reference_host::Patch> patches;
    for (int p = 0; p < n; ++p) patches.push_back({"part" + std::to_string(p), "", {}});
    return Refused<reference_host::MeshError>([patches]() mutable {
      reference_host::AssignBoundaryGroups(patches, std::vector<std::int64_t>(patches.size(), 1), {});
    });
  });
}

// Field files.

/// One cell, and `n` patches of one face.
PolyMeshBoundary Patches(int n) {
  PolyMeshBoundary boundary;
  for (int p = 0; p < n; ++p) {
    boundary.owner.push_back(0);
    boundary.patches.push_back({"blade" + std::to_string(p) + "side", "wall", {}});
    boundary.facesOfPatch.push_back({p, 1});
  }
  return boundary;
}

Work ReadField(TemporaryFolder const& folder, std::string const& entries, PolyMeshBoundary const& boundary) {
  std::string const file =
      folder.Write("p", foam_test::Header("volScalarField") + "internalField uniform 0;\nboundaryField {\n" +
                            entries + "\n}\n");
  return [file, boundary] { reference_host::ReadFoamField(file, 1, boundary); };
}

std::string Entry(std::string const& key) { return key + " { type fixedValue; value uniform 1; }\n"; }

TEST(FoamFieldGrowth, IsLinearInNamedPatches) {
  TemporaryFolder const folder;
  ExpectLinear(500, [&](int n) {
    std::string entries;
    for (int p = 0; p < n; ++p) entries += Entry("blade" + std::to_string(p) + "side");
    return ReadField(folder, entries, Patches(n));
  });
}

TEST(FoamFieldGrowth, IsLinearInPatternsAndPatchesTogether) {
  TemporaryFolder const folder;
  ExpectLinear(100, [&](int n) {
    std::string entries;
    for (int p = 0; p < n; ++p) {
      std::string const number = std::to_string(p);
      entries += Entry("\"blade" + number + "s.*\"") + Entry("\".*e" + number + "side\"") +
                 Entry("\"blade" + number + "side\"");
    }
    return ReadField(folder, entries, Patches(n));
  });
}

TEST(FoamFieldGrowth, IsLinearInPatternsOfAnyKind) {
  TemporaryFolder const folder;
  ExpectLinear(500, [&](int n) {
    std::string entries;
    for (int p = 0; p < n; ++p) entries += Entry("\".*(" + std::to_string(p) + "|x)+[a-z].*\"");
    return ReadField(folder, entries, Patches(20));
  });
}

TEST(FoamFieldGrowth, IsLinearInTheLengthOfAPattern) {
  TemporaryFolder const folder;
  ExpectLinear(
      60, [&](int n) { return ReadField(folder, Entry("\"" + Times(n, "(a*|b)*") + "\""), Patches(200)); });
}

TEST(FoamFieldGrowth, IsLinearInTheLengthOfPatternsThatAreTooLong) {
  TemporaryFolder const folder;
  ExpectLinear(20000, [&](int n) {
    return Refused<reference_host::MeshError>(
        ReadField(folder, Entry("\"" + Times(n, "(") + Times(n, ")") + "\""), Patches(1)));
  });
}

TEST(FoamFieldGrowth, IsLinearInNestedEntries) {
  TemporaryFolder const folder;
  ExpectLinear(20000, [&](int n) {
    return ReadField(folder, "x { type slip; more { a (" + Times(n, "{ a (") + Times(n, ") }") + "); } }",
                     Patches(1));
  });
}

TEST(FoamFieldGrowth, IsLinearInValues) {
  TemporaryFolder const folder;
  ExpectLinear(5000, [&](int n) {
    PolyMeshBoundary boundary;
    boundary.owner.assign(static_cast<std::size_t>(n), 0);
    boundary.patches = {{"wall", "wall", {}}};
    boundary.facesOfPatch = {{0, n}};
    return ReadField(folder,
                     "wall { type fixedValue; value nonuniform List<scalar> " + std::to_string(n) + "(" +
                         Times(n, "1.5 ") + "); }",
                     boundary);
  });
}

// Repeated values are a few bytes for any number, so that only what patches have of them may be written out.
TEST(FoamFieldGrowth, IsLinearInRepeatedValues) {
  TemporaryFolder const folder;
  ExpectLinear(300, [&](int n) {
    PolyMeshBoundary boundary = Patches(1);
    boundary.owner.assign(static_cast<std::size_t>(10 * n), 0);
    std::string entries;
    for (int p = 0; p < n; ++p) {
      entries += "x" + std::to_string(p) + " { type fixedValue; value nonuniform List<scalar> " +
                 std::to_string(10 * n) + "{1}; }\n";
    }
    return ReadField(folder, entries, boundary);
  });
}

// Macros of field files.

TEST(FoamFieldGrowth, IsLinearInMacrosForPatches) {
  TemporaryFolder const folder;
  ExpectLinear(300, [&](int n) {
    std::string entries = Entry("first");
    for (int p = 0; p < n; ++p) {
      std::string const number = std::to_string(p);
      entries += "blade" + number + "side { " +
                 (p % 2 == 0 ? "$first; } " : "type fixedValue; value $internalField; } ");
    }
    return ReadField(folder, entries, Patches(n));
  });
}

// A long list that many patches take must not be read again for each.
TEST(FoamFieldGrowth, IsLinearInMacrosForALongList) {
  TemporaryFolder const folder;
  ExpectLinear(300, [&](int n) {
    PolyMeshBoundary boundary = Patches(1);
    boundary.owner.assign(static_cast<std::size_t>(10 * n), 0);
    std::string entries = "x { type fixedValue; list nonuniform List<scalar> " + std::to_string(10 * n) +
                          "(" + Times(10 * n, "1.5 ") + "); value $list; }\n";
    for (int p = 0; p < n; ++p) entries += "x" + std::to_string(p) + " { type fixedValue; value $x.list; }\n";
    return ReadField(folder, entries, boundary);
  });
}

// Binary, compressed and collated files.

std::string BinaryField(int n) {
  return foam_test::BinaryHeader("volScalarField") +
         "internalField uniform 0;\nboundaryField { wall { type mixed; " +
         "gradient nonuniform List<tensor> " +
         foam_test::BinaryReals(std::vector<double>(9 * static_cast<std::size_t>(n), 1.5), 9) +
         "; value nonuniform List<scalar> " +
         foam_test::BinaryReals(std::vector<double>(static_cast<std::size_t>(n), 2.5), 1) + "; } }\n";
}

PolyMeshBoundary OnePatch(int nFaces) {
  PolyMeshBoundary boundary;
  boundary.owner.assign(static_cast<std::size_t>(nFaces), 0);
  boundary.patches = {{"wall", "wall", {}}};
  boundary.facesOfPatch = {{0, nFaces}};
  return boundary;
}

TEST(BinaryFoamGrowth, IsLinearInValues) {
  TemporaryFolder const folder;
  ExpectLinear(20000, [&](int n) {
    std::string const file = folder.Write("p", BinaryField(n));
    return [file, boundary = OnePatch(n)] { reference_host::ReadFoamField(file, 1, boundary); };
  });
}

TEST(BinaryFoamGrowth, IsLinearInCompressedValues) {
  TemporaryFolder const folder;
  ExpectLinear(20000, [&](int n) {
    folder.Write("p.gz", foam_test::Compressed(BinaryField(n)));
    return [file = folder.Path() + "/p", boundary = OnePatch(n)] {
      reference_host::ReadFoamField(file, 1, boundary);
    };
  });
}

TEST(BinaryFoamGrowth, IsLinearInFaces) {
  TemporaryFolder const folder;
  ExpectLinear(500, [&](int n) {
    FaceMesh const mesh = foam_test::InFoamOrder(Row(n, 1));
    foam_test::WriteMesh(folder.Path(), mesh);
    folder.Write("points", foam_test::BinaryPoints(mesh));
    folder.Write("faces", foam_test::BinaryFaces(mesh));
    return ReadAndCheck(folder.Path());
  });
}

// The last rank passes over the pieces of all others.
TEST(CollatedGrowth, IsLinearInProcessors) {
  TemporaryFolder const folder;
  ExpectLinear(500, [&](int n) {
    std::vector<std::string> const pieces(static_cast<std::size_t>(n),
                                          foam_test::Header("labelList") + "1(0)\n");
    std::string const file = folder.Write("owner", foam_test::Collated(pieces));
    return [file, n] { reference_host::ReadCollatedPiece(file, n - 1, n - 1); };
  });
}

// A rank takes memory for its own piece, not for those before it, and a size is nothing before it is there.
TEST(CollatedGrowth, IsLinearInCompressedBytes) {
  TemporaryFolder const folder;
  ExpectLinear(200000, [&](int n) {
    std::string const file = folder.Write(
        "owner.gz", foam_test::Compressed(foam_test::Collated(
                        {foam_test::Header("labelList") + "1(0)\n", Times(n, "123 "), Times(n, "456 ")})));
    return [file] { reference_host::ReadCollatedPiece(file, 2, 2); };
  });
}

// CSV files.

Work ReadCsv(TemporaryFolder const& folder, std::string const& text) {
  std::string const file = folder.Write("points.csv", text);
  return [file] { zyngrad::ReadPoints(file, {"value"}); };
}

TEST(CsvGrowth, IsLinearInPoints) {
  TemporaryFolder const folder;
  ExpectLinear(1000, [&](int n) { return ReadCsv(folder, "x,y,z,t\n" + Times(n, "1.5,2,3e-1,abc\n")); });
}

TEST(CsvGrowth, IsLinearInColumns) {
  TemporaryFolder const folder;
  ExpectLinear(1000, [&](int n) {
    return ReadCsv(folder, "x,y,z" + Times(n, ",t") + "\n" + "1,2,3" + Times(n, ",4") + "\n");
  });
}

TEST(CsvGrowth, IsLinearInDoubledQuotes) {
  TemporaryFolder const folder;
  ExpectLinear(4000, [&](int n) { return ReadCsv(folder, "x,y,z,\"" + Times(n, "\"\"") + "\"\n1,2,3,4\n"); });
}

TEST(CsvGrowth, IsLinearInBlankLines) {
  TemporaryFolder const folder;
  ExpectLinear(5000, [&](int n) { return ReadCsv(folder, "x,y,z\n" + Times(n, "\n") + "1,2,3\n"); });
}

// STL files, the search for their corners and the tree over their triangles.

std::string StlFacets(int n) {
  std::string text = "solid a\n";
  for (int i = 0; i < n; ++i) {
    std::string const x = std::to_string(i % 100), y = std::to_string(i / 100);
    text += "facet normal 0 0 1 outer loop vertex " + x + ' ' + y + " 0 vertex " + x + ".5 " + y +
            " 0 vertex " + x + ' ' + y + ".5 0 endloop endfacet\n";
  }
  return text + "endsolid a\n";
}

TEST(StlGrowth, ReadsTextInProportionToItsTriangles) {
  TemporaryFolder const folder;
  ExpectLinear(1000, [&](int n) -> Work {
    std::string const file = folder.Write("body.stl", StlFacets(n));
    return [file] { zyngrad::ReadStl(file); };
  });
}

TEST(StlGrowth, ReadsBinaryInProportionToItsTriangles) {
  TemporaryFolder const folder;
  ExpectLinear(2000, [&](int n) -> Work {
    std::string const file = folder.Write(
        "body.stl", zyngrad::BinaryStl(std::vector<double>(static_cast<std::size_t>(9 * n), 1.5)));
    return [file] { zyngrad::ReadStl(file); };
  });
}

TEST(StlGrowth, ReadsManySolidsInProportion) {
  TemporaryFolder const folder;
  ExpectLinear(1000, [&](int n) -> Work {
    std::string const file = folder.Write("body.stl", StlFacets(1) + Times(n, "solid b\nendsolid b\n"));
    return [file] { zyngrad::ReadStl(file); };
  });
}

/// Twice as many triangles by twice as many rings.
zyngrad::TriangleSurface TorusOf(int n) { return zyngrad::Torus(2.0, 0.5, n, 40); }

TEST(StlGrowth, WeldsInProportionToItsTriangles) {
  ExpectLinear(30, [](int n) -> Work {
    return [corners = zyngrad::CornersOf(TorusOf(n))] { zyngrad::WeldTriangles(corners); };
  });
}

TEST(StlGrowth, WeldsTrianglesAtOnePlaceInProportion) {
  ExpectLinear(1000, [](int n) -> Work {
    return [corners = std::vector<double>(static_cast<std::size_t>(9 * n), 1.5)] {
      zyngrad::WeldTriangles(corners);
    };
  });
}

TEST(StlGrowth, BuildsTheTreeInProportionToItsTriangles) {
  ExpectLinear(30, [](int n) -> Work {
    return [torus = TorusOf(n)] { zyngrad::WindingNumber(torus.points, torus.triangles); };
  });
}

// Eight times as many triangles are three more levels; ten would be too many, and eight the cost of adding all of them.
TEST(StlGrowth, FindsInsideHardlySlowerAmongMoreTriangles) {
  auto const cost = [](int n) {
    zyngrad::TriangleSurface const torus = zyngrad::Torus(2.0, 0.5, n, n / 2);
    zyngrad::WindingNumber const winding(torus.points, torus.triangles);
    return Measure([&] {
      for (int i = 0; i < 100; ++i) winding.At({0.025 * i, 0.3, 0.01 * (i % 40)});
    });
  };
  std::uint64_t const few = cost(60).instructions, many = cost(170).instructions;
  ASSERT_GT(few, 0U);
  EXPECT_LT(static_cast<double>(many) / static_cast<double>(few), 2.5) << few << ", then " << many;
}

// Formulas.

Work Evaluate(std::string const& text) {
  return [text] { zyngrad::Expression(text).Value(1, 2, 3); };
}

TEST(FormulaGrowth, IsLinearInTerms) {
  ExpectLinear(500, [](int n) { return Evaluate("x" + Times(n, "+2*sin(y)^2")); });
}

TEST(FormulaGrowth, IsLinearInSigns) {
  ExpectLinear(5000, [](int n) { return Evaluate(Times(n, "-") + "x"); });
}

TEST(FormulaGrowth, IsLinearInNestedBrackets) {
  ExpectLinear(49, [](int n) { return Evaluate(Times(n, "(x+") + "1" + Times(n, ")")); });
}

TEST(FormulaGrowth, IsLinearInBracketsThatAreTooDeep) {
  ExpectAtMostLinear(20000, [](int n) {
    return Refused<zyngrad::UsageError>(Evaluate(Times(n, "(") + "1" + Times(n, ")")));
  });
}

TEST(FormulaGrowth, IsLinearInTheLengthOfAnUnknownName) {
  ExpectLinear(20000, [](int n) {
    return Refused<zyngrad::UsageError>(Evaluate(std::string(static_cast<std::size_t>(n), 'q')));
  });
}

#ifdef ZYN_WITH_CGNS

Work ReadCgnsFile(TemporaryFolder const& folder, int n, std::function<void(CgnsTestFile&)> const& describe) {
  cg_set_file_type(CG_FILE_ADF);  // HDF5 takes ten times the instructions for opening a file, all of its own
  std::string const file = folder.Path() + "/" + std::to_string(n) + ".cgns";
  describe(*std::make_unique<CgnsTestFile>(file));
  return ReadAndCheck(file);
}

std::vector<cgsize_t> ElementsOfRow(int nCubes) {
  std::vector<cgsize_t> nodes;
  for (int i = 0; i < nCubes; ++i) {
    for (int const node : NodesOfCube(i)) nodes.push_back(node + 1);
  }
  return nodes;
}

void WriteRow(CgnsTestFile& file, int nCubes) {
  file.Base();
  file.Zone(PointsOfRow(nCubes), nCubes);
  file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, nCubes, ElementsOfRow(nCubes));
}

TEST(CgnsGrowth, IsLinearInCells) {
  TemporaryFolder const folder;
  ExpectLinear(
      1500, [&](int n) { return ReadCgnsFile(folder, n, [n](CgnsTestFile& file) { WriteRow(file, n); }); });
}

TEST(CgnsGrowth, IsLinearInPolygons) {
  TemporaryFolder const folder;
  ExpectLinear(1000, [&](int n) {
    return ReadCgnsFile(folder, n, [n](CgnsTestFile& file) {
      FaceMesh const mesh = Row(n, 1);
      file.Base();
      file.Zone(mesh.points, n);
      std::vector<cgsize_t> nodes, offsets = {0}, parents;
      for (int const node : mesh.faceNode) nodes.push_back(node + 1);
      for (int f = 0; f < mesh.nFaces(); ++f) {
        offsets.push_back(static_cast<cgsize_t>(mesh.faceStart[static_cast<std::size_t>(f) + 1]));
        parents.push_back(mesh.nFaces() + 1 + mesh.owner[static_cast<std::size_t>(f)]);
      }
      for (int const cell : mesh.neighbour) parents.push_back(cell < 0 ? 0 : mesh.nFaces() + 1 + cell);
      file.Section("Faces", CGNS_ENUMV(NGON_n), 1, mesh.nFaces(), nodes, offsets, parents);
    });
  });
}

TEST(CgnsGrowth, IsLinearInSections) {
  TemporaryFolder const folder;
  ExpectLinear(60, [&](int n) {
    return ReadCgnsFile(folder, n, [n](CgnsTestFile& file) {
      file.Base();
      file.Zone(PointsOfRow(n), n);
      std::vector<cgsize_t> const nodes = ElementsOfRow(n);
      for (int i = 0; i < n; ++i) {
        file.Section("S" + std::to_string(i), CGNS_ENUMV(HEXA_8), i + 1, i + 1,
                     {nodes.begin() + 8 * i, nodes.begin() + 8 * (i + 1)});
      }
    });
  });
}

// Each set of nodes has one face, but every set could look at every face.
TEST(CgnsGrowth, IsLinearInConditionsByNodes) {
  TemporaryFolder const folder;
  ExpectLinear(600, [&](int n) {
    return ReadCgnsFile(folder, n, [n](CgnsTestFile& file) {
      int const perCondition = 4;
      WriteRow(file, perCondition * n);
      for (int i = 0; i < n; ++i) {
        cgsize_t const k = 4 * cgsize_t{perCondition} * i;
        file.Condition("C" + std::to_string(i), CGNS_ENUMV(BCWall), CGNS_ENUMV(PointList),
                       {k + 1, k + 2, k + 5, k + 6}, CGNS_ENUMV(Vertex));
      }
    });
  });
}

TEST(CgnsGrowth, IsLinearInZonesThatAreTooMany) {
  TemporaryFolder const folder;
  ExpectLinear(60, [&](int n) {
    return Refused<reference_host::MeshError>(ReadCgnsFile(folder, n, [n](CgnsTestFile& file) {
      file.Base();
      for (int i = 0; i < n; ++i) file.Zone(PointsOfRow(1), 1, "Zone" + std::to_string(i));
    }));
  });
}

#endif

}  // namespace
