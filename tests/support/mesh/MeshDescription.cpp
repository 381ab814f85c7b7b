#include "tests/support/mesh/MeshDescription.h"

#include <cstddef>

namespace gradient_test {

int MeshDescription::AddInteriorCell(Vector3 centre, double volume) {
  centres.push_back(centre);
  volumes.push_back(volume);
  nInnerCells = NCell();
  return nInnerCells;
}

int MeshDescription::AddOuterCell(Vector3 centre) {
  centres.push_back(centre);
  return NCell();
}

Exchange NoExchange() {
  return [](double*) {};
}

Exchange ExchangeWithItself(MeshDescription const& mesh) {
  struct Copy {
    int halo, owner;
  };
  std::vector<Copy> copies;
  for (Face const& face : mesh.partition)
    copies.push_back({face.other, 1 + (3 * face.other) % mesh.nInnerCells});
  return [copies](double* field) {
    for (Copy const& copy : copies) field[copy.halo] = field[copy.owner];
  };
}

MeshDescription TwoCells(double weight, int faceType) {
  MeshDescription mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0}, 1.0);
  mesh.AddInteriorCell({1.0, 0.0, 0.0}, 1.0);
  mesh.inner.push_back({1, 2, {1.0, 2.0, 4.0}, {0.5, 0.0, 0.0}, weight, faceType});
  return mesh;
}

MeshDescription OneCellWithFacesOfAllGroups() {
  MeshDescription mesh;
  for (int c = 1; c <= 3; ++c) mesh.AddInteriorCell({}, 1.0);
  for (int c = 4; c <= 8; ++c) mesh.AddOuterCell({});
  auto const face = [](int other) { return Face{1, other, {1.0, 0.0, 0.0}, {}, 1.0, 0}; };
  mesh.inner = {face(2), face(3)};
  mesh.partition = {face(4)};
  mesh.inlet = {face(5)};
  mesh.outlet = {face(6)};
  mesh.symmetry = {face(7)};
  mesh.wall = {face(8)};
  return mesh;
}

namespace {

/// The grid lines of a box, with the cells counted along x first.
struct Grid {
  std::vector<double> const& x;
  std::vector<double> const& y;
  std::vector<double> const& z;

  static int Cells(std::vector<double> const& lines) { return static_cast<int>(lines.size()) - 1; }
  static double Width(std::vector<double> const& lines, int i) {
    auto const k = static_cast<std::size_t>(i);
    return lines[k + 1] - lines[k];
  }
  static double Middle(std::vector<double> const& lines, int i) {
    auto const k = static_cast<std::size_t>(i);
    return 0.5 * (lines[k] + lines[k + 1]);
  }

  int Number(int i, int j, int k) const { return 1 + i + Cells(x) * (j + Cells(y) * k); }
  Vector3 Centre(int i, int j, int k) const { return {Middle(x, i), Middle(y, j), Middle(z, k)}; }
};

double Component(Vector3 const& v, int direction) {
  return direction == 0 ? v.x : direction == 1 ? v.y : v.z;
}

void SetComponent(Vector3& v, int direction, double value) {
  (direction == 0 ? v.x : direction == 1 ? v.y : v.z) = value;
}

/// Weight of the far cell of a face across `direction`, from the distances of the centres to the face.
double WeightByDistance(Vector3 const& near, Vector3 const& face, Vector3 const& far, int direction) {
  double const toFace = Component(face, direction) - Component(near, direction);
  double const toFar = Component(far, direction) - Component(near, direction);
  return toFace / toFar;
}

/// Adds the faces of one cell across one direction: the inner or boundary face at its high side and, for the
/// first cell of the row, the boundary face at its low side.
void AddFaces(MeshDescription& mesh, Grid const& grid, int i, int j, int k, int direction) {
  std::vector<double> const& lines = direction == 0 ? grid.x : direction == 1 ? grid.y : grid.z;
  int const index = direction == 0 ? i : direction == 1 ? j : k;
  double const widths[3] = {Grid::Width(grid.x, i), Grid::Width(grid.y, j), Grid::Width(grid.z, k)};
  double const area = widths[(direction + 1) % 3] * widths[(direction + 2) % 3];
  int const cell = grid.Number(i, j, k);
  Vector3 const centre = grid.Centre(i, j, k);

  Face face;
  face.cv = cell;
  face.centre = centre;
  SetComponent(face.centre, direction, lines[static_cast<std::size_t>(index) + 1]);
  SetComponent(face.area, direction, area);
  if (index + 1 < Grid::Cells(lines)) {
    int const step[3] = {direction == 0, direction == 1, direction == 2};
    face.other = grid.Number(i + step[0], j + step[1], k + step[2]);
    face.weight =
        WeightByDistance(centre, face.centre, grid.Centre(i + step[0], j + step[1], k + step[2]), direction);
    mesh.inner.push_back(face);
  } else {
    face.other = mesh.AddOuterCell(face.centre);
    (direction == 0 ? mesh.outlet : direction == 1 ? mesh.wall : mesh.symmetry).push_back(face);
  }
  if (index == 0) {
    SetComponent(face.centre, direction, lines.front());
    SetComponent(face.area, direction, -area);
    face.other = mesh.AddOuterCell(face.centre);
    (direction == 0 ? mesh.inlet : direction == 1 ? mesh.wall : mesh.symmetry).push_back(face);
  }
}

}  // namespace

MeshDescription Box(std::vector<double> const& xLines, std::vector<double> const& yLines,
                    std::vector<double> const& zLines) {
  Grid const grid{xLines, yLines, zLines};
  int const nx = Grid::Cells(xLines), ny = Grid::Cells(yLines), nz = Grid::Cells(zLines);
  MeshDescription mesh;
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i)
        mesh.AddInteriorCell(grid.Centre(i, j, k),
                             Grid::Width(xLines, i) * Grid::Width(yLines, j) * Grid::Width(zLines, k));
  for (int direction = 0; direction < 3; ++direction)
    for (int k = 0; k < nz; ++k)
      for (int j = 0; j < ny; ++j)
        for (int i = 0; i < nx; ++i) AddFaces(mesh, grid, i, j, k, direction);
  return mesh;
}

}  // namespace gradient_test
