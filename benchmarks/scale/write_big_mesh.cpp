// Writes a mesh file of any size in little memory: a unit cube of N x N x N small cubes, each of six tetrahedra.
//
//   write_big_mesh gmsh41|gmsh22|cgns N FILE [shuffled]
//
// FILE must not exist. The Gmsh files are binary. N = 94 gives 4,983,504 tetrahedra: 230 MB for gmsh41, 166 MB for
// gmsh22, 102 MB for cgns. The patches are inlet (x = 0), outlet (x = 1) and walls. Cells and nodes come in the order of
// the small cubes, or scattered over the file with "shuffled".

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#ifdef ZYN_WITH_CGNS
#include <cgnslib.h>
#endif

namespace {

using Triangle = std::array<std::int64_t, 3>;
using Tetrahedron = std::array<std::int64_t, 4>;
using Place = std::array<double, 3>;

/// A permutation of 0..n-1 that needs no memory: i -> (factor i) mod n.
class Shuffle {
 public:
  /// @param[in] isShuffled  if not, every number stays
  Shuffle(std::int64_t n, bool isShuffled) : n_(static_cast<std::uint64_t>(n)) {
    if (!isShuffled) return;
    factor_ = static_cast<std::uint64_t>(0.618 * static_cast<double>(n)) + 1;
    while (Inverse(factor_) == 0) ++factor_;
    inverse_ = Inverse(factor_);
  }

  std::int64_t To(std::int64_t i) const { return Times(factor_, i); }
  std::int64_t From(std::int64_t i) const { return Times(inverse_, i); }

 private:
  std::int64_t Times(std::uint64_t factor, std::int64_t i) const {
    return static_cast<std::int64_t>(factor * static_cast<std::uint64_t>(i) % n_);
  }

  /// The number whose product with `factor` is 1 modulo n, by Euclid's algorithm; 0 if there is none.
  std::uint64_t Inverse(std::uint64_t factor) const {
    auto const n = static_cast<std::int64_t>(n_);
    std::int64_t r = n, nextR = static_cast<std::int64_t>(factor), t = 0, nextT = 1;
    while (nextR != 0) {
      std::int64_t const quotient = r / nextR;
      t -= quotient * nextT;
      r -= quotient * nextR;
      std::swap(t, nextT);
      std::swap(r, nextR);
    }
    if (r != 1) return 0;
    return static_cast<std::uint64_t>(t < 0 ? t + n : t);
  }

  std::uint64_t n_, factor_ = 1, inverse_ = 1;
};

/// The cube of cubes. Each is divided into the tetrahedra on the six ways from its corner (0, 0, 0) to (1, 1, 1) along
/// its edges, which fit together at the sides of the cubes. Nodes are numbered from 1, tetrahedra from 0.
class CubeOfTetrahedra {
 public:
  CubeOfTetrahedra(std::int64_t n, bool isShuffled)
      : n_(n), nodes_((n + 1) * (n + 1) * (n + 1), isShuffled), cells_(6 * n * n * n, isShuffled) {}

  std::int64_t nNodes() const { return (n_ + 1) * (n_ + 1) * (n_ + 1); }
  std::int64_t nCells() const { return 6 * n_ * n_ * n_; }
  std::int64_t nTrianglesOfSide() const { return 2 * n_ * n_; }

  Place PlaceOf(std::int64_t node) const {
    Steps const steps = Divide(nodes_.From(node - 1), n_ + 1);
    auto const n = static_cast<double>(n_);
    return {static_cast<double>(steps[0]) / n, static_cast<double>(steps[1]) / n,
            static_cast<double>(steps[2]) / n};
  }

  Tetrahedron Cell(std::int64_t cell) const {
    static constexpr std::array<std::array<int, 3>, 6> kWays = {
        {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 2, 1}, {2, 1, 0}, {1, 0, 2}}};
    std::int64_t const number = cells_.From(cell);
    Steps corner = Divide(number / 6, n_);
    auto const way = static_cast<std::size_t>(number % 6);
    Tetrahedron nodes = {Node(corner)};
    for (std::size_t i = 0; i < 3; ++i) {
      ++corner[static_cast<std::size_t>(kWays[way][i])];
      nodes[i + 1] = Node(corner);
    }
    if (way > 2) std::swap(nodes[1], nodes[2]);  // these ways turn the other way round
    return nodes;
  }

