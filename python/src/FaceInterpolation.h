#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "python/src/CallLock.h"
#include "python/src/Globals.h"
#include "python/src/InterpolationSettings.h"
#include "python/src/Mesh.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"

namespace zyn_python {

/// Radial-basis interpolation of cell fields to the faces of one kind.
class FaceInterpolation {
 public:
  /// Throws ValueError for a setting that is out of range or a mesh without nodes.
  FaceInterpolation(pybind11::object mesh, std::string const& kind, int method, int span, int number);

  pybind11::object Call(pybind11::object const& phi, pybind11::object out);

  /// (3, faces) the places of the values, L.
  pybind11::array Targets() const;

  pybind11::object* mesh() { return &mesh_; }
  char const* kindName() const { return MembersOf(kind_).name; }
  int nFaces() const { return nFaces_; }

 private:
  pybind11::object mesh_;
  Mesh& m_;  ///< in mesh_
  FaceKind const kind_;
  int const nFaces_;
  InterpolationSettings settings_;
  Globals globals_;
  CallLock lock_;
  CZynFaceRBFInternalObject op_;
  std::vector<double> cleared_;  ///< [1..nFaces_] what the operator sets to 0 besides the values
};

void BindFaceInterpolation(pybind11::module_& module);

}  // namespace zyn_python
