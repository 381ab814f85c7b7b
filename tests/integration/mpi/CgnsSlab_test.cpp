#include "reference_host/slabs/CgnsSlabReader.h"

#include <gtest/gtest.h>

#include "MpiTestSupport.h"
#include "reference_host/mesh/MeshError.h"

#ifdef ZYN_WITH_CGNS

#include <cgns_io.h>
#include <cgnslib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "RandomCells.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/cgns/CgnsField.h"
#include "reference_host/cgns/CgnsReader.h"
#include "reference_host/mesh/MeshNames.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/cgns/CgnsPolyhedra.h"
#include "tests/unit/reference_host/cgns/CgnsTestFile.h"

namespace reference_host::test {
namespace {

using Numbers = std::vector<cgsize_t>;
using Describe = std::function<void(CgnsTestFile&)>;

template <class T>
std::vector<std::int64_t> Piece(std::vector<T> const& all, std::size_t begin, std::size_t end) {
  return std::vector<std::int64_t>(all.begin() + static_cast<std::ptrdiff_t>(begin),
                                   all.begin() + static_cast<std::ptrdiff_t>(end));
}

void ExpectSamePatches(std::vector<Patch> const& patches, std::vector<Patch> const& expected) {
  ASSERT_EQ(patches.size(), expected.size());
  for (std::size_t p = 0; p < patches.size(); ++p) {
    EXPECT_EQ(patches[p].name, expected[p].name);
    EXPECT_EQ(patches[p].type, expected[p].type);
  }
}

/// Expects that the slab is this rank's share of the whole.
void ExpectShareOf(MeshSlab const& slab, FaceMesh const& whole) {
  int const rank = Rank();
  ASSERT_EQ(slab.nodes.nItems(), static_cast<std::int64_t>(whole.points.size()));
  ASSERT_EQ(slab.cells.nItems(), whole.nCells);
  ASSERT_EQ(slab.faces.nItems(), whole.nFaces());
  ASSERT_EQ(static_cast<std::int64_t>(slab.points.size()), slab.nodes.Size(rank));
  for (std::size_t i = 0; i < slab.points.size(); ++i) {
    auto const node = slab.nodes.First(rank) + static_cast<std::int64_t>(i);
    EXPECT_EQ(0, std::memcmp(&slab.points[i], &whole.points[static_cast<std::size_t>(node)], sizeof(Point)));
    EXPECT_EQ(slab.names.nodeWord + " " + std::to_string(slab.names.nodeNumber(node)),
              NameOfNode(whole, static_cast<int>(node)));
  }
  for (std::int64_t cell = slab.cells.First(rank); cell < slab.cells.End(rank); ++cell) {
    EXPECT_EQ(slab.names.cell(cell), NameOfCell(whole, static_cast<int>(cell)));
  }
  auto const begin = static_cast<std::size_t>(slab.faces.First(rank)),
             end = static_cast<std::size_t>(slab.faces.End(rank));
  EXPECT_EQ(slab.owner, Piece(whole.owner, begin, end));
  EXPECT_EQ(slab.neighbour, Piece(whole.neighbour, begin, end));
  EXPECT_EQ(slab.faceNode, Piece(whole.faceNode, whole.faceStart[begin], whole.faceStart[end]));
  ASSERT_EQ(slab.faceStart.size(), end - begin + 1);
  for (std::size_t f = begin; f <= end; ++f) {
    EXPECT_EQ(slab.faceStart[f - begin] + whole.faceStart[begin], whole.faceStart[f]);
  }
  EXPECT_EQ(Piece(slab.facePatch, 0, slab.facePatch.size()), Piece(whole.facePatch, begin, end));
  ExpectSamePatches(slab.patches, whole.patches);
  ASSERT_EQ(static_cast<bool>(slab.names.face), static_cast<bool>(whole.names->face));
  for (std::size_t f = begin; f < end && slab.names.face; ++f) {
    EXPECT_EQ(slab.names.face(static_cast<std::int64_t>(f)), NameOfFace(whole, static_cast<int>(f)));
  }
}

/// Expects that the file gives the same mesh, or the same refusal, as it gives one process.
/// @return the refusal after the file's name
std::string ExpectSameAsWhole(std::string const& file) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  FaceMesh whole;
  std::string expected;
  try {
    whole = ReadCgns(file);
  } catch (MeshError const& error) {
    expected = error.what();
  }
  if (expected.empty()) {
    ExpectShareOf(ReadCgnsSlab(communicator, file), whole);
    return "";
  }
  std::string const text = ErrorOnEveryRank([&] { ReadCgnsSlab(communicator, file); });
  EXPECT_EQ(text, expected);
  return text.substr(std::min(text.size(), file.size() + 2));
}

/// A file that rank 0 writes.
class CgnsSlab : public testing::Test {
 protected:
  /// Collective.
  std::string const& Written(Describe const& describe) {
    if (Rank() == 0) describe(*std::make_unique<CgnsTestFile>(file_));
    MPI_Barrier(MPI_COMM_WORLD);
    return file_;
  }

