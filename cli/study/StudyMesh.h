#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/options/InterpolationSettings.h"
#include "cli/study/StudyQuestion.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// One mesh of a study, with what every kind of method needs of it.
class StudyMesh {
 public:
  /// Collective. Loads the mesh.
  /// @param[in] logFile  receives what the operators print on this rank
  StudyMesh(Ranks const& ranks, StudyQuestion const& question, std::string const& name, std::string logFile,
            std::function<void(std::string const&)> const& progress);

  Ranks const& ranks() const { return ranks_; }
  StudyQuestion const& question() const { return question_; }
  std::string const& logFile() const { return logFile_; }
  reference_host::LoadedMesh& loaded() { return loaded_; }
  reference_host::HostPartition& partition() { return *loaded_.partition; }
  std::int64_t nCells() const { return loaded_.summary.nCells; }

  /// Collective. Cube root of the mean volume of a cell, L.
  double Spacing();

  /// Whether an interior cell, 1-based, has a boundary face.
  bool IsAtBoundary(int cell) const { return isBoundaryCell_[static_cast<std::size_t>(cell)] != 0; }
  std::vector<char> const& isBoundaryCell() const { return isBoundaryCell_; }

  /// The settings of a case that interpolates.
  InterpolationSettings SettingsOf(StudyCase const& theCase) const;

  /// Collective. Writes the settings that the operator of each rank reads next.
  void WriteSettings(std::string const& text);

 private:
  Ranks const& ranks_;
  StudyQuestion const& question_;
  std::string const logFile_;
  reference_host::LoadedMesh loaded_;
  TemporarySettings settings_;
  std::vector<char> isBoundaryCell_;
  double searchDistance_ = 0.0;  ///< L
};

}  // namespace zyngrad
