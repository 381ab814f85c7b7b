// Hosts whose meshes continue beyond their boundary, on one partition and on several.

#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace {

TEST(PeriodicHost, IsSoundOnAnyNumberOfPartitions) {
  for (auto const& [name, mesh] : test_meshes::PeriodicMeshes()) {
    for (int const nParts : {1, 2, 3}) {
      if (mesh.nCells < nParts) continue;
      CheckedRun run(mesh, test_meshes::RunParts(mesh.nCells, nParts), nParts);
      for (host_check::HostCheckReport const& report : run.Check()) {
        std::ostringstream text;
        report.Print(text);
        EXPECT_EQ(report.Count(), 0) << name << " in " << nParts << " parts\n" << text.str();
      }
    }
  }
}

}  // namespace