  /// The i-th triangle of a side: 2 d is the lower and 2 d + 1 the upper one in direction d.
  Triangle OnSide(int side, std::int64_t i) const {
    auto const d = static_cast<std::size_t>(side / 2), p = (d + 1) % 3, q = (d + 2) % 3;
    Steps corner{};
    corner[d] = side % 2 == 0 ? 0 : n_;
    corner[p] = i / 2 % n_;
    corner[q] = i / 2 / n_;
    Triangle nodes = {Node(corner)};
    ++corner[i % 2 == 0 ? p : q];
    nodes[1] = Node(corner);
    ++corner[i % 2 == 0 ? q : p];
    nodes[2] = Node(corner);
    return nodes;
  }

 private:
  using Steps = std::array<std::int64_t, 3>;

  static Steps Divide(std::int64_t number, std::int64_t n) {
    return {number % n, number / n % n, number / n / n};
  }
  std::int64_t Node(Steps const& at) const {
    return nodes_.To(at[0] + (n_ + 1) * (at[1] + (n_ + 1) * at[2])) + 1;
  }

  std::int64_t n_;
  Shuffle nodes_, cells_;
};

struct PatchOfSides {
  char const* name;
  std::vector<int> sides;
};

std::vector<PatchOfSides> const kPatches = {{"inlet", {0}}, {"outlet", {1}}, {"walls", {2, 3, 4, 5}}};

std::int64_t TriangleCount(CubeOfTetrahedra const& cube, PatchOfSides const& patch) {
  return static_cast<std::int64_t>(patch.sides.size()) * cube.nTrianglesOfSide();
}

template <class Visit>
void ForEachTriangle(CubeOfTetrahedra const& cube, PatchOfSides const& patch, Visit const& visit) {
  for (int const side : patch.sides) {
    for (std::int64_t i = 0; i < cube.nTrianglesOfSide(); ++i) visit(cube.OnSide(side, i));
  }
}

/// The binary Gmsh file of either version.
class GmshFile {
 public:
  GmshFile(std::string const& name, CubeOfTetrahedra const& cube)
      : out_(name, std::ios::binary), cube_(cube) {}

  void Write41() {
    Format("4.1");
    Names();
    Entities();
    Nodes41();
    Elements41();
    Close();
  }

  void Write22() {
    Format("2.2");
    Names();
    Nodes22();
    Elements22();
    Close();
  }

 private:
  static constexpr int kTriangle = 2, kTetrahedron = 4;

  void Text(std::string const& text) { out_ << text; }
  void Int(std::int64_t value) { Number(static_cast<std::int32_t>(value)); }
  void Size(std::int64_t value) { Number(value); }
  void Real(double value) { Number(value); }

  template <class Value>
  void Number(Value value) {
    out_.write(reinterpret_cast<char const*>(&value), sizeof value);
  }

  void Format(std::string const& version) {
    Text("$MeshFormat\n" + version + " 1 8\n");
    Int(1);
    Text("\n$EndMeshFormat\n");
  }

  void Names() {
    Text("$PhysicalNames\n" + std::to_string(kPatches.size() + 1) + "\n");
    for (std::size_t p = 0; p < kPatches.size(); ++p) {
      Text("2 " + std::to_string(p + 1) + " \"" + kPatches[p].name + "\"\n");
    }
    Text("3 1 \"fluid\"\n$EndPhysicalNames\n");
  }

  void Entities() {
    Text("$Entities\n");
    for (std::size_t const n : {std::size_t{0}, std::size_t{0}, kPatches.size(), std::size_t{1}}) {
      Size(static_cast<std::int64_t>(n));
    }
    for (std::size_t p = 0; p < kPatches.size(); ++p) Entity(static_cast<int>(p) + 1);
    Entity(1);
    Text("\n$EndEntities\n");
  }

  /// In the physical group of the same number, without bounding entities.
  void Entity(int tag) {
    Int(tag);
    for (double const extent : {0.0, 0.0, 0.0, 1.0, 1.0, 1.0}) Real(extent);
    Size(1);
    Int(tag);
    Size(0);
  }

