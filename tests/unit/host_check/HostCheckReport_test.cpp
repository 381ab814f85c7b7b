#include "host_check/HostCheckReport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using host_check::HostBreach;
using host_check::HostCheckOptions;
using host_check::HostCheckReport;

std::string PrintOf(HostCheckReport const& report, std::string const& label = "") {
  std::ostringstream out;
  report.Print(out, label);
  return out.str();
}

void AddZeroArea(HostCheckReport& report, int face) {
  report.Add(HostBreach::ZeroArea, face, [face] { return "face " + std::to_string(face); });
}

TEST(HostCheckReport, IsEmptyAtFirst) {
  HostCheckReport const report;
  EXPECT_EQ(0, report.Count());
  EXPECT_EQ("host data: 0 breaches found\n", PrintOf(report));
}

TEST(HostCheckReport, TellsTheFirstOfAKindAndCountsAll) {
  HostCheckReport report;
  HostCheckOptions options;
  options.maxPerKind = 2;
  report.Begin(options);
  for (int f = 1; f <= 7; ++f) AddZeroArea(report, f);
  report.Add(HostBreach::BadVolume, 3, [] { return std::string("cell 3"); });
  EXPECT_EQ(8, report.Count());
  EXPECT_EQ(7, report.Count(HostBreach::ZeroArea));
  ASSERT_EQ(3u, report.Told().size());
  EXPECT_EQ(2, report.Told()[1].entity);
  EXPECT_EQ(
      "p0: [zero-area] face 1\n"
      "p0: [zero-area] face 2\n"
      "p0: [zero-area] 5 more, 7 in all\n"
      "p0: [bad-volume] cell 3\n"
      "p0: host data: 8 breaches found\n",
      PrintOf(report, "p0: "));
}

TEST(HostCheckReport, TextIsMadeOnlyWhenItIsTold) {
  HostCheckReport report;
  HostCheckOptions options;
  options.maxPerKind = 0;
  report.Begin(options);
  bool wasMade = false;
  report.Add(HostBreach::NotFinite, 1, [&] {
    wasMade = true;
    return std::string();
  });
  EXPECT_FALSE(wasMade);
  EXPECT_EQ("[not-finite] 1 more, 1 in all\nhost data: 1 breach found\n", PrintOf(report));
}

TEST(HostCheckReport, BeginForgetsWhatWasFound) {
  HostCheckReport report;
  AddZeroArea(report, 1);
  report.AddNote("a note");
  report.Begin({});
  EXPECT_EQ(0, report.Count());
  EXPECT_TRUE(report.Told().empty());
  EXPECT_TRUE(report.Notes().empty());
}

TEST(HostCheckReport, NoteIsNoBreach) {
  HostCheckReport report;
  report.AddNote("something was left out");
  EXPECT_EQ("something was left out\nhost data: 0 breaches found\n", PrintOf(report));
}

TEST(HostCheckReport, LogGetsEachBreachWhenItIsFound) {
  HostCheckReport report;
  HostCheckOptions options;
  std::ostringstream log;
  options.log = &log;
  options.label = "partition 2: ";
  report.Begin(options);
  AddZeroArea(report, 4);
  EXPECT_EQ("partition 2: [zero-area] face 4\n", log.str());
  report.AddNote("note");
  EXPECT_EQ("partition 2: [zero-area] face 4\npartition 2: note\n", log.str());
}

TEST(HostCheckReport, LimitOfTheOptionsHoldsInACheck) {
  CheckedRun run(test_meshes::HexBox(3, 3, 3));
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  for (int c = 1; c <= 20; ++c) m.Volume[c] = 0;
  HostCheckOptions options;
  options.maxPerKind = 3;
  HostCheckReport const report = run.Check(options)[0];
  EXPECT_EQ(20, report.Count());
  EXPECT_EQ(3u, report.Told().size());
}

TEST(HostBreach, NamesAreAllDifferent) {
  std::set<std::string> names;
  for (int k = 0; k < host_check::kHostBreaches; ++k) names.insert(NameOf(static_cast<HostBreach>(k)));
  EXPECT_EQ(names.size(), static_cast<std::size_t>(host_check::kHostBreaches));
  EXPECT_STREQ("area-wrong-way", NameOf(HostBreach::AreaWrongWay));
  EXPECT_STREQ("non-blocking-differs", NameOf(HostBreach::NonBlockingDiffers));
}

// The guide for solver authors explains every message under its name.
TEST(HostBreach, EveryKindIsExplainedInTheGuide) {
  std::ifstream file(ZYN_TEST_DATA "/../../docs/use/porting.md");
  ASSERT_TRUE(file.is_open());
  std::string const guide((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  for (int k = 0; k < host_check::kHostBreaches; ++k) {
    std::string const name = NameOf(static_cast<HostBreach>(k));
    EXPECT_NE(guide.find("`" + name + "`"), std::string::npos) << name;
  }
}

}  // namespace
