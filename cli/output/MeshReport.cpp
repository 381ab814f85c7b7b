#include "cli/output/MeshReport.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/MessageText.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using reference_host::BoundaryGroup;
using reference_host::MeshSummary;
using reference_host::NameList;
using reference_host::PatchSummary;
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

/// One line: the boundaries that `isMeant` chooses, each reason once, behind its boundaries. Nothing without any.
void PrintBoundaries(std::ostream& out, std::string const& title, MeshSummary const& mesh,
                     std::function<bool(PatchSummary const&)> const& isMeant) {
  std::vector<std::pair<std::string, NameList>> byReason;  // in the order in which reasons occur
  for (PatchSummary const& patch : mesh.patches) {
    if (!isMeant(patch)) continue;
    auto known = std::find_if(byReason.begin(), byReason.end(),
                              [&](auto const& entry) { return entry.first == patch.reason; });
    if (known == byReason.end()) known = byReason.insert(known, {patch.reason, {}});
    known->second.Add(OneLine(patch.name));
  }
  if (byReason.empty()) return;
  std::string line;
  for (auto const& [reason, names] : byReason)
    line += (line.empty() ? "" : "; ") + names.Text() + " (" + OneLine(reason) + ')';
  out << "  " << title << ": " << line << '\n';
}

/// Which boundaries each group has, and why.
void PrintGroups(std::ostream& out, MeshSummary const& mesh) {
  for (BoundaryGroup const group : kGroups) {
    PrintBoundaries(out, reference_host::NameOfGroup(group), mesh,
                    [group](PatchSummary const& patch) { return patch.group == group && patch.nFaces > 0; });
  }
  PrintBoundaries(out, "no group", mesh,
                  [](PatchSummary const& patch) { return !patch.group && !patch.reason.empty(); });
  out << '\n';
}

}  // namespace

void PrintMeshReport(std::ostream& out, std::string const& meshName, MeshSummary const& mesh) {
  out << OneLine(meshName) << " on " << mesh.nParts << (mesh.nParts == 1 ? " rank" : " ranks");
  if (mesh.nParts > 1) out << ": " << OneLine(mesh.way);
  out << "\n\n";
  std::vector<TextTable::Column> columns = {{"cells"}, {"nodes"}, {"inner faces"}, {"between ranks"}};
  std::vector<std::string> row = {Grouped(mesh.nCells), Grouped(mesh.nNodes), Grouped(mesh.nInnerFaces),
                                  Grouped(mesh.nCutFaces)};
  if (mesh.nPeriodicFaces > 0) {
    columns.push_back({"periodic"});
    row.push_back(Grouped(mesh.nPeriodicFaces));
  }
  for (char const* const group : {"inlet", "outlet", "symmetry", "wall"}) columns.push_back({group});
  TextTable sizes(columns);
  for (BoundaryGroup const group : kGroups) row.push_back(Grouped(mesh.FacesOf(group)));
  sizes.AddRow(row);
  sizes.Print(out);
  out << '\n';
  if (!reference_host::IsBoxSpec(meshName)) PrintGroups(out, mesh);
  PrintQuality(out, mesh);
  out << '\n';
}

void PrintMeshDetails(std::ostream& out, MeshSummary const& mesh) {
  TextTable patches({{"boundary", Align::Left}, {"group", Align::Left}, {"reason", Align::Left}, {"faces"}});
  for (auto const& patch : mesh.patches) {
    std::string const group = patch.group ? reference_host::NameOfGroup(*patch.group) : "-";
    patches.AddRow(
        {OneLine(patch.name), group, OneLine(patch.reason), Grouped(patch.nFaces + patch.nPeriodicFaces)});
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
  faces["periodic"] = mesh.nPeriodicFaces;
  for (BoundaryGroup const group : kGroups) faces[reference_host::NameOfGroup(group)] = mesh.FacesOf(group);
  json["skewness"] = {{"mean", MeanSkewness(mesh)}, {"max", mesh.quality.maxSkewness}};
  json["nonOrthogonalityDegrees"] = {{"mean", MeanNonOrthogonality(mesh)},
                                     {"max", mesh.quality.maxNonOrthogonality}};
  json["patches"] = ordered_json::array();
  for (auto const& patch : mesh.patches) {
    ordered_json group = nullptr, reason = nullptr;
    if (patch.group) group = reference_host::NameOfGroup(*patch.group);
    if (!patch.reason.empty()) reason = patch.reason;
    json["patches"].push_back({{"name", patch.name},
                               {"type", patch.type},
                               {"group", group},
                               {"reason", reason},
                               {"faces", patch.nFaces + patch.nPeriodicFaces}});
  }
  json["partition"] = {{"way", mesh.way},
                       {"fewestCells", mesh.minCells},
                       {"mostCells", mesh.maxCells},
                       {"mostOverMean", Balance(mesh)},
                       {"mostCutFaces", mesh.maxCutFaces},
                       {"mostNeighbours", mesh.maxNeighbours}};
  return json;
}

}  // namespace zyngrad
