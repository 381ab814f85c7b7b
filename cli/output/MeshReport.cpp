#include "cli/output/MeshReport.h"

#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "reference_host/mesh/BoundaryGroups.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using reference_host::BoundaryGroup;
using reference_host::MeshSummary;
using Align = TextTable::Align;

constexpr BoundaryGroup kGroups[] = {BoundaryGroup::Inlet, BoundaryGroup::Outlet, BoundaryGroup::Symmetry,
                                     BoundaryGroup::Wall};

/// NaN, printed as "-", if there is nothing to average.
double Ratio(double sum, double count) {
  return count > 0.0 ? sum / count : std::numeric_limits<double>::quiet_NaN();
}

double MeanSkewness(MeshSummary const& mesh) {
  return Ratio(mesh.quality.sumSkewness, static_cast<double>(mesh.quality.nFaces));
}

double MeanNonOrthogonality(MeshSummary const& mesh) {
  return Ratio(mesh.quality.sumNonOrthogonality, static_cast<double>(mesh.quality.nFaces));
}

/// Size of the largest partition over the mean size; 1 is perfect.
double Balance(MeshSummary const& mesh) {
  return Ratio(static_cast<double>(mesh.maxCells) * mesh.nParts, static_cast<double>(mesh.nCells));
}

/// The percentage of faces between cells that lie between two partitions.
double CutPercent(MeshSummary const& mesh) {
  return 100.0 *
         Ratio(static_cast<double>(mesh.nCutFaces), static_cast<double>(mesh.nInnerFaces + mesh.nCutFaces));
}

void PrintQuality(std::ostream& out, MeshSummary const& mesh) {
  TextTable table({{"", Align::Left}, {"mean"}, {"maximum"}});
  bool const hasFaces = mesh.quality.nFaces > 0;
  table.AddRow(
      {"skewness", Fixed(MeanSkewness(mesh), 4), hasFaces ? Fixed(mesh.quality.maxSkewness, 4) : "-"});
  table.AddRow({"non-orthogonality, degrees", Fixed(MeanNonOrthogonality(mesh), 2),
                hasFaces ? Fixed(mesh.quality.maxNonOrthogonality, 2) : "-"});
  table.Print(out);
}

}  // namespace

void PrintMeshReport(std::ostream& out, std::string const& meshName, MeshSummary const& mesh) {
  out << OneLine(meshName) << " on " << mesh.nParts << (mesh.nParts == 1 ? " rank" : " ranks") << "\n\n";
  TextTable sizes({{"cells"},
                   {"nodes"},
                   {"inner faces"},
                   {"between ranks"},
                   {"inlet"},
                   {"outlet"},
                   {"symmetry"},
                   {"wall"}});
  std::vector<std::string> row = {Grouped(mesh.nCells), Grouped(mesh.nNodes), Grouped(mesh.nInnerFaces),
                                  Grouped(mesh.nCutFaces)};
  for (BoundaryGroup const group : kGroups) row.push_back(Grouped(mesh.FacesOf(group)));
  sizes.AddRow(row);
  sizes.Print(out);
  out << '\n';
  PrintQuality(out, mesh);
  out << '\n';
}

void PrintMeshDetails(std::ostream& out, MeshSummary const& mesh) {
  TextTable patches({{"boundary", Align::Left}, {"group", Align::Left}, {"faces"}});
  for (auto const& patch : mesh.patches) {
    std::string const group = patch.nFaces > 0 ? reference_host::NameOfGroup(patch.group) : "-";
    patches.AddRow({OneLine(patch.name), group, Grouped(patch.nFaces)});
  }
  patches.Print(out);
  out << '\n';
  TextTable partition({{"ranks"},
                       {"fewest cells"},
                       {"most cells"},
                       {"most / mean"},
                       {"faces cut"},
                       {"cut %"},
                       {"most cut faces"},
                       {"most neighbours"}});
  partition.AddRow({std::to_string(mesh.nParts), Grouped(mesh.minCells), Grouped(mesh.maxCells),
                    Fixed(Balance(mesh), 3), Grouped(mesh.nCutFaces), Fixed(CutPercent(mesh), 2),
                    Grouped(mesh.maxCutFaces), std::to_string(mesh.maxNeighbours)});
  partition.Print(out);
}

ordered_json MeshReportAsJson(std::string const& meshName, MeshSummary const& mesh) {
  ordered_json json;
  json["name"] = meshName;
  json["ranks"] = mesh.nParts;
  json["cells"] = mesh.nCells;
  json["nodes"] = mesh.nNodes;
  ordered_json& faces = json["faces"];
  faces["inner"] = mesh.nInnerFaces;
  faces["betweenRanks"] = mesh.nCutFaces;
  for (BoundaryGroup const group : kGroups) faces[reference_host::NameOfGroup(group)] = mesh.FacesOf(group);
  json["skewness"] = {{"mean", MeanSkewness(mesh)}, {"max", mesh.quality.maxSkewness}};
  json["nonOrthogonalityDegrees"] = {{"mean", MeanNonOrthogonality(mesh)},
                                     {"max", mesh.quality.maxNonOrthogonality}};
  json["patches"] = ordered_json::array();
  for (auto const& patch : mesh.patches) {
    ordered_json group = nullptr;
    if (patch.nFaces > 0) group = reference_host::NameOfGroup(patch.group);
    json["patches"].push_back({{"name", patch.name}, {"group", group}, {"faces", patch.nFaces}});
  }
  json["partition"] = {{"fewestCells", mesh.minCells},
                       {"mostCells", mesh.maxCells},
                       {"mostOverMean", Balance(mesh)},
                       {"mostCutFaces", mesh.maxCutFaces},
                       {"mostNeighbours", mesh.maxNeighbours}};
  return json;
}

}  // namespace zyngrad