  /// Collective.
  std::string SameAsWhole(Describe const& describe) {
    std::string const text = ExpectSameAsWhole(Written(describe));
    MPI_Barrier(MPI_COMM_WORLD);
    return text;
  }

  SharedFolder folder_;
  std::string file_ = folder_.File("mesh.cgns");
};

CGNS_ENUMT(ElementType_t) TypeOf(CellShape shape) {
  switch (shape) {
    case CellShape::Tetrahedron:
      return CGNS_ENUMV(TETRA_4);
    case CellShape::Hexahedron:
      return CGNS_ENUMV(HEXA_8);
    case CellShape::Prism:
      return CGNS_ENUMV(PENTA_6);
    default:
      return CGNS_ENUMV(PYRA_5);
  }
}

/// An element as a file has it.
struct Element {
  CGNS_ENUMT(ElementType_t) type;
  Numbers nodes;
};

std::vector<Element> ElementsOf(StandardCells const& mesh) {
  std::vector<Element> elements;
  auto const add = [&](CGNS_ENUMT(ElementType_t) type, int const* nodes, int n) {
    elements.push_back({type, {}});
    for (int i = 0; i < n; ++i) elements.back().nodes.push_back(nodes[i] + 1);
  };
  for (StandardCell const& cell : mesh.cells)
    add(TypeOf(cell.shape), cell.nodes.data(), NodeCount(cell.shape));
  for (SurfaceElement const& surface : mesh.surfaces) {
    int const n = NodeCountOfFace(surface.nodes);
    add(n == 3 ? CGNS_ENUMV(TRI_3) : CGNS_ENUMV(QUAD_4), surface.nodes.data(), n);
  }
  return elements;
}

/// Writes elements one after the other, as sections of one type each, or of MIXED elements.
class SectionWriter {
 public:
  explicit SectionWriter(CgnsTestFile& file) : file_(file) {}

  void OfOneType(std::vector<Element> const& elements) {
    if (elements.empty()) return;
    Numbers nodes;
    for (Element const& element : elements)
      nodes.insert(nodes.end(), element.nodes.begin(), element.nodes.end());
    int const first = next_;
    next_ += static_cast<int>(elements.size());
    file_.Section(Name(), elements.front().type, first, next_ - 1, nodes);
  }

  void Mixed(std::vector<Element> const& elements) {
    if (elements.empty()) return;
    Numbers entries, offsets = {0};
    for (Element const& element : elements) {
      entries.push_back(element.type);
      entries.insert(entries.end(), element.nodes.begin(), element.nodes.end());
      offsets.push_back(static_cast<cgsize_t>(entries.size()));
    }
    int const first = next_;
    next_ += static_cast<int>(elements.size());
    file_.Section(Name(), CGNS_ENUMV(MIXED), first, next_ - 1, entries, offsets);
  }

  int Next() const { return next_; }

 private:
  std::string Name() { return "Part " + std::to_string(nSections_++); }

