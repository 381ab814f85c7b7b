#include "cli/check/CheckFaces.h"

#include <cstddef>
#include <iostream>
#include <utility>

#include "cli/base/StdoutToFile.h"
#include "cli/check/CheckFindings.h"
#include "cli/check/SystemChecks.h"
#include "cli/faces/FaceErrors.h"
#include "cli/faces/FaceSystems.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

constexpr int kByVertices = 3;  // search method

/// Checks the faces of a group one by one.
class FaceChecks {
 public:
  FaceChecks(HostPartition& partition, FaceKind group, InterpolationSettings const& settings)
      : partition_(partition), group_(group), systems_(partition, group, settings), op_(systems_.op()) {}

  int count() const { return systems_.faces().count; }

  CheckedSystem Check(int f) {
    CheckedSystem face = Describe(f);
    if (systems_.isByNormal()) {
      CheckSide(f, FaceSystems::kP, face);
      if (!IsBoundary(group_)) CheckSide(f, FaceSystems::kE, face);
    } else {
      CheckPlaces(systems_.NodesOf(f), face);
      CheckCondition(systems_.ConditionOf(f), face);
    }
    Derive(f);
    CheckRows(f, face);
    return face;
  }

 private:
  CheckedSystem Describe(int f) const {
    auto const number = [this](int c) { return partition_.globalCell()[static_cast<std::size_t>(c)]; };
    TargetedFaces const& faces = systems_.faces();
    auto const [x, y, z] = faces.Target(f);
    CheckedSystem face;
    face.number = number(faces.cv[f]);
    face.other = number(faces.other[f]);
    if (face.other > 0 && face.other < face.number) std::swap(face.number, face.other);
    face.at[0] = x, face.at[1] = y, face.at[2] = z;
    face.members = op_.m_ppFaceCellConn[f][0];
    return face;
  }

  void CheckSide(int f, FaceSystems::SideNumber number, CheckedSystem& face) const {
    FaceSystems::Side const side = systems_.SideOf(f, number);
    if (side.hasTwins) face.findings |= kHasCoincidentMembers;
    CheckPlaces(side.nodes, face);
    CheckCondition(side.condition, face);
  }

  void Derive(int f) {
    if (systems_.isByNormal())
      op_.DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(f);
    else if (op_.iSearch_method == kByVertices)
      op_.DeriveFaceCoefficentBysolveDQfullMatrix_20_03(f);
    else
      op_.DeriveFaceCoefficentBysolveDQfullMatrix(f);
  }

  void CheckRows(int f, CheckedSystem& face) const {
    bool const byNormal = systems_.isByNormal();
    RowSum value, normal, x, y, z;
    for (int k = 1; k <= face.members; ++k) {
      value.Add(op_.m_ppFaceFiCoef[f][k]);
      if (byNormal) {
        normal.Add(op_.m_ppFaceDnCoef[f][k]);
        continue;
      }
      IBCnode const& slope = op_.m_ppFaceGradCoef[f][k];
      x.Add(slope.x);
      y.Add(slope.y);
      z.Add(slope.z);
    }
    bool const isZeroByDesign = byNormal && IsBoundary(group_);
    if (!isZeroByDesign || !value.IsFinite()) CheckRowOfValue(value, kRowSumTolerance, face);
    for (RowSum const& row : {normal, x, y, z}) CheckRowOfSlope(row, kRowSumTolerance, face);
  }

  HostPartition& partition_;
  FaceKind group_;
  FaceSystems systems_;
  CZynFaceRBFInternalObject& op_;
};

}  // namespace

std::vector<CheckedSystem> CheckFaces(HostPartition& partition, FaceKind group,
                                      InterpolationSettings const& settings, std::string const& logFile) {
  StdoutToFile const log(logFile);
  std::cout << NameOf(group) << " faces" << std::endl;
  FaceChecks checks(partition, group, settings);
  std::vector<CheckedSystem> faces;
  for (int f = 1; f <= checks.count(); ++f) faces.push_back(checks.Check(f));
  return faces;
}

}  // namespace zyngrad
