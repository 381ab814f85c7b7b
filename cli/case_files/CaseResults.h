#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/case_files/PlacedFiles.h"
#include "reference_host/openfoam/FoamFieldSource.h"
#include "reference_host/parallel/CaseField.h"
#include "reference_host/parallel/LoadMesh.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace zyngrad {

/// A result on this rank, to be written as a field of the case.
struct CaseQuantity {
  std::string name;            ///< "vorticity"
  int nComponents = 1;         ///< 1, 3, 6 or 9, in the order of OpenFOAM
  int power = 1;               ///< its unit is (unit of the source / length)^power
  std::vector<double> values;  ///< [nComponents * (c - 1) + k] of the interior cells c = 1..NInnerCells
};

/// Writes results into the time folders of the case that the mesh and the fields come from, beside those fields and in
/// their format: the first rank for a whole case, each rank into its processor folder for a decomposed one. All files of
/// all ranks appear, or none; see PlacedFiles. All functions are collective and throw the same on every rank.
class CaseResults {
 public:
  /// Borrows the mesh. @throws MeshError  if it is not of an OpenFOAM case
  CaseResults(Ranks const& ranks, reference_host::LoadedMesh& mesh, bool overwrite);

  /// Checks that results of a field can be written: before the work, so that nothing is computed in vain.
  /// @param[in] fieldSpec  as for LoadField, TIME/NAME at its end
  /// @param[in] names      of the results
  /// @throws UsageError or MeshError
  void Check(std::string const& fieldSpec, std::vector<std::string> const& names) const;

  /// Writes a result of a field, still under a hidden name. @throws UsageError or MeshError
  void Write(std::string const& fieldSpec, CaseQuantity const& quantity);

  /// Moves all files to their places. @throws UsageError  destroying the object then puts everything back
  void Place();

  /// Makes them stay. Not collective.
  void Keep();

  /// What was written, as TIME/NAME.
  std::vector<std::string> const& names() const { return names_; }

 private:
  /// Where the results of a field go on this rank, and how.
  struct Target {
    std::string folder, time;
    reference_host::FoamFieldSource source;
  };

  /// Whether this rank puts files into folders.
  bool WritesFiles() const { return maker_.Writes() && (ranks_.IsFirst() || !maker_.IsCollated()); }

  Target TargetOf(std::string const& fieldSpec) const;
  using Take = std::function<void(std::string_view)>;
  void MakeText(Target const& target, reference_host::FoamOutput const& field, Take const& take) const;
  void MakeWholeText(Target const& target, reference_host::FoamOutput const& field, Take const& take) const;
  void MakeCollatedText(Target const& target, reference_host::FoamOutput const& field,
                        Take const& take) const;
  void WriteFile(Target const& target, reference_host::FoamOutput const& field);
  static std::string PathOf(Target const& target, std::string const& name, bool isCompressed);

  Ranks const& ranks_;
  reference_host::MpiCommunicator communicator_;
  reference_host::CaseFieldMaker maker_;
  PlacedFiles files_;
  std::vector<std::string> names_;
};

}  // namespace zyngrad