  CgnsTestFile& file_;
  int next_ = 1, nSections_ = 0;
};

/// @param[in] layout  0: a section for each type; 1: one MIXED section; 2: runs of either kind, with nodes and edges
/// @return number behind the last element
int WriteElements(CgnsTestFile& file, StandardCells const& mesh, int layout, std::mt19937& random) {
  file.Base();
  file.Zone(mesh.points, static_cast<int>(mesh.cells.size()));
  SectionWriter writer(file);
  std::vector<Element> elements = ElementsOf(mesh);
  if (layout > 0) std::shuffle(elements.begin(), elements.end(), random);
  if (layout == 0) {
    std::stable_sort(elements.begin(), elements.end(),
                     [](Element const& a, Element const& b) { return a.type < b.type; });
  }
  for (std::size_t begin = 0; begin < elements.size();) {
    bool const isMixed = layout == 1 || (layout == 2 && random() % 2 == 0);
    std::size_t end = begin + 1;
    std::size_t const most = layout == 2 ? begin + 1 + random() % 40 : elements.size();
    while (end < std::min(most, elements.size()) && (isMixed || elements[end].type == elements[begin].type))
      ++end;
    std::vector<Element> const part(elements.begin() + static_cast<std::ptrdiff_t>(begin),
                                    elements.begin() + static_cast<std::ptrdiff_t>(end));
    if (isMixed) {
      writer.Mixed(part);
    } else {
      writer.OfOneType(part);
    }
    if (layout == 2 && random() % 3 == 0)
      writer.OfOneType({{CGNS_ENUMV(BAR_2), {1, 2}}, {CGNS_ENUMV(BAR_2), {2, 3}}});
    begin = end;
  }
  return writer.Next();
}

/// Random conditions; most fit the mesh.
void WriteConditions(CgnsTestFile& file, int nNodes, int nElements, std::mt19937& random) {
  auto const below = [&](int n) { return static_cast<cgsize_t>(random() % static_cast<unsigned>(n)); };
  int const nConditions = 1 + static_cast<int>(below(3));
  for (int c = 0; c < nConditions; ++c) {
    bool const byNodes = below(2) == 0, isRange = below(2) == 0;
    int const most = byNodes ? nNodes : nElements;
    Numbers members;
    if (isRange) {
      cgsize_t const first = 1 + below(most);
      members = {first, std::min<cgsize_t>(most, first + (byNodes ? most / 2 : below(3)))};
    } else {
      int const n = static_cast<int>(byNodes ? 1 + below(2 * most) : 1 + below(4));
      for (int i = 0; i < n; ++i) members.push_back(1 + below(most));
    }
    file.Condition("C" + std::to_string(c), below(2) == 0 ? CGNS_ENUMV(BCWall) : CGNS_ENUMV(BCInflow),
                   isRange ? CGNS_ENUMV(PointRange) : CGNS_ENUMV(PointList), members,
                   byNodes ? CGNS_ENUMV(Vertex) : CGNS_ENUMV(FaceCenter), below(3) == 0 ? "family" : "");
  }
}

TEST_F(CgnsSlab, HasTheCellsAndSurfacesOfEveryKindOfSection) {
  for (int const layout : {0, 1, 2}) {
    for (bool const shuffled : {false, true}) {
      StandardCells const mesh = RandomCells(3, {0, 1, 2, 3}, 11, shuffled);
      std::mt19937 random(17);
      EXPECT_EQ(SameAsWhole([&](CgnsTestFile& file) { WriteElements(file, mesh, layout, random); }), "");
    }
  }
}

TEST_F(CgnsSlab, HasMeshesWithFewerCellsThanRanks) {
  for (int const kind : {0, 1}) {
    std::mt19937 random(1);
    StandardCells const mesh = RandomCells(1, {kind}, 4, false);
    EXPECT_EQ(SameAsWhole([&](CgnsTestFile& file) { WriteElements(file, mesh, 0, random); }), "");
  }
}

TEST_F(CgnsSlab, HasTheSamePatchesOrRefusalForAnyConditions) {
  int nRead = 0;
  for (unsigned seed = 0; seed < 30; ++seed) {
    StandardCells const mesh = RandomCells(2, {0, 1, 2, 3}, seed, seed % 2 == 0);
    std::mt19937 random(seed);
    std::string const refusal = SameAsWhole([&](CgnsTestFile& file) {
      int const layout = static_cast<int>(seed % 3), end = WriteElements(file, mesh, layout, random);
      // By types, the surface elements come first.
      int const nElements = layout == 0 ? static_cast<int>(mesh.surfaces.size()) : end - 1;
      WriteConditions(file, static_cast<int>(mesh.points.size()), nElements, random);
    });
    if (refusal.empty()) ++nRead;
  }
  EXPECT_GT(nRead, 5);
  EXPECT_LT(nRead, 25);
}

/// The cubes of a box with conditions on the six sides, by faces or by nodes.
TEST_F(CgnsSlab, HasTheSidesOfABoxAsPatches) {
  int const m = 5;
  StandardCells const mesh = RandomCells(m, {0}, 2, true);
  auto const nNodes = static_cast<int>(mesh.points.size());
  Numbers lowX, lowZ;
  for (int n = 0; n < nNodes; ++n) {
    Point const& p = mesh.points[static_cast<std::size_t>(n)];
    if (p[0] < 0.5 && p[0] > -0.5) lowX.push_back(n + 1);
    if (p[2] > m - 0.5) lowZ.push_back(n + 1);
  }
  auto const write = [&](CgnsTestFile& file) {
    file.Base();
    file.Zone(mesh.points, static_cast<int>(mesh.cells.size()));
    SectionWriter writer(file);
    std::vector<Element> elements = ElementsOf(mesh);
    elements.resize(mesh.cells.size());
    writer.OfOneType(elements);
    file.Condition("low x", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), lowX, CGNS_ENUMV(Vertex));
    file.Condition("low z", CGNS_ENUMV(BCWall), CGNS_ENUMV(PointList), lowZ, CGNS_ENUMV(Vertex), "walls");
  };
  EXPECT_EQ(SameAsWhole(write), "");
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  MeshSlab const slab = ReadCgnsSlab(communicator, file_);
  ASSERT_EQ(slab.patches.size(), 3U);
  std::int64_t nLow = std::count(slab.facePatch.begin(), slab.facePatch.end(), 0);
  MPI_Allreduce(MPI_IN_PLACE, &nLow, 1, MPI_INT64_T, MPI_SUM, MPI_COMM_WORLD);
  EXPECT_EQ(nLow, m * m);
}

