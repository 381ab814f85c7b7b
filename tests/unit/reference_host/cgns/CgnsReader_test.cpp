#include "reference_host/cgns/CgnsReader.h"

#include <gtest/gtest.h>

#include "reference_host/cgns/CgnsField.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

#ifdef ZYN_WITH_CGNS

#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <numeric>

#include "reference_host/MeshReader.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/MeshCheck.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/cgns/CgnsPolyhedra.h"
#include "tests/unit/reference_host/cgns/CgnsTestFile.h"

namespace {

using reference_host::BoundaryGroup;
using reference_host::CheckMesh;
using reference_host::FaceMesh;
using reference_host::Point;
using reference_host::ReadCgns;
using reference_host::ReadCgnsField;
using reference_host::ReadMesh;

using Numbers = std::vector<cgsize_t>;
using Describe = std::function<void(CgnsTestFile&)>;

/// Writes a file with `describe` and reads it back.
FaceMesh WrittenAndRead(Describe const& describe) {
  TemporaryFolder const folder;
  std::string const name = folder.Path() + "/mesh.cgns";
  describe(*std::make_unique<CgnsTestFile>(name));
  return ReadMesh(name);
}

/// The reader's message about such a file, after the file's name.
std::string Refusal(Describe const& describe) {
  TemporaryFolder const folder;
  std::string const name = folder.Path() + "/mesh.cgns";
  describe(*std::make_unique<CgnsTestFile>(name));
  std::string const text = MeshErrorOf([&] { ReadMesh(name); });
  EXPECT_EQ(0U, text.rfind(name + ": ", 0)) << text;
  return text.substr(std::min(text.size(), name.size() + 2));
}

double VolumeOf(FaceMesh const& mesh) {
  std::vector<double> const volume = ComputeCellGeometry(mesh, mesh.nCells).volume;
  return std::accumulate(volume.begin(), volume.end(), 0.0);
}

// Two cubes side by side along x, nodes counted from 1:
//
//        10------11------12
//       / |     / |     / |
//      7-------8-------9  |        z   y
//      |  4----|--5----|--6        |  /
//      | /     | /     | /         | /
//      1-------2-------3           +----x
std::vector<Point> PointsOfCubes() {
  std::vector<Point> points;
  for (int n = 0; n < 12; ++n) points.push_back({1.0 * (n % 3), 1.0 * (n / 3 % 2), 1.0 * (n / 6)});
  return points;
}

Numbers const kCubes = {1, 2, 5, 4, 7, 8, 11, 10, 2, 3, 6, 5, 8, 9, 12, 11};
Numbers const kLeft = {1, 7, 10, 4};
Numbers const kRight = {3, 6, 12, 9};
Numbers const kBottom = {1, 4, 5, 2, 2, 5, 6, 3};
Numbers const kTop = {7, 8, 11, 10, 8, 9, 12, 11};
Numbers const kFront = {1, 2, 8, 7, 2, 3, 9, 8};
Numbers const kBack = {4, 10, 11, 5, 5, 11, 12, 6};

Numbers Joined(std::vector<Numbers> const& parts) {
  Numbers all;
  for (Numbers const& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// Elements 1, 2: the cubes. 3: left, 4: right, 5, 6: bottom, 7, 8: top, 9, 10: front, 11, 12: back, in one section.
void WriteCubes(CgnsTestFile& file) {
  file.Base();
  file.Zone(PointsOfCubes(), 2);
  file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, 2, kCubes);
  file.Section("Surface", CGNS_ENUMV(QUAD_4), 3, 12, Joined({kLeft, kRight, kBottom, kTop, kFront, kBack}));
}

// A cube with a pyramid on top, a prism at its right and a tetrahedron on the pyramid's right side. Volumes 1, 1/3,
// 1/2 and (computed) the tetrahedron's.
std::vector<Point> const kMixedPoints = {{0, 0, 0},     {1, 0, 0},   {1, 1, 0},   {0, 1, 0},
                                         {0, 0, 1},     {1, 0, 1},   {1, 1, 1},   {0, 1, 1},
                                         {0.5, 0.5, 2}, {2, 0, 0.5}, {2, 1, 0.5}, {2, 0.5, 2}};

void WriteMixedCells(CgnsTestFile& file) {
  file.Base();
  file.Zone(kMixedPoints, 4);
  Numbers const entries = {CGNS_ENUMV(HEXA_8),
                           1,
                           2,
                           3,
                           4,
                           5,
                           6,
                           7,  //
                           8,  //
                           CGNS_ENUMV(PENTA_6),
                           2,
                           6,
                           10,
                           3,
                           7,
                           11,  // one end, the other
                           CGNS_ENUMV(TRI_3),
                           2,
                           6,
                           10,  // an end of the prism
                           CGNS_ENUMV(PYRA_5),
                           5,
                           6,
                           7,
                           8,
                           9,  //
                           CGNS_ENUMV(TETRA_4),
                           6,
                           7,
                           9,
                           12};
  file.Section("Everything", CGNS_ENUMV(MIXED), 1, 5, entries, {0, 9, 16, 20, 26, 31});
}

/// Polyhedra that use all points, since the reader leaves out unused ones.
FaceMesh PolyBox(int n) {
  FaceMesh mesh = test_meshes::PolyBox(n);
  std::vector<int> newNumber(mesh.points.size(), -1);
  for (int const node : mesh.faceNode) newNumber[node] = 0;
  std::vector<Point> used;
  for (std::size_t i = 0; i < newNumber.size(); ++i) {
    if (newNumber[i] < 0) continue;
    newNumber[i] = static_cast<int>(used.size());
    used.push_back(mesh.points[i]);
  }
  mesh.points = used;
  for (int& node : mesh.faceNode) node = newNumber[node];
  return mesh;
}

/// The mesh with all boundary faces in one patch, as a file without conditions gives it.
FaceMesh InOnePatch(FaceMesh mesh, std::string const& name) {
  mesh.patches = {{name, "", {}}};
  for (int f = 0; f < mesh.nFaces(); ++f) mesh.facePatch[f] = mesh.neighbour[f] < 0 ? 0 : -1;
  return mesh;
}

TEST(CgnsReader, ReadsHexahedraWithTheirSurfaceInPatchesByTheSectionsName) {
  FaceMesh const mesh = WrittenAndRead([](CgnsTestFile& file) {
    file.Base();
    file.Zone(PointsOfCubes(), 2);
    // Surfaces may come before the cells.
    file.Section("inlet", CGNS_ENUMV(QUAD_4), 1, 1, kLeft);
    file.Section("outlet", CGNS_ENUMV(QUAD_4), 2, 2, kRight);
    file.Section("Cells", CGNS_ENUMV(HEXA_8), 3, 4, kCubes);
    file.Section("walls", CGNS_ENUMV(QUAD_4), 5, 8, Joined({kBottom, kTop}));
  });
  CheckMesh(mesh);
  EXPECT_EQ(2, mesh.nCells);
  EXPECT_EQ(11, mesh.nFaces());
  EXPECT_EQ(2.0, VolumeOf(mesh));
  EXPECT_EQ(1, FacesInPatch(mesh, "inlet"));
  EXPECT_EQ(1, FacesInPatch(mesh, "outlet"));
  EXPECT_EQ(4, FacesInPatch(mesh, "walls"));
  EXPECT_EQ(4, FacesInPatch(mesh, "unnamed"));
  EXPECT_EQ(4U, mesh.patches.size());
}

TEST(CgnsReader, ReadsAllLinearCellsOfAMixedSectionInTheirOrder) {
  FaceMesh const mesh = WrittenAndRead(WriteMixedCells);
  CheckMesh(mesh);
  ASSERT_EQ(4, mesh.nCells);
  std::vector<double> const volume = ComputeCellGeometry(mesh, 4).volume;
  EXPECT_NEAR(1.0, volume[0], 1e-14);
  EXPECT_NEAR(0.5, volume[1], 1e-14);
  EXPECT_NEAR(volume[2], 1.0 / 3.0, 1e-14);
  // Corner (1,0,1), edges (0,1,0), (-0.5,0.5,1), (1,0.5,1): determinant 1.5 over 6.
  EXPECT_NEAR(0.25, volume[3], 1e-14);
  EXPECT_EQ(1, FacesInPatch(mesh, "Everything"));  // the triangle; three faces lie between cells
  EXPECT_EQ(FacesInPatch(mesh, "unnamed"), 6 + 5 + 5 + 4 - 2 * 3 - 1);
}

TEST(CgnsReader, ReadsPolyhedraWithTheirCells) {
  FaceMesh const mesh = PolyBox(2);
  FaceMesh const read =
      WrittenAndRead([&](CgnsTestFile& file) { WritePolyhedra(file, mesh, Polyhedra(mesh), true); });
  ExpectSameMesh(read, InOnePatch(mesh, "Faces"));
  CheckMesh(read);
}

TEST(CgnsReader, ReadsPolyhedraByTheParentsOfTheirFaces) {
  FaceMesh const mesh = PolyBox(2);
  FaceMesh const read =
      WrittenAndRead([&](CgnsTestFile& file) { WritePolyhedra(file, mesh, Polyhedra(mesh), false); });
  ExpectSameMesh(read, InOnePatch(mesh, "Faces"));
}

TEST(CgnsReader, TurnsFacesThatAllPointTheOtherWay) {
  FaceMesh const mesh = PolyBox(1);
  FaceMesh const read =
      WrittenAndRead([&](CgnsTestFile& file) { WritePolyhedra(file, mesh, Polyhedra(mesh, -1), true); });
  CheckMesh(read);
  EXPECT_EQ(read.nCells, mesh.nCells);
  EXPECT_NEAR(1.0, VolumeOf(read), 1e-14);
}

TEST(CgnsReader, ReadsFilesOfTheOlderKindToo) {
  ASSERT_EQ(cg_set_file_type(CG_FILE_ADF), CG_OK);
  FaceMesh const old = WrittenAndRead(WriteMixedCells);
  ASSERT_EQ(cg_set_file_type(CG_FILE_NONE), CG_OK);
  ExpectSameMesh(old, WrittenAndRead(WriteMixedCells));
}

TEST(CgnsReader, LeavesOutNodesThatNoCellUses) {
  std::vector<Point> points = PointsOfCubes();
  points.insert(points.begin(), {9, 9, 9});
  Numbers cubes = kCubes, left = kLeft;
  for (cgsize_t& node : cubes) ++node;
  for (cgsize_t& node : left) ++node;
  FaceMesh const mesh = WrittenAndRead([&](CgnsTestFile& file) {
    file.Base();
    file.Zone(points, 2);
    file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, 2, cubes);
    file.Condition("inlet", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), left, CGNS_ENUMV(Vertex));
  });
  EXPECT_EQ(mesh.points, PointsOfCubes());
  EXPECT_EQ(1, FacesInPatch(mesh, "inlet"));
}

