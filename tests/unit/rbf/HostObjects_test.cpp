#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "tests/support/host/HostObjects.h"
#include "tests/support/watch/Undestroyed.h"
#include "tests/unit/rbf/Operators.h"

// What the setters of all three operators store, answer, and add to the failure text.

namespace zyn_test::host_objects_test {
namespace {

std::string const kPrefix = "Operator Gradient Error = ";
std::string const kNoGlobals = "Can not get the object of Global Variables\n";
std::string const kNoPartFaces = "Can not get the object of Part Faces\n";
std::string const kNoCommunication = "Can not get the object of Communication\n";

/// A new operator with host objects on the stack. It is not destroyed, since the cell operator would destroy them.
template <typename Operator>
class RadialBasisSetters : public ::testing::Test {
 protected:
  using Object = typename Operator::Object;

  std::string FailureText() { return (*object).*Operator::kFailureText; }
  std::uint64_t FirstWordOfGPU() {
    std::uint64_t word = 0;
    std::memcpy(&word, static_cast<void const*>(&host.gpu), sizeof word);
    return word;
  }

  template <typename Member>
  auto Get(Member member) {
    return (*object).*member;
  }

  int SetAll() { return object->getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &mesh); }

  HostObjects host;
  CZYN3DFiniteVolumeMesh mesh;
  Undestroyed<Object> object;
};

TYPED_TEST_SUITE(RadialBasisSetters, AllOperators, OperatorNames);

TYPED_TEST(RadialBasisSetters, FindNothingInANewObject) {
  EXPECT_EQ(nullptr, this->Get(TypeParam::kGlobals));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kGPU));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kOpenMP));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kMesh));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kPartitionFaces));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kCommunication));
  EXPECT_EQ(0U, this->Get(TypeParam::kFirstWordOfGPU));
  EXPECT_EQ(kPrefix, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, StoreAllHostObjects) {
  EXPECT_EQ(1, this->SetAll());
  EXPECT_EQ(1, this->object->getPartitionFace(&this->host.partitionFaces));
  EXPECT_EQ(1, this->object->getCommunication(&this->host.communication));
  EXPECT_EQ(&this->host.globals, this->Get(TypeParam::kGlobals));
  EXPECT_EQ(&this->host.gpu, this->Get(TypeParam::kGPU));
  EXPECT_EQ(&this->host.openMP, this->Get(TypeParam::kOpenMP));
  EXPECT_EQ(&this->mesh, this->Get(TypeParam::kMesh));
  EXPECT_EQ(&this->host.partitionFaces, this->Get(TypeParam::kPartitionFaces));
  EXPECT_EQ(&this->host.communication, this->Get(TypeParam::kCommunication));
  EXPECT_EQ(kPrefix, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, CopyTheFirstWordOfTheAcceleratorObject) {
  this->object->getZyn3dGV(&this->host.globals, &this->host.gpu, nullptr, nullptr);
  EXPECT_EQ(this->FirstWordOfGPU(), this->Get(TypeParam::kFirstWordOfGPU));
}

TYPED_TEST(RadialBasisSetters, KeepFormerValuesForNullsBesideValidGlobals) {
  this->SetAll();
  CZyn3dGV otherGlobals;
  EXPECT_EQ(1, this->object->getZyn3dGV(&otherGlobals, nullptr, nullptr, nullptr));
  EXPECT_EQ(&otherGlobals, this->Get(TypeParam::kGlobals));
  EXPECT_EQ(&this->host.gpu, this->Get(TypeParam::kGPU));
  EXPECT_EQ(&this->host.openMP, this->Get(TypeParam::kOpenMP));
  EXPECT_EQ(&this->mesh, this->Get(TypeParam::kMesh));
  EXPECT_EQ(this->FirstWordOfGPU(), this->Get(TypeParam::kFirstWordOfGPU));
  EXPECT_EQ(kPrefix, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, NullGlobalsFailAndNothingIsStored) {
  EXPECT_EQ(-1, this->object->getZyn3dGV(nullptr, &this->host.gpu, &this->host.openMP, &this->mesh));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kGlobals));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kGPU));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kOpenMP));
  EXPECT_EQ(nullptr, this->Get(TypeParam::kMesh));
  EXPECT_EQ(0U, this->Get(TypeParam::kFirstWordOfGPU));
  EXPECT_EQ(kPrefix + kNoGlobals, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, NullGlobalsFailAndKeepAllFormerObjects) {
  this->SetAll();
  this->object->getPartitionFace(&this->host.partitionFaces);
  this->object->getCommunication(&this->host.communication);
  CZYNGVGPU otherGPU;
  CZYNGVOpenMP otherOpenMP;
  CZYN3DFiniteVolumeMesh otherMesh;
  EXPECT_EQ(-1, this->object->getZyn3dGV(nullptr, &otherGPU, &otherOpenMP, &otherMesh));
  EXPECT_EQ(&this->host.globals, this->Get(TypeParam::kGlobals));
  EXPECT_EQ(&this->host.gpu, this->Get(TypeParam::kGPU));
  EXPECT_EQ(this->FirstWordOfGPU(), this->Get(TypeParam::kFirstWordOfGPU));
  EXPECT_EQ(&this->host.openMP, this->Get(TypeParam::kOpenMP));
  EXPECT_EQ(&this->mesh, this->Get(TypeParam::kMesh));
  EXPECT_EQ(&this->host.partitionFaces, this->Get(TypeParam::kPartitionFaces));
  EXPECT_EQ(&this->host.communication, this->Get(TypeParam::kCommunication));
  EXPECT_EQ(kPrefix + kNoGlobals, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, NullPartitionFacesFailAndKeepTheFormer) {
  this->object->getPartitionFace(&this->host.partitionFaces);
  EXPECT_EQ(-1, this->object->getPartitionFace(nullptr));
  EXPECT_EQ(&this->host.partitionFaces, this->Get(TypeParam::kPartitionFaces));
  EXPECT_EQ(kPrefix + kNoPartFaces, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, NullCommunicationFailsAndKeepsTheFormer) {
  this->object->getCommunication(&this->host.communication);
  EXPECT_EQ(-1, this->object->getCommunication(nullptr));
  EXPECT_EQ(&this->host.communication, this->Get(TypeParam::kCommunication));
  EXPECT_EQ(kPrefix + kNoCommunication, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, GatherTheFailuresInTheirOrder) {
  this->object->getCommunication(nullptr);
  this->object->getZyn3dGV(nullptr, nullptr, nullptr, nullptr);
  this->object->getPartitionFace(nullptr);
  this->object->getCommunication(nullptr);
  EXPECT_EQ(kPrefix + kNoCommunication + kNoGlobals + kNoPartFaces + kNoCommunication, this->FailureText());
}

TYPED_TEST(RadialBasisSetters, CutTheFailureTextAt1023Characters) {
  std::string all = kPrefix;
  for (int i = 0; i < 40; ++i) {
    this->object->getPartitionFace(nullptr);
    all += kNoPartFaces;
    EXPECT_EQ(all.substr(0, 1023), this->FailureText());
  }
}

TYPED_TEST(RadialBasisSetters, FillMembersOfTheSizesThatSolversKnow) {
  EXPECT_TRUE(std::has_virtual_destructor<typename TypeParam::Object>::value);
  EXPECT_EQ(1024U, sizeof((*this->object).*TypeParam::kFailureText));
  EXPECT_EQ(1024U, sizeof((*this->object).*TypeParam::kSettingsFileName));
  EXPECT_EQ(8U, sizeof((*this->object).*TypeParam::kFirstWordOfGPU));
}

}  // namespace
}  // namespace zyn_test::host_objects_test
