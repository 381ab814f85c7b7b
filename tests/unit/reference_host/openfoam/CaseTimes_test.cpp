#include "reference_host/openfoam/CaseTimes.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/unit/reference_host/MeshTestSupport.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

TEST(CaseTimes, CaseOfPolyMeshLeavesOutConstantAndPolyMesh) {
  EXPECT_EQ(CaseOfPolyMesh("a/case/constant/polyMesh"), "a/case");
  EXPECT_EQ(CaseOfPolyMesh("a/case/constant/polyMesh/"), "a/case");
  EXPECT_EQ(CaseOfPolyMesh("case/polyMesh"), "case");
  EXPECT_EQ(CaseOfPolyMesh("constant/polyMesh"), ".");
}

TEST(CaseTimes, TimesAreFoldersWithNumbersAsNamesInTheirOrder) {
  TemporaryFolder const folder;
  for (char const* name :
       {"10", "2", "0", "0.5", "1e-05", "-1", "constant", "0.orig", "inf", "nan", "0x1", "1 "})
    fs::create_directory(folder.Path() + "/" + name);
  folder.Write("3", "a file");
  EXPECT_EQ(TimesIn(folder.Path()), (Names{"-1", "0", "1e-05", "0.5", "2", "10"}));
  EXPECT_TRUE(TimesIn(folder.Path() + "/none").empty());
}

TEST(CaseTimes, FieldsAreFilesCompressedOrNot) {
  TemporaryFolder const folder;
  for (char const* name : {"p", "U.gz", "T", "T.gz"}) folder.Write(name, "");
  fs::create_directory(folder.Path() + "/uniform");
  EXPECT_EQ(FieldsIn(folder.Path()), (Names{"T", "U", "p"}));
}

TEST(CaseTimes, SaysWhatIsThereInstead) {
  TemporaryFolder const folder;
  EXPECT_EQ(WhatIsThereInstead(folder.Path(), "0/T"), "");
  for (char const* time : {"0", "0.5"}) fs::create_directory(folder.Path() + "/" + time);
  folder.Write("0.5/p", "");
  EXPECT_EQ(WhatIsThereInstead(folder.Path(), "0.5/T"), "; fields of time 0.5: p");
  EXPECT_EQ(WhatIsThereInstead(folder.Path(), "0/T"), "; fields of time 0: none");
  EXPECT_EQ(WhatIsThereInstead(folder.Path(), "1/T"), "; times: 0, 0.5");
  EXPECT_EQ(WhatIsThereInstead(folder.Path(), "T"), "; name its time, as in 0.5/T; times: 0, 0.5");
}

TEST(CaseTimes, FolderOfTimesIsTheCaseOrItsFirstProcessorFolder) {
  std::string const cases = std::string(ZYN_TEST_DATA) + "/openfoam_cases/";
  EXPECT_EQ(FolderOfTimes(cases + "cavity"), cases + "cavity");
  EXPECT_EQ(FolderOfTimes(cases + "cavity/constant/polyMesh"), cases + "cavity");
  EXPECT_EQ(FolderOfTimes(cases + "cavity_parts"), cases + "cavity_parts/processor0");
  EXPECT_EQ(TimesIn(FolderOfTimes(cases + "cavity_collated")), Names{"0.4"});
  EXPECT_EQ(FolderOfTimes("box:3,3,3"), "");
}

}  // namespace
}  // namespace reference_host
