#include <cmath>

#include "cli/faces/FaceRun.h"
#include "cli/field/TestField.h"
#include "cli/output/MeshScale.h"
#include "cli/points/LongRows.h"
#include "cli/study/KindStudy.h"

namespace zyngrad {
namespace {

class FaceStudy : public KindStudy {
 public:
  explicit FaceStudy(StudyMesh& mesh) : mesh_(mesh) {}

  std::vector<double> Conditions(StudyCase const& theCase) override {
    return FaceConditions(mesh_.partition(), mesh_.SettingsOf(theCase));
  }

  std::vector<StudyResult> Run(StudyCase const& theCase, Expression const& formula) override {
    Ranks const& ranks = mesh_.ranks();
    reference_host::HostPartition& partition = mesh_.partition();
    std::vector<double> values = MakeCellValues(ranks, partition, formula, "the field");
    TargetedFaces const faces = TargetedFacesOf(partition, FaceKind::Inner);
    std::vector<double> const exact =
        ExactFaceValues(ranks, faces, FaceKind::Inner, formula, PlaceDigits(ranks, partition));
    mesh_.WriteSettings(FaceSettingsText(mesh_.SettingsOf(theCase)));
    FaceRun const run = RunFaces(ranks, mesh_.loaded(), FaceKind::Inner, values, mesh_.logFile());

    StudyResult result;
    result.quantity = kFaceValue;
    result.errors = SummariseStudyErrors(ranks, OwnErrors(faces, run.rows.value, exact));
    result.usSetUp = AboveTheNoise(run.times.setUp, run.times.usPerFace);
    result.nsApply = AboveTheNoise(run.times.later, run.times.nsPerFace);
    return {std::move(result)};
  }

  void WarnOfLongRows() override {
    PrintLongRowWarning(mesh_.ranks(), mesh_.partition(), nullptr, "A study without faces3");
  }

 private:
  /// @param[in] value, exact  [1..count of the faces]
  std::vector<StudyError> OwnErrors(TargetedFaces const& faces, std::vector<double> const& value,
                                    std::vector<double> const& exact) const {
    std::vector<StudyError> own;
    for (int f = 1; f <= faces.count; ++f) {
      auto const i = static_cast<std::size_t>(f);
      own.push_back({std::fabs(value[i] - exact[i]), faces.Area(f),
                     mesh_.IsAtBoundary(faces.cv[f]) || mesh_.IsAtBoundary(faces.other[f])});
    }
    return own;
  }

  StudyMesh& mesh_;
};

}  // namespace

std::unique_ptr<KindStudy> MakeFaceStudy(StudyMesh& mesh) { return std::make_unique<FaceStudy>(mesh); }

}  // namespace zyngrad
