#include "cli/info/MeshFacts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/vtk/PartitionGrid.h"
#include "foundation/FaceGroups.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using reference_host::HostPartition;
using Align = TextTable::Align;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// By position in MeshFacts::kTypes, in texts and as keys.
constexpr std::array<char const*, MeshFacts::kTypes.size()> kTypeNames = {"tetrahedra", "hexahedra", "prisms",
                                                                          "pyramids", "polyhedra"};

/// Adds S S' / |S|, nothing for a face without area.
void AddFace(SymmetricMatrix& m, double sx, double sy, double sz) {
  double const area = std::sqrt(sx * sx + sy * sy + sz * sz);
  if (!(area > 0.0)) return;
  std::array<double, 6> const products = {sx * sx, sy * sy, sz * sz, sx * sy, sx * sz, sy * sz};
  for (std::size_t k = 0; k < 6; ++k) m[k] += products[k] / area;
}

/// [1..NInnerCells] the matrices of AspectRatio.
std::vector<SymmetricMatrix> FaceMatrices(HostPartition& partition) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<SymmetricMatrix> matrices(static_cast<std::size_t>(mesh.NInnerCells) + 1);
  auto const add = [&](FaceGroup const& faces) {
    for (int f = 1; f <= faces.count; ++f) {
      AddFace(matrices[static_cast<std::size_t>(faces.cv[f])], faces.sx[f], faces.sy[f], faces.sz[f]);
      if (faces.kind == FaceKind::Inner)
        AddFace(matrices[static_cast<std::size_t>(faces.other[f])], faces.sx[f], faces.sy[f], faces.sz[f]);
    }
  };
  for (FaceKind const kind :
       {FaceKind::Inner, FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry, FaceKind::Wall})
    add(FacesOf(kind, mesh));
  add(PartitionFaces(*partition.partitionFaces(), mesh));
  return matrices;
}

std::size_t PositionOf(VtkType type) {
  return static_cast<std::size_t>(std::find(MeshFacts::kTypes.begin(), MeshFacts::kTypes.end(), type) -
                                  MeshFacts::kTypes.begin());
}

/// Takes the value and its cell if it comes first, and of equal ones the lower cell.
template <class Before>
void TakeFirst(double& value, std::int64_t& cell, double newValue, std::int64_t newCell,
               Before const& before) {
  if (newCell == 0) return;
  if (cell != 0 && !before(newValue, value) && !(newValue == value && newCell < cell)) return;
  value = newValue;
  cell = newCell;
}

bool IsLess(double a, double b) { return a < b; }
bool IsGreater(double a, double b) { return a > b; }

MeshFacts NoFacts() {
  MeshFacts facts;
  facts.lowest.fill(kInfinity);
  facts.highest.fill(-kInfinity);
  facts.greatestVolume = -kInfinity;
  return facts;
}

void AddNodes(MeshFacts& facts, CZYN3DFiniteVolumeMesh const& mesh, CellFaces const& faces) {
  for (int const node : faces.node) {
    std::array<double, 3> const at = {mesh.xn[node], mesh.yn[node], mesh.zn[node]};
    for (std::size_t d = 0; d < 3; ++d) {
      facts.lowest[d] = std::min(facts.lowest[d], at[d]);
      facts.highest[d] = std::max(facts.highest[d], at[d]);
    }
  }
}

MeshFacts OwnFacts(HostPartition& partition) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<SymmetricMatrix> const matrices = FaceMatrices(partition);
  MeshFacts facts = NoFacts();
  CellFaces faces;
  VtkCell shape;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    auto const at = static_cast<std::size_t>(c);
    std::int64_t const number = partition.globalCell()[at];
    FacesOfCell(mesh, c, faces);
    AddNodes(facts, mesh, faces);
    MakeVtkCell(faces, shape);
    ++facts.nOfType[PositionOf(shape.type)];
    ++facts.nCells;
    facts.totalVolume += mesh.Volume[c];
    TakeFirst(facts.leastVolume, facts.leastVolumeCell, mesh.Volume[c], number, IsLess);
    facts.greatestVolume = std::max(facts.greatestVolume, mesh.Volume[c]);
    double const ratio = AspectRatio(matrices[at]);
    facts.sumAspectRatio += ratio;
    TakeFirst(facts.maxAspectRatio, facts.maxAspectRatioCell, ratio, number, IsGreater);
  }
  return facts;
}

/// The numbers of one rank as a row, to be sent. Counts are exact in a double.
std::vector<double> RowOf(MeshFacts const& facts) {
  std::vector<double> row = {static_cast<double>(facts.nCells),
                             facts.totalVolume,
                             facts.leastVolume,
                             static_cast<double>(facts.leastVolumeCell),
                             facts.greatestVolume,
                             facts.sumAspectRatio,
                             facts.maxAspectRatio,
                             static_cast<double>(facts.maxAspectRatioCell)};
  row.insert(row.end(), facts.lowest.begin(), facts.lowest.end());
  row.insert(row.end(), facts.highest.begin(), facts.highest.end());
  for (std::int64_t const n : facts.nOfType) row.push_back(static_cast<double>(n));
  return row;
}