  void Nodes41() {
    Text("$Nodes\n");
    for (std::int64_t const value : {std::int64_t{1}, cube_.nNodes(), std::int64_t{1}, cube_.nNodes()})
      Size(value);
    for (int const value : {3, 1, 0}) Int(value);
    Size(cube_.nNodes());
    for (std::int64_t node = 1; node <= cube_.nNodes(); ++node) Size(node);
    for (std::int64_t node = 1; node <= cube_.nNodes(); ++node) {
      for (double const x : cube_.PlaceOf(node)) Real(x);
    }
    Text("\n$EndNodes\n");
  }

  void Elements41() {
    std::int64_t nElements = cube_.nCells();
    for (PatchOfSides const& patch : kPatches) nElements += TriangleCount(cube_, patch);
    Text("$Elements\n");
    for (std::int64_t const value :
         {static_cast<std::int64_t>(kPatches.size()) + 1, nElements, std::int64_t{1}, nElements})
      Size(value);
    std::int64_t tag = 0;
    auto const element = [&](auto const& nodes) {
      Size(++tag);
      for (std::int64_t const node : nodes) Size(node);
    };
    for (std::size_t p = 0; p < kPatches.size(); ++p) {
      for (int const value : {2, static_cast<int>(p) + 1, kTriangle}) Int(value);
      Size(TriangleCount(cube_, kPatches[p]));
      ForEachTriangle(cube_, kPatches[p], element);
    }
    for (int const value : {3, 1, kTetrahedron}) Int(value);
    Size(cube_.nCells());
    for (std::int64_t cell = 0; cell < cube_.nCells(); ++cell) element(cube_.Cell(cell));
    Text("\n$EndElements\n");
  }

  void Nodes22() {
    Text("$Nodes\n" + std::to_string(cube_.nNodes()) + "\n");
    for (std::int64_t node = 1; node <= cube_.nNodes(); ++node) {
      Int(node);
      for (double const x : cube_.PlaceOf(node)) Real(x);
    }
    Text("\n$EndNodes\n");
  }

  void Elements22() {
    std::int64_t nElements = cube_.nCells();
    for (PatchOfSides const& patch : kPatches) nElements += TriangleCount(cube_, patch);
    Text("$Elements\n" + std::to_string(nElements) + "\n");
    std::int64_t tag = 0, entity = 0;
    auto const begin = [&](int type, std::int64_t n) {
      for (std::int64_t const value : {std::int64_t{type}, n, std::int64_t{2}}) Int(value);
    };
    auto const element = [&](auto const& nodes) {
      for (std::int64_t const value : {++tag, entity, entity}) Int(value);
      for (std::int64_t const node : nodes) Int(node);
    };
    for (PatchOfSides const& patch : kPatches) {
      ++entity;
      begin(kTriangle, TriangleCount(cube_, patch));
      ForEachTriangle(cube_, patch, element);
    }
    entity = 1;
    begin(kTetrahedron, cube_.nCells());
    for (std::int64_t cell = 0; cell < cube_.nCells(); ++cell) element(cube_.Cell(cell));
    Text("\n$EndElements\n");
  }

  void Close() {
    out_.close();
    if (!out_) throw std::runtime_error("the file cannot be written");
  }

  std::ofstream out_;
  CubeOfTetrahedra const& cube_;
};

#ifdef ZYN_WITH_CGNS
/// The CGNS file: one zone, a section of the tetrahedra and one of the triangles of each patch.
class CgnsFile {
 public:
  CgnsFile(std::string const& name, CubeOfTetrahedra const& cube) : cube_(cube) {
    Done(cg_open(name.c_str(), CG_MODE_WRITE, &file_));
    Done(cg_base_write(file_, "Base", 3, 3, &base_));
    std::array<cgsize_t, 3> const sizes = {Count(cube.nNodes()), Count(cube.nCells()), 0};
    Done(cg_zone_write(file_, base_, "Cube", sizes.data(), CGNS_ENUMV(Unstructured), &zone_));
  }

  void Write() {
    Coordinates();
    Section("Cells", CGNS_ENUMV(TETRA_4), Count(cube_.nCells()), [this](auto const& add) {
      for (std::int64_t cell = 0; cell < cube_.nCells(); ++cell) add(cube_.Cell(cell));
    });
    for (PatchOfSides const& patch : kPatches) {
      Section(patch.name, CGNS_ENUMV(TRI_3), Count(TriangleCount(cube_, patch)),
              [&](auto const& add) { ForEachTriangle(cube_, patch, add); });
    }
    Done(cg_close(file_));
  }

