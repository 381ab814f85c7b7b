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
  EXPECT_EQ(report.Count(), 0);
  EXPECT_EQ(PrintOf(report), "host data: 0 breaches found\n");
}

TEST(HostCheckReport, TellsTheFirstOfAKindAndCountsAll) {
  HostCheckReport report;
  HostCheckOptions options;
  options.maxPerKind = 2;
  report.Begin(options);
  for (int f = 1; f <= 7; ++f) AddZeroArea(report, f);
  report.Add(HostBreach::BadVolume, 3, [] { return std::string("cell 3"); });
  EXPECT_EQ(report.Count(), 8);
  EXPECT_EQ(report.Count(HostBreach::ZeroArea), 7);
  ASSERT_EQ(report.Told().size(), 3u);
  EXPECT_EQ(report.Told()[1].entity, 2);
  EXPECT_EQ(PrintOf(report, "p0: "),
            "p0: [zero-area] face 1\n"
            "p0: [zero-area] face 2\n"
            "p0: [zero-area] 5 more, 7 in all\n"
            "p0: [bad-volume] cell 3\n"
            "p0: host data: 8 breaches found\n");
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
  EXPECT_EQ(PrintOf(report), "[not-finite] 1 more, 1 in all\nhost data: 1 breach found\n");
}

TEST(HostCheckReport, BeginForgetsWhatWasFound) {
  HostCheckReport report;
  AddZeroArea(report, 1);
  report.AddNote("a note");
  report.Begin({});
  EXPECT_EQ(report.Count(), 0);
  EXPECT_TRUE(report.Told().empty());
  EXPECT_TRUE(report.Notes().empty());
}

TEST(HostCheckReport, NoteIsNoBreach) {
  HostCheckReport report;
  report.AddNote("something was left out");
  EXPECT_EQ(PrintOf(report), "something was left out\nhost data: 0 breaches found\n");
}

TEST(HostCheckReport, LogGetsEachBreachWhenItIsFound) {
  HostCheckReport report;
  HostCheckOptions options;
  std::ostringstream log;
  options.log = &log;
  options.label = "partition 2: ";
  report.Begin(options);
  AddZeroArea(report, 4);
  EXPECT_EQ(log.str(), "partition 2: [zero-area] face 4\n");
  report.AddNote("note");
  EXPECT_EQ(log.str(), "partition 2: [zero-area] face 4\npartition 2: note\n");
}

TEST(HostCheckReport, LimitOfTheOptionsHoldsInACheck) {
  CheckedRun run(test_meshes::HexBox(3, 3, 3));
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  for (int c = 1; c <= 20; ++c) m.Volume[c] = 0;
  HostCheckOptions options;
  options.maxPerKind = 3;
  HostCheckReport const report = run.Check(options)[0];
  EXPECT_EQ(report.Count(), 20);
  EXPECT_EQ(report.Told().size(), 3u);
}

TEST(HostBreach, NamesAreAllDifferent) {
  std::set<std::string> names;
  for (int k = 0; k < host_check::kHostBreaches; ++k) names.insert(NameOf(static_cast<HostBreach>(k)));
  EXPECT_EQ(names.size(), static_cast<std::size_t>(host_check::kHostBreaches));
  EXPECT_STREQ(NameOf(HostBreach::AreaWrongWay), "area-wrong-way");
  EXPECT_STREQ(NameOf(HostBreach::NonBlockingDiffers), "non-blocking-differs");
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
