#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "python/src/CallLock.h"
#include "python/src/Globals.h"
#include "python/src/InterpolationSettings.h"
#include "python/src/Mesh.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyn_python {

/// Radial-basis interpolation of cell fields and their gradients to points.
class PointInterpolation {
 public:
  /// Throws ValueError for a setting that is out of range or a mesh without nodes.
  PointInterpolation(pybind11::object mesh, pybind11::object const& points, int method, int span, int number,
                     pybind11::object const& usable);

  pybind11::object Call(pybind11::object const& phi, pybind11::object out);
  pybind11::object WithGradient(pybind11::object const& phi, pybind11::object out);

  pybind11::object* mesh() { return &mesh_; }
  pybind11::ssize_t nPoints() const { return nPoints_; }

 private:
  std::vector<double> Marks(pybind11::object const& usable) const;
  void Apply(double const* field, double* value, double* gx, double* gy, double* gz);

  pybind11::object mesh_;
  Mesh& m_;  ///< in mesh_
  pybind11::ssize_t nPoints_ = 0;
  InterpolationSettings settings_;
  Globals globals_;
  CallLock lock_;
  CZynIBRBFInternalObject op_;
  std::vector<double> gradient_;  ///< where the operator writes what the caller does not want
};

void BindPointInterpolation(pybind11::module_& module);

}  // namespace zyn_python
