#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/SettingsFolder.h"

// Set-ups one after the other on one operator, with other methods, groups, spans and meshes, by way of copies and
// assignments: each gives what a new operator gives. A set-up leaves the results of the former behind, on purpose, for
// copies may still read them; here they are kept and given back at the end.

namespace zyn_test::set_up_sequences_test {
namespace {

using Object = CZynFaceRBFInternalObject;
using Array = GuardedArray<double>;

/// The result tables of all operators of a sequence, each once.
class Tables {
 public:
  void Keep(Object const& object) {
    conn_.insert(object.m_ppFaceCellConn);
    gradient_.insert(object.m_ppFaceGradCoef);
    value_.insert(object.m_ppFaceFiCoef);
    normal_.insert(object.m_ppFaceDnCoef);
  }

  /// An operator that is to be destroyed takes no table with it.
  static void TakeFrom(Object& object) {
    object.m_ppFaceCellConn = nullptr;
    object.m_ppFaceGradCoef = nullptr;
    object.m_ppFaceFiCoef = object.m_ppFaceDnCoef = nullptr;
  }

  Tables() = default;
  Tables(Tables const&) = delete;
  Tables& operator=(Tables const&) = delete;
  ~Tables() {
    for (int** const table : conn_) Give<int**>(table, &Object::m_ppFaceCellConn);
    for (IBCnode** const table : gradient_) Give<IBCnode**>(table, &Object::m_ppFaceGradCoef);
    for (double** const table : value_) Give<double**>(table, &Object::m_ppFaceFiCoef);
    for (double** const table : normal_) Give<double**>(table, &Object::m_ppFaceDnCoef);
  }

 private:
  /// Gives a table back by way of an operator that is destroyed.
  template <typename Table>
  static void Give(Table table, Table Object::*member) {
    Object object;
    object.*member = table;
  }

  std::set<int**> conn_;
  std::set<IBCnode**> gradient_;
  std::set<double**> value_, normal_;
};

template <typename T>
T const* RowOfTable(T** table, int i) {
  return table == nullptr ? nullptr : table[i];
}

bool SameBytes(void const* a, void const* b, std::size_t n) { return std::memcmp(a, b, n) == 0; }

/// Stencils and coefficients of two operators, bit for bit.
::testing::AssertionResult SameResults(Object const& expected, Object const& actual) {
  if (expected.NFace != actual.NFace) return ::testing::AssertionFailure() << "numbers of faces differ";
  for (int i = 1; i <= expected.NFace; ++i) {
    int const *const row = RowOfTable(expected.m_ppFaceCellConn, i), *const other = RowOfTable(
                                                                         actual.m_ppFaceCellConn, i);
    if ((row == nullptr) != (other == nullptr))
      return ::testing::AssertionFailure() << "only one has stencil " << i;
    if (row == nullptr) continue;
    std::size_t const n = static_cast<std::size_t>(row[0]);
    if (!SameBytes(row, other, (n + 1) * sizeof(int)))
      return ::testing::AssertionFailure() << "stencil " << i;
    for (auto const table : {&Object::m_ppFaceFiCoef, &Object::m_ppFaceDnCoef}) {
      double const *const a = RowOfTable(expected.*table, i), *const b = RowOfTable(actual.*table, i);
      if ((a == nullptr) != (b == nullptr)) return ::testing::AssertionFailure() << "only one has row " << i;
      if (a != nullptr && !SameBytes(a, b, (n + 1) * sizeof(double)))
        return ::testing::AssertionFailure() << "row " << i;
    }
    IBCnode const *const a = RowOfTable(expected.m_ppFaceGradCoef, i), *const b = RowOfTable(
                                                                           actual.m_ppFaceGradCoef, i);
    if ((a == nullptr) != (b == nullptr))
      return ::testing::AssertionFailure() << "only one has gradients " << i;
    for (std::size_t k = 0; a != nullptr && k <= n; ++k)
      if (!SameBytes(&a[k].x, &b[k].x, 3 * sizeof(double)))
        return ::testing::AssertionFailure() << "gradient " << i;
  }
  return ::testing::AssertionSuccess();
}

/// All numbers of the report, as text, so that two that are no numbers are alike.
std::string Report(Object const& o) {
  std::string text;
  for (int const n : {o.NFaceDone, o.fiMAXFaceID, o.dfidxMAXFaceID, o.dfidyMAXFaceID, o.dfidzMAXFaceID,
                      o.dfidnMAXFaceID, o.MAXerrNodeID})
    text += std::to_string(n) + " ";
  for (double const v : {o.fiMAX, o.fiMAXAnalysis, o.fiMAXRBF, o.dfidxMAX, o.dfidxMAXRBF, o.dfidyMAX,
                         o.dfidyMAXRBF, o.dfidzMAX, o.dfidzMAXRBF, o.dfidnMAX, o.dfidnMAXRBF, o.MAXerr}) {
    char number[40];
    std::snprintf(number, sizeof(number), "%a ", v);
    text += number;
  }
  return text;
}

struct Hosts {
  Hosts()
      : small(TwoCubes(), folder.BaseFileName()), large(SkewedCubesOfAllGroups(), folder.BaseFileName()) {}
  FaceHost& Of(bool isLarge) { return isLarge ? large : small; }

