#pragma once

#include <vector>

#include "gradient/COperatorGradient.h"
#include "host/Zyn3dGV.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/host/GuardedFaces.h"
#include "tests/support/host/RecordingCom.h"
#include "tests/support/host/RecordingCommunication.h"
#include "tests/support/host/TestPartitionFaces.h"
#include "tests/support/mesh/MeshDescription.h"

namespace gradient_test {

/// Three cell arrays with guards, for a gradient.
struct GuardedGradient {
  explicit GuardedGradient(int nCell, double value = -7.5)
      : x(nCell, value), y(nCell, value), z(nCell, value) {}

  bool GuardsIntact() const { return x.GuardsIntact() && y.GuardsIntact() && z.GuardsIntact(); }

  GuardedArray<double> x, y, z;
};

/// A guarded copy of values [1..n].
GuardedArray<double> Guarded(std::vector<double> const& values);

/// Everything an operator borrows, made from a description: the records filled with guarded arrays, the
/// partition faces and the recording collectives. Record members that no gradient reads stay null.
class TestHost {
 public:
  /// `lendEmptyArrays`: groups without faces lend arrays of guards instead of null pointers.
  explicit TestHost(MeshDescription const& description, Exchange const& exchange = NoExchange(),
                    bool lendEmptyArrays = false);
  TestHost(TestHost const&) = delete;
  TestHost& operator=(TestHost const&) = delete;

  /// Hands all host objects to an operator.
  void ConnectTo(COperatorGradient& gradient);

  /// Whether every array that is lent for reading has the bits that it was made with.
  bool InputsUntouched() const;

  void UseNonBlockingExchange(bool nonBlocking) { gv.UseNonBlockingExch = nonBlocking ? 1 : 0; }

  CZYN3DFiniteVolumeMesh mesh;
  CZyn3dGV gv;
  TestPartitionFaces partitionFaces;
  RecordingCommunication communication;
  RecordingCom com;
  GuardedGradient previous;  ///< PrevGradX, PrevGradY, PrevGradZ

  GuardedArray<double> xc, yc, zc, volume;
  GuardedFaces inner, inlet, outlet, symmetry, wall;

 private:
  void LendCells();
  void LendInnerFaces();
  void LendInletAndOutlet();
  void LendSymmetryAndWall();

  MeshDescription description_;
};

/// An operator connected to a host, with a gradient type.
struct ConnectedOperator {
  explicit ConnectedOperator(TestHost& host, int type = 0) {
    host.ConnectTo(gradient);
    gradient.getGradType(type);
  }

  COperatorGradient gradient;
};

}  // namespace gradient_test
