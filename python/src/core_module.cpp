#include <pybind11/pybind11.h>

#include "foundation/Zyn3dGradOpVersion.h"
#include "python/src/FaceInterpolation.h"
#include "python/src/Gradient.h"
#include "python/src/Mesh.h"
#include "python/src/MeshFindings.h"
#include "python/src/PointInterpolation.h"

PYBIND11_MODULE(_core, module) {
  module.doc() = "The compiled part of zyn3dgradop.";
  module.attr("version") = std::to_string(ZYN3DGRADOP_VERSION_MAJOR) + "." +
                           std::to_string(ZYN3DGRADOP_VERSION_MINOR) + "." +
                           std::to_string(ZYN3DGRADOP_VERSION_PATCH);
  zyn_python::BindMeshFindings(module);
  zyn_python::BindMesh(module);
  zyn_python::BindGradient(module);
  zyn_python::BindFaceInterpolation(module);
  zyn_python::BindPointInterpolation(module);
}
