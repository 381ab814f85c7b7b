#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <thread>

#include "gradient/COperatorGradient.h"
#include "gradient/COperatorGradientImpl.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/watch/AllocationCount.h"

// The facade: what construction leaves, what each setter stores and answers, the failure text, the reduction
// of Initialize, which method a gradient type selects, and who frees what.

namespace zyn_test::facade_test {
namespace {

std::string const kPrefix = "Operator Gradient Error = ";
std::string const kNoGlobals = "Can not get the object of Global Variables\n";
std::string const kNoPartFaces = "Can not get the object of Part Faces\n";
std::string const kNoCommunication = "Can not get the object of Communication\n";
std::string const kNoCom = "Can not get the object of CZYNCom\n";
std::string const kWrongType = "Default grad type is wrong\n";

int SetType(COperatorGradient& gradient, int type) { return gradient.getGradType(type); }

TestMesh SomeMesh(std::uint64_t seed = 11) {
  Random random(seed);
  TestMesh mesh;
  while (mesh.nInnerCells < 20 || mesh.inner.empty() || mesh.partition.empty() || mesh.wall.empty() ||
         mesh.inlet.empty() || mesh.outlet.empty() || mesh.symmetry.empty())
    mesh = RandomMesh(random);
  return mesh;
}

Field SomeField(TestMesh const& mesh, std::uint64_t seed = 12) {
  Random random(seed);
  return TameField(random, mesh);
}

// ---------------------------------------------------------------------------------------------- construction

TEST(GradientFacade, ConstructionCreatesThePrivateStateWithItsInitialValues) {
  COperatorGradient const gradient;
  COperatorGradientImpl const* state = gradient.m_pImpl;
  ASSERT_NE(nullptr, state);
  EXPECT_EQ(nullptr, state->m_pGV);
  EXPECT_EQ(nullptr, state->m_pMesh);
  EXPECT_EQ(nullptr, state->m_pPartFace);
  EXPECT_EQ(nullptr, state->m_pComm);
  EXPECT_EQ(nullptr, state->m_pCom);
  EXPECT_EQ(nullptr, state->m_pGVGPU);
  EXPECT_EQ(nullptr, state->m_pGVOpenMP);
  EXPECT_EQ(nullptr, state->m_pRBF);
  EXPECT_EQ(1, state->m_iMaxGradIter);
  EXPECT_EQ(0, state->m_iGradType);
  EXPECT_EQ(kPrefix, state->m_szError);
  EXPECT_EQ(1024u, sizeof state->m_szError);
  for (double const* array : {state->m_pSxx, state->m_pSyy, state->m_pSzz, state->m_pSxy, state->m_pSxz,
                              state->m_pSyz, state->m_pBx, state->m_pBy, state->m_pBz})
    EXPECT_EQ(nullptr, array);
}

TEST(GradientFacade, MembersOfThePrivateStateStandInTheirDeclaredOrder) {
  COperatorGradient const gradient;
  COperatorGradientImpl const& s = *gradient.m_pImpl;
  void const* const members[] = {
      &s.m_pGV,     &s.m_pMesh, &s.m_pPartFace,    &s.m_pComm,     &s.m_pCom,    &s.m_pGVGPU, &s.m_pGVOpenMP,
      &s.m_GPUHead, &s.m_pRBF,  &s.m_iMaxGradIter, &s.m_iGradType, &s.m_szError, &s.m_pSxx,   &s.m_pSyy,
      &s.m_pSzz,    &s.m_pSxy,  &s.m_pSxz,         &s.m_pSyz,      &s.m_pBx,     &s.m_pBy,    &s.m_pBz};
  void const* before = nullptr;
  for (void const* member : members) {
    EXPECT_LT(before, member);
    before = member;
  }
}

TEST(GradientFacade, ErrorTextOfANewOperatorIsThePrefixAlone) {
  COperatorGradient gradient;
  EXPECT_EQ(kPrefix, gradient.getErrorMsg());
}

// ------------------------------------------------------------------------------------------------ getZyn3dGV

TEST(GradientFacade, GetZyn3dGVStoresAllFourObjects) {
  COperatorGradient gradient;
  CZyn3dGV gv;
  CZYNGVGPU gpu;
  CZYNGVOpenMP openMP;
  CZYN3DFiniteVolumeMesh mesh;
  EXPECT_EQ(1, gradient.getZyn3dGV(&gv, &gpu, &openMP, &mesh));
  EXPECT_EQ(&gv, gradient.m_pImpl->m_pGV);
  EXPECT_EQ(&gpu, gradient.m_pImpl->m_pGVGPU);
  EXPECT_EQ(&openMP, gradient.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(&mesh, gradient.m_pImpl->m_pMesh);
  EXPECT_EQ(kPrefix, gradient.getErrorMsg());
}

TEST(GradientFacade, GetZyn3dGVCopiesTheFirstWordOfTheAcceleratorObject) {
  COperatorGradient gradient;
  CZyn3dGV gv;
  CZYNGVGPU gpu;
  gradient.m_pImpl->m_GPUHead = 0x5a5a;
  EXPECT_EQ(1, gradient.getZyn3dGV(&gv, &gpu, nullptr, nullptr));
  std::uintptr_t firstWord = 0;
  std::memcpy(&firstWord, static_cast<void const*>(&gpu), sizeof firstWord);
  EXPECT_EQ(firstWord, gradient.m_pImpl->m_GPUHead);
}

TEST(GradientFacade, GetZyn3dGVWithNullGlobalVariablesFailsAndStoresNothing) {
  COperatorGradient gradient;
  CZYNGVGPU gpu;
  CZYNGVOpenMP openMP;
  CZYN3DFiniteVolumeMesh mesh;
  gradient.m_pImpl->m_GPUHead = 0x5a5a;
  EXPECT_EQ(-1, gradient.getZyn3dGV(nullptr, &gpu, &openMP, &mesh));
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pGV);
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pGVGPU);
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pMesh);
  EXPECT_EQ(0x5a5au, gradient.m_pImpl->m_GPUHead);
  EXPECT_EQ(kPrefix + kNoGlobals, gradient.getErrorMsg());
}

