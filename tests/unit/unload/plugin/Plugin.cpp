// A part of a solver that is loaded, uses every operator on a small mesh, and is unloaded again.

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "gradient/COperatorGradient.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"

namespace {

using reference_host::HostPartition;

using Field = std::vector<double>;  // element 0 unused

reference_host::MeshPart Cube() {
  reference_host::BoxSpec spec;
  spec.nx = spec.ny = spec.nz = 3;
  spec.perturb = 0.2;
  reference_host::FaceMesh mesh = reference_host::MakeBox(spec);
  for (reference_host::Patch& patch : mesh.patches) patch.group = reference_host::BoundaryGroup::Wall;
  return reference_host::SplitMesh(mesh, std::vector<int>(27, 0), 1).front();
}

struct Solver {
  explicit Solver(std::string const& folder)
      : settingsFile(folder + "/run.rbf"),
        own(Cube()),
        group(1),
        exchange(group, own),
        reduction(group),
        phi(static_cast<std::size_t>(own.mesh()->NCell) + 1, 1.0),
        gx(phi),
        gy(phi),
        gz(phi) {
    own.SetBaseFileName(folder + "/run.cas");
    own.CompleteHalo(exchange);
    for (std::size_t c = 1; c < phi.size(); ++c) phi[c] = own.mesh()->xc[c];
  }

  void UseGradients() {
    for (int type : {0, 1}) {
      COperatorGradient gradient;
      gradient.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
      gradient.getPartitionFace(own.partitionFaces());
      gradient.getCommunication(&exchange, &reduction);
      gradient.getGradType(type);
      gradient.Initialize();
      gradient.GradMethod(phi.data(), gx.data(), gy.data(), gz.data(), 2);
      sum += gx[14];
    }
  }

  void UseCellOperator() {
    CZynRBFInternalObject cells;
    cells.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    cells.getPartitionFace(own.partitionFaces());
    cells.InitialRBFSetting();
    cells.DeriveRBFweighting();
    cells.MultiplyRBFCoefficent(phi.data(), gx.data(), gy.data(), gz.data());
    sum += gx[14];
    cells.m_pGV = nullptr;  // it would destroy what is not its own
    cells.m_pPartFace = nullptr;
  }

  void UseFaceOperator() {
    CZynFaceRBFInternalObject faces;
    faces.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    faces.getPartitionFace(own.partitionFaces());
    // Method 3 prints a line per face.
    std::ofstream(settingsFile)
        << "1004\nSpan = 50\niSearch_method = 3\nSearch_distance = 0\nSearch_number = 8\n"
           "Debug mode = 1\n";
    faces.Initialize_FaceInterpolateData(1);
    Field values(static_cast<std::size_t>(faces.NFace) + 1), zero(values);
    faces.Multiply_FaceRBFCoefficent(phi.data(), values.data(), zero.data(), zero.data(), zero.data());
    sum += values[1];
  }

  void UsePointOperator() {
    CZynIBRBFInternalObject points;
    points.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    points.getPartitionFace(own.partitionFaces());
    Field mark(phi.size(), -1.0), at = {0.0, 0.4, 0.6}, value(at), dx(at), dy(at), dz(at);
    points.Initialize_IBInterpolateData(mark.data(), 2, at.data(), at.data(), at.data());
    points.Multiply_IBRBFCoefficent(phi.data(), value.data(), dx.data(), dy.data(), dz.data());
    sum += value[1];
  }

  void UseContainers() {
    CZYNVector<double, 1> const empty;
    sum += empty[0];
  }

  std::string settingsFile;
  HostPartition own;
  reference_host::InProcessGroup group;
  reference_host::InProcessCommunication exchange;
  reference_host::InProcessReduction reduction;
  Field phi, gx, gy, gz;
  double sum = 0.0;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int UseEveryOperator(char const* folder) {
  Solver solver(folder);
  solver.UseGradients();
  solver.UseCellOperator();
  solver.UseFaceOperator();
  solver.UsePointOperator();
  solver.UseContainers();
  return std::isfinite(solver.sum) ? 1 : 0;
}