TEST(CgnsReader, ConditionsByElementsAndByNodesNameThePatches) {
  FaceMesh const mesh = WrittenAndRead([](CgnsTestFile& file) {
    WriteCubes(file);
    file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointRange), {3, 3});
    file.Condition("out", CGNS_ENUMV(BCTunnelOutflow), CGNS_ENUMV(PointList), {4});
    file.Condition("floor", CGNS_ENUMV(BCWallViscous), CGNS_ENUMV(PointList), {1, 2, 3, 4, 5, 6},
                   CGNS_ENUMV(Vertex));
    file.Condition("roof", CGNS_ENUMV(BCWall), CGNS_ENUMV(PointRange), {7, 12}, CGNS_ENUMV(Vertex));
    file.Condition("mirror", CGNS_ENUMV(BCSymmetryPlane), CGNS_ENUMV(PointRange), {9, 10});
  });
  EXPECT_EQ(1, FacesInPatch(mesh, "in"));
  EXPECT_EQ(1, FacesInPatch(mesh, "out"));
  EXPECT_EQ(2, FacesInPatch(mesh, "floor"));
  EXPECT_EQ(2, FacesInPatch(mesh, "roof"));
  EXPECT_EQ(2, FacesInPatch(mesh, "mirror"));
  EXPECT_EQ(2, FacesInPatch(mesh, "Surface"));  // the back has no condition, but surface elements

  std::vector<BoundaryGroup> const groups = {BoundaryGroup::Inlet, BoundaryGroup::Outlet, BoundaryGroup::Wall,
                                             BoundaryGroup::Wall, BoundaryGroup::Symmetry};
  for (std::size_t p = 0; p < groups.size(); ++p) {
    EXPECT_EQ(reference_host::GroupByName(mesh.patches[p].name, mesh.patches[p].type), groups[p])
        << mesh.patches[p].name;
  }
}