TEST(GradientFacade, GetZyn3dGVWithNullGlobalVariablesKeepsWhatWasStoredEarlier) {
  COperatorGradient gradient;
  CZyn3dGV gv;
  CZYNGVGPU gpu, otherGpu;
  CZYNGVOpenMP openMP, otherOpenMP;
  CZYN3DFiniteVolumeMesh mesh, otherMesh;
  gradient.getZyn3dGV(&gv, &gpu, &openMP, &mesh);
  EXPECT_EQ(-1, gradient.getZyn3dGV(nullptr, &otherGpu, &otherOpenMP, &otherMesh));
  EXPECT_EQ(&gv, gradient.m_pImpl->m_pGV);
  EXPECT_EQ(&gpu, gradient.m_pImpl->m_pGVGPU);
  EXPECT_EQ(&openMP, gradient.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(&mesh, gradient.m_pImpl->m_pMesh);
}

TEST(GradientFacade, GetZyn3dGVWithOnlyGlobalVariablesKeepsTheEarlierMeshAndTheOthers) {
  COperatorGradient gradient;
  CZyn3dGV gv, otherGv;
  CZYNGVGPU gpu;
  CZYNGVOpenMP openMP;
  CZYN3DFiniteVolumeMesh mesh;
  gradient.getZyn3dGV(&gv, &gpu, &openMP, &mesh);
  std::uintptr_t const head = gradient.m_pImpl->m_GPUHead;
  EXPECT_EQ(1, gradient.getZyn3dGV(&otherGv, nullptr, nullptr, nullptr));
  EXPECT_EQ(&otherGv, gradient.m_pImpl->m_pGV);
  EXPECT_EQ(&gpu, gradient.m_pImpl->m_pGVGPU);
  EXPECT_EQ(&openMP, gradient.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(&mesh, gradient.m_pImpl->m_pMesh);
  EXPECT_EQ(head, gradient.m_pImpl->m_GPUHead);
  EXPECT_EQ(kPrefix, gradient.getErrorMsg());
}

TEST(GradientFacade, GetZyn3dGVStoresEachOptionalObjectOnItsOwn) {
  CZyn3dGV gv;
  CZYNGVGPU gpu;
  CZYNGVOpenMP openMP;
  CZYN3DFiniteVolumeMesh mesh;
  COperatorGradient withGpu, withOpenMP, withMesh;
  EXPECT_EQ(1, withGpu.getZyn3dGV(&gv, &gpu, nullptr, nullptr));
  EXPECT_EQ(&gpu, withGpu.m_pImpl->m_pGVGPU);
  EXPECT_EQ(nullptr, withGpu.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(nullptr, withGpu.m_pImpl->m_pMesh);
  EXPECT_EQ(1, withOpenMP.getZyn3dGV(&gv, nullptr, &openMP, nullptr));
  EXPECT_EQ(nullptr, withOpenMP.m_pImpl->m_pGVGPU);
  EXPECT_EQ(&openMP, withOpenMP.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(nullptr, withOpenMP.m_pImpl->m_pMesh);
  EXPECT_EQ(1, withMesh.getZyn3dGV(&gv, nullptr, nullptr, &mesh));
  EXPECT_EQ(nullptr, withMesh.m_pImpl->m_pGVGPU);
  EXPECT_EQ(nullptr, withMesh.m_pImpl->m_pGVOpenMP);
  EXPECT_EQ(&mesh, withMesh.m_pImpl->m_pMesh);
}

// ------------------------------------------------------------------------- getPartitionFace, getCommunication

TEST(GradientFacade, GetPartitionFaceStoresTheObject) {
  COperatorGradient gradient;
  LentPartition none;
  PartitionFaces faces(none);
  EXPECT_EQ(1, gradient.getPartitionFace(&faces));
  EXPECT_EQ(&faces, gradient.m_pImpl->m_pPartFace);
  EXPECT_EQ(kPrefix, gradient.getErrorMsg());
}

TEST(GradientFacade, GetPartitionFaceWithNullFailsAndKeepsTheEarlierObject) {
  COperatorGradient gradient;
  LentPartition none;
  PartitionFaces faces(none);
  gradient.getPartitionFace(&faces);
  EXPECT_EQ(-1, gradient.getPartitionFace(nullptr));
  EXPECT_EQ(&faces, gradient.m_pImpl->m_pPartFace);
  EXPECT_EQ(kPrefix + kNoPartFaces, gradient.getErrorMsg());
}

TEST(GradientFacade, GetCommunicationStoresBothObjects) {
  COperatorGradient gradient;
  std::vector<ExchangeCall> calls;
  RecordingCommunication communication(0, NoExchange(), calls);
  RecordingCom com;
  EXPECT_EQ(1, gradient.getCommunication(&communication, &com));
  EXPECT_EQ(&communication, gradient.m_pImpl->m_pComm);
  EXPECT_EQ(&com, gradient.m_pImpl->m_pCom);
  EXPECT_EQ(kPrefix, gradient.getErrorMsg());
}

TEST(GradientFacade, GetCommunicationWithNullExchangeFailsAndStoresNeither) {
  COperatorGradient gradient;
  RecordingCom com;
  EXPECT_EQ(-1, gradient.getCommunication(nullptr, &com));
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pComm);
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pCom);
  EXPECT_EQ(kPrefix + kNoCommunication, gradient.getErrorMsg());
}

TEST(GradientFacade, GetCommunicationWithNullReductionFailsWithTheExchangeLeftStored) {
  COperatorGradient gradient;
  std::vector<ExchangeCall> calls;
  RecordingCommunication communication(0, NoExchange(), calls);
  EXPECT_EQ(-1, gradient.getCommunication(&communication, nullptr));
  EXPECT_EQ(&communication, gradient.m_pImpl->m_pComm);
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pCom);
  EXPECT_EQ(kPrefix + kNoCom, gradient.getErrorMsg());
}

TEST(GradientFacade, GetCommunicationWithNullReductionReplacesTheExchangeAndKeepsTheEarlierReduction) {
  COperatorGradient gradient;
  std::vector<ExchangeCall> calls;
  RecordingCommunication first(0, NoExchange(), calls), second(0, NoExchange(), calls);
  RecordingCom com;
  gradient.getCommunication(&first, &com);
  EXPECT_EQ(-1, gradient.getCommunication(&second, nullptr));
  EXPECT_EQ(&second, gradient.m_pImpl->m_pComm);
  EXPECT_EQ(&com, gradient.m_pImpl->m_pCom);
}

TEST(GradientFacade, GetCommunicationWithBothNullComplainsAboutTheExchangeOnly) {
  COperatorGradient gradient;
  EXPECT_EQ(-1, gradient.getCommunication(nullptr, nullptr));
  EXPECT_EQ(kPrefix + kNoCommunication, gradient.getErrorMsg());
}

// --------------------------------------------------------------- getGradType, ResetMaxGradientIterationNumber

TEST(GradientFacade, GetGradTypeAcceptsZeroToTwoAndLeavesItsArgumentAlone) {
  for (int const type : {0, 1, 2}) {
    COperatorGradient gradient;
    int argument = type;
    EXPECT_EQ(1, gradient.getGradType(argument));
    EXPECT_EQ(type, argument);
    EXPECT_EQ(type, gradient.m_pImpl->m_iGradType);
    EXPECT_EQ(kPrefix, gradient.getErrorMsg());
  }
}

TEST(GradientFacade, GetGradTypeRejectsAllOtherTypesButStoresThem) {
  for (int const type : {3, 4, 7, 101, INT_MAX, -1, -2, INT_MIN}) {
    COperatorGradient gradient;
    int argument = type;
    EXPECT_EQ(-1, gradient.getGradType(argument)) << type;
    EXPECT_EQ(type, argument);
    EXPECT_EQ(type, gradient.m_pImpl->m_iGradType);
    EXPECT_EQ(kPrefix + kWrongType, gradient.getErrorMsg());
  }
}

TEST(GradientFacade, ResetMaxGradientIterationNumberStoresPositiveNumbers) {
  COperatorGradient gradient;
  for (int const n : {1, 5, INT_MAX}) {
    EXPECT_EQ(1, gradient.ResetMaxGradientIterationNumber(n));
    EXPECT_EQ(n, gradient.m_pImpl->m_iMaxGradIter);
  }
}

TEST(GradientFacade, ResetMaxGradientIterationNumberBelowOneFailsWithoutTextAndKeepsTheNumber) {
  COperatorGradient gradient;
  gradient.ResetMaxGradientIterationNumber(5);
  for (int const n : {0, -1, INT_MIN}) {
    EXPECT_EQ(-1, gradient.ResetMaxGradientIterationNumber(n));
    EXPECT_EQ(5, gradient.m_pImpl->m_iMaxGradIter);
  }
  EXPECT_EQ(kPrefix, gradient.getErrorMsg());
}

TEST(GradientFacade, ResetMaxGradientIterationNumberChangesNoGradient) {
  TestMesh const mesh = SomeMesh();
  GuardedArray<double> phi = Guarded(SomeField(mesh));
  for (int const type : {0, 7}) {
    for (int const nSweep : {1, 2, 3}) {
      GradientHost host(mesh);
      ConnectedOperator op(host, type);
      GuardedGradient before(mesh.NCell()), after(mesh.NCell());
      op.gradient.GradMethod(phi.Data(), before.x.Data(), before.y.Data(), before.z.Data(), nSweep);
      EXPECT_EQ(1, op.gradient.ResetMaxGradientIterationNumber(5));
      op.gradient.GradMethod(phi.Data(), after.x.Data(), after.y.Data(), after.z.Data(), nSweep);
      EXPECT_TRUE(SameBits(before, after)) << "type " << type << ", sweeps " << nSweep;
    }
  }
}

TEST(GradientFacade, ResetMaxGradientIterationNumberChangesNoOtherGradientEither) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh), k = SomeField(mesh, 13);
  GradientHost host(mesh);
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  std::vector<GuardedGradient> before, after;
  for (std::vector<GuardedGradient>* all : {&before, &after}) {
    GuardedGradient a(mesh.NCell()), b(mesh.NCell()), c(mesh.NCell());
    GuardedArray<double> guardedPhi = Guarded(phi), guardedK = Guarded(k);
    op.gradient.GradMethod(guardedPhi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), 1);
    all->push_back(a);
    op.gradient.GradMethod_Weighted(guardedPhi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), guardedK.Data(),
                                    1);
    all->push_back(a);
    op.gradient.GradMethod_3(guardedPhi.Data(), guardedK.Data(), guardedPhi.Data(), a.x.Data(), a.y.Data(),
                             a.z.Data(), b.x.Data(), b.y.Data(), b.z.Data(), c.x.Data(), c.y.Data(),
                             c.z.Data());
    for (GuardedGradient const& g : {a, b, c}) all->push_back(g);
    EXPECT_EQ(1, op.gradient.ResetMaxGradientIterationNumber(5));
  }
  for (std::size_t i = 0; i < before.size(); ++i) EXPECT_TRUE(SameBits(before[i], after[i])) << i;
}

