#include "reference_host/box/BoxSpec.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

std::string ErrorOf(std::string const& text) {
  try {
    ParseBoxSpec(text);
  } catch (MeshError const& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(BoxSpec, ReadsCountsShapeAndPerturbation) {
  BoxSpec const plain = ParseBoxSpec("box:4,3,2");
  EXPECT_EQ(4, plain.nx);
  EXPECT_EQ(3, plain.ny);
  EXPECT_EQ(2, plain.nz);
  EXPECT_EQ(BoxSpec::Shape::Hex, plain.shape);
  EXPECT_EQ(0.0, plain.perturb);

  BoxSpec const full = ParseBoxSpec("box:10,20,30:tet:perturb=0.25,seed=42");
  EXPECT_EQ(BoxSpec::Shape::Tet, full.shape);
  EXPECT_EQ(0.25, full.perturb);
  EXPECT_EQ(42u, full.seed);

  EXPECT_EQ(BoxSpec::Shape::Prism, ParseBoxSpec("box:1,1,1:prism").shape);
  EXPECT_EQ(0.01, ParseBoxSpec("box:1,1,1:perturb=1e-2").perturb);
  EXPECT_EQ(BoxSpec::Shape::Dual, ParseBoxSpec("box:1,1,1:dual").shape);
  EXPECT_EQ(1.0, plain.stretch);
  EXPECT_EQ(0.0, plain.skew);
  EXPECT_EQ(1000.0, ParseBoxSpec("box:1,1,1:hex:stretch=1000,skew=0.25").stretch);
  EXPECT_EQ(0.25, ParseBoxSpec("box:1,1,1:hex:stretch=1000,skew=0.25").skew);
  EXPECT_TRUE(IsBoxSpec("box:nonsense"));
  EXPECT_FALSE(IsBoxSpec("meshes/box.msh"));
}

TEST(BoxSpec, RefusesMalformedTextNamingThePiece) {
  std::vector<std::pair<std::string, std::string>> const wrong = {
      {"cube:1,1,1", "box:NX,NY,NZ"},
      {"box:", "three cell counts"},
      {"box:4,4", "\"4,4\""},
      {"box:4,4,4,4", "\"4,4,4,4\""},
      {"box:4,0,2", "cell counts must be 1 or more, not 0"},
      {"box:4,-1,2", "not -1"},
      {"box:4,x,2", "\"x\""},
      {"box:4, 3,2", "\" 3\""},
      {"box:4,3.5,2", "\"3.5\""},
      {"box:4,99999999999,2", "\"99999999999\" is too large"},
      {"box:4,3,2:pyramid", "cells are hex, tet, prism or dual, not \"pyramid\""},
      {"box:4,3,2:hex:stretch=0.5", "stretch must be at least 1 and at most 1e+06, not 0.5"},
      {"box:4,3,2:hex:stretch=nan", "not nan"},
      {"box:4,3,2:hex:stretch=2e6", "not 2e+06"},
      {"box:4,3,2:hex:stretch=far", "stretch \"far\""},
      {"box:4,3,2:hex:skew=0.3", "skew must be at least 0 and less than 0.3, not 0.3"},
      {"box:4,3,2:hex:skew=-0.1", "not -0.1"},
      {"box:4,3,2:hex:perturb=", "perturb \"\""},
      {"box:4,3,2:hex:perturb=a", "perturb \"a\""},
      {"box:4,3,2:hex:perturb=0.5", "less than 0.5, not 0.5"},
      {"box:4,3,2:hex:perturb=-0.1", "not -0.1"},
      {"box:4,3,2:hex:perturb=nan", "not nan"},
      {"box:4,3,2:hex:perturb=0.1,seed=-1", "seed \"-1\""},
      {"box:4,3,2:hex:scale=2",
       "unknown option \"scale=2\", there are perturb=A, seed=S, stretch=F and skew=W"},
      {"box:4,3,2:hex:perturb=0.1:more", "\"more\""},
      {"box:4,3,2:perturb=0.1:hex", "\"hex\""}};
  for (auto const& [text, piece] : wrong) {
    std::string const error = ErrorOf(text);
    EXPECT_EQ(0u, error.find(text)) << error;
    EXPECT_NE(error.find(piece), std::string::npos) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
}

TEST(BoxSpec, RefusesBoxesThatA64BitNumberCannotCount) {
  EXPECT_EQ("", ErrorOf("box:4000,4000,4000:tet"));
  EXPECT_EQ("", ErrorOf("box:2147483645,1,1"));
  EXPECT_NE(ErrorOf("box:2147483646,1,1").find("2147483645 or less"), std::string::npos);
  EXPECT_NE(ErrorOf("box:2147483645,2147483645,2147483645").find("64-bit"), std::string::npos);
  EXPECT_NE("", ErrorOf("box:2147483647,2147483647,2147483647"));
}

}  // namespace reference_host
