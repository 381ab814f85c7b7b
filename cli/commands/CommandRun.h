#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/base/Progress.h"
#include "cli/base/Ranks.h"
#include "cli/options/MeshOptions.h"
#include "cli/output/OutputFolder.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// What a command works with while it runs: the ranks, the progress line, the mesh, the output folder. Command::Run
/// makes it.
class CommandRun {
 public:
  /// @param[in] arguments   the command line without the program
  /// @param[in] printsText  false: standard output is for something else
  CommandRun(Ranks const& ranks, std::vector<std::string> arguments, bool printsText);

  Ranks const& ranks() const { return ranks_; }
  std::vector<std::string> const& arguments() const { return arguments_; }
  Progress& progress() { return progress_; }

  /// The progress line as a function, for work that reports its own stages.
  std::function<void(std::string const&)> Stages();

  /// Collective. Loads the mesh that the command line names.
  void LoadMesh(std::string const& name, UserGroups const& groups,
                reference_host::MeshLoading const& loading);

  /// Prints the sizes and the quality of the mesh, if the run prints text. @pre LoadMesh
  void PrintMesh();

  reference_host::LoadedMesh& mesh() { return *mesh_; }
  reference_host::HostPartition& partition() { return *mesh_->partition; }

  /// Adds the mesh to a results file; does nothing if the command loaded none.
  void FillJson(nlohmann::ordered_json& json) const;

  /// Collective. @throws UsageError as OutputFolder does
  void OpenFolder(std::string const& path, OutputPlan plan);

  /// @pre the command writes files
  OutputFolder& folder() { return *folder_; }

 private:
  Ranks const& ranks_;
  std::vector<std::string> const arguments_;
  bool const printsText_;
  Progress progress_;
  std::optional<OutputFolder> folder_;
  std::string meshName_;
  std::optional<reference_host::LoadedMesh> mesh_;
};

}  // namespace zyngrad
