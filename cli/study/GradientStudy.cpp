#include "cli/field/TestField.h"
#include "cli/gradient/GradientRun.h"
#include "cli/study/KindStudy.h"

namespace zyngrad {
namespace {

constexpr double kMicro = 1e6;

class GradientStudy : public KindStudy {
 public:
  explicit GradientStudy(StudyMesh& mesh) : mesh_(mesh) {
    StudyQuestion const& question = mesh.question();
    case_.isBoundaryCell = mesh.isBoundaryCell();
    case_.weight.assign(static_cast<std::size_t>(mesh.partition().mesh()->NCell) + 1, 1.0);
    if (question.weight)
      case_.weight = MakeCellValues(mesh.ranks(), mesh.partition(), *question.weight, "the weight");
    case_.nRepeat = question.nRepeat;
    case_.logFile = mesh.logFile();
    case_.exactL2 = {1.0};  // a study shows absolute errors
  }

  std::vector<double> Conditions(StudyCase const& theCase) override {
    return GradientConditions(mesh_.partition(), {theCase.span, false});
  }

  std::vector<StudyResult> Run(StudyCase const& theCase, Expression const& formula) override {
    case_.nSweeps = theCase.nSweeps;
    case_.radialBasis = {theCase.span, false};
    case_.fields.clear();
    case_.fields.push_back({"", {MakeTestField(mesh_.ranks(), mesh_.partition(), formula)}});
    if (theCase.method->TakesSpan()) mesh_.WriteSettings(SettingsFileText(case_.radialBasis));
    MethodResult const run = RunMethod(mesh_.ranks(), mesh_.loaded(), *theCase.method->gradient, case_);

    StudyResult result;
    result.quantity = kGradient;
    result.notRun = run.notRun;
    result.remarks = run.remarks;
    result.whyNotFinite = run.whyNotFinite;
    if (run.notRun.empty()) {
      result.errors = SummariseStudyErrors(mesh_.ranks(), OwnErrors(run.gradients.front().cellError));
      result.usSetUp =
          AboveTheNoise(run.times.setUp, run.times.setUp * kMicro / mesh_.loaded().summary.maxCells);
      result.nsApply = AboveTheNoise(run.times.later, run.times.nsPerCell);
    }
    return {std::move(result)};
  }

 private:
  /// @param[in] error  [1..NInnerCells]
  std::vector<StudyError> OwnErrors(std::vector<double> const& error) {
    CZYN3DFiniteVolumeMesh const& mesh = *mesh_.partition().mesh();
    std::vector<StudyError> own;
    for (int c = 1; c <= mesh.NInnerCells; ++c)
      own.push_back({error[static_cast<std::size_t>(c)], mesh.Volume[c], mesh_.IsAtBoundary(c)});
    return own;
  }

  StudyMesh& mesh_;
  GradientCase case_;
};

}  // namespace

std::unique_ptr<KindStudy> MakeGradientStudy(StudyMesh& mesh) {
  return std::make_unique<GradientStudy>(mesh);
}

}  // namespace zyngrad
