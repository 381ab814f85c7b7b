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
  EXPECT_EQ(plain.nx, 4);
  EXPECT_EQ(plain.ny, 3);
  EXPECT_EQ(plain.nz, 2);
  EXPECT_EQ(plain.shape, BoxSpec::Shape::Hex);
  EXPECT_EQ(plain.perturb, 0.0);

  BoxSpec const full = ParseBoxSpec("box:10,20,30:tet:perturb=0.25,seed=42");
  EXPECT_EQ(full.shape, BoxSpec::Shape::Tet);
  EXPECT_EQ(full.perturb, 0.25);
  EXPECT_EQ(full.seed, 42u);

  EXPECT_EQ(ParseBoxSpec("box:1,1,1:prism").shape, BoxSpec::Shape::Prism);
  EXPECT_EQ(ParseBoxSpec("box:1,1,1:perturb=1e-2").perturb, 0.01);
  EXPECT_EQ(ParseBoxSpec("box:1,1,1:dual").shape, BoxSpec::Shape::Dual);
  EXPECT_EQ(plain.stretch, 1.0);
  EXPECT_EQ(plain.skew, 0.0);
  EXPECT_EQ(ParseBoxSpec("box:1,1,1:hex:stretch=1000,skew=0.25").stretch, 1000.0);
  EXPECT_EQ(ParseBoxSpec("box:1,1,1:hex:stretch=1000,skew=0.25").skew, 0.25);
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
    EXPECT_EQ(error.find(text), 0u) << error;
    EXPECT_NE(error.find(piece), std::string::npos) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
}

TEST(BoxSpec, RefusesBoxesThatA32BitNumberCannotCount) {
  EXPECT_EQ(ErrorOf("box:890,890,890"), "");      // 2.117e9 faces
  EXPECT_NE(ErrorOf("box:895,895,895"), "");      // 2.153e9 faces
  EXPECT_NE(ErrorOf("box:600,600,600:tet"), "");  // 2.6e9 faces
  EXPECT_NE(ErrorOf("box:2147483647,2147483647,2147483647"), "");
  EXPECT_NE(ErrorOf("box:2147483647,1,1"), "");
}

}  // namespace reference_host
