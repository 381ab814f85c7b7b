// Writes a CGNS file with a flow on a stretched box of hexahedra, through the CGNS library:
//   write_cgns_flow FILE
// 5 x 4 x 4 cells; arrays at their centres Pressure = 2x - 3y + z, VelocityX = y, VelocityY = 3z, VelocityZ = -x, and Bad,
// whose third value is not a number. The sections of the boundary are inlet, outlet, symmetry (z = 0) and walls.
#include <cgnslib.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

constexpr std::array<int, 3> kCells = {5, 4, 4};

void Done(int status) {
  if (status == CG_OK) return;
  std::fprintf(stderr, "%s\n", cg_get_error());
  std::exit(1);
}

/// Number of a node, from 1.
cgsize_t Node(int i, int j, int k) { return 1 + i + (kCells[0] + 1) * (j + (kCells[1] + 1) * k); }

/// Coordinate of the i-th plane of nodes; the cells widen by a fifth from one to the next.
double Plane(int i) { return (std::pow(1.2, i) - 1.0) / 2.0; }

class Writer {
 public:
  explicit Writer(char const* name) {
    Done(cg_open(name, CG_MODE_WRITE, &file_));
    Done(cg_base_write(file_, "Base", 3, 3, &base_));
    std::array<cgsize_t, 3> const sizes = {Node(kCells[0], kCells[1], kCells[2]),
                                           kCells[0] * kCells[1] * kCells[2], 0};
    Done(cg_zone_write(file_, base_, "Box", sizes.data(), CGNS_ENUMV(Unstructured), &zone_));
  }
  ~Writer() { Done(cg_close(file_)); }
  Writer(Writer const&) = delete;
  Writer& operator=(Writer const&) = delete;

  void Mesh() {
    std::array<std::vector<double>, 3> place;
    for (int k = 0; k <= kCells[2]; ++k)
      for (int j = 0; j <= kCells[1]; ++j)
        for (int i = 0; i <= kCells[0]; ++i) {
          place[0].push_back(Plane(i));
          place[1].push_back(Plane(j));
          place[2].push_back(Plane(k));
        }
    std::array<char const*, 3> const names = {"CoordinateX", "CoordinateY", "CoordinateZ"};
    for (std::size_t d = 0; d < 3; ++d)
      Done(cg_coord_write(file_, base_, zone_, CGNS_ENUMV(RealDouble), names[d], place[d].data(), &index_));

    std::vector<cgsize_t> nodes;
    ForEachCell([&nodes](int i, int j, int k) {
      for (int const up : {k, k + 1})
        nodes.insert(nodes.end(),
                     {Node(i, j, up), Node(i + 1, j, up), Node(i + 1, j + 1, up), Node(i, j + 1, up)});
    });
    Section("Cells", CGNS_ENUMV(HEXA_8), nodes, 8);
    Section("inlet", CGNS_ENUMV(QUAD_4), Side(0, 0), 4);
    Section("outlet", CGNS_ENUMV(QUAD_4), Side(0, kCells[0]), 4);
    Section("symmetry", CGNS_ENUMV(QUAD_4), Side(2, 0), 4);
    std::vector<cgsize_t> walls;
    for (std::vector<cgsize_t> const& side : {Side(1, 0), Side(1, kCells[1]), Side(2, kCells[2])})
      walls.insert(walls.end(), side.begin(), side.end());
    Section("walls", CGNS_ENUMV(QUAD_4), walls, 4);
  }

  void Flow() {
    int solution = 0;
    Done(cg_sol_write(file_, base_, zone_, "Flow", CGNS_ENUMV(CellCenter), &solution));
    auto const array = [&](char const* name, auto const& value) {
      std::vector<double> values;
      ForEachCell([&](int i, int j, int k) {
        auto const middle = [](int n) { return 0.5 * (Plane(n) + Plane(n + 1)); };
        values.push_back(value(middle(i), middle(j), middle(k), values.size()));
      });
      Done(cg_field_write(file_, base_, zone_, solution, CGNS_ENUMV(RealDouble), name, values.data(),
                          &index_));
    };
    array("Pressure", [](double x, double y, double z, std::size_t) { return 2.0 * x - 3.0 * y + z; });
    array("VelocityX", [](double, double y, double, std::size_t) { return y; });
    array("VelocityY", [](double, double, double z, std::size_t) { return 3.0 * z; });
    array("VelocityZ", [](double x, double, double, std::size_t) { return -x; });
    array("Bad", [](double, double, double, std::size_t c) { return c == 2 ? std::nan("") : 1.0; });
  }

 private:
  template <class Visit>
  static void ForEachCell(Visit const& visit) {
    for (int k = 0; k < kCells[2]; ++k)
      for (int j = 0; j < kCells[1]; ++j)
        for (int i = 0; i < kCells[0]; ++i) visit(i, j, k);
  }

  /// The quadrangles of the plane of nodes number `at` normal to an axis.
  static std::vector<cgsize_t> Side(std::size_t axis, int at) {
    std::size_t const u = (axis + 1) % 3, v = (axis + 2) % 3;
    std::vector<cgsize_t> nodes;
    for (int b = 0; b < kCells[v]; ++b)
      for (int a = 0; a < kCells[u]; ++a)
        for (auto const& [da, db] : {std::pair(0, 0), std::pair(1, 0), std::pair(1, 1), std::pair(0, 1)}) {
          std::array<int, 3> n = {at, at, at};
          n[u] = a + da;
          n[v] = b + db;
          nodes.push_back(Node(n[0], n[1], n[2]));
        }
    return nodes;
  }

  void Section(char const* name, CGNS_ENUMT(ElementType_t) type, std::vector<cgsize_t> const& nodes,
               int nodesEach) {
    cgsize_t const last = next_ + static_cast<cgsize_t>(nodes.size()) / nodesEach - 1;
    Done(cg_section_write(file_, base_, zone_, name, type, next_, last, 0, nodes.data(), &index_));
    next_ = last + 1;
  }

  int file_ = 0, base_ = 0, zone_ = 0, index_ = 0;
  cgsize_t next_ = 1;  // number of the next element
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Writer writer(argv[1]);
  writer.Mesh();
  writer.Flow();
}