// ---------------------------------------------------------------------------------------------- failure text

TEST(GradientFacade, FailuresAccumulateBehindOnePrefixInTheirOrder) {
  COperatorGradient gradient;
  gradient.getPartitionFace(nullptr);
  SetType(gradient, 3);
  gradient.getCommunication(nullptr, nullptr);
  gradient.getZyn3dGV(nullptr, nullptr, nullptr, nullptr);
  std::vector<ExchangeCall> calls;
  RecordingCommunication communication(0, NoExchange(), calls);
  gradient.getCommunication(&communication, nullptr);
  SetType(gradient, -1);
  EXPECT_EQ(kPrefix + kNoPartFaces + kWrongType + kNoCommunication + kNoGlobals + kNoCom + kWrongType,
            gradient.getErrorMsg());
}

TEST(GradientFacade, FailureTextIsCutAt1023CharactersInTheMiddleOfALine) {
  COperatorGradient gradient;
  std::string expected = kPrefix;
  for (int n = 0; n < 60; ++n) {
    gradient.getPartitionFace(nullptr);
    expected = (expected + kNoPartFaces).substr(0, 1023);
    ASSERT_EQ(expected, gradient.getErrorMsg()) << "after failure " << n + 1;
  }
  EXPECT_EQ(1023u, std::strlen(gradient.getErrorMsg()));
  EXPECT_EQ('\0', gradient.m_pImpl->m_szError[1023]);
  EXPECT_NE('\n', expected.back()) << "the cut should fall inside a line";
}