  SettingsFolder folder;
  FaceHost small, large;
};

/// Everything that decides about a set-up.
struct Choice {
  explicit Choice(Random& random)
      : isLarge(UniformInt(random, 0, 2) != 0),
        byFile(UniformInt(random, 0, 3) == 0),
        faceType(UniformInt(random, 1, 6)),
        debug(UniformInt(random, 0, 1)) {
    int const methods[] = {1, 2, 3, 3, 4, 4, 7};
    settings.method = methods[UniformInt(random, 0, 6)];
    settings.span = UniformInt(random, 20, 1000);
    settings.searchNumber = UniformInt(random, 1, UniformInt(random, 0, 9) == 0 ? 500 : 9);
  }

  void SetUp(Hosts& hosts, Object& object) const {
    FaceHost& host = hosts.Of(isLarge);
    Connect(object, host.globals, host.mesh, host.partitionFaces);
    if (byFile && object.pKNCMP == nullptr) {
      hosts.folder.Write(Settings(settings, debug != 0));
    } else {
      host.parameters.block.Span = static_cast<int>(settings.span);
      host.parameters.block.iSearch_method = settings.method;
      host.parameters.block.Search_number = settings.searchNumber;
      host.parameters.block.iDebugMode = debug;
      object.SetZYNKNCMP(&host.parameters);
    }
    object.Initialize_FaceInterpolateData(faceType);
  }

  std::string Text() const {
    return "method " + std::to_string(settings.method) + ", type " + std::to_string(faceType) + ", number " +
           std::to_string(settings.searchNumber) + (isLarge ? ", large" : ", small");
  }

  bool isLarge, byFile;
  int faceType, debug;
  FaceSettings settings;
};

Array Applied(Object& object, int nCell) {
  Array phi(nCell), values(object.NFace), zero(object.NFace);
  for (int c = 1; c <= nCell; ++c) phi[c] = 0.5 * c;
  object.Multiply_FaceRBFCoefficent(phi.Data(), values.Data(), zero.Data(), zero.Data(), zero.Data());
  return values;
}

TEST(FaceOperatorSequences, EverySetUpGivesWhatANewOperatorGives) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    Random random(seed);
    Hosts hosts;
    Tables tables;
    std::array<Object, 2> objects;
    std::string history;
    testing::internal::CaptureStdout();
    for (int step = 0; step < 7; ++step) {
      std::size_t const which = static_cast<std::size_t>(UniformInt(random, 0, 1));
      Object& object = objects[which];
      Choice const choice(random);
      history += choice.Text() + "; ";
      choice.SetUp(hosts, object);
      tables.Keep(object);

      Object fresh;
      choice.SetUp(hosts, fresh);
      EXPECT_TRUE(SameResults(fresh, object)) << "seed " << seed << ": " << history;
      EXPECT_EQ(Report(fresh), Report(object)) << "seed " << seed << ": " << history;
      int const nCell = hosts.Of(choice.isLarge).NCell();
      Array const expected = Applied(fresh, nCell), actual = Applied(object, nCell);
      EXPECT_TRUE(SameBytes(expected.Data() + 1, actual.Data() + 1,
                            static_cast<std::size_t>(object.NFace) * sizeof(double)))
          << history;

      // An operator that shares the tables, and goes its own way from here.
      if (UniformInt(random, 0, 2) == 0) {
        objects[1 - which] = object;
        EXPECT_TRUE(SameResults(fresh, objects[1 - which])) << history;
        history += "assigned; ";
      }
      // Nobody says which faces a number beyond the groups stands for; those of the last set-up are searched anew.
      if (UniformInt(random, 0, 6) == 0) {
        int const type = UniformInt(random, 0, 1) == 0 ? 0 : 9;
        object.Initialize_FaceInterpolateData(type);
        tables.Keep(object);
        history += "no type; ";
      }
    }
    testing::internal::GetCapturedStdout();
    for (Object& object : objects) Tables::TakeFrom(object);
  }
}

// Method 4 has no gradients, and a method without steps no rows at all; the tables are those of the last set-up.
TEST(FaceOperatorSequences, GradientsAfterASetUpWithoutThemHaveRoomForALargerGroup) {
  Hosts hosts;
  for (int const between : {4, 7}) {
    Tables tables;
    Object object;
    auto const setUp = [&](int method, bool isLarge, int faceType) {
      Random random(1);
      Choice choice(random);
      choice.settings = {method, 50.0, 4};
      choice.isLarge = isLarge;
      choice.byFile = false;
      choice.faceType = faceType;
      Printed([&] { choice.SetUp(hosts, object); });
      tables.Keep(object);
      Object fresh;
      Printed([&] { choice.SetUp(hosts, fresh); });
      EXPECT_TRUE(SameResults(fresh, object)) << "method " << method << " after " << between;
    };
    setUp(3, false, kInner);
    setUp(between, false, kInner);
    setUp(between, false, kInner);
    setUp(3, true, kInner);
    setUp(1, false, kWall);
    setUp(4, true, kWall);
    setUp(4, true, kOutlet);
    setUp(2, true, kInner);
    Tables::TakeFrom(object);
  }
}

// Without walls there is nothing to set up, and nobody is asked for partition faces.
TEST(FaceOperatorSequences, AGroupOfTheMeshWithoutFacesNeedsNoPartitionFaces) {
  CZYN3DFiniteVolumeMesh mesh;
  CZyn3dGV globals;
  Object object;
  EXPECT_EQ(1, object.getZyn3dGV(&globals, nullptr, nullptr, &mesh));
  for (int const faceType : {1, 2, 3, 4, 6}) {
    EXPECT_EQ(0, object.Initialize_FaceInterpolateData(faceType));
    EXPECT_EQ(0, object.NFace);
  }
}

}  // namespace
}  // namespace zyn_test::set_up_sequences_test
