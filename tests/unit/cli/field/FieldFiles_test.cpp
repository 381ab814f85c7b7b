// Fields of cases that OpenFOAM wrote, as commands read them.

#include "cli/field/FieldFiles.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/base/UsageError.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

std::string const kCavity = std::string(ZYN_TEST_DATA) + "/openfoam_cases/cavity";

std::string Refusal(FieldFileOptions const& options, std::string const& mesh = kCavity) {
  try {
    FieldFiles files(options);
    files.FindTimes(TestRanks(), mesh);
  } catch (UsageError const& error) {
    return error.what();
  }
  return "taken";
}

TEST(FieldFiles, HasOneTimeWithoutANameUnlessTimesAreChosen) {
  FieldFiles const none;
  EXPECT_TRUE(none.IsEmpty());
  EXPECT_EQ(none.times(), std::vector<std::string>{""});
  FieldFiles files({{"0.4/U"}, ""});
  files.FindTimes(TestRanks(), kCavity);
  EXPECT_FALSE(files.HasTimes());
  EXPECT_EQ(files.times(), std::vector<std::string>{""});
  EXPECT_EQ(files.PathAt(0, 0), "0.4/U");
}

TEST(FieldFiles, FindsTheTimesOfACase) {
  FieldFiles files({{"U", "p"}, "0.1:"});
  files.FindTimes(TestRanks(), kCavity);
  EXPECT_EQ(files.times(), (std::vector<std::string>{"0.2", "0.4"}));
  EXPECT_EQ(files.PathAt(1, 0), kCavity + "/0.4/U");
}

TEST(FieldFiles, GivesEachFieldANameOfItsOwn) {
  FieldFiles const files({{"0.2/p", "0.4/p", "wing.cgns:Flow/Velocity", "T.gz", "rank"}, ""});
  EXPECT_EQ(files.names(), (std::vector<std::string>{"p", "p_2", "Velocity", "T", "rank_2"}));
}

TEST(FieldFiles, RefusesTimesThatFieldsCannotHave) {
  EXPECT_EQ(Refusal({{}, "all"}), "--time chooses the times of --field-file, which is not given");
  EXPECT_EQ(Refusal({{"a.cgns:p"}, "all"}),
            "--time: \"a.cgns:p\" is an array of a CGNS file, which has no times");
  EXPECT_EQ(Refusal({{"0.4/U"}, "all"}),
            "--time chooses the folder of the field: give --field-file U instead of \"0.4/U\"");
  EXPECT_EQ(Refusal({{"U"}, "all"}, "box:3,3,3"),
            "--time: \"box:3,3,3\" is no OpenFOAM case with folders of times");
  EXPECT_EQ(Refusal({{"U", "T"}, "0.2"}), "--time \"0.2\": no field \"T\"; fields of time 0.2: U, p");
  EXPECT_EQ(Refusal({{"U", "T"}, "all"}),
            "--time \"all\": no time has all fields, and 0.4 has no \"T\"; fields of time 0.4: U, p");
}

TEST(FieldFiles, ReadsFieldsAndSaysWhichValuesTheyTookAtTheBoundary) {
  FieldFiles files({{"U", "p"}, "latest"});
  files.FindTimes(TestRanks(), kCavity);
  reference_host::GroupRules rules;
  rules.fallback = reference_host::BoundaryGroup::Wall;
  reference_host::LoadedMesh mesh = reference_host::LoadMesh(TestRanks().communicator(), kCavity, rules, {});
  std::vector<std::string> warnings;
  std::vector<FileField> const fields = files.Read(TestRanks(), mesh, 0, warnings);
  ASSERT_EQ(fields.size(), 2U);
  EXPECT_TRUE(fields[0].IsVector());
  EXPECT_EQ(fields[1].component.size(), 1U);
  EXPECT_FALSE(fields[1].component[0].HasExactGradient());
  EXPECT_TRUE(warnings.empty());
  EXPECT_EQ(
      BoundaryValuesInWords(fields[0]),
      "U at the boundary: values of the file at \"lid\", \"sides\"; values of the cells at \"frontAndBack\"");
  EXPECT_EQ(BoundaryValuesAsJson(fields[0]).dump(), R"({"lid":"file","sides":"file","frontAndBack":"cell"})");
}

FileField WithPatch(reference_host::FaceValues values) { return {"U", {}, {{"top", values, false}}}; }

TEST(FieldFiles, PrintsTheBoundaryAgainWhereItChanges) {
  std::vector<std::string> const names = {"0", "1", "2"};
  std::vector<FileField> const cell = {WithPatch(reference_host::FaceValues::Cell)},
                               file = {WithPatch(reference_host::FaceValues::File)};
  std::ostringstream out;
  PrintBoundaryValues(out, {{names[0], cell}, {names[1], file}, {names[2], file}});
  EXPECT_EQ(out.str(),
            "U at the boundary: values of the cells at \"top\"\n"
            "from time 1 on, U at the boundary: values of the file at \"top\"\n\n");
}

}  // namespace
}  // namespace zyngrad