TEST_F(CgnsSlab, HasPolyhedraWithTheirCellsOrWithParents) {
  FaceMesh const mesh = test_meshes::PolyBox(4);
  for (int const outward : {1, -1}) {
    for (bool const withCells : {true, false}) {
      auto const write = [&](CgnsTestFile& file) {
        WritePolyhedra(file, mesh, Polyhedra(mesh, outward), withCells);
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
      EXPECT_EQ(SameAsWhole(write), "");
    }
  }
}

TEST_F(CgnsSlab, HasPolyhedraOfSeveralSections) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:4,3,2"));
  Polyhedra const whole(mesh);
  int const nFaces = mesh.nFaces(), nFirst = nFaces / 3, nCells = mesh.nCells, nFirstCells = 5;
  auto const part = [](Numbers const& entries, Numbers const& offsets, int begin, int end,
                       auto const& shifted) {
    std::pair<Numbers, Numbers> result;
    for (int i = begin; i <= end; ++i)
      result.second.push_back(offsets[static_cast<std::size_t>(i)] -
                              offsets[static_cast<std::size_t>(begin)]);
    for (cgsize_t k = offsets[static_cast<std::size_t>(begin)]; k < offsets[static_cast<std::size_t>(end)];
         ++k)
      result.first.push_back(shifted(entries[static_cast<std::size_t>(k)]));
    return result;
  };
  auto const same = [](cgsize_t node) { return node; };
  // Elements: the first faces, an edge, the first cells, the other faces, the other cells.
  int const secondFaces = nFirst + 1 + 1 + nFirstCells;
  auto const shiftedFace = [&](cgsize_t face) {
    cgsize_t const f = face < 0 ? -face : face, moved = f <= nFirst ? f : f - nFirst - 1 + secondFaces;
    return face < 0 ? -moved : moved;
  };
  EXPECT_EQ(
      SameAsWhole([&](CgnsTestFile& file) {
        file.Base();
        file.Zone(mesh.points, nCells);
        auto const [nodes1, offsets1] = part(whole.nodes, whole.nodeOffsets, 0, nFirst, same);
        auto const [nodes2, offsets2] = part(whole.nodes, whole.nodeOffsets, nFirst, nFaces, same);
        auto const [cells1, starts1] = part(whole.faces, whole.faceOffsets, 0, nFirstCells, shiftedFace);
        auto const [cells2, starts2] = part(whole.faces, whole.faceOffsets, nFirstCells, nCells, shiftedFace);
        file.Section("Faces 1", CGNS_ENUMV(NGON_n), 1, nFirst, nodes1, offsets1);
        file.Section("Edge", CGNS_ENUMV(BAR_2), nFirst + 1, nFirst + 1, {1, 2});
        file.Section("Cells 1", CGNS_ENUMV(NFACE_n), nFirst + 2, nFirst + 1 + nFirstCells, cells1, starts1);
        int const secondCells = secondFaces + nFaces - nFirst;
        file.Section("Faces 2", CGNS_ENUMV(NGON_n), secondFaces, secondCells - 1, nodes2, offsets2);
        file.Section("Cells 2", CGNS_ENUMV(NFACE_n), secondCells, secondCells + nCells - nFirstCells - 1,
                     cells2, starts2);
      }),
      "");
}

