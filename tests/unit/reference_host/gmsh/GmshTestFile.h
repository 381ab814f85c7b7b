#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

/// Builds Gmsh files for tests, with numbers in text or binary.
class GmshTestFile {
 public:
  explicit GmshTestFile(bool binary) : binary_(binary) { out_ << std::setprecision(17); }

  std::string Content() const { return out_.str(); }

  GmshTestFile& Text(std::string const& text) {
    out_ << text;
    return *this;
  }
  /// Numbers in the encoding of the file: int (4 bytes), size (8 bytes), real (8 bytes).
  GmshTestFile& Int(int value) { return Number(value); }
  GmshTestFile& Size(std::int64_t value) { return Number(value); }
  GmshTestFile& Real(double value) { return Number(value); }

  /// Line breaks that only text files have between numbers.
  GmshTestFile& Break() {
    if (!binary_) out_ << '\n';
    return *this;
  }

  GmshTestFile& Format(std::string const& version) {
    Text("$MeshFormat\n" + version + (binary_ ? " 1 8\n" : " 0 8\n"));
    if (binary_) Int(1).Text("\n");
    return Text("$EndMeshFormat\n");
  }

 private:
  template <class Value>
  GmshTestFile& Number(Value value) {
    if (binary_) {
      out_.write(reinterpret_cast<char const*>(&value), sizeof value);
    } else {
      out_ << value << ' ';
    }
    return *this;
  }

  std::ostringstream out_;
  bool binary_;
};

struct GmshTestElement {
  int type;
  int tag;
  int physical;
  std::vector<int> nodes;  ///< node tags
};

struct GmshTestMesh {
  std::vector<std::array<double, 3>> points;  ///< node i has the tag NodeTag(i)
  std::vector<GmshTestElement> elements;
  std::string physicalNames;

  static int NodeTag(int i) { return 10 * i + 3; }
};

inline std::string WriteGmsh22(GmshTestMesh const& mesh, bool binary) {
  GmshTestFile file(binary);
  file.Format("2.2").Text(mesh.physicalNames);
  file.Text("$Nodes\n" + std::to_string(mesh.points.size()) + "\n");
  for (std::size_t i = 0; i < mesh.points.size(); ++i) {
    file.Int(GmshTestMesh::NodeTag(static_cast<int>(i)));
    for (double const x : mesh.points[i]) file.Real(x);
    file.Break();
  }
  file.Text(binary ? "\n$EndNodes\n" : "$EndNodes\n");
  file.Text("$Elements\n" + std::to_string(mesh.elements.size()) + "\n");
  for (GmshTestElement const& element : mesh.elements) {
    if (binary) {
      file.Int(element.type).Int(1).Int(2).Int(element.tag);
    } else {
      file.Int(element.tag).Int(element.type).Int(2);
    }
    file.Int(element.physical).Int(1);
    for (int const node : element.nodes) file.Int(node);
    file.Break();
  }
  file.Text(binary ? "\n$EndElements\n" : "$EndElements\n");
  return file.Content();
}

