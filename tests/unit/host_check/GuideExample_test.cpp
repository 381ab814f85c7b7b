#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "host_check/CheckHostData.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

// The function of the guide, word for word.
// begin
bool HostIsSound(CZYN3DFiniteVolumeMesh* mesh, CPartitionFace_DLL* faces, CCommunication* communication,
                 CZYNCom* reduction, CZyn3dGV* globals, int rank) {
  host_check::HostCheckOptions options;
  options.log = &std::cerr;  // each breach when it is found
  options.label = "rank " + std::to_string(rank) + ": ";
  host_check::HostCheckReport report;
  int const nBreaches =
      host_check::CheckHostData(mesh, faces, communication, reduction, globals, report, options);

  int worst = -nBreaches;  // stop on all partitions or on none
  reduction->AllMin(worst);
  return worst == 0;
}
// end

std::vector<bool> SoundOnPartitions(CheckedRun& run) {
  std::vector<char> isSound(run.lent.size(), 0);
  reference_host::RunInProcess(static_cast<int>(run.lent.size()), [&](int p) {
    LentHost const& host = run.lent[p];
    isSound[p] =
        HostIsSound(host.mesh, host.partitionFaces, host.communication, host.reduction, host.globals, p) ? 1
                                                                                                         : 0;
  });
  return {isSound.begin(), isSound.end()};
}

TEST(GuideExample, AllPartitionsGoOnOrAllStop) {
  CheckedRun run(test_meshes::HexBox(4, 2, 2), test_meshes::RunParts(16, 2), 2);
  EXPECT_EQ(std::vector<bool>({true, true}), SoundOnPartitions(run));
  run.lent[1].mesh->Volume[3] = 0;
  testing::internal::CaptureStderr();
  EXPECT_EQ(std::vector<bool>({false, false}), SoundOnPartitions(run));
  EXPECT_EQ("rank 1: [bad-volume] interior cell 3 has the volume 0\n",
            testing::internal::GetCapturedStderr());
}

/// The text without blanks and line breaks.
std::string Squeezed(std::string const& text) {
  std::string result;
  for (char const c : text)
    if (c != ' ' && c != '\n') result += c;
  return result;
}

std::string ContentOf(std::string const& path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return content.str();
}

TEST(GuideExample, IsTheCodeOfTheGuide) {
  std::string const data = ZYN_TEST_DATA;
  std::string const source = ContentOf(data + "/../unit/host_check/GuideExample_test.cpp");
  std::size_t const begin = source.find("// begin\n") + 9, end = source.find("// end\n");
  ASSERT_LT(begin, end);
  EXPECT_NE(Squeezed(ContentOf(data + "/../../docs/use/porting.md"))
                .find(Squeezed(source.substr(begin, end - begin))),
            std::string::npos);
}

}  // namespace