TEST(GradientFacade, FullFailureTextStaysAsItIs) {
  COperatorGradient gradient;
  for (int n = 0; n < 60; ++n) gradient.getPartitionFace(nullptr);
  std::string const full = gradient.getErrorMsg();
  gradient.getZyn3dGV(nullptr, nullptr, nullptr, nullptr);
  SetType(gradient, 3);
  EXPECT_EQ(full, gradient.getErrorMsg());
}

TEST(GradientFacade, FailureTextBeginsWithWhateverTheBufferHolds) {
  COperatorGradient gradient;
  std::strcpy(gradient.m_pImpl->m_szError, "other text; ");
  SetType(gradient, 3);
  EXPECT_EQ("other text; " + kWrongType, gradient.getErrorMsg());
}

TEST(GradientFacade, FailureTextThatFitsExactlyIsKeptWhole) {
  COperatorGradient gradient;
  std::string const filler(1023 - kWrongType.size(), 'x');
  std::strcpy(gradient.m_pImpl->m_szError, filler.c_str());
  SetType(gradient, 3);
  EXPECT_EQ(filler + kWrongType, gradient.getErrorMsg());
}

// ------------------------------------------------------------------------------------------------ Initialize

TEST(GradientFacade, InitializeReducesAStatusOfZeroOnceForEveryType) {
  for (int const type : {0, 1, 3, 7, -1}) {
    GradientHost host(SomeMesh());
    ConnectedOperator op(host, type);
    std::string const textBefore = op.gradient.getErrorMsg();
    EXPECT_EQ(1, op.gradient.Initialize()) << type;
    EXPECT_EQ(std::vector<int>{0}, host.com.values) << type;
    EXPECT_EQ(textBefore, op.gradient.getErrorMsg());
    EXPECT_TRUE(host.communication.Calls().empty());
  }
}

