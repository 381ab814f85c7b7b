#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "gradient/COperatorGradient.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/support/watch/SettingsFolder.h"
#include "tests/unit/reference_host/TestMeshes.h"

// A solver applies its operators hundreds of thousands of times in a run: the process must not grow by it.

#if defined(ZYN_ADDRESS_SANITIZER)
/// AddressSanitizer would keep what is freed for a while, and the process would grow by that.
extern "C" char const* __asan_default_options() {
  return "quarantine_size_mb=0:thread_local_quarantine_size_kb=0";
}
#endif

namespace {

using reference_host::HostPartition;
using zyn_test::Printed;

constexpr int kApplications = 100000;
constexpr int kInnerFaces = 1;

double ResidentBytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word != "VmRSS:") continue;
    double kibibytes = 0;
    status >> kibibytes;
    return kibibytes * 1024;
  }
  return -1.0;
}

/// A leak of four bytes in each application would be seen, and so would 400 kB at once; what comes and goes with pages
/// of the C library would not.
void ExpectNoGrowthBy(std::function<void()> const& apply) {
  for (int i = 0; i < 1000; ++i) apply();
  double const before = ResidentBytes();
  ASSERT_GT(before, 0.0);
  for (int i = 0; i < kApplications; ++i) apply();
  EXPECT_LT(ResidentBytes() - before, 4.0 * kApplications);
}

/// One partition of 27 hexahedra that exchanges with nobody, and fields on it.
class ManyApplications : public ::testing::Test {
 protected:
  ManyApplications()
      : own_(reference_host::SplitMesh(test_meshes::HexBox(3, 3, 3), std::vector<int>(27, 0), 1).front()),
        group_(1),
        exchange_(group_, own_),
        reduction_(group_) {
    own_.CompleteHalo(exchange_);
    own_.SetBaseFileName(folder_.BaseFileName());
    for (std::vector<double>& field : fields_)
      field.assign(static_cast<std::size_t>(own_.mesh()->NCell) + 1, 0.5);
    for (int c = 1; c <= own_.mesh()->NCell; ++c)
      fields_[0][static_cast<std::size_t>(c)] = own_.mesh()->xc[c];
  }

  double* Field(int i) { return fields_[i].data(); }

  /// The gradient operator, set up for a type.
  void Prepare(COperatorGradient& gradient, int type) {
    gradient.getZyn3dGV(own_.globals(), nullptr, nullptr, own_.mesh());
    gradient.getPartitionFace(own_.partitionFaces());
    gradient.getCommunication(&exchange_, &reduction_);
    gradient.getGradType(type);
    Printed([&] { gradient.Initialize(); });
  }

  zyn_test::SettingsFolder folder_;
  HostPartition own_;
  reference_host::InProcessGroup group_;
  reference_host::InProcessCommunication exchange_;
  reference_host::InProcessReduction reduction_;
  std::vector<double> fields_[12];
};

TEST_F(ManyApplications, OfEachGreenGaussFormTakeNoMoreMemory) {
  COperatorGradient gradient;
  Prepare(gradient, 0);
  for (bool const nonBlocking : {false, true}) {
    own_.globals()->UseNonBlockingExch = nonBlocking ? 1 : 0;
    ExpectNoGrowthBy([&] { gradient.GradMethod(Field(0), Field(1), Field(2), Field(3), 1); });
    ExpectNoGrowthBy([&] { gradient.GradMethod(Field(0), Field(1), Field(2), Field(3), 3); });
    ExpectNoGrowthBy(
        [&] { gradient.GradMethod_Weighted(Field(0), Field(1), Field(2), Field(3), Field(4), 1); });
    ExpectNoGrowthBy([&] {
      gradient.GradMethod_3(Field(0), Field(4), Field(5), Field(1), Field(2), Field(3), Field(6), Field(7),
                            Field(8), Field(9), Field(10), Field(11));
    });
  }
}

TEST_F(ManyApplications, OfLeastSquaresTakeNoMoreMemory) {
  COperatorGradient gradient;
  Prepare(gradient, 1);
  ExpectNoGrowthBy([&] { gradient.GradMethod(Field(0), Field(1), Field(2), Field(3), 1); });
}

TEST_F(ManyApplications, OfTheRadialBasisGradientTakeNoMoreMemory) {
  COperatorGradient gradient;
  Prepare(gradient, 2);
  ExpectNoGrowthBy([&] { gradient.GradMethod(Field(0), Field(1), Field(2), Field(3), 1); });
}

TEST_F(ManyApplications, OfTheFaceOperatorTakeNoMoreMemory) {
  CZynFaceRBFInternalObject faces;
  faces.getZyn3dGV(own_.globals(), nullptr, nullptr, own_.mesh());
  faces.getPartitionFace(own_.partitionFaces());
  faces.getCommunication(&exchange_);
  Printed([&] { ASSERT_EQ(0, faces.Initialize_FaceInterpolateData(kInnerFaces)); });
  std::vector<double> values[4];
  for (std::vector<double>& v : values) v.resize(static_cast<std::size_t>(own_.mesh()->NInnerFaces) + 1);
  ExpectNoGrowthBy([&] {
    faces.Multiply_FaceRBFCoefficent(Field(0), values[0].data(), values[1].data(), values[2].data(),
                                     values[3].data());
  });
}

TEST_F(ManyApplications, OfThePointOperatorTakeNoMoreMemory) {
  CZynIBRBFInternalObject points;
  points.getZyn3dGV(own_.globals(), nullptr, nullptr, own_.mesh());
  points.getPartitionFace(own_.partitionFaces());
  constexpr int kPoints = 5;
  double at[kPoints + 1] = {0.0, 0.1, 0.3, 0.5, 0.7, 0.9};
  std::vector<double> usable(fields_[0].size(), -1.0);
  Printed([&] { ASSERT_EQ(0, points.Initialize_IBInterpolateData(usable.data(), kPoints, at, at, at)); });
  double results[4][kPoints + 1];
  ExpectNoGrowthBy(
      [&] { points.Multiply_IBRBFCoefficent(Field(0), results[0], results[1], results[2], results[3]); });
}

}  // namespace