TEST_F(CgnsSlab, HasNoOtherRefusalsThanTheWhole) {
  auto const cube = [](CgnsTestFile& file) {
    file.Base();
    file.Zone({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}, 1);
    file.Section("Cells", CGNS_ENUMV(HEXA_8), 1, 1, {1, 2, 3, 4, 5, 6, 7, 8});
  };
  EXPECT_NE(SameAsWhole([](CgnsTestFile&) {}), "");
  EXPECT_NE(SameAsWhole([](CgnsTestFile& file) { file.Base("Plane", 2); }), "");
  EXPECT_NE(SameAsWhole([](CgnsTestFile& file) {
              file.Base();
              file.Zone({{0, 0, 0}}, 0);
            }),
            "");
  EXPECT_NE(SameAsWhole([&](CgnsTestFile& file) {
              cube(file);
              file.Section("More", CGNS_ENUMV(TETRA_10), 2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 1, 2});
            }),
            "");
  EXPECT_NE(SameAsWhole([&](CgnsTestFile& file) {
              cube(file);
              file.Section("More", CGNS_ENUMV(TETRA_4), 2, 3, {1, 2, 3, 4, 5, 6, 7, 9});
            }),
            "");
  EXPECT_NE(SameAsWhole([&](CgnsTestFile& file) {
              cube(file);
              file.Section("More", CGNS_ENUMV(TETRA_4), 2, 2, {1, 2, 3, 4});
            }),
            "");
  EXPECT_NE(SameAsWhole([&](CgnsTestFile& file) {
              cube(file);
              file.Section("Faces", CGNS_ENUMV(NGON_n), 2, 2, {1, 2, 3}, {0, 3});
            }),
            "");
  EXPECT_NE(SameAsWhole([&](CgnsTestFile& file) {
              cube(file);
              file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {1});
            }),
            "");
  EXPECT_NE(
      SameAsWhole([&](CgnsTestFile& file) {
        cube(file);
        file.Condition("in", CGNS_ENUMV(BCInflow), CGNS_ENUMV(PointList), {1, 2, 9}, CGNS_ENUMV(Vertex));
      }),
      "");
  EXPECT_NE(SameAsWhole([&](CgnsTestFile& file) {
              cube(file);
              for (int i = 0; i < 100; ++i) {
                file.Condition("c" + std::to_string(i), CGNS_ENUMV(BCWall), CGNS_ENUMV(PointRange), {1, 8},
                               CGNS_ENUMV(Vertex), "all");
              }
            }),
            "");
}