TEST(CgnsReader, ConditionsOfOlderFilesCountElements) {
  FaceMesh const mesh = WrittenAndRead([](CgnsTestFile& file) {
    WriteCubes(file);
    file.Condition("inlet", CGNS_ENUMV(BCTypeNull), CGNS_ENUMV(ElementList), {3}, CGNS_ENUMV(Vertex));
    file.Condition("walls", CGNS_ENUMV(BCTypeNull), CGNS_ENUMV(ElementRange), {5, 12}, CGNS_ENUMV(Vertex));
  });
  EXPECT_EQ(1, FacesInPatch(mesh, "inlet"));
  EXPECT_EQ(8, FacesInPatch(mesh, "walls"));
}

TEST(CgnsReader, FamiliesNameAndTypeTheConditionsThatLeaveItToThem) {
  FaceMesh const mesh = WrittenAndRead([](CgnsTestFile& file) {
    WriteCubes(file);
    file.Family("air intake", CGNS_ENUMV(BCInflowSubsonic));
    file.Condition("BC 1", CGNS_ENUMV(FamilySpecified), CGNS_ENUMV(PointList), {3}, CGNS_ENUMV(FaceCenter),
                   "air intake");
    file.Condition("BC 2", CGNS_ENUMV(BCWall), CGNS_ENUMV(PointList), {5, 6}, CGNS_ENUMV(FaceCenter),
                   "shell");
    file.Condition("BC 3", CGNS_ENUMV(BCWall), CGNS_ENUMV(PointList), {7, 8}, CGNS_ENUMV(FaceCenter),
                   "shell");
  });
  EXPECT_EQ(1, FacesInPatch(mesh, "air intake"));
  EXPECT_EQ("BCInflowSubsonic", mesh.patches[0].type);
  EXPECT_EQ(4, FacesInPatch(mesh, "shell"));
}