TEST(GradientFacade, InitializeFailsWithoutTextWhenAnotherPartitionFailed) {
  for (int const type : {0, 1, 3, 7, -1}) {
    for (int const status : {-1, -5, INT_MIN}) {
      GradientHost host(SomeMesh());
      ConnectedOperator op(host, type);
      std::string const textBefore = op.gradient.getErrorMsg();
      host.com.othersMinimum = status;
      EXPECT_EQ(-1, op.gradient.Initialize()) << type;
      EXPECT_EQ(textBefore, op.gradient.getErrorMsg());
    }
  }
}

TEST(GradientFacade, InitializeSucceedsWhenTheMinimumIsZeroOrMore) {
  for (int const status : {0, 1, 4}) {
    GradientHost host(SomeMesh());
    ConnectedOperator op(host);
    host.com.othersMinimum = status;
    EXPECT_EQ(1, op.gradient.Initialize());
  }
}

TEST(GradientFacade, InitializeIgnoresTheResultOfTheReduction) {
  GradientHost host(SomeMesh());
  ConnectedOperator op(host);
  host.com.result = -1;
  EXPECT_EQ(1, op.gradient.Initialize());
  host.com.result = 1;
  host.com.othersMinimum = -1;
  EXPECT_EQ(-1, op.gradient.Initialize());
}

TEST(GradientFacade, InitializeGathersTheMomentsBeforeTheReductionAndForTypeOneOnly) {
  for (int const type : {0, 1, 3, 7, -1}) {
    GradientHost host(SomeMesh());
    ConnectedOperator op(host, type);
    COperatorGradientImpl const& state = *op.gradient.m_pImpl;
    bool gathered = false;
    host.com.onCall = [&] { gathered = state.m_pSxx != nullptr && state.m_pBz != nullptr; };
    op.gradient.Initialize();
    EXPECT_EQ(type == 1, gathered) << type;
    EXPECT_EQ(nullptr, state.m_pRBF);
  }
}

TEST(GradientFacade, InitializeWithoutMomentsTouchesNeitherMeshNorGlobalVariables) {
  std::vector<ExchangeCall> calls;
  RecordingCommunication communication(0, NoExchange(), calls);
  RecordingCom com;
  COperatorGradient gradient;
  gradient.getCommunication(&communication, &com);
  EXPECT_EQ(1, gradient.Initialize());
}

// ------------------------------------------------------------------------------------------------- dispatch

TEST(GradientFacade, TypeAfterConstructionIsPlainGreenGaussForALastArgumentOfOne) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh);
  GradientHost host(mesh);
  COperatorGradient gradient;
  Connect(gradient, host);
  GuardedGradient g(mesh.NCell());
  gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
  EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, NoExchange()), g));
  // Only the iterated path clears the previous-iterate arrays.
  EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 1e9), host.previous));
}

TEST(GradientFacade, TypeZeroTakesAnyOtherLastArgumentAsNumberOfSweeps) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh);
  for (int const nSweep : {-3, -1, 0, 2, 3, 4}) {
    GradientHost host(mesh);
    ConnectedOperator op(host, 0);
    GuardedGradient g(mesh.NCell(), 5.0);
    op.gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), nSweep);
    Gradient expected(mesh, 5.0);
    Gradient const previous = IteratedGreenGauss(mesh, phi, nSweep, NoExchange(), expected);
    EXPECT_TRUE(SameBits(expected, g)) << nSweep;
    EXPECT_TRUE(SameBits(previous, host.previous)) << nSweep;
    EXPECT_EQ(3U * static_cast<unsigned>(std::max(nSweep, 1)), host.communication.Calls().size()) << nSweep;
  }
}

TEST(GradientFacade, TypeOneIsLeastSquaresWhateverTheLastArgument) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh);
  Gradient const expected = LeastSquares(mesh, LeastSquaresMoments(mesh), phi, NoExchange()).g;
  for (int const n : {-1, 0, 1, 2, 100}) {
    GradientHost host(mesh);
    ConnectedOperator op(host, 1);
    ASSERT_EQ(1, op.gradient.Initialize());
    GuardedGradient g(mesh.NCell());
    op.gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), n);
    EXPECT_TRUE(SameBits(expected, g)) << n;
  }
}