TEST_F(CgnsSlab, HasNoOtherRefusalsOfPolyhedraThanTheWhole) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:3,2,2"));
  auto const refusal = [&](std::function<void(Polyhedra&)> const& spoil, bool withCells) {
    Polyhedra polyhedra(mesh);
    spoil(polyhedra);
    return SameAsWhole([&](CgnsTestFile& file) { WritePolyhedra(file, mesh, polyhedra, withCells); });
  };
  EXPECT_NE(refusal([](Polyhedra& p) { p.faces[40] = 99999; }, true), "");
  EXPECT_NE(refusal([](Polyhedra& p) { p.faces[7] = p.faces[1]; }, true), "");
  EXPECT_NE(refusal([](Polyhedra& p) { p.nodes[60] = 999; }, true), "");
  EXPECT_NE(refusal([](Polyhedra& p) { p.parents[0] = 0; }, false), "");
  EXPECT_NE(refusal([](Polyhedra& p) { p.parents[0] = 4000; }, false), "");
  EXPECT_NE(refusal([](Polyhedra& p) { p.parents.clear(); }, false), "");
}

/// Overwrites one number of a node below the zone. Rank 0 does.
void Falsify(std::string const& name, std::string const& path, std::size_t at, std::int32_t value) {
  int file = 0;
  double root = 0.0, node = 0.0;
  ASSERT_EQ(cgio_open_file(name.c_str(), CGIO_MODE_MODIFY, CGIO_FILE_NONE, &file), CGIO_ERR_NONE);
  cgio_get_root_id(file, &root);
  if (cgio_get_node_id(file, root, ("/Base/Zone/" + path).c_str(), &node) == CGIO_ERR_NONE) {
    int nDimensions = 0;
    std::array<cgsize_t, CGIO_MAX_DIMENSIONS> sizes{};
    std::array<char, CGIO_MAX_DATATYPE_LENGTH + 1> type{};
    cgio_get_dimensions(file, node, &nDimensions, sizes.data());
    cgio_get_data_type(file, node, type.data());
    std::size_t nValues = 1;
    for (int d = 0; d < nDimensions; ++d)
      nValues *= static_cast<std::size_t>(sizes[static_cast<std::size_t>(d)]);
    ASSERT_STREQ(type.data(), sizeof(cgsize_t) == 4 ? "I4" : "I8");
    Numbers values(nValues);
    cgio_read_all_data_type(file, node, type.data(), values.data());
    values[at % nValues] = value;
    cgio_write_all_data(file, node, values.data());
  }
  cgio_close_file(file);
}

/// Makes a file of version 3.3, whose MIXED sections have no list of starts. Rank 0 does.
void MakeOlder(std::string const& name, std::string const& section) {
  int file = 0;
  double root = 0.0, version = 0.0, parent = 0.0, starts = 0.0;
  ASSERT_EQ(cgio_open_file(name.c_str(), CGIO_MODE_MODIFY, CGIO_FILE_NONE, &file), CGIO_ERR_NONE);
  cgio_get_root_id(file, &root);
  ASSERT_EQ(cgio_get_node_id(file, root, "CGNSLibraryVersion", &version), CGIO_ERR_NONE);
  float const number = 3.3F;
  EXPECT_EQ(cgio_write_all_data(file, version, &number), CGIO_ERR_NONE);
  ASSERT_EQ(cgio_get_node_id(file, root, ("/Base/Zone/" + section).c_str(), &parent), CGIO_ERR_NONE);
  ASSERT_EQ(cgio_get_node_id(file, parent, "ElementStartOffset", &starts), CGIO_ERR_NONE);
  EXPECT_EQ(cgio_delete_node(file, parent, starts), CGIO_ERR_NONE);
  cgio_close_file(file);
}

TEST_F(CgnsSlab, HasMixedSectionsOfOlderFiles) {
  StandardCells const cells = RandomCells(2, {0, 1, 2, 3}, 6, false);
  Written([&](CgnsTestFile& file) {
    std::mt19937 random(2);
    WriteElements(file, cells, 1, random);
  });
  if (Rank() == 0) MakeOlder(file_, "Part 0");
  MPI_Barrier(MPI_COMM_WORLD);
  EXPECT_EQ(ExpectSameAsWhole(file_), "");
  MPI_Barrier(MPI_COMM_WORLD);
}

