#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>

#include "gradient/COperatorGradient.h"
#include "python/src/ArrayChecks.h"
#include "python/src/CallLock.h"
#include "python/src/Globals.h"
#include "python/src/Mesh.h"

namespace zyn_python {

/// Frees all that its set-up has made, the weights of the radial-basis gradient included.
class ReleasedGradient : public COperatorGradient {
 public:
  ~ReleasedGradient() { Release(); }
};

/// A gradient of cell fields by one method, set up for one mesh.
class Gradient {
 public:
  /// Throws ValueError for an unknown method or a mesh without what it needs, RuntimeError if the set-up fails.
  Gradient(pybind11::object mesh, std::string method, double span, bool shapeNormalize, bool exchangeResult);

  // The operations of the class in Python; see the doc strings in Gradient.cpp.
  pybind11::object Call(pybind11::object const& phi, pybind11::object out, pybind11::object const& sweeps);
  pybind11::object Three(pybind11::object const& phi, pybind11::object out);
  pybind11::object Weighted(pybind11::object const& phi, pybind11::object const& weight,
                            pybind11::object out);
  void Update();

  pybind11::object* mesh() { return &mesh_; }
  std::string const& method() const { return method_; }

 private:
  enum class Form { kPlain, kIterated, kLeastSquares, kRadialBasis };

  void Wire(COperatorGradient& op, CZYN3DFiniteVolumeMesh* record);
  void SetUp(int (COperatorGradient::*step)());
  COperatorGradient& GreenGauss() { return other_ != nullptr ? *other_ : op_; }
  CallLock& lock() { return m_.host().IsPartitioned() ? m_.lock() : lock_; }
  int Sweeps(pybind11::object const& sweeps) const;
  void Apply(double const* phi, double* out, int nSweeps);
  void ClearEmptyFaces(double* out, int nRows) const;

  pybind11::object mesh_;
  Mesh& m_;                    ///< in mesh_
  pybind11::ssize_t const n_;  ///< length of a field
  int const nEmptyFaces_;
  std::string const method_;
  Form const form_;
  double const span_;
  bool const shapeNormalize_, exchangesResult_;
  CallLock lock_;
  Globals globals_;
  ReleasedGradient op_;

  /// Green-Gauss, if `op_` is something else: it takes a record without the ghost cells of empty faces.
  std::unique_ptr<COperatorGradient> other_;
};

void BindGradient(pybind11::module_& module);

}  // namespace zyn_python
