#include "cli/study/StudyMesh.h"

#include <cmath>
#include <numeric>
#include <utility>

#include "cli/field/TestField.h"
#include "cli/output/MeshScale.h"

namespace zyngrad {

StudyMesh::StudyMesh(Ranks const& ranks, StudyQuestion const& question, std::string const& name,
                     std::string logFile, std::function<void(std::string const&)> const& progress)
    : ranks_(ranks),
      question_(question),
      logFile_(std::move(logFile)),
      loaded_(reference_host::LoadMesh(ranks.communicator(), name, question.groups, progress)),
      settings_(ranks, *loaded_.partition),
      isBoundaryCell_(BoundaryCells(*loaded_.partition->mesh())),
      searchDistance_(2.0 * MeanCellDistance(ranks, *loaded_.partition)) {}

double StudyMesh::Spacing() {
  CZYN3DFiniteVolumeMesh const& mesh = *partition().mesh();
  double volume = 0.0;
  for (int c = 1; c <= mesh.NInnerCells; ++c) volume += mesh.Volume[c];
  std::vector<double> const all = ranks_.Gather(volume);
  return std::cbrt(std::accumulate(all.begin(), all.end(), 0.0) / static_cast<double>(nCells()));
}

InterpolationSettings StudyMesh::SettingsOf(StudyCase const& theCase) const {
  InterpolationSettings settings;
  settings.method = theCase.method->searchMethod;
  settings.span = theCase.span;
  settings.number = question_.searchNumber;
  settings.distance = searchDistance_;
  return settings;
}

void StudyMesh::WriteSettings(std::string const& text) {
  ranks_.Together([&] { settings_.Write(text); });
}

}  // namespace zyngrad
