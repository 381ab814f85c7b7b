#include "foundation/CZYNVector.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/support/watch/FlushRecord.h"

// The checked array: what each operation answers, stores and leaves alone, for both index bases and every
// value type that the library offers.

namespace zyn_test::czyn_vector_test {
namespace {

template <typename T, int B>
struct Instantiation {
  using Vector = CZYNVector<T, B>;
  using Value = T;
  static constexpr int kBase = B;
};

template <typename Case>
class Vector : public ::testing::Test {};

using AllInstantiations =
    ::testing::Types<Instantiation<int, 0>, Instantiation<int, 1>, Instantiation<float, 0>,
                     Instantiation<float, 1>, Instantiation<double, 0>, Instantiation<double, 1>,
                     Instantiation<bool, 1>>;
TYPED_TEST_SUITE(Vector, AllInstantiations, );

/// What `Create(n)` leaves in the four members; n = 0 stands for the empty vector.
template <typename T, int B>
void ExpectShape(CZYNVector<T, B> const& vector, int n) {
  EXPECT_EQ(n == 0, vector.m_pData == nullptr);
  EXPECT_EQ(n, vector.m_iSize);
  EXPECT_EQ(n == 0 ? 0 : B, vector.m_iLower);
  EXPECT_EQ(n == 0 ? 0 : n + B, vector.m_iUpper);
}

/// A source for Assign: element i is i % 2, which every value type can hold, or i itself for numbers.
template <typename T>
T Element(int i) {
  return std::is_same<T, bool>::value ? static_cast<T>(i % 2) : static_cast<T>(i);
}

// ---------------------------------------------------------------------------------------------- construction

TYPED_TEST(Vector, IsEmptyAfterDefaultConstruction) {
  typename TypeParam::Vector const vector;
  ExpectShape(vector, 0);
  EXPECT_TRUE(vector.Empty());
  EXPECT_EQ(0, vector.GetSize());
  EXPECT_EQ(nullptr, vector.Get_Ptr());
}

TYPED_TEST(Vector, ConstructionWithASizeZeroFillsTheWholeBlock) {
  typename TypeParam::Vector const vector(5);
  ExpectShape(vector, 5);
  EXPECT_FALSE(vector.Empty());
  EXPECT_EQ(5, vector.GetSize());
  for (int i = 0; i < 5 + TypeParam::kBase; ++i) EXPECT_EQ(typename TypeParam::Value(), vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, ConstructionWithSizeZeroIsAnEmptyVector) {
  typename TypeParam::Vector const vector(0);
  ExpectShape(vector, 0);
}

TYPED_TEST(Vector, ConstructionWithANegativeSizeIsAnEmptyVector) {
  typename TypeParam::Vector const vector(-3);
  ExpectShape(vector, 0);
}

TYPED_TEST(Vector, ConstructionWithAValueFillsTheWholeBlock) {
  using T = typename TypeParam::Value;
  typename TypeParam::Vector const vector(4, Element<T>(7));
  ExpectShape(vector, 4);
  for (int i = 0; i < 4 + TypeParam::kBase; ++i) EXPECT_EQ(Element<T>(7), vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, ConstructionWithASourceCopiesItFromElementZeroOn) {
  using T = typename TypeParam::Value;
  T const source[] = {Element<T>(9), Element<T>(8), Element<T>(7), Element<T>(6)};
  typename TypeParam::Vector const vector(4 - TypeParam::kBase, source);
  ExpectShape(vector, 4 - TypeParam::kBase);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(source[i], vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, FailedConstructionWithContentStaysEmpty) {
  using T = typename TypeParam::Value;
  T const source[] = {Element<T>(1)};
  typename TypeParam::Vector const filled(0, Element<T>(1));
  typename TypeParam::Vector const copied(-1, source);
  ExpectShape(filled, 0);
  ExpectShape(copied, 0);
}

TYPED_TEST(Vector, CopyConstructionIsDeep) {
  using T = typename TypeParam::Value;
  typename TypeParam::Vector source(3, Element<T>(1));
  typename TypeParam::Vector const copy(source);
  ExpectShape(copy, 3);
  EXPECT_NE(source.Get_Ptr(), copy.Get_Ptr());
  source.Assign(Element<T>(2));
  for (int i = 0; i < 3 + TypeParam::kBase; ++i) EXPECT_EQ(Element<T>(1), copy.Get_Ptr()[i]);
}

TYPED_TEST(Vector, CopyOfAnEmptyVectorIsEmpty) {
  typename TypeParam::Vector const source;
  typename TypeParam::Vector const copy(source);
  ExpectShape(copy, 0);
}

TYPED_TEST(Vector, DestructorIsNotVirtual) {
  EXPECT_FALSE(std::has_virtual_destructor<typename TypeParam::Vector>::value);
  EXPECT_FALSE(std::is_polymorphic<typename TypeParam::Vector>::value);
}

// -------------------------------------------------------------------------------------- Create and Destroy

TYPED_TEST(Vector, CreateWithZeroFailsAndLeavesTheVectorEmpty) {
  typename TypeParam::Vector vector;
  EXPECT_FALSE(vector.Create(0));
  ExpectShape(vector, 0);
}

TYPED_TEST(Vector, CreateWithANegativeSizeFailsAndLeavesTheVectorEmpty) {
  using T = typename TypeParam::Value;
  T const source[] = {Element<T>(1)};
  typename TypeParam::Vector vector;
  EXPECT_FALSE(vector.Create(-1));
  EXPECT_FALSE(vector.Create(-1, Element<T>(1)));
  EXPECT_FALSE(vector.Create(-1, source));
  ExpectShape(vector, 0);
}

TYPED_TEST(Vector, SecondCreateFailsAndKeepsTheContent) {
  using T = typename TypeParam::Value;
  T const source[] = {Element<T>(2), Element<T>(2), Element<T>(2), Element<T>(2)};
  typename TypeParam::Vector vector(2, Element<T>(1));
  T const* const block = vector.Get_Ptr();
  EXPECT_FALSE(vector.Create(3));
  EXPECT_FALSE(vector.Create(3, Element<T>(2)));
  EXPECT_FALSE(vector.Create(2, source));
  ExpectShape(vector, 2);
  EXPECT_EQ(block, vector.Get_Ptr());
  for (int i = 0; i < 2 + TypeParam::kBase; ++i) EXPECT_EQ(Element<T>(1), vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, CreateSucceedsOnAnEmptyVectorInAllForms) {
  using T = typename TypeParam::Value;
  T const source[] = {Element<T>(3), Element<T>(4), Element<T>(5)};
  typename TypeParam::Vector zeros, filled, copied;
  EXPECT_TRUE(zeros.Create(2));
  EXPECT_TRUE(filled.Create(2, Element<T>(1)));
  EXPECT_TRUE(copied.Create(2, source));
  for (int i = 0; i < 2 + TypeParam::kBase; ++i) {
    EXPECT_EQ(T(), zeros.Get_Ptr()[i]);
    EXPECT_EQ(Element<T>(1), filled.Get_Ptr()[i]);
    EXPECT_EQ(source[i], copied.Get_Ptr()[i]);
  }
}

TYPED_TEST(Vector, DestroyAlwaysSucceedsAndLeavesAUsableEmptyVector) {
  typename TypeParam::Vector vector(3);
  EXPECT_TRUE(vector.Destroy());
  ExpectShape(vector, 0);
  EXPECT_TRUE(vector.Destroy());
  EXPECT_TRUE(vector.Create(4));
  ExpectShape(vector, 4);
}

// ------------------------------------------------------------------------------------------------- access

TYPED_TEST(Vector, ValidIndicesRunFromTheBaseOn) {
  using T = typename TypeParam::Value;
  constexpr int kBase = TypeParam::kBase;
  typename TypeParam::Vector vector(5, Element<T>(1));
  for (int i = kBase; i < 5 + kBase; ++i) {
    T value = T();
    EXPECT_FALSE(vector.Out_Of_Range(i));
    EXPECT_TRUE(vector.GetValue(i, value));
    EXPECT_EQ(Element<T>(1), value);
  }
  for (int const i : {kBase - 1, 5 + kBase, -100, 100}) {
    T value = Element<T>(2);
    EXPECT_TRUE(vector.Out_Of_Range(i));
    EXPECT_FALSE(vector.GetValue(i, value));
    EXPECT_EQ(Element<T>(2), value) << "a failed GetValue leaves its argument";
  }
}

TYPED_TEST(Vector, EveryIndexIsOutOfRangeInAnEmptyVector) {
  typename TypeParam::Vector const vector;
  for (int const i : {-1, 0, 1}) EXPECT_TRUE(vector.Out_Of_Range(i));
}

TYPED_TEST(Vector, SetValueStoresOneElement) {
  using T = typename TypeParam::Value;
  constexpr int kBase = TypeParam::kBase;
  typename TypeParam::Vector vector(3);
  EXPECT_TRUE(vector.SetValue(kBase + 1, Element<T>(5)));
  for (int i = 0; i < 3 + kBase; ++i) EXPECT_EQ(i == kBase + 1 ? Element<T>(5) : T(), vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, SetValueAndAddValueFailOutOfRangeAndChangeNothing) {
  using T = typename TypeParam::Value;
  constexpr int kBase = TypeParam::kBase;
  typename TypeParam::Vector vector(3);
  for (int const i : {kBase - 1, 3 + kBase}) {
    EXPECT_FALSE(vector.SetValue(i, Element<T>(1)));
    EXPECT_FALSE(vector.AddValue(i, Element<T>(1)));
  }
  for (int i = 0; i < 3 + kBase; ++i) EXPECT_EQ(T(), vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, AddValueAddsToOneElement) {
  using T = typename TypeParam::Value;
  constexpr int kBase = TypeParam::kBase;
  typename TypeParam::Vector vector(3);
  EXPECT_TRUE(vector.SetValue(kBase + 2, Element<T>(3)));
  EXPECT_TRUE(vector.AddValue(kBase + 2, Element<T>(5)));
  T const sum = std::is_same<T, bool>::value ? static_cast<T>(1) : static_cast<T>(8);
  EXPECT_EQ(sum, vector.Get_Ptr()[kBase + 2]);
  EXPECT_EQ(T(), vector.Get_Ptr()[kBase + 1]);
}

TYPED_TEST(Vector, SubscriptIsTheBlockElementAndWritable) {
  using T = typename TypeParam::Value;
  typename TypeParam::Vector vector(3);
  vector[2] = Element<T>(3);
  EXPECT_EQ(&vector.Get_Ptr()[2], &vector[2]);
  EXPECT_EQ(Element<T>(3), vector.Get_Ptr()[2]);
  EXPECT_EQ(&vector.Get_Ptr()[0], &vector[0]) << "unchecked, so element 0 is reached with either base";
}

TYPED_TEST(Vector, ConstSubscriptWithinTheRangePrintsNothing) {
  using T = typename TypeParam::Value;
  constexpr int kBase = TypeParam::kBase;
  typename TypeParam::Vector vector(3);
  vector[kBase + 2] = Element<T>(1);
  auto const& readOnly = std::as_const(vector);
  ::testing::internal::CaptureStdout();
  for (int i = kBase; i < 3 + kBase; ++i) EXPECT_EQ(&vector.Get_Ptr()[i], &readOnly[i]);
  EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
}

TYPED_TEST(Vector, ConstSubscriptOutOfRangePrintsAndGivesTheFirstElement) {
  constexpr int kBase = TypeParam::kBase;
  typename TypeParam::Vector const vector(5);
  for (int const i : {kBase - 1, 5 + kBase, 100, -100}) {
    ::testing::internal::CaptureStdout();
    auto const* const element = &vector[i];
    EXPECT_EQ("\n>>>  Error in manipulating this array. Length = " + std::to_string(kBase) + "~" +
                  std::to_string(5 + kBase) + ", Out_Of_Range(" + std::to_string(i) + ")\n\n",
              ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(&vector.Get_Ptr()[kBase], element);
  }
}

TEST(Vector1, ConstSubscriptWith100PrintsTheMessageInTheseWordsAndGivesElement1) {
  CZYNVector<int, 1> vector(5);
  vector[1] = 41;
  CZYNVector<int, 1> const& readOnly = vector;
  ::testing::internal::CaptureStdout();
  int const value = readOnly[100];
  EXPECT_EQ("\n>>>  Error in manipulating this array. Length = 1~6, Out_Of_Range(100)\n\n",
            ::testing::internal::GetCapturedStdout());
  EXPECT_EQ(41, value);
}

TEST(Vector1, ConstSubscriptFlushesTheEmptyLineAndTheMessage) {
  CZYNVector<int, 1> const vector(5);
  zyn_test::FlushRecord const record;
  EXPECT_EQ(0, vector[100]);
  ASSERT_EQ(2U, record.Pieces().size());
  EXPECT_EQ("\n", record.Pieces()[0]);
  EXPECT_EQ(">>>  Error in manipulating this array. Length = 1~6, Out_Of_Range(100)\n\n", record.Pieces()[1]);
}

TYPED_TEST(Vector, ConstSubscriptOfAnEmptyVectorPrintsAndGivesAZero) {
  typename TypeParam::Vector const vector;
  ::testing::internal::CaptureStdout();
  auto const value = vector[3];
  EXPECT_EQ("\n>>>  Error in manipulating this array. Length = 0~0, Out_Of_Range(3)\n\n",
            ::testing::internal::GetCapturedStdout());
  EXPECT_EQ(typename TypeParam::Value(), value);
}

TEST(Vector1, CreateRefusesASizeWhoseUpperIndexIsNoInt) {
  CZYNVector<bool, 1> vector;
  EXPECT_FALSE(vector.Create(std::numeric_limits<int>::max()));
  ExpectShape(vector, 0);
}

TEST(Vector1, OfSize5HasTheIndices1To5) {
  CZYNVector<double, 1> vector(5, 2.5);
  double value = -1.0;
  EXPECT_FALSE(vector.GetValue(0, value));
  EXPECT_FALSE(vector.GetValue(6, value));
  EXPECT_EQ(-1.0, value);
  EXPECT_TRUE(vector.GetValue(1, value));
  EXPECT_EQ(2.5, value);
  EXPECT_TRUE(vector.GetValue(5, value));
}

TEST(Vector0, OfSize5HasTheIndices0To4) {
  CZYNVector<double, 0> vector(5, 2.5);
  double value = -1.0;
  EXPECT_FALSE(vector.GetValue(-1, value));
  EXPECT_FALSE(vector.GetValue(5, value));
  EXPECT_EQ(-1.0, value);
  EXPECT_TRUE(vector.GetValue(0, value));
  EXPECT_EQ(2.5, value);
  EXPECT_TRUE(vector.GetValue(4, value));
}

TEST(VectorOfBool, AddingFalseToTrueLeavesItTrue) {
  CZYNVector<bool, 1> vector(2, true);
  EXPECT_TRUE(vector.AddValue(1, false));
  EXPECT_TRUE(vector[1]);
}

TEST(VectorOfBool, AddingTrueToFalseMakesItTrue) {
  CZYNVector<bool, 1> vector(2, false);
  EXPECT_TRUE(vector.AddValue(2, true));
  EXPECT_TRUE(vector[2]);
  EXPECT_FALSE(vector[1]);
}

TEST(VectorOfBool, AddingTrueToTrueAndFalseToFalseChangesNothing) {
  CZYNVector<bool, 1> vector(2, false);
  vector[1] = true;
  EXPECT_TRUE(vector.AddValue(1, true));
  EXPECT_TRUE(vector.AddValue(2, false));
  EXPECT_TRUE(vector[1]);
  EXPECT_FALSE(vector[2]);
}

// --------------------------------------------------------------------------------- Assign and assignment

TEST(Vector1, AssignOfAValueAlsoWritesBlockElement0) {
  CZYNVector<int, 1> vector(5);
  EXPECT_TRUE(vector.Assign(7));
  EXPECT_EQ(7, vector.Get_Ptr()[0]);
  EXPECT_EQ(7, vector.Get_Ptr()[5]);
}

TEST(Vector1, AssignOfASourceTakesItsElement0Too) {
  int const source[] = {9, 1, 2, 3};
  CZYNVector<int, 1> vector(3);
  EXPECT_TRUE(vector.Assign(source));
  for (int i = 0; i <= 3; ++i) EXPECT_EQ(source[i], vector.Get_Ptr()[i]);
}

TYPED_TEST(Vector, AssignFailsOnAnEmptyVector) {
  using T = typename TypeParam::Value;
  T const source[] = {Element<T>(1), Element<T>(1)};
  typename TypeParam::Vector vector;
  EXPECT_FALSE(vector.Assign(Element<T>(1)));
  EXPECT_FALSE(vector.Assign(source));
  ExpectShape(vector, 0);
}

TYPED_TEST(Vector, AssignmentIsADeepCopyOfAnySize) {
  using T = typename TypeParam::Value;
  typename TypeParam::Vector source(7, Element<T>(1));
  typename TypeParam::Vector target(2, Element<T>(2));
  EXPECT_EQ(&target, &(target = source));
  ExpectShape(target, 7);
  EXPECT_NE(source.Get_Ptr(), target.Get_Ptr());
  source.Assign(Element<T>(2));
  for (int i = 0; i < 7 + TypeParam::kBase; ++i) EXPECT_EQ(Element<T>(1), target.Get_Ptr()[i]);
}

TYPED_TEST(Vector, AssignmentToAnEmptyVectorFillsIt) {
  typename TypeParam::Vector const source(3);
  typename TypeParam::Vector target;
  target = source;
  ExpectShape(target, 3);
}

TYPED_TEST(Vector, AssignmentFromAnEmptyVectorEmptiesAndLeavesItUsable) {
  typename TypeParam::Vector const empty;
  typename TypeParam::Vector target(4);
  target = empty;
  ExpectShape(target, 0);
  EXPECT_TRUE(target.Create(2));
  ExpectShape(target, 2);
}

TYPED_TEST(Vector, SelfAssignmentKeepsTheBlock) {
  using T = typename TypeParam::Value;
  typename TypeParam::Vector vector(3, Element<T>(1));
  T const* const block = vector.Get_Ptr();
  typename TypeParam::Vector const& same = vector;
  vector = same;
  EXPECT_EQ(block, vector.Get_Ptr());
  EXPECT_EQ(Element<T>(1), vector.Get_Ptr()[2]);
}

}  // namespace
}  // namespace zyn_test::czyn_vector_test