TEST(GradientFacade, TypeThreeLeavesOutputsAndHostAlone) {
  TestMesh const mesh = SomeMesh();
  GradientHost host(mesh);
  ConnectedOperator op(host, 3);
  for (int const n : {-1, 0, 1, 2, 5}) {
    GuardedGradient g(mesh.NCell(), 42.0);
    op.gradient.GradMethod(Guarded(SomeField(mesh)).Data(), g.x.Data(), g.y.Data(), g.z.Data(), n);
    EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 42.0), g)) << n;
  }
  EXPECT_TRUE(host.communication.Calls().empty());
  EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 1e9), host.previous));
}

TEST(GradientFacade, TypeThreeReturnsAtOnceWithoutAnyHostObject) {
  COperatorGradient gradient;
  SetType(gradient, 3);
  gradient.GradMethod(nullptr, nullptr, nullptr, nullptr, 1);
}

TEST(GradientFacade, OtherTypesAreIteratedAlsoForALastArgumentOfOne) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh);
  for (int const type : {7, -1, 4, 101, INT_MAX, INT_MIN}) {
    for (int const nSweep : {-1, 0, 1, 2, 3}) {
      GradientHost host(mesh);
      ConnectedOperator op(host, type);
      GuardedGradient g(mesh.NCell(), 5.0);
      op.gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), nSweep);
      Gradient expected(mesh, 5.0);
      Gradient const previous = IteratedGreenGauss(mesh, phi, nSweep, NoExchange(), expected);
      EXPECT_TRUE(SameBits(expected, g)) << "type " << type << ", sweeps " << nSweep;
      EXPECT_TRUE(SameBits(previous, host.previous)) << "type " << type << ", sweeps " << nSweep;
    }
  }
}

TEST(GradientFacade, TypeMayChangeBetweenCalls) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh);
  GradientHost host(mesh);
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  GuardedGradient g(mesh.NCell());
  GuardedArray<double> guardedPhi = Guarded(phi);
  auto const call = [&](int type, int n) {
    SetType(op.gradient, type);
    op.gradient.GradMethod(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), n);
  };
  call(1, 1);
  EXPECT_TRUE(SameBits(LeastSquares(mesh, LeastSquaresMoments(mesh), phi, NoExchange()).g, g));
  call(0, 1);
  EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, NoExchange()), g));
  call(1, 1);
  EXPECT_TRUE(SameBits(LeastSquares(mesh, LeastSquaresMoments(mesh), phi, NoExchange()).g, g));
}

TEST(GradientFacade, GreenGaussNeedsNoInitialize) {
  TestMesh const mesh = SomeMesh();
  Field const phi = SomeField(mesh), k = SomeField(mesh, 13);
  GradientHost host(mesh);
  ConnectedOperator op(host);
  GuardedGradient plain(mesh.NCell()), weighted(mesh.NCell());
  GuardedArray<double> guardedPhi = Guarded(phi), guardedK = Guarded(k);
  op.gradient.GradMethod(guardedPhi.Data(), plain.x.Data(), plain.y.Data(), plain.z.Data(), 1);
  op.gradient.GradMethod_Weighted(guardedPhi.Data(), weighted.x.Data(), weighted.y.Data(), weighted.z.Data(),
                                  guardedK.Data(), 1);
  EXPECT_TRUE(host.com.values.empty());
  EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, NoExchange()), plain));
  EXPECT_TRUE(SameBits(WeightedGreenGauss(mesh, phi, k, NoExchange()), weighted));
}

// ----------------------------------------------------------------------------------------- life and ownership

TEST(GradientFacade, AssignmentSharesThePrivateStateAndLeavesTheFormerOneAlive) {
  COperatorGradient source, target;
  SetType(source, 7);
  SetType(target, 1);
  COperatorGradientImpl* const former = target.m_pImpl;
  COperatorGradient& result = (target = source);
  EXPECT_EQ(&target, &result);
  EXPECT_EQ(source.m_pImpl, target.m_pImpl);
  EXPECT_EQ(1, former->m_iGradType) << "the former state must not be freed";
  SetType(target, 0);
  EXPECT_EQ(0, source.m_pImpl->m_iGradType) << "the two share one state";
  target.m_pImpl = former;  // gives each facade one state to free
}

TEST(GradientFacade, AssignmentCarriesTheReservedText) {
  COperatorGradient source, target;
  COperatorGradientImpl* const former = target.m_pImpl;
  EXPECT_EQ(1024u, sizeof source.m_szText);
  for (std::size_t i = 0; i < sizeof source.m_szText; ++i) source.m_szText[i] = static_cast<char>(i % 127);
  target = source;
  EXPECT_EQ(0, std::memcmp(source.m_szText, target.m_szText, sizeof source.m_szText));
  target.m_pImpl = former;
}

TEST(GradientFacade, AssignmentAllocatesAndFreesNothing) {
  COperatorGradient source, target;
  COperatorGradientImpl* const former = target.m_pImpl;
  long const allocations = Allocations(), live = LiveAllocations();
  target = source;
  EXPECT_EQ(allocations, Allocations());
  EXPECT_EQ(live, LiveAllocations());
  target.m_pImpl = former;
}

