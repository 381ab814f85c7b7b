#pragma once

#include <cstddef>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/TestField.h"
#include "reference_host/parallel/LoadField.h"
#include "reference_host/parallel/LoadMesh.h"

namespace CLI {
class App;
}

namespace zyngrad {

/// The options --field-file and --time as they were given.
struct FieldFileOptions {
  std::vector<std::string> files;
  std::string time;  ///< empty: not given
};

/// Adds --field-file, which may be repeated, and --time.
void AddFieldFileOptions(CLI::App& command, FieldFileOptions& options);

/// A field from a file on one partition: a scalar, or a vector of three components, without exact gradients.
struct FileField {
  std::string name;                                  ///< "p", "U": for tables and arrays
  std::vector<TestField> component;                  ///< 1 or 3
  std::vector<reference_host::PatchValues> patches;  ///< which values it took at the boundary

  bool IsVector() const { return component.size() == 3; }
};

/// The fields that a run reads from files, at one time or several.
///
/// A command that has it
/// - calls AddFieldFileOptions in AddTo and constructs it in ReadOptions;
/// - calls FindTimes in ReadInput, before the output folder is opened, because the names of the files that the run
///   writes depend on the times;
/// - reads the fields of one time after the other once it has the mesh.
class FieldFiles {
 public:
  FieldFiles() = default;

  /// @throws UsageError  --time without fields, with fields that have no times, or in a wrong form
  explicit FieldFiles(FieldFileOptions options);

  bool IsEmpty() const { return options_.files.empty(); }
  std::size_t count() const { return options_.files.size(); }

  /// The names of the fields, each of them different.
  std::vector<std::string> const& names() const { return names_; }

  /// What LoadField is given for a field at one of times(). @pre FindTimes
  std::string PathAt(std::size_t time, std::size_t field) const;

  /// Collective. Finds the times that --time chooses; without --time it does nothing.
  /// @throws UsageError or MeshError  the mesh has no times, or a time or field does not exist; the text names those
  ///                                  that do
  void FindTimes(Ranks const& ranks, std::string const& meshSpec);

  /// Whether --time was given, so that results belong to times.
  bool HasTimes() const { return !options_.time.empty(); }

  /// The chosen times, ascending; one without a name if --time was not given. @pre FindTimes
  std::vector<std::string> const& times() const { return times_; }

  /// Collective. Reads the fields of one time. Throws MeshError, or UsageError that names cell and place if a value is
  /// not finite.
  /// @param[in]     time      index into times()
  /// @param[in,out] warnings  receives a line for each field that takes values of cells where the file should have
  ///                          values of faces, unless it has this line
  std::vector<FileField> Read(Ranks const& ranks, reference_host::LoadedMesh& mesh, std::size_t time,
                              std::vector<std::string>& warnings) const;

  /// Adds "fieldFiles" and "time" to the question of a results file.
  void AddToQuestion(nlohmann::ordered_json& question) const;

 private:
  FileField ReadOne(Ranks const& ranks, reference_host::LoadedMesh& mesh, std::size_t field, std::size_t time,
                    std::vector<std::string>& warnings) const;

  FieldFileOptions options_;
  std::vector<std::string> names_;
  std::string folder_;  ///< of the times, on every rank
  std::vector<std::string> times_ = {""};
};

/// "U at the boundary: values of the file at "lid"; values of the cells at "frontAndBack"": one line for the first rank.
std::string BoundaryValuesInWords(FileField const& field);

/// Prints each of them in a line, and an empty line if there are any. For the first rank only.
void PrintWarnings(std::ostream& out, std::vector<std::string> const& warnings);

/// The fields of one time, borrowed.
struct FieldsAtTime {
  std::string const& time;
  std::vector<FileField> const& fields;
};

/// Prints BoundaryValuesInWords of each field, and again for a later time at which it changes; then an empty line. For
/// the first rank only.
void PrintBoundaryValues(std::ostream& out, std::vector<FieldsAtTime> const& times);

/// By patch: "file", "cell", "cellWithoutNormalPart" or "cellTurned".
nlohmann::ordered_json BoundaryValuesAsJson(FileField const& field);

}  // namespace zyngrad
