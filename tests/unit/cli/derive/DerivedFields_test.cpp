#include "cli/derive/DerivedFields.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/base/TextTable.h"
#include "cli/base/UsageError.h"
#include "cli/derive/DerivedReport.h"
#include "cli/field/Expression.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

Quantity const& Named(std::string const& name) { return *ChooseQuantities({name}).front(); }

std::vector<Quantity const*> All() { return ChooseQuantities({"grad,div,curl,Q,strain"}); }

std::string ErrorOf(std::string const& list) {
  try {
    ChooseQuantities({list});
  } catch (UsageError const& error) {
    return error.what();
  }
  return "no error";
}

TEST(Quantities, AreChosenByNameInTheOrderOfTheTable) {
  auto const chosen = ChooseQuantities({"Q,curl", "div,Q"});
  ASSERT_EQ(3u, chosen.size());
  EXPECT_STREQ("div", chosen[0]->name);
  EXPECT_STREQ("curl", chosen[1]->name);
  EXPECT_STREQ("Q", chosen[2]->name);
  EXPECT_TRUE(ChooseQuantities({}).empty());
}

TEST(Quantities, RefuseUnknownNames) {
  EXPECT_EQ("unknown quantity \"vorticity\": expected grad, div, curl, Q, strain", ErrorOf("Q,vorticity"));
  EXPECT_EQ("unknown quantity \"\": expected grad, div, curl, Q, strain", ErrorOf("Q,"));
}

TEST(Quantities, HaveTheNamesOfOpenFoamsOwnPrograms) {
  EXPECT_EQ("grad(U)", FoamNameOf(Named("grad"), "U"));
  EXPECT_EQ("vorticity", FoamNameOf(Named("curl"), "U"));
  EXPECT_EQ("vorticity(UMean)", FoamNameOf(Named("curl"), "UMean"));
  EXPECT_EQ("Q", FoamNameOf(Named("Q"), "U"));
}

TEST(Quantities, DescribeAllTheirComponents) {
  for (Quantity const& quantity : Quantities()) {
    auto const n = static_cast<std::size_t>(quantity.nComponents);
    EXPECT_EQ(n, quantity.times.size()) << quantity.name;
    EXPECT_EQ(n == 1 ? 0 : n, quantity.components.size()) << quantity.name;
    for (std::vector<int> const& order : {quantity.inVtk, quantity.inOpenFoam}) {
      ASSERT_EQ(n, order.size()) << quantity.name;
      std::vector<double> identity(n);
      for (std::size_t k = 0; k < n; ++k) identity[k] = static_cast<double>(k);
      std::vector<double> reordered = Reordered(identity, order);
      std::sort(reordered.begin(), reordered.end());
      EXPECT_EQ(identity, reordered) << quantity.name;
    }
  }
}

// d u_y / d x is 4: VTK has it behind the gradient of u_x, OpenFOAM as component xy.
TEST(Quantities, OrderTensorsAsTheirReadersExpect) {
  Jacobian const g = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 10}}};
  std::vector<double> tensor(9), strain(6);
  Named("grad").evaluate(g, tensor.data());
  Named("strain").evaluate(g, strain.data());
  EXPECT_EQ((std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 10}), Reordered(tensor, Named("grad").inVtk));
  EXPECT_EQ((std::vector<double>{1, 4, 7, 2, 5, 8, 3, 6, 10}), Reordered(tensor, Named("grad").inOpenFoam));
  EXPECT_EQ((std::vector<double>{1, 5, 10, 3, 7, 5}), Reordered(strain, Named("strain").inVtk));
  EXPECT_EQ(strain, Reordered(strain, Named("strain").inOpenFoam));
}