/// Every element gets a block of its own and a geometric entity of its own, whose number is that of the
/// element. The first half of the nodes is written with parameters on a surface.
inline std::string WriteGmsh41(GmshTestMesh const& mesh, bool binary) {
  auto const dimensionOf = [](GmshTestElement const& e) { return e.type >= 4 ? 3 : 2; };
  GmshTestFile file(binary);
  file.Format("4.1").Text(mesh.physicalNames);

  int nSurfaces = 0;
  for (GmshTestElement const& element : mesh.elements) nSurfaces += dimensionOf(element) == 2 ? 1 : 0;
  int const nVolumes = static_cast<int>(mesh.elements.size()) - nSurfaces;
  file.Text("$Entities\n").Size(1).Size(1).Size(nSurfaces).Size(nVolumes).Break();
  file.Int(1).Real(0).Real(0).Real(0).Size(1).Int(77).Break();  // a point in physical group 77
  file.Int(1);                                                  // a curve between points 1 and 2
  for (int i = 0; i < 6; ++i) file.Real(0.5);
  file.Size(0).Size(2).Int(1).Int(-2).Break();
  for (int const dimension : {2, 3}) {
    for (GmshTestElement const& element : mesh.elements) {
      if (dimensionOf(element) != dimension) continue;
      file.Int(element.tag);
      for (int i = 0; i < 6; ++i) file.Real(0.5);
      file.Size(element.physical == 0 ? 0 : 1);
      if (element.physical != 0) file.Int(element.physical);
      file.Size(0).Break();
    }
  }
  file.Text(binary ? "\n$EndEntities\n" : "$EndEntities\n");

  std::size_t const n = mesh.points.size();
  file.Text("$Nodes\n").Size(2).Size(static_cast<std::int64_t>(n)).Size(1).Size(10000).Break();
  for (int const block : {0, 1}) {
    std::size_t const begin = block == 0 ? 0 : n / 2;
    std::size_t const end = block == 0 ? n / 2 : n;
    file.Int(block == 0 ? 2 : 3)
        .Int(1)
        .Int(block == 0 ? 1 : 0)
        .Size(static_cast<std::int64_t>(end - begin))
        .Break();
    for (std::size_t i = begin; i < end; ++i) file.Size(GmshTestMesh::NodeTag(static_cast<int>(i))).Break();
    for (std::size_t i = begin; i < end; ++i) {
      for (double const x : mesh.points[i]) file.Real(x);
      if (block == 0) file.Real(0.25).Real(0.75);
      file.Break();
    }
  }
  file.Text(binary ? "\n$EndNodes\n" : "$EndNodes\n");

  auto const nElements = static_cast<std::int64_t>(mesh.elements.size());
  file.Text("$Elements\n").Size(nElements).Size(nElements).Size(1).Size(10000).Break();
  for (GmshTestElement const& element : mesh.elements) {
    file.Int(dimensionOf(element)).Int(element.tag).Int(element.type).Size(1).Break();
    file.Size(element.tag);
    for (int const node : element.nodes) file.Size(node);
    file.Break();
  }
  file.Text(binary ? "\n$EndElements\n" : "$EndElements\n");
  return file.Content();
}

inline std::string WriteGmsh(GmshTestMesh const& mesh, std::string const& version, bool binary) {
  return version == "2.2" ? WriteGmsh22(mesh, binary) : WriteGmsh41(mesh, binary);
}

/// Node tags from positions in the list of points.
inline std::vector<int> Tags(std::vector<int> positions) {
  for (int& position : positions) position = GmshTestMesh::NodeTag(position);
  return positions;
}

// A unit cube (hexahedron) with a wedge at its right side (prism), a pyramid on its top and a tetrahedron at
// the pyramid's right side; seen from the front:
//
//            8 ---- 11
//           / \    /       8 tip of the pyramid, 11 of the tetrahedron
//          /   \  /
//     4(7)-----5(6)
//      |       | \         in brackets: nodes behind
//     0(3)-----1(2)--9(10)
//
// The prism and the tetrahedron are given inside out. Node 12 belongs to nothing.
inline GmshTestMesh MixedMesh() {
  GmshTestMesh mesh;
  mesh.points = {{0, 0, 0}, {1, 0, 0},     {1, 1, 0}, {0, 1, 0}, {0, 0, 1},   {1, 0, 1}, {1, 1, 1},
                 {0, 1, 1}, {0.5, 0.5, 2}, {2, 0, 0}, {2, 1, 0}, {2, 0.5, 2}, {9, 9, 9}};
  mesh.physicalNames =
      "$PhysicalNames\n5\n0 77 \"a point\"\n2 1 \"inlet\"\n2 2 \"outlet (right)\"\n2 9 \"inside\"\n3 1 "
      "\"all\"\n"
      "$EndPhysicalNames\n";
  mesh.elements = {
      {3, 1, 1, Tags({0, 3, 7, 4})},    // inlet: left side of the cube
      {3, 2, -2, Tags({9, 10, 6, 5})},  // outlet: the wedge's slope; the sign is only an orientation
      {2, 3, 7, Tags({6, 8, 11})},      // physical surface 7 without a name: one side of the tetrahedron
      {3, 4, 9, Tags({1, 2, 6, 5})},    // between cube and wedge
      {3, 5, 0, Tags({0, 1, 2, 3})},    // in no physical surface
      {5, 16, 1, Tags({0, 1, 2, 3, 4, 5, 6, 7})},  // cube
      {6, 17, 1, Tags({1, 9, 5, 2, 10, 6})},       // wedge
      {7, 18, 0, Tags({4, 5, 6, 7, 8})},           // pyramid, in no physical volume
      {4, 29, 1, Tags({5, 8, 6, 11})},             // tetrahedron
  };
  return mesh;
}
