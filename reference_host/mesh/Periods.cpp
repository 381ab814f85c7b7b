#include "reference_host/mesh/Periods.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <sstream>

#include "reference_host/mesh/FaceTurn.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

/// A component of a shift below this part of its length is rounding error.
constexpr double kRounding = 1e-12;

Point Average(std::vector<Point> const& places) {
  Point sum = {0.0, 0.0, 0.0};
  for (Point const& place : places) sum = Sum(sum, Difference(place, places.front()));
  return Sum(places.front(), Scaled(1.0 / static_cast<double>(places.size()), sum));
}

double SizeOf(std::vector<Point> const& face) {
  return SizeOfFace(static_cast<int>(face.size()), [&face](int i) { return face[i]; });
}

void JoinPeriod(FaceMesh const& mesh, Period& period, std::string const& meshName) {
  if (!period.refusal.empty()) FailPeriod(period, mesh.patches, meshName, period.refusal);
  std::vector<Point> const first = PlacesOfFace(mesh, period.faces.front().first);
  period.shift = ShiftBetween(first, PlacesOfFace(mesh, period.faces.front().second));
  std::string const complaint = ComplaintAboutShift(period, period.shift, SizeOf(first));
  if (!complaint.empty()) FailPeriod(period, mesh.patches, meshName, complaint);

  period.turn.clear();
  for (auto const& [face, partner] : period.faces) {
    std::vector<Point> const here = PlacesOfFace(mesh, face), there = PlacesOfFace(mesh, partner);
    int turn = kNoTurn;
    if (here.size() == there.size()) {
      turn = FindTurn(
          static_cast<int>(here.size()), [&here](int i) { return here[i]; },
          [&](int i) { return Difference(there[i], period.shift); }, period.tolerance * SizeOf(here));
    }
    if (turn == kNoTurn) {
      FailPeriod(period, mesh.patches, meshName,
                 "has " + NameOfFace(mesh, face) + ", which does not lie on " + NameOfFace(mesh, partner) +
                     " when moved by " + ShiftText(period.shift));
    }
    period.turn.push_back(turn);
  }
}

}  // namespace

void JoinPeriods(FaceMesh& mesh, std::string const& meshName) {
  std::vector<Period>& periods = mesh.periods;
  periods.erase(std::remove_if(periods.begin(), periods.end(),
                               [&mesh](Period const& period) {
                                 return period.faces.empty() || !IsWanted(period, mesh.patches);
                               }),
                periods.end());
  for (Period& period : periods) JoinPeriod(mesh, period, meshName);
}

std::vector<Point> PlacesOfFace(FaceMesh const& mesh, int f) {
  std::vector<Point> places;
  for (std::size_t i = mesh.faceStart[f]; i < mesh.faceStart[f + 1]; ++i) {
    places.push_back(mesh.points[mesh.faceNode[i]]);
  }
  return places;
}

bool IsPeriodic(Patch const& patch, std::vector<Patch> const& patches) {
  return !patch.group && !patch.partners.empty() &&
         std::all_of(patch.partners.begin(), patch.partners.end(),
                     [&patches](int partner) { return !patches[partner].group; });
}

bool IsWanted(Period const& period, std::vector<Patch> const& patches) {
  return !patches[period.patch].group && !patches[period.partner].group;
}

Point ShiftBetween(std::vector<Point> const& from, std::vector<Point> const& to) {
  Point shift = Difference(Average(to), Average(from));
  double const length = Length(shift);
  for (double& component : shift) {
    if (std::fabs(component) <= kRounding * length) component = 0.0;
  }
  return shift;
}

std::string ComplaintAboutShift(Period const& period, Point const& shift, double size) {
  // Written so that a NaN fails.
  if (!(Length(shift) > period.tolerance * size) || !std::isfinite(Length(shift))) {
    return "lies on its partner, no distance away";
  }
  if (!period.vector) return {};
  Point const& given = *period.vector;
  double const off = std::min(Length(Difference(shift, given)), Length(Sum(shift, given)));
  // Both vectors may have been written with few digits.
  if (off <= period.tolerance * (size + Length(shift))) return {};
  return "is " + ShiftText(shift) + " from its partner, not " + ShiftText(given);
}

void FailPeriod(Period const& period, std::vector<Patch> const& patches, std::string const& meshName,
                std::string const& what) {
  throw MeshError((meshName.empty() ? "" : meshName + ": ") + period.name + " " + what +
                  "; only translations can be joined, --group " +
                  Quoted(patches[period.patch].name + "=wall", 110) + " makes walls of both sides");
}

std::string ShiftText(Point const& shift) {
  std::ostringstream text;
  text << '(' << shift[0] << ' ' << shift[1] << ' ' << shift[2] << ')';
  return text.str();
}

}  // namespace reference_host