TEST(CgnsReader, ConditionsOfPolyhedraCountTheirFaces) {
  FaceMesh const mesh = PolyBox(1);
  auto const write = [&](CgnsTestFile& file) {
    WritePolyhedra(file, mesh, Polyhedra(mesh), true);
    Numbers left, low;
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (mesh.facePatch[f] == 0) left.push_back(f + 1);
    }
    for (std::size_t n = 0; n < mesh.points.size(); ++n) {
      if (mesh.points[n][2] == 0.0) low.push_back(static_cast<cgsize_t>(n) + 1);
    }
    file.Condition("left", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), left);
    file.Condition("low", CGNS_ENUMV(BCWall), CGNS_ENUMV(PointList), low, CGNS_ENUMV(Vertex));
  };
  FaceMesh const read = WrittenAndRead(write);
  EXPECT_EQ(FacesInPatch(read, "left"), FacesInPatch(mesh, "inlet"));
  EXPECT_EQ(FacesInPatch(read, "low"), 1 + 4);  // a coarse face and 2 x 2 fine ones
}

TEST(CgnsReader, RefusesFilesThatAreNoCgns) {
  TemporaryFolder const folder;
  std::string const text = folder.Write("text.cgns", "not a mesh\n");
  ExpectContains(MeshErrorOf([&] { ReadCgns(text); }), text + ": not a CGNS file that can be read");
  ExpectContains(MeshErrorOf([&] { ReadCgns(folder.Path() + "/none.cgns"); }), "none.cgns: no such file");

  std::string const whole = folder.Path() + "/whole.cgns";
  WriteCubes(*std::make_unique<CgnsTestFile>(whole));
  std::ifstream in(whole, std::ios::binary);
  std::string const bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  for (double const share : {0.1, 0.5, 0.9}) {
    std::string const cut = folder.Write(
        "cut.cgns", bytes.substr(0, static_cast<std::size_t>(share * static_cast<double>(bytes.size()))));
    ExpectContains(MeshErrorOf([&] { ReadCgns(cut); }), cut + ": ");
  }
}