TEST(Quantities, NameTheComponentsOfTheirArrays) {
  VtkArray const array = VtkArrayOf(Named("strain"), "strain_rate_lsq", {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(6, array.nComponents);
  EXPECT_EQ((std::vector<std::string>{"xx", "yy", "zz", "xy", "yz", "xz"}), array.componentNames);
  EXPECT_EQ((std::vector<double>{1, 4, 6, 2, 5, 3}), std::get<std::vector<double>>(array.values));
  EXPECT_TRUE(VtkArrayOf(Named("Q"), "Q", {1}).componentNames.empty());
}

TEST(DerivedFields, MeasureTensorsByTheFrobeniusNorm) {
  EXPECT_EQ((std::vector<double>{0, 5}), NormsInCells(Named("curl"), {0, 3, 4}));
  // A symmetric tensor has the components beside its diagonal twice: 1 + 2 * 4 + 4.
  EXPECT_EQ((std::vector<double>{0, std::sqrt(1.0 + 2 * 4.0 + 4.0)}),
            NormsInCells(Named("strain"), {1, 2, 0, 2, 0, 0}));
  std::vector<double> const exact = {1, 0, 0, 2, 0, 0};
  EXPECT_EQ((std::vector<double>{0, std::sqrt(8.0)}),
            NormsInCells(Named("strain"), {1, 2, 0, 2, 0, 0}, &exact));
}

/// Three formulas on 27 cubes, with their exact gradients as the computed ones.
class DerivedFieldsOfCubes : public testing::Test {
 protected:
  DerivedFieldsOfCubes() : partition_(BoxPartition("box:3,3,3")) {
    // div = 2x + x + y, curl = (z - 0, 0 - 0, y - 2y)
    for (char const* formula : {"x^2 + y^2", "x*y", "y*z"})
      fields_.push_back(MakeTestField(TestRanks(), *partition_, Expression(formula)));
    for (TestField const& field : fields_) computed_.push_back({field.gx, field.gy, field.gz});
    isBoundaryCell_ = BoundaryCells(*partition_->mesh());
  }

  std::vector<ExactQuantity> Exact(std::vector<Quantity const*> const& quantities) {
    return ExactQuantities(TestRanks(), *partition_->mesh(), quantities,
                           ExactGradientsOf({&fields_[0], &fields_[1], &fields_[2]}));
  }
  std::vector<DerivedField> Computed(std::vector<Quantity const*> const& quantities,
                                     std::vector<ExactQuantity> const& exact) {
    return Derive(TestRanks(), *partition_, quantities,
                  GradientsOf({&computed_[0], &computed_[1], &computed_[2]}), exact, isBoundaryCell_);
  }

  std::unique_ptr<reference_host::HostPartition> partition_;
  std::vector<TestField> fields_;
  std::vector<GradientArrays> computed_;
  std::vector<char> isBoundaryCell_;
};

TEST_F(DerivedFieldsOfCubes, OfExactGradientsHaveNoErrors) {
  auto const exact = Exact(All());
  for (DerivedField const& field : Computed(All(), exact)) {
    EXPECT_EQ(1, field.norms.interior.nCells);
    EXPECT_EQ(26, field.norms.boundary.nCells);
    EXPECT_EQ(0.0, field.norms.interior.max);
    EXPECT_EQ(0.0, field.norms.boundary.max);
    EXPECT_TRUE(field.HasErrors());
  }
}

TEST_F(DerivedFieldsOfCubes, AreTheFormulasAtTheCellCentres) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition_->mesh();
  auto const fields = Computed(All(), {});
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    double const x = mesh.xc[c], y = mesh.yc[c], z = mesh.zc[c];
    auto const i = static_cast<std::size_t>(c - 1);
    constexpr double kRounding = 1e-14;
    EXPECT_NEAR(3 * x + y, fields[1].values[i], kRounding);
    EXPECT_NEAR(z, fields[2].values[3 * i], kRounding);
    EXPECT_NEAR(0.0, fields[2].values[3 * i + 1], kRounding);
    EXPECT_NEAR(y - 2 * y, fields[2].values[3 * i + 2], kRounding);
    // Pairs of diagonal minors: 2x*x - 2y*y, 2x*y, x*y - 0*z
    EXPECT_NEAR(2 * x * x - 2 * y * y + 2 * x * y + x * y, fields[3].values[i], kRounding);
    EXPECT_NEAR(1.5 * y, fields[4].values[6 * i + 1], kRounding);
    EXPECT_NEAR(0.5 * z, fields[4].values[6 * i + 4], kRounding);
  }
}

