#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/host/OperatorHosts.h"
#include "tests/support/rbf_ib/PlainPointOperator.h"
#include "tests/support/watch/SettingsFolder.h"

namespace zyn_test {

using Array = GuardedArray<double>;

/// A settings file with the given values, in the object's own layout.
inline std::string Settings(std::string const& span, std::string const& method, std::string const& distance,
                            std::string const& number) {
  return "1002\nSpan              = " + span + "\niSearch_method    = " + method +
         "\nSearch_distance   = " + distance + "\nSearch_number     = " + number + "\n";
}

inline std::string Settings(PointSettings const& s) {
  return Settings(std::to_string(s.span), std::to_string(s.method), "0.0", std::to_string(s.number));
}

constexpr double kUsable = -1.0, kUnusable = 0.0;

/// [1..n]
inline Array AllUsable(int n) { return Array(n, kUsable); }

/// Only the interior cells.
inline Array InteriorUsable(TestMesh const& mesh) {
  Array marks(mesh.NCell(), kUnusable);
  for (int c = 1; c <= mesh.nInnerCells; ++c) marks[c] = kUsable;
  return marks;
}

/// Coordinates of points as a solver hands them over.
struct PointArrays {
  explicit PointArrays(std::vector<Point> const& points)
      : x(static_cast<int>(points.size())), y(x), z(x), list(points) {
    for (int i = 1; i <= x.Size(); ++i) {
      Point const& p = points[static_cast<std::size_t>(i - 1)];
      x[i] = p.x;
      y[i] = p.y;
      z[i] = p.z;
    }
  }

  int Size() const { return x.Size(); }

  Array x, y, z;
  std::vector<Point> list;  ///< the same, point i at i - 1
};

/// An object that was given all host objects of a mesh, with a folder for its settings file.
class PointBed {
 public:
  /// Without settings there is no file before the object writes one.
  explicit PointBed(TestMesh const& mesh) : host(mesh, folder.BaseFileName()) { Connect(object, host); }
  PointBed(TestMesh const& mesh, std::string const& settings) : PointBed(mesh) { folder.Write(settings); }
  PointBed(TestMesh const& mesh, PointSettings const& settings) : PointBed(mesh, Settings(settings)) {}
  PointBed(PointBed const&) = delete;
  PointBed& operator=(PointBed const&) = delete;

  static void Connect(CZynIBRBFInternalObject& object, PointHost& host) {
    EXPECT_EQ(1, object.getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &host.mesh));
    EXPECT_EQ(1, object.getPartitionFace(&host.partitionFaces));
    EXPECT_EQ(1, object.getCommunication(&host.communication));
  }

  /// The whole set-up. @return what was printed
  std::string SetUp(Array& marks, PointArrays& points) {
    return Printed([&] {
      EXPECT_EQ(0, object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(),
                                                       points.y.Data(), points.z.Data()));
    });
  }
  std::string SetUp(Array marks, std::vector<Point> const& points) {
    PointArrays arrays(points);
    return SetUp(marks, arrays);
  }

  /// The steps before the search of points, one by one.
  void SetUpToTree(Array& marks, int nPoint) {
    Printed([&] {
      object.ChangeFileName(object.RBFFileName, ".rbf", object.m_pGV->BaseFileName);
      EXPECT_EQ(0, object.Initialize_IB_memory_allocate(nPoint));
      EXPECT_EQ(1, object.SetIBNodeCollation());
      EXPECT_EQ(0, object.Create_ppRBFiNodeConn(marks.Data()));
      EXPECT_EQ(0, object.ReadRBFbackdoorfile());
      EXPECT_EQ(0, object.SetIBADTress(marks.Data()));
    });
  }

  /// Members of the stencil of point i.
  std::vector<int> Stencil(int i) const {
    int const* const row = object.m_ppIBConn[i];
    return std::vector<int>(row + 1, row + 1 + row[0]);
  }

  SettingsFolder folder;
  PointHost host;
  CZynIBRBFInternalObject object;
};

}  // namespace zyn_test