TEST(CgnsReader, RefusesOtherThanOneUnstructuredZone) {
  EXPECT_EQ("the file has no base", Refusal([](CgnsTestFile&) {}));
  EXPECT_EQ("no base has three-dimensional cells in three-dimensional space",
            Refusal([](CgnsTestFile& file) { file.Base("Plane", 2); }));
  EXPECT_EQ("several three-dimensional bases ('A', 'B'); a file with one is needed",
            Refusal([](CgnsTestFile& file) {
              file.Base("A");
              file.Base("B");
            }));
  EXPECT_EQ("the base has no zone", Refusal([](CgnsTestFile& file) { file.Base(); }));
  EXPECT_EQ("several zones are not supported ('Rotor', 'Stator'); join them into one first",
            Refusal([](CgnsTestFile& file) {
              file.Base();
              file.Zone(PointsOfCubes(), 2, "Rotor");
              file.Zone(PointsOfCubes(), 2, "Stator");
            }));
  EXPECT_EQ("zone 'Block' is structured; convert it first", Refusal([](CgnsTestFile& file) {
              file.Base();
              std::array<cgsize_t, 9> const sizes = {3, 2, 2, 2, 1, 1, 0, 0, 0};
              int zone = 0;
              cg_zone_write(file.file(), file.base(), "Block", sizes.data(), CGNS_ENUMV(Structured), &zone);
            }));
}

TEST(CgnsReader, SaysWhatAFileIsThatIsNoRegularFile) {
  TemporaryFolder const folder;
  std::string const pipe = folder.Path() + "/pipe.cgns";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  EXPECT_EQ(MeshErrorOf([&] { ReadMesh(pipe); }), pipe + ": a pipe (FIFO), not a regular file");
  EXPECT_EQ(MeshErrorOf([&] { ReadCgnsField(pipe, "p"); }), pipe + ": a pipe (FIFO), not a regular file");
  std::string const device = folder.Path() + "/null.cgns";
  std::filesystem::create_symlink("/dev/null", device);
  EXPECT_EQ(MeshErrorOf([&] { ReadMesh(device); }), device + ": a device, not a regular file");
}

TEST(CgnsReader, ListsTheFirstOfManyZones) {
  std::string const what = Refusal([](CgnsTestFile& file) {
    file.Base();
    for (int zone = 11; zone <= 50; ++zone) file.Zone(PointsOfCubes(), 2, "Blade" + std::to_string(zone));
  });
  EXPECT_EQ(
      "several zones are not supported ('Blade11', 'Blade12', 'Blade13', 'Blade14', 'Blade15', "
      "'Blade16', 'Blade17', 'Blade18', 'Blade19', 'Blade20' and 30 more); join them into one first",
      what);
}

