#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/compare_ranks/WholeMesh.h"
#include "cli/field/Expression.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A field from a file on a whole mesh in one process.
class WholeField {
 public:
  /// @param[in] file  as for reference_host::ReadField
  /// Throws MeshError, and UsageError that names the cell if a value is not finite.
  WholeField(WholeMesh const& mesh, std::string const& file);
  ~WholeField();
  WholeField(WholeField const&) = delete;
  WholeField& operator=(WholeField const&) = delete;

  int nComponents() const;

  /// [1..NCell] of a partition of the mesh, halo cells included; for ghost cells, the values at the boundary faces.
  std::vector<double> ValuesOn(reference_host::HostPartition& partition, int component) const;

  /// @param[in] cell  of the mesh, from 0
  double AtCell(int cell, int component) const;

 private:
  struct Data;
  std::unique_ptr<Data> data_;
};

/// What a comparison applies the methods to: a formula, or a component of a field from a file.
class RankField {
 public:
  explicit RankField(Expression formula) : formula_(std::move(formula)) {}
  RankField(std::shared_ptr<WholeField const> file, int component)
      : file_(std::move(file)), component_(component) {}

  /// [1..NCell]. Throws UsageError where a formula is not finite.
  std::vector<double> ValuesOn(reference_host::HostPartition& partition) const;

  /// Null for a field from a file.
  Expression const* formula() const { return formula_ ? &*formula_ : nullptr; }

  /// The value of a cell, from 0. @pre formula() is null
  double AtCell(int cell) const { return file_->AtCell(cell, component_); }

 private:
  std::optional<Expression> formula_;
  std::shared_ptr<WholeField const> file_;
  int component_ = 0;
};

}  // namespace zyngrad
