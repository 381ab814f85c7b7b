#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"

namespace partitioned {

using reference_host::FaceMesh;
using reference_host::HostPartition;
using reference_host::Point;
using Field = std::function<double(Point const&)>;

/// A gradient, with centres and marks of the cells, by whole-mesh cell number (0-based).
struct CellResult {
  std::vector<Point> gradient;
  std::vector<Point> centre;
  std::vector<bool> atBoundary, atSymmetry, atCut;
};

/// One way of asking the operator for a gradient.
struct Method {
  std::string name;
  int type;
  int last;       ///< last argument of GradMethod
  bool weighted;  ///< GradMethod_Weighted with the coefficient 1 + x*x
};

inline std::vector<Method> AllMethods() {
  return {{"plain", 0, 1, false},
          {"iterated, 3 sweeps", 0, 3, false},
          {"weighted", 0, 1, true},
          {"least squares", 1, 0, false}};
}

inline std::vector<double> Filled(CZYN3DFiniteVolumeMesh const& mesh, Field const& field) {
  std::vector<double> values(static_cast<std::size_t>(mesh.NCell) + 1);
  for (int c = 1; c <= mesh.NCell; ++c) values[c] = field({mesh.xc[c], mesh.yc[c], mesh.zc[c]});
  return values;
}

inline void CallGradient(COperatorGradient& op, Method const& method, CZYN3DFiniteVolumeMesh const& mesh,
                         Field const& field, std::vector<double> (&g)[3]) {
  std::vector<double> phi = Filled(mesh, field);
  for (std::vector<double>& component : g) component.assign(phi.size(), 0.0);
  if (method.weighted) {
    std::vector<double> weight = Filled(mesh, [](Point const& p) { return 1 + p[0] * p[0]; });
    op.GradMethod_Weighted(phi.data(), g[0].data(), g[1].data(), g[2].data(), weight.data(), 1);
  } else {
    op.GradMethod(phi.data(), g[0].data(), g[1].data(), g[2].data(), method.last);
  }
}

/// Marks the interior cells at the faces of a group.
inline void Mark(FaceGroup const& faces, HostPartition const& partition, std::vector<bool>& marked) {
  for (int f = 1; f <= faces.count; ++f) marked[partition.globalCell()[faces.cv[f]] - 1] = true;
}

/// The gradient of `field` by `method` on `mesh` cut into `nParts` parts, each a thread of its own.
inline CellResult Gradient(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts,
                           Method const& method, Field const& field, bool nonBlocking) {
  std::vector<std::unique_ptr<HostPartition>> partitions;
  for (auto const& part : reference_host::SplitMesh(mesh, partOfCell, nParts))
    partitions.push_back(std::make_unique<HostPartition>(part));
  std::vector<std::vector<double>> results[3];
  for (auto& component : results) component.resize(static_cast<std::size_t>(nParts));

  reference_host::InProcessGroup group(nParts);
  reference_host::RunInProcess(group, [&](int p) {
    HostPartition& own = *partitions[p];
    reference_host::InProcessCommunication exchange(group, own);
    reference_host::InProcessReduction reduction(group);
    own.CompleteHalo(exchange);
    own.globals()->UseNonBlockingExch = nonBlocking ? 1 : 0;
    COperatorGradient op;
    op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op.getPartitionFace(own.partitionFaces());
    op.getCommunication(&exchange, &reduction);
    int type = method.type;
    op.getGradType(type);
    op.Initialize();
    std::vector<double> g[3];
    CallGradient(op, method, *own.mesh(), field, g);
    for (int d = 0; d < 3; ++d) results[d][p] = std::move(g[d]);
  });

  CellResult out;
  std::size_t const n = static_cast<std::size_t>(mesh.nCells);
  out.gradient.resize(n);
  out.centre.resize(n);
  out.atBoundary.assign(n, false);
  out.atSymmetry.assign(n, false);
  out.atCut.assign(n, false);
  for (int p = 0; p < nParts; ++p) {
    HostPartition& own = *partitions[p];
    CZYN3DFiniteVolumeMesh const& m = *own.mesh();
    for (int c = 1; c <= m.NInnerCells; ++c) {
      std::size_t const cell = static_cast<std::size_t>(own.globalCell()[c] - 1);
      out.gradient[cell] = {results[0][p][c], results[1][p][c], results[2][p][c]};
      out.centre[cell] = {m.xc[c], m.yc[c], m.zc[c]};
    }
    for (FaceKind const kind : face_groups::kGreenGaussBoundary) Mark(FacesOf(kind, m), own, out.atBoundary);
    Mark(FacesOf(FaceKind::Symmetry, m), own, out.atSymmetry);
    Mark(PartitionFaces(*own.partitionFaces(), m), own, out.atCut);
  }
  return out;
}

inline CellResult Gradient(FaceMesh const& mesh, Method const& method, Field const& field) {
  return Gradient(mesh, std::vector<int>(static_cast<std::size_t>(mesh.nCells), 0), 1, method, field, false);
}

}  // namespace partitioned