/// The message of the check about the mesh of a file.
std::string CheckRefusal(Describe const& describe) {
  FaceMesh const mesh = WrittenAndRead(describe);
  return MeshErrorOf([&] { CheckMesh(mesh); });
}

TEST(CgnsReader, GivesTheCheckTheNumbersOfTheFile) {
  // No cell uses the first node, so that the nodes are renumbered.
  auto const cells = [](Point const& tip) {
    return [tip](CgnsTestFile& file) {
      file.Base();
      file.Zone({{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, tip}, 1);
      file.Section("Edges", CGNS_ENUMV(BAR_2), 1, 1, {2, 3});
      file.Section("Cells", CGNS_ENUMV(TETRA_4), 2, 2, {2, 3, 4, 5});
    };
  };
  EXPECT_EQ("node 5 has a coordinate that is not finite", CheckRefusal(cells({0, 0, std::nan("")})));
  EXPECT_EQ("element 2 of section 'Cells' has no volume", CheckRefusal(cells({0.3, 0.3, 0})));
  EXPECT_EQ("the face of nodes 2, 3 and 5 of element 2 of section 'Cells' has no area",
            CheckRefusal(cells({2, 0, 0})));
}

TEST(CgnsReader, GivesTheCheckTheNumbersOfPolygonsToo) {
  FaceMesh const mesh = test_meshes::HexBox(2, 1, 1);
  auto const refusal = [&](std::function<void(Polyhedra&)> const& spoil, bool withCells) {
    Polyhedra polyhedra(mesh);
    spoil(polyhedra);
    return CheckRefusal([&](CgnsTestFile& file) { WritePolyhedra(file, mesh, polyhedra, withCells); });
  };
  for (bool const withCells : {true, false}) {
    std::string const node = std::to_string(mesh.faceNode[0] + 1);
    EXPECT_EQ(refusal([](Polyhedra& p) { p.nodes[1] = p.nodes[0]; }, withCells),
              "element 1 of section 'Faces' has node " + node + " twice");
  }
  ExpectContains(refusal([](Polyhedra& p) { std::swap(p.nodes[0], p.nodes[2]); }, true),
                 "element 12 of section 'Cells' is not closed");
  ExpectContains(refusal([](Polyhedra& p) { std::swap(p.nodes[0], p.nodes[2]); }, false),
                 "element 12 is not closed");
}

TEST(CgnsReader, RefusesCountsThatTheFileCannotHold) {
  EXPECT_EQ("the file says 2000000000 nodes, more than it can hold", Refusal([](CgnsTestFile& file) {
              file.Base();
              std::array<cgsize_t, 3> const sizes = {2000000000, 1, 0};
              int zone = 0;
              cg_zone_write(file.file(), file.base(), "Zone", sizes.data(), CGNS_ENUMV(Unstructured), &zone);
            }));
  EXPECT_EQ("the file says 2000000000 cells, more than it can hold", Refusal([](CgnsTestFile& file) {
              file.Base();
              std::array<cgsize_t, 3> const sizes = {4, 2000000000, 0};
              int zone = 0;
              cg_zone_write(file.file(), file.base(), "Zone", sizes.data(), CGNS_ENUMV(Unstructured), &zone);
            }));
  FaceMesh const mesh = test_meshes::HexBox(2, 1, 1);
  Polyhedra polyhedra(mesh);
  polyhedra.parents[0] = 12 + 999;
  EXPECT_EQ("the zone has 1000 cells, which 11 faces cannot close", Refusal([&](CgnsTestFile& file) {
              file.Base();
              file.Zone(mesh.points, 1000);
              file.Section("Faces", CGNS_ENUMV(NGON_n), 1, mesh.nFaces(), polyhedra.nodes,
                           polyhedra.nodeOffsets, polyhedra.parents);
            }));
}

TEST(CgnsReader, RefusesRangesThatOverlapAgainAndAgain) {
  ExpectContains(Refusal([](CgnsTestFile& file) {
                   WriteCubes(file);
                   for (int i = 0; i < 100; ++i) {
                     file.Condition("c" + std::to_string(i), CGNS_ENUMV(BCWall), CGNS_ENUMV(PointRange),
                                    {1, 12}, CGNS_ENUMV(Vertex), "all");
                   }
                 }),
                 "have ranges that overlap too often");
}

TEST(CgnsReader, RefusesElementsThatItCannotTake) {
  EXPECT_EQ("the zone has no section of elements", Refusal([](CgnsTestFile& file) {
              file.Base();
              file.Zone(PointsOfCubes(), 0);
              file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointRange), {1, 4}, CGNS_ENUMV(Vertex));
            }));
  EXPECT_EQ("section 'Cells': elements of type TETRA_10 cannot be read; write the mesh with linear elements",
            Refusal([](CgnsTestFile& file) {
              file.Base();
              file.Zone(std::vector<Point>(10, Point{0, 0, 0}), 1);
              file.Section("Cells", CGNS_ENUMV(TETRA_10), 1, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
            }));
  EXPECT_EQ("element 1 of section 'Cells' has node 13, but there are 12", Refusal([](CgnsTestFile& file) {
              file.Base();
              file.Zone(PointsOfCubes(), 1);
              file.Section("Cells", CGNS_ENUMV(TETRA_4), 1, 1, {1, 2, 4, 13});
            }));
  EXPECT_EQ("the zone has 3 cells, its sections have 2", Refusal([](CgnsTestFile& file) {
              file.Base();
              file.Zone(PointsOfCubes(), 3);
              file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, 2, kCubes);
            }));
  EXPECT_EQ(
      "section 'Cells' has standard elements besides polygons (NGON_n); only one or the other can be read",
      Refusal([](CgnsTestFile& file) {
        file.Base();
        file.Zone(PointsOfCubes(), 2);
        file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, 2, kCubes);
        file.Section("Faces", CGNS_ENUMV(NGON_n), 3, 3, kLeft, {0, 4});
      }));
}