void AddRow(MeshFacts& all, std::vector<double> const& row) {
  auto const count = [&row](std::size_t k) { return static_cast<std::int64_t>(row[k]); };
  all.nCells += count(0);
  all.totalVolume += row[1];
  TakeFirst(all.leastVolume, all.leastVolumeCell, row[2], count(3), IsLess);
  all.greatestVolume = std::max(all.greatestVolume, row[4]);
  all.sumAspectRatio += row[5];
  TakeFirst(all.maxAspectRatio, all.maxAspectRatioCell, row[6], count(7), IsGreater);
  for (std::size_t d = 0; d < 3; ++d) {
    all.lowest[d] = std::min(all.lowest[d], row[8 + d]);
    all.highest[d] = std::max(all.highest[d], row[11 + d]);
  }
  for (std::size_t t = 0; t < all.nOfType.size(); ++t) all.nOfType[t] += count(14 + t);
}

std::string TypesInWords(MeshFacts const& facts) {
  std::string text;
  for (std::size_t t = 0; t < facts.nOfType.size(); ++t) {
    if (facts.nOfType[t] == 0) continue;
    text += (text.empty() ? "" : ", ") + Grouped(facts.nOfType[t]) + ' ' + kTypeNames[t];
  }
  return text;
}

double MeanAspectRatio(MeshFacts const& facts) {
  return facts.sumAspectRatio / static_cast<double>(facts.nCells);
}

}  // namespace

// Each rotation makes one element off the diagonal zero and lets the others shrink; a few sweeps are enough for full
// accuracy, also of a small eigenvalue beside large ones.
std::array<double, 3> Eigenvalues(SymmetricMatrix const& matrix) {
  double a[3][3] = {{matrix[0], matrix[3], matrix[4]},
                    {matrix[3], matrix[1], matrix[5]},
                    {matrix[4], matrix[5], matrix[2]}};
  for (int sweep = 0; sweep < 8; ++sweep) {
    for (int p = 0; p < 2; ++p) {
      for (int q = p + 1; q < 3; ++q) {
        if (a[p][q] == 0.0) continue;
        // The tangent of the smaller angle that makes a[p][q] zero.
        double const theta = (a[q][q] - a[p][p]) / (2.0 * a[p][q]);
        double const t = std::copysign(1.0, theta) / (std::fabs(theta) + std::hypot(theta, 1.0));
        double const c = 1.0 / std::hypot(t, 1.0), s = t * c;
        int const r = 3 - p - q;
        a[p][p] -= t * a[p][q];
        a[q][q] += t * a[p][q];
        a[p][q] = a[q][p] = 0.0;
        double const rp = a[r][p], rq = a[r][q];
        a[r][p] = a[p][r] = c * rp - s * rq;
        a[r][q] = a[q][r] = s * rp + c * rq;
      }
    }
  }
  std::array<double, 3> values = {a[0][0], a[1][1], a[2][2]};
  std::sort(values.begin(), values.end());
  return values;
}

double AspectRatio(SymmetricMatrix const& m) {
  std::array<double, 3> const values = Eigenvalues(m);
  return values[0] > 0.0 ? values[2] / values[0] : kInfinity;
}

MeshFacts CollectMeshFacts(Ranks const& ranks, HostPartition& partition) {
  MeshFacts own;
  ranks.Together([&] { own = OwnFacts(partition); });
  MeshFacts all = NoFacts();
  for (std::vector<double> const& row : ranks.Gather(RowOf(own))) AddRow(all, row);
  return all;
}

void PrintMeshFacts(std::ostream& out, MeshFacts const& facts) {
  TextTable table({{"geometry", Align::Left}, {"", Align::Left}});
  table.AddRow({"lowest corner", Place(facts.lowest[0], facts.lowest[1], facts.lowest[2])});
  table.AddRow({"highest corner", Place(facts.highest[0], facts.highest[1], facts.highest[2])});
  table.AddRow({"cells", TypesInWords(facts)});
  table.AddRow({"volume", Scientific(facts.totalVolume, 6)});
  table.AddRow(
      {"least volume", Scientific(facts.leastVolume) + " in cell " + std::to_string(facts.leastVolumeCell)});
  table.AddRow({"mean volume", Scientific(facts.totalVolume / static_cast<double>(facts.nCells))});
  table.AddRow({"greatest volume", Scientific(facts.greatestVolume)});
  table.AddRow({"mean aspect ratio", Fixed(MeanAspectRatio(facts), 2)});
  table.AddRow({"greatest aspect ratio",
                Fixed(facts.maxAspectRatio, 2) + " in cell " + std::to_string(facts.maxAspectRatioCell)});
  table.Print(out);
  out << '\n';
}

ordered_json MeshFactsAsJson(MeshFacts const& facts) {
  ordered_json json;
  json["boundingBox"] = {{"from", facts.lowest}, {"to", facts.highest}};
  for (std::size_t t = 0; t < facts.nOfType.size(); ++t) json["cellTypes"][kTypeNames[t]] = facts.nOfType[t];
  json["volume"] = {{"total", facts.totalVolume},
                    {"least", facts.leastVolume},
                    {"leastCell", facts.leastVolumeCell},
                    {"greatest", facts.greatestVolume}};
  json["aspectRatio"] = {
      {"mean", MeanAspectRatio(facts)}, {"max", facts.maxAspectRatio}, {"maxCell", facts.maxAspectRatioCell}};
  return json;
}

}  // namespace zyngrad