 private:
  static constexpr cgsize_t kPiece = 100000;  // items written at once

  static void Done(int status) {
    if (status != CG_OK) throw std::runtime_error(cg_get_error());
  }

  /// The library may have been built for numbers of 32 bits.
  static cgsize_t Count(std::int64_t n) {
    if (n > std::numeric_limits<cgsize_t>::max()) throw std::runtime_error("more items than CGNS can number");
    return static_cast<cgsize_t>(n);
  }

  void Coordinates() {
    constexpr std::array<char const*, 3> kNames = {"CoordinateX", "CoordinateY", "CoordinateZ"};
    std::vector<double> piece;
    for (std::size_t d = 0; d < 3; ++d) {
      cgsize_t const nNodes = Count(cube_.nNodes());
      for (cgsize_t first = 1, last = 0; last < nNodes; first = last + 1) {
        last = nNodes - first < kPiece ? nNodes : first + kPiece - 1;
        piece.clear();
        for (std::int64_t node = first; node <= last; ++node) piece.push_back(cube_.PlaceOf(node)[d]);
        int coordinate = 0;
        Done(cg_coord_partial_write(file_, base_, zone_, CGNS_ENUMV(RealDouble), kNames[d], &first, &last,
                                    piece.data(), &coordinate));
      }
    }
  }

  template <class ForEachElement>
  void Section(char const* name, CGNS_ENUMT(ElementType_t) type, cgsize_t n, ForEachElement const& forEach) {
    int section = 0;
    Done(cg_section_partial_write(file_, base_, zone_, name, type, nElements_ + 1,
                                  Count(std::int64_t{nElements_} + n), 0, &section));
    std::vector<cgsize_t> piece;
    cgsize_t nInPiece = 0;
    auto const write = [&] {
      Done(cg_elements_partial_write(file_, base_, zone_, section, nElements_ + 1, nElements_ + nInPiece,
                                     piece.data()));
      nElements_ += nInPiece;
      nInPiece = 0;
      piece.clear();
    };
    forEach([&](auto const& nodes) {
      for (std::int64_t const node : nodes) piece.push_back(static_cast<cgsize_t>(node));
      if (++nInPiece == kPiece) write();
    });
    if (nInPiece > 0) write();
  }

  CubeOfTetrahedra const& cube_;
  int file_ = 0, base_ = 0, zone_ = 0;
  cgsize_t nElements_ = 0;
};
#endif

void Write(std::string const& format, std::string const& file, CubeOfTetrahedra const& cube) {
  if (format == "gmsh41") return GmshFile(file, cube).Write41();
  if (format == "gmsh22") return GmshFile(file, cube).Write22();
#ifdef ZYN_WITH_CGNS
  if (format == "cgns") return CgnsFile(file, cube).Write();
#endif
  throw std::runtime_error("unknown format " + format);
}

int Run(std::vector<std::string> const& arguments) {
  bool const isShuffled = arguments.size() == 4 && arguments[3] == "shuffled";
  if (arguments.size() != (isShuffled ? 4 : 3)) {
    std::fputs("write_big_mesh gmsh41|gmsh22|cgns N FILE [shuffled]\n", stderr);
    return 2;
  }
  std::int64_t const n = std::stoll(arguments[1]);
  if (n < 1 || n > 1000) throw std::runtime_error("N is a number from 1 to 1000");
  if (std::filesystem::exists(arguments[2])) throw std::runtime_error(arguments[2] + " exists already");
  CubeOfTetrahedra const cube(n, isShuffled);
  if (arguments[0] == "gmsh22" && cube.nCells() + 6 * cube.nTrianglesOfSide() > INT32_MAX)
    throw std::runtime_error("version 2.2 numbers elements with 32 bits");
  Write(arguments[0], arguments[2], cube);
  std::printf("%s: %lld nodes, %lld tetrahedra\n", arguments[2].c_str(),
              static_cast<long long>(cube.nNodes()), static_cast<long long>(cube.nCells()));
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  return Run({argv + 1, argv + argc});
} catch (std::exception const& error) {
  std::fprintf(stderr, "write_big_mesh: %s\n", error.what());
  return 1;
}