TEST(CgnsReader, RefusesPolyhedraThatDoNotFitTheirFaces) {
  FaceMesh const mesh = test_meshes::HexBox(2, 1, 1);
  auto const refusal = [&](std::function<void(Polyhedra&)> const& spoil, bool withCells) {
    Polyhedra polyhedra(mesh);
    spoil(polyhedra);
    return Refusal([&](CgnsTestFile& file) { WritePolyhedra(file, mesh, polyhedra, withCells); });
  };
  EXPECT_EQ("element 12 of section 'Cells' has face 99, which is not a polygon (NGON_n)",
            refusal([](Polyhedra& p) { p.faces[0] = 99; }, true));
  EXPECT_EQ(
      "element 2 of section 'Faces' points out of two cells, element 12 of section 'Cells' and element 12 of "
      "section 'Cells'",
      refusal([](Polyhedra& p) { p.faces[0] = p.faces[1]; }, true));
  EXPECT_EQ("element 1 of section 'Faces' has node 13, but there are 12",
            refusal([](Polyhedra& p) { p.nodes[0] = 13; }, true));
  EXPECT_EQ("element 1 of section 'Faces' belongs to no cell",
            refusal([](Polyhedra& p) { p.parents[0] = 0; }, false));
  EXPECT_EQ("the parent elements are cells 12 to 40, but the zone has 2 cells",
            refusal([](Polyhedra& p) { p.parents[0] = 40; }, false));
  EXPECT_EQ("section 'Faces' has neither parent elements nor a section of cells (NFACE_n) that uses it",
            refusal([](Polyhedra& p) { p.parents.clear(); }, false));
}