TEST_F(DerivedFieldsOfCubes, MeasureTheFrobeniusNormOfTheDifference) {
  auto const quantities = ChooseQuantities({"grad,div"});
  auto const exact = Exact(quantities);
  for (std::size_t c = 1; c <= 27; ++c)
    computed_[0].y[c] += 3.0, computed_[2].x[c] += 4.0, computed_[1].y[c] -= 12.0;
  auto const fields = Computed(quantities, exact);
  EXPECT_NEAR(13.0, fields[0].norms.interior.l2, 1e-13);
  EXPECT_NEAR(13.0, fields[0].norms.boundary.l1, 1e-13);
  EXPECT_NEAR(13.0 / exact[0].l2, fields[0].norms.boundary.relativeL2, 1e-13);
  EXPECT_NEAR(12.0, fields[1].norms.boundary.max, 1e-13);
}

TEST_F(DerivedFieldsOfCubes, HaveRangesWhereNothingExactIsKnown) {
  auto const fields = Computed(ChooseQuantities({"curl"}), {});
  EXPECT_FALSE(fields[0].HasErrors());
  EXPECT_NEAR(1.0 / 6.0, fields[0].lowest[0], 1e-15);
  EXPECT_NEAR(5.0 / 6.0, fields[0].highest[0], 1e-15);
  EXPECT_NEAR(-5.0 / 6.0, fields[0].lowest[2], 1e-15);
  EXPECT_NEAR(std::sqrt(0.5), fields[0].norms.interior.max, 1e-15);
}

TEST_F(DerivedFieldsOfCubes, CountWhatIsNotFinite) {
  computed_[1].x[5] = std::numeric_limits<double>::quiet_NaN();
  auto const fields = Computed(ChooseQuantities({"div,curl"}), {});
  EXPECT_EQ(0, fields[0].NotFiniteCells());  // d u_y / d x is not in it
  EXPECT_EQ(1, fields[1].NotFiniteCells());
  EXPECT_NEAR(-5.0 / 6.0, fields[1].lowest[2], 1e-15);
  std::ostringstream out;
  PrintDerivedFields(out, {"U", {}, {{"lsq", fields}}}, kPlaceDigits);
  EXPECT_NE(std::string::npos, out.str().find("lsq: curl is not finite in 1 of 27 cells")) << out.str();
}

TEST_F(DerivedFieldsOfCubes, AreReportedWithTheirErrors) {
  auto const quantities = ChooseQuantities({"Q"});
  auto const exact = Exact(quantities);
  auto const fields = Computed(quantities, exact);
  DerivedOfField of = {"u", exact, {{"lsq", fields}}};
  auto const json = DerivedFieldsAsJson(of);
  EXPECT_EQ("lsq", json[0]["method"]);
  EXPECT_EQ("Q", json[0]["errors"][0]["quantity"]);
  EXPECT_EQ(exact[0].l2, json[0]["errors"][0]["exactL2"]);
  EXPECT_EQ(0.0, json[0]["errors"][0]["boundary"]["l2Relative"]);
  EXPECT_FALSE(json[0]["errors"][0].contains("range"));
  std::ostringstream out;
  PrintDerivedFields(out, of, kPlaceDigits);
  EXPECT_NE(std::string::npos, out.str().find("L2 relative")) << out.str();
}

TEST_F(DerivedFieldsOfCubes, AreReportedWithTheirRanges) {
  auto const json =
      DerivedFieldsAsJson({"U", {}, {{"lsq", Computed(ChooseQuantities({"div,strain"}), {})}}})[0]["norms"];
  EXPECT_TRUE(json[0]["range"].contains("value"));
  EXPECT_NEAR(0.25, json[1]["range"]["xy"][0].get<double>(), 1e-15);
  EXPECT_FALSE(json[1]["interior"].contains("l2Relative"));
}

}  // namespace
}  // namespace zyngrad