TEST(GradientFacade, DestructionFreesThePrivateStateAndTheNineArrays) {
  TestMesh const mesh = SomeMesh();
  GradientHost host(mesh);
  host.com.values.reserve(8);
  long const live = LiveAllocations();
  {
    ConnectedOperator op(host, 1);
    op.gradient.Initialize();
    EXPECT_LE(live + 10, LiveAllocations()) << "the state and nine arrays";
  }
  EXPECT_EQ(live, LiveAllocations());
}

TEST(GradientFacade, DestructionLeavesTheHostObjectsAlive) {
  HostObjects host;
  auto mesh = std::make_unique<CZYN3DFiniteVolumeMesh>();
  {
    COperatorGradient gradient;
    gradient.getZyn3dGV(&host.globals, &host.gpu, &host.openMP, mesh.get());
    gradient.getPartitionFace(&host.partitionFaces);
    gradient.getCommunication(&host.communication, &host.com);
    SetType(gradient, 1);
    gradient.Initialize();
  }
  EXPECT_TRUE(host.destroyed.empty());
  EXPECT_EQ(0, mesh->NCell);
}

TEST(GradientFacade, DestructionOfAnUnconfiguredOperatorIsHarmless) {
  long const live = LiveAllocations();
  { COperatorGradient gradient; }
  EXPECT_EQ(live, LiveAllocations());
}

TEST(GradientFacade, SecondInitializeGathersAnewAndLeavesTheFirstArraysIntact) {
  TestMesh const mesh = SomeMesh();
  GradientHost host(mesh);
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  COperatorGradientImpl const& s = *op.gradient.m_pImpl;
  double* const old[] = {s.m_pSxx, s.m_pSyy, s.m_pSzz, s.m_pSxy, s.m_pSxz,
                         s.m_pSyz, s.m_pBx,  s.m_pBy,  s.m_pBz};
  EXPECT_EQ(1, op.gradient.Initialize());
  double* const fresh[] = {s.m_pSxx, s.m_pSyy, s.m_pSzz, s.m_pSxy, s.m_pSxz,
                           s.m_pSyz, s.m_pBx,  s.m_pBy,  s.m_pBz};
  for (int n = 0; n < 9; ++n) {
    EXPECT_NE(old[n], fresh[n]);
    EXPECT_TRUE(SameBits(mesh.NCell(), old[n], fresh[n])) << "array " << n;
    delete[] old[n];  // nobody else does
  }
}

TEST(GradientFacade, NoGradientCallAllocates) {
  TestMesh const mesh = SomeMesh();
  GuardedArray<double> phi = Guarded(SomeField(mesh)), k = Guarded(SomeField(mesh, 13));
  std::vector<GuardedGradient> g(3, GuardedGradient(mesh.NCell()));
  auto const x = [&](int n) { return g[static_cast<std::size_t>(n)].x.Data(); };
  auto const y = [&](int n) { return g[static_cast<std::size_t>(n)].y.Data(); };
  auto const z = [&](int n) { return g[static_cast<std::size_t>(n)].z.Data(); };
  for (bool const nonBlocking : {false, true}) {
    for (int const type : {0, 1, 3, 7}) {
      GradientHost host(mesh);
      host.UseNonBlockingExchange(nonBlocking);
      ConnectedOperator op(host, type);
      op.gradient.Initialize();
      long const before = Allocations();
      for (int const n : {0, 1, 2, 3}) op.gradient.GradMethod(phi.Data(), x(0), y(0), z(0), n);
      op.gradient.GradMethod_Weighted(phi.Data(), x(0), y(0), z(0), k.Data(), 1);
      op.gradient.GradMethod_3(phi.Data(), k.Data(), phi.Data(), x(0), y(0), z(0), x(1), y(1), z(1), x(2),
                               y(2), z(2));
      if (type == 1) {
        op.gradient.GradMethod_LeastSquares_3(phi.Data(), k.Data(), phi.Data(), x(0), y(0), z(0), x(1), y(1),
                                              z(1), x(2), y(2), z(2));
      }
      EXPECT_EQ(before, Allocations()) << "type " << type;
    }
  }
}

/// Accessor calls of one round of all gradients on a partition with the given number of faces.
int AccessorCallsOfAllGradients(int nPartitionFaces) {
  TestMesh mesh = ClosedBox({0, 1, 2}, {0, 1, 2}, {0, 1, 2});
  for (int f = 0; f < nPartitionFaces; ++f) {
    int const halo = mesh.AddOuterCell({-1.0, 0.1 * f, 0.5});
    mesh.partition.push_back({1 + f % mesh.nInnerCells, halo, {-1.0, 0.1, 0.2}, {0.0, 0.1, 0.5}, 0.5, 0});
  }
  GradientHost host(mesh);
  ConnectedOperator op(host, 1);
  GuardedArray<double> phi = Guarded(SomeField(mesh));
  GuardedGradient a(mesh.NCell()), b(mesh.NCell()), c(mesh.NCell());
  op.gradient.Initialize();
  for (int const type : {0, 1, 7}) {
    SetType(op.gradient, type);
    op.gradient.GradMethod(phi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), 1);
  }
  op.gradient.GradMethod_Weighted(phi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), phi.Data(), 1);
  op.gradient.GradMethod_3(phi.Data(), phi.Data(), phi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), b.x.Data(),
                           b.y.Data(), b.z.Data(), c.x.Data(), c.y.Data(), c.z.Data());
  return host.partitionFaces.Calls();
}