TEST(CgnsReader, RefusesConditionsThatDoNotFitTheMesh) {
  auto const refusal = [](Describe const& add) {
    return Refusal([&](CgnsTestFile& file) {
      WriteCubes(file);
      add(file);
    });
  };
  EXPECT_EQ("boundary condition 'in' has element 1, which is not a surface element",
            refusal([](CgnsTestFile& file) {
              file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {1});
            }));
  EXPECT_EQ("boundary condition 'in' has node 13, but there are 12", refusal([](CgnsTestFile& file) {
              file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {13}, CGNS_ENUMV(Vertex));
            }));
  EXPECT_EQ("boundary condition 'in' is given at CellCenter; only Vertex and FaceCenter can be read",
            refusal([](CgnsTestFile& file) {
              file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {1}, CGNS_ENUMV(CellCenter));
            }));
  EXPECT_EQ(
      "the face of nodes 4, 1, 7 and 10 of element 1 of section 'Cells' belongs to boundary conditions "
      "of 'a' "
      "and of 'b'",
      refusal([](CgnsTestFile& file) {
        file.Condition("a", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {3});
        file.Condition("b", CGNS_ENUMV(BCWall), CGNS_ENUMV(PointList), {3});
      }));
  EXPECT_EQ("boundary condition 'b' of type BCOutflow belongs to 'ends', and so does one of type BCInflow",
            refusal([](CgnsTestFile& file) {
              file.Condition("a", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {3}, CGNS_ENUMV(FaceCenter),
                             "ends");
              file.Condition("b", CGNS_ENUMV(BCOutflow), CGNS_ENUMV(PointList), {4}, CGNS_ENUMV(FaceCenter),
                             "ends");
            }));
}

class CgnsField : public testing::Test {
 protected:
  CgnsField() {
    CgnsTestFile file(name_);
    WriteCubes(file);
    file.Solution("First", CGNS_ENUMV(CellCenter));
    file.Array("Pressure", {1.5, -2.5});
    file.Array("Temperature", {300.0, 301.0});
    file.Solution("Second", CGNS_ENUMV(CellCenter));
    file.Array("Pressure", {3.5, 4.5});
    file.Solution("Corners", CGNS_ENUMV(Vertex));
    file.Array("Height", std::vector<double>(12, 1.0));
  }

  TemporaryFolder folder_;
  std::string name_ = folder_.Path() + "/field.cgns";
};

TEST_F(CgnsField, IsFoundByItsNameOrBySolutionAndName) {
  EXPECT_EQ((std::vector<double>{300.0, 301.0}), ReadCgnsField(name_, "Temperature").cell);
  EXPECT_EQ((std::vector<double>{1.5, -2.5}), ReadCgnsField(name_, "First/Pressure").cell);
  EXPECT_EQ((std::vector<double>{3.5, 4.5}), ReadCgnsField(name_, "Second/Pressure").cell);
}

TEST_F(CgnsField, IsRefusedUnlessItIsOneArrayOfTheCells) {
  auto const refusal = [&](std::string const& field) {
    return MeshErrorOf([&] { ReadCgnsField(name_, field); }).substr(name_.size() + 2);
  };
  EXPECT_EQ(
      "several solutions have 'Pressure' ('First/Pressure', 'Second/Pressure'); name one as SOLUTION/ARRAY",
      refusal("Pressure"));
  EXPECT_EQ(
      "'Height' is not at the cell centres; arrays at cell centres: 'First/Pressure', 'First/Temperature', "
      "'Second/Pressure'",
      refusal("Height"));
  ExpectContains(refusal("Mach"), "no array 'Mach'; arrays at cell centres: 'First/Pressure'");
}

}  // namespace

#else

namespace {

TEST(CgnsReader, SaysThatTheBuildCannotReadSuchFiles) {
  TemporaryFolder const folder;
  std::string const file = folder.Write("mesh.cgns", "");
  std::string const text =
      file + ": this build cannot read CGNS files; configure it again with libcgns-dev installed";
  EXPECT_EQ(MeshErrorOf([&] { reference_host::ReadCgns(file); }), text);
  EXPECT_EQ(MeshErrorOf([&] { reference_host::ReadCgnsField(file, "Pressure"); }), text);
}

}  // namespace

#endif
