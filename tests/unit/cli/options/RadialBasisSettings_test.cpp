#include "cli/options/RadialBasisSettings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "cli/output/RunSettings.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "tests/unit/cli/TextOfFile.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

TEST(RadialBasisSettings, AreWrittenAsTheOperatorWritesItsDefaults) {
  TemporaryFolder const folder;
  CZynRBFInternalObject op;
  std::strcpy(op.m_szRBFFileName, (folder.path() + "/own.rbf").c_str());
  testing::internal::CaptureStdout();
  op.ReadRBFbackdoorfile();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(SettingsFileText({}), TextOfFile(folder.path() + "/own.rbf"));
  EXPECT_EQ("1001\nSpan              = 500\nShape Normalize   = 0\n", SettingsFileText({}));
}

TEST(RadialBasisSettings, HoldASpanInAsFewDigitsAsItTakes) {
  EXPECT_EQ("1001\nSpan              = 2.5\nShape Normalize   = 1\n", SettingsFileText({2.5, true}));
  EXPECT_EQ("1001\nSpan              = 0.1\nShape Normalize   = 0\n", SettingsFileText({0.1, false}));
}

TEST(RadialBasisSettings, AreReadByTheOperatorToTheLastBit) {
  TemporaryFolder const folder;
  for (double const span : {500.0, 1.0 / 3.0, 12345678.9, 1e-30}) {
    std::string const base =
        WriteSettingsText(folder.path() + "/settings.rank0.rbf", SettingsFileText({span, true}));
    std::string name = base;
    CZynRBFInternalObject op;
    op.ChangeFileName(op.m_szRBFFileName, ".rbf", name.data());
    testing::internal::CaptureStdout();
    op.ReadRBFbackdoorfile();
    EXPECT_EQ("iShape_Normalize = On\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(op.Span, span);
    EXPECT_EQ(1, op.iShape_Normalize);
  }
}

TEST(RadialBasisSettings, ReplaceALinkAndLeaveWhatItPointedTo) {
  TemporaryFolder const folder;
  std::string const users = folder.path() + "/users.rbf", own = folder.path() + "/own.rbf";
  std::ofstream(users) << "1002\n";
  fs::create_symlink(users, own);
  WriteSettingsText(own, SettingsFileText({}));
  EXPECT_EQ("1002\n", TextOfFile(users));
  EXPECT_EQ(TextOfFile(own), SettingsFileText({}));
}

TEST(RadialBasisSettings, RefuseAPlaceThatCannotBeWritten) {
  TemporaryFolder const folder;
  EXPECT_THROW(WriteSettingsText(folder.path() + "/missing/own.rbf", ""), UsageError);
  EXPECT_THROW(WriteSettingsText(std::string(1020, 'a') + ".rbf", ""), UsageError);
}

}  // namespace
}  // namespace zyngrad