TEST(GradientFacade, PartitionFacesAreAskedPerWalkAndNotPerFace) {
  EXPECT_EQ(AccessorCallsOfAllGradients(1), AccessorCallsOfAllGradients(40));
}

void CallEachGradient(COperatorGradient& op, GuardedArray<double>& phi, GuardedArray<double>& k,
                      GuardedGradient& a, GuardedGradient& b, GuardedGradient& c) {
  for (int const type : {0, 1, 7}) {
    SetType(op, type);
    for (int const n : {0, 1, 3}) op.GradMethod(phi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), n);
  }
  op.GradMethod_Weighted(phi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), k.Data(), 1);
  op.GradMethod_3(phi.Data(), k.Data(), phi.Data(), a.x.Data(), a.y.Data(), a.z.Data(), b.x.Data(),
                  b.y.Data(), b.z.Data(), c.x.Data(), c.y.Data(), c.z.Data());
}

TEST(GradientFacade, GradientsReadTheHostAndWriteOnlyTheirOutputs) {
  TestMesh const mesh = SomeMesh();
  GuardedArray<double> phi = Guarded(SomeField(mesh)), k = Guarded(SomeField(mesh, 13));
  GuardedArray<double> const phiBefore = phi, kBefore = k;
  GradientHost host(mesh, ExchangeWithItself(mesh));
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  GuardedGradient a(mesh.NCell()), b(mesh.NCell()), c(mesh.NCell());
  CallEachGradient(op.gradient, phi, k, a, b, c);
  EXPECT_TRUE(host.InputsUntouched());
  EXPECT_TRUE(phi.IdenticalTo(phiBefore));
  EXPECT_TRUE(k.IdenticalTo(kBefore));
  EXPECT_TRUE(a.GuardsIntact() && b.GuardsIntact() && c.GuardsIntact() && host.previous.GuardsIntact());
}

// The guards above are not-a-numbers, which keep their bits in most arithmetic; numbers do not.
TEST(GradientFacade, GradientsLeaveNumbersInElement0AndBeyondTheCellsAlone) {
  TestMesh const mesh = SomeMesh();
  GradientHost host(mesh, ExchangeWithItself(mesh));
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  GuardedArray<double> phi = Guarded(SomeField(mesh)), k = Guarded(SomeField(mesh, 13));
  GuardedGradient a(mesh.NCell()), b(mesh.NCell()), c(mesh.NCell());
  std::vector<GuardedArray<double>*> outputs;
  for (GuardedGradient* g : {&a, &b, &c, &host.previous})
    outputs.insert(outputs.end(), {&g->x, &g->y, &g->z});
  host.volume[0] = 0.5;
  for (GuardedArray<double>* output : outputs)
    for (int const i : output->GuardIndices()) (*output)[i] = 3.0;
  CallEachGradient(op.gradient, phi, k, a, b, c);
  for (GuardedArray<double>* output : outputs)
    for (int const i : output->GuardIndices()) EXPECT_EQ(3.0, (*output)[i]) << i;
}

TEST(GradientFacade, OperatorsOfDifferentHostsRunSideBySide) {
  auto const run = [](std::uint64_t seed, bool& agreed) {
    TestMesh const mesh = SomeMesh(seed);
    Field const phi = SomeField(mesh, seed + 1);
    GradientHost host(mesh, ExchangeWithItself(mesh));
    ConnectedOperator op(host, 1);
    op.gradient.Initialize();
    GuardedArray<double> guardedPhi = Guarded(phi);
    GuardedGradient g(mesh.NCell());
    agreed = true;
    for (int n = 0; n < 200; ++n) {
      SetType(op.gradient, 1);
      op.gradient.GradMethod(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
      LeastSquaresResult const fit =
          LeastSquares(mesh, LeastSquaresMoments(mesh), phi, ExchangeWithItself(mesh));
      agreed = agreed && SameBits(fit.g, g);
      SetType(op.gradient, 0);
      op.gradient.GradMethod(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 3);
      Gradient iterated(mesh);
      IteratedGreenGauss(mesh, phi, 3, ExchangeWithItself(mesh), iterated);
      agreed = agreed && SameBits(iterated, g);
    }
  };
  bool first = false, second = false;
  std::thread thread(run, 101, std::ref(first));
  run(202, second);
  thread.join();
  EXPECT_TRUE(first);
  EXPECT_TRUE(second);
}

}  // namespace
}  // namespace zyn_test::facade_test
