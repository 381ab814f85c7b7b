#pragma once

#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "host/ZYNKNCompParm.h"
#include "host/Zyn3dGV.h"
#include "reference_host/parallel/LoadMesh.h"

namespace benchmarks {

/// A box mesh with a field on it, ready for interpolation to faces and points.
class InterpolationCase {
 public:
  explicit InterpolationCase(std::string const& box)
      : loaded_(reference_host::LoadMesh(MPI_COMM_WORLD, box, {}, {})), mesh(*loaded_.partition->mesh()) {
    loaded_.partition->SetBaseFileName("unused.cas");
    phi.resize(static_cast<std::size_t>(mesh.NCell) + 1);
    for (int c = 1; c <= mesh.NCell; ++c) phi[c] = std::sin(3 * mesh.xc[c]) * mesh.yc[c] + mesh.zc[c];
  }

  template <class Object>
  void Connect(Object& object) {
    object.getZyn3dGV(loaded_.partition->globals(), nullptr, nullptr, &mesh);
    object.getPartitionFace(loaded_.partition->partitionFaces());
    object.SetZYNKNCMP(&parameters);
  }

  /// [1..nPoint] coordinates of random places, the same at each call.
  std::vector<double> RandomPlaces(int nPoint, int direction) const {
    double const* const nodes = direction == 0 ? mesh.xn : direction == 1 ? mesh.yn : mesh.zn;
    auto const [low, high] = std::minmax_element(nodes + 1, nodes + 1 + mesh.NNode);
    std::mt19937 random(static_cast<unsigned>(3 + direction));
    std::uniform_real_distribution<double> anywhere(*low, *high);
    std::vector<double> places(static_cast<std::size_t>(nPoint) + 1);
    for (double& place : places) place = anywhere(random);
    return places;
  }

  /// Marks that let points use all interior cells.
  std::vector<double> AllCells() const {
    std::vector<double> marks(static_cast<std::size_t>(mesh.NCell) + 1, 1.0);
    std::fill_n(marks.begin() + 1, mesh.NInnerCells, -1.0);
    return marks;
  }

 private:
  /// Settings that come from the program.
  class Parameters : public CZYNKNCMPCompParm {
   public:
    CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &face; }
    CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points; }

    CZYNCMP_FaceRBF_Parm face;
    CZYNCMP_IBRBF_Parm points;
  };

  reference_host::LoadedMesh loaded_;

 public:
  CZYN3DFiniteVolumeMesh& mesh;
  Parameters parameters;
  std::vector<double> phi;
};

}  // namespace benchmarks
