#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Joins the periods of a mesh: finds their shifts and how the nodes of paired faces lie on each other. A
/// period is dropped if one of its patches has a boundary group: the user, or the name of the patch, then
/// makes a boundary of it. Call it after AssignBoundaryGroups and before SplitMesh.
///
/// The shift is the way from the centre of the first face of the first side to that of its partner.
/// @param[in] meshName  what messages begin with, such as the file; may be empty
/// @throws MeshError  a period that is no translation, such as a rotational one; the message says which option
///   makes boundaries of its patches
void JoinPeriods(FaceMesh& mesh, std::string const& meshName = {});

/// Whether the mesh continues beyond the patch: it has partners, and neither it nor one of them has a group.
bool IsPeriodic(Patch const& patch, std::vector<Patch> const& patches);

/// Whether the mesh is to continue across the period: neither of its patches has a boundary group.
bool IsWanted(Period const& period, std::vector<Patch> const& patches);

/// Calls visit(a, b) for the two cells of every face between cells, then of every pair of periodic faces, which may be
/// the same cell.
template <class Visit>
void ForEachNeighbours(FaceMesh const& mesh, Visit const& visit) {
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    if (mesh.neighbour[f] >= 0) visit(mesh.owner[f], mesh.neighbour[f]);
  }
  for (Period const& period : mesh.periods) {
    for (auto const& [face, partner] : period.faces) {
      visit(mesh.owner[static_cast<std::size_t>(face)], mesh.owner[static_cast<std::size_t>(partner)]);
    }
  }
}

/// The places of the nodes of a face.
std::vector<Point> PlacesOfFace(FaceMesh const& mesh, int f);

/// The way between two faces that lie on each other after a period: from the average of the nodes of one to that of
/// the other, with components of pure rounding error set to zero.
/// @param[in] from,to  places of the nodes of the two faces, at least one each
Point ShiftBetween(std::vector<Point> const& from, std::vector<Point> const& to);

/// What is wrong with a shift, by the file's own vector or because it leads nowhere; empty: nothing.
/// @param[in] size  of the faces between which the shift was measured, L
std::string ComplaintAboutShift(Period const& period, Point const& shift, double size);

/// "MESH: NAME WHAT; only translations can be joined, --group PATCH=wall makes walls of both sides"
[[noreturn]] void FailPeriod(Period const& period, std::vector<Patch> const& patches,
                             std::string const& meshName, std::string const& what);

/// "(1 0 0)"
std::string ShiftText(Point const& shift);

}  // namespace reference_host