TEST_F(CgnsSlab, SurvivesDamagedListsAsTheWholeDoes) {
  FaceMesh const box = MakeBox(ParseBoxSpec("box:2,2,2"));
  StandardCells const cells = RandomCells(2, {0, 1, 2, 3}, 9, false);
  std::array<char const*, 4> const lists = {"ElementRange", "ElementStartOffset", "ElementConnectivity",
                                            "ParentElements"};
  std::array<std::int32_t, 7> const values = {-1,
                                              0,
                                              1,
                                              7,
                                              100000,
                                              std::numeric_limits<std::int32_t>::max(),
                                              std::numeric_limits<std::int32_t>::min()};
  std::mt19937 random(3);
  int nRefused = 0;
  for (int i = 0; i < 60; ++i) {
    std::mt19937 elements(5);
    Written([&](CgnsTestFile& file) {
      if (i % 3 == 0) {
        WriteElements(file, cells, 1, elements);
      } else {
        WritePolyhedra(file, box, Polyhedra(box), i % 3 == 1);
      }
    });
    std::string const section = i % 3 == 0 ? "Part 0" : random() % 2 == 0 ? "Faces" : "Cells";
    std::string const list = lists[random() % lists.size()];
    std::size_t const at = random();
    std::int32_t const value = values[random() % values.size()];
    if (Rank() == 0) Falsify(file_, section + "/" + list, at, value);
    MPI_Barrier(MPI_COMM_WORLD);
    SCOPED_TRACE(section + "/" + list + "[" + std::to_string(at) + "] = " + std::to_string(value));
    if (!ExpectSameAsWhole(file_).empty()) ++nRefused;
    MPI_Barrier(MPI_COMM_WORLD);
  }
  EXPECT_GT(nRefused, 15);
}

TEST_F(CgnsSlab, ReadsFieldsByRanges) {
  int const nCells = 27;
  std::vector<double> p, x, y, z;
  for (int c = 0; c < nCells; ++c) {
    p.push_back(0.5 * c);
    x.push_back(c);
    y.push_back(-c);
    z.push_back(1000 + c);
  }
  StandardCells const mesh = RandomCells(3, {0}, 1, false);
  Written([&](CgnsTestFile& file) {
    std::mt19937 random(1);
    WriteElements(file, mesh, 0, random);
    file.Solution("Flow", CGNS_ENUMV(CellCenter));
    file.Array("Pressure", p);
    file.Array("VelocityX", x);
    file.Array("VelocityY", y);
    file.Array("VelocityZ", z);
  });
  CgnsFieldFile const pressure(file_, "Pressure"), velocity(file_, "Velocity");
  EXPECT_EQ(pressure.nComponents(), 1);
  EXPECT_EQ(velocity.nComponents(), 3);
  EXPECT_EQ(velocity.nCells(), nCells);
  BlockRanges const blocks = BlockRanges::Even(nCells, RankCount());
  std::int64_t const first = blocks.First(Rank()), n = blocks.Size(Rank());
  EXPECT_EQ(pressure.Read(first, n), std::vector<double>(p.begin() + first, p.begin() + first + n));
  std::vector<double> const own = velocity.Read(first, n), whole = ReadCgnsField(file_, "Velocity").cell;
  EXPECT_EQ(own, std::vector<double>(whole.begin() + 3 * first, whole.begin() + 3 * (first + n)));
  for (std::int64_t c = 0; c < n; ++c) {
    EXPECT_EQ(own[static_cast<std::size_t>(3 * c + 2)], 1000.0 + static_cast<double>(first + c));
  }
  MPI_Barrier(MPI_COMM_WORLD);
}

}  // namespace
}  // namespace reference_host::test

#else

namespace reference_host::test {

TEST(CgnsSlab, SaysThatTheBuildCannotReadSuchFiles) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  EXPECT_NE(ErrorOnEveryRank([&] { ReadCgnsSlab(communicator, "mesh.cgns"); }).find("libcgns-dev"),
            std::string::npos);
}

}  // namespace reference_host::test

#endif
