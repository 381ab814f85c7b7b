#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "host/ZYNOptKer.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"

// Memory may run out at every allocation: the exception is the allocator's, the operator can be destroyed, and nothing
// stays behind.

namespace zyn_test::memory_exhaustion_test {
namespace {

using Array = GuardedArray<double>;

TestMesh SmallMesh() {
  LatticeOptions options;
  options.nx = options.ny = options.nz = 2;
  return LatticeMesh(options);
}

struct Bed {
  Bed() : host(SmallMesh(), folder.BaseFileName()), x(3, 0.5), support(3) {
    folder.Write(DefaultSettings());
    host.destroyed.reserve(100);
    TestMesh const mesh = SmallMesh();
    for (int c = 1; c <= mesh.NCell(); ++c) {
      Point const& p = mesh.Centre(c);
      cellOfBlock.push_back(c);
      tree.AddSurfaceToADTree(c, p.x + 1e-6, p.y + 1e-6, p.z + 1e-6, p.x - 1e-6, p.y - 1e-6, p.z - 1e-6);
    }
    int count = 0;
    tree.SearchNearBlockID(-9, -9, -9, 9, 9, 9, count, 0);  // its own memory is the host's affair
  }

  CZynRBFInternalObject* NewOperator() {
    CZynRBFInternalObject* const object = CellBed::NewConnected(host);
    object->m_pGV->ResetRealBlock = reals;
    object->m_pGV->ResetIntBlock = ints;
    return object;
  }

  void SetUpGradient(CZynRBFInternalObject& object) {
    object.InitialRBFSetting();
    object.DeriveRBFweighting();
    object.DeriveCellCoefficentBysolveDQfullMatrix(1);
  }

  void SetUpFaces(CZynRBFInternalObject& object) {
    object.faceToCellconnection_memoryallocate(1);
    object.CountingfaceToCellconnectionNumber(1, 1);
  }

  void SetUpPoints(CZynRBFInternalObject& object, int nPoint) {
    object.Initialize_IBInterpolateData(nullptr, nPoint, nullptr, nullptr, nullptr, 1, 0.0, 0);
    for (int const wanted : {4, 6}) {  // the second search replaces the rows of the first
      object.SearchIBADTress(x.Data(), nullptr, nullptr, 2, 0.0, wanted, cellOfBlock.data(), tree,
                             support.Data());
      object.DeriveIBCoefficentBysolveDQfullMatrix(1, x.Data(), x.Data(), x.Data(), support.Data());
    }
  }

  SettingsFolder folder;
  CellHost host;
  Array x, support;
  double reals[5];
  int ints[5];
  CZYNOptKer tree;
  std::vector<int> cellOfBlock{0};
};

/// Has the 1st, 2nd, 3rd... allocation of `setUp` fail, until there are no more. @return how many there were
template <typename SetUp>
long FailEachInTurn(Bed& bed, SetUp setUp) {
  auto const run = [&](long n) {
    long const live = LiveAllocations(), blocks = LiveBlocks();
    CZynRBFInternalObject* const object = bed.NewOperator();
    bool threw = false, happened = false;
    {
      FailingAllocation const failing(n);
      try {
        setUp(*object);
      } catch (std::bad_alloc const&) {
        threw = true;
      }
      happened = failing.Happened();
    }
    delete object;
    bed.host.destroyed.clear();
    EXPECT_EQ(threw, happened) << "allocation " << n;
    EXPECT_EQ(live, LiveAllocations()) << "allocation " << n;
    EXPECT_EQ(blocks, LiveBlocks()) << "allocation " << n;
    return happened;
  };
  long n = 0;
  testing::internal::CaptureStdout();
  run(0);  // what the C++ library keeps for good from the first use
  while (run(n + 1)) ++n;
  testing::internal::GetCapturedStdout();
  return n;
}

TEST(CellOperatorWithoutMemory, GradientSetUpLeavesNothingBehind) {
  Bed bed;
  EXPECT_LT(10, FailEachInTurn(bed, [&](CZynRBFInternalObject& object) { bed.SetUpGradient(object); }));
}

TEST(CellOperatorWithoutMemory, FaceSetUpLeavesNothingBehind) {
  Bed bed;
  EXPECT_LT(15, FailEachInTurn(bed, [&](CZynRBFInternalObject& object) { bed.SetUpFaces(object); }));
}

TEST(CellOperatorWithoutMemory, PointSetUpLeavesNothingBehind) {
  Bed bed;
  EXPECT_LT(20, FailEachInTurn(bed, [&](CZynRBFInternalObject& object) { bed.SetUpPoints(object, 3); }));
}

/// The tables of points, which a second set-up leaves behind.
void Release(RBFnode* points, int* kinds, int** conn, RBFnode** coef, double** valueCoef, int nPoint) {
  CZynRBFInternalObject holder;
  holder.m_pRBFnode = points;
  holder.m_piNodeKind = kinds;
  holder.m_ppIBConn = conn;
  holder.m_ppIBCoef = coef;
  holder.m_ppIBValueCoef = valueCoef;
  holder.m_iNIBNode = nPoint;
}

// The destructor frees as many rows as there are points, so more points must not come without the tables for them.
TEST(CellOperatorWithoutMemory, ASecondPointSetUpWithMorePointsCanFailAnywhere) {
  Bed bed;
  Array many(200, 0.5), support(200);
  bool happened = true;
  testing::internal::CaptureStdout();
  for (long n = 1; happened; ++n) {
    CZynRBFInternalObject* const object = bed.NewOperator();
    bed.SetUpPoints(*object, 3);
    RBFnode* const points = object->m_pRBFnode;
    int* const kinds = object->m_piNodeKind;
    int** const conn = object->m_ppIBConn;
    RBFnode** const coef = object->m_ppIBCoef;
    double** const valueCoef = object->m_ppIBValueCoef;
    {
      FailingAllocation const failing(n);
      try {
        object->Initialize_IBInterpolateData(nullptr, 200, nullptr, nullptr, nullptr, 1, 0.0, 0);
      } catch (std::bad_alloc const&) {
      }
      happened = failing.Happened();
    }
    EXPECT_EQ(object->m_ppIBConn == conn, object->m_iNIBNode == 3) << n;
    EXPECT_EQ(object->m_ppIBCoef == coef, object->m_iNIBNode == 3) << n;
    EXPECT_EQ(object->m_ppIBValueCoef == valueCoef, object->m_iNIBNode == 3) << n;
    bool const isNew = object->m_ppIBConn != conn;
    Release(object->m_pRBFnode != points ? points : nullptr, object->m_piNodeKind != kinds ? kinds : nullptr,
            isNew ? conn : nullptr, isNew ? coef : nullptr, isNew ? valueCoef : nullptr, 3);
    delete object;
  }
  testing::internal::GetCapturedStdout();
}

}  // namespace
}  // namespace zyn_test::memory_exhaustion_test
