#include "cli/options/InterpolationOptions.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <fstream>
#include <sstream>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "cli/output/RunSettings.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "tests/unit/cli/TextOfFile.h"

namespace zyngrad {
namespace {

/// The file that an operator writes when it finds none.
template <class Operator>
std::string DefaultsOf(double meanDistance) {
  TemporaryFolder const folder;
  Operator op;
  std::strcpy(op.RBFFileName, (folder.path() + "/own.rbf").c_str());
  op.MeanDistance = meanDistance;
  testing::internal::CaptureStdout();
  op.ReadRBFbackdoorfile();
  testing::internal::GetCapturedStdout();
  return TextOfFile(folder.path() + "/own.rbf");
}

TEST(InterpolationSettings, AreWrittenAsTheOperatorsWriteTheirDefaults) {
  InterpolationSettings const face = {4, 1000.0, 20, 0.5, false}, point = {3, 500.0, 20, 0.5, false};
  EXPECT_EQ(FaceSettingsText(face), DefaultsOf<CZynFaceRBFInternalObject>(0.25));
  EXPECT_EQ(PointSettingsText(point), DefaultsOf<CZynIBRBFInternalObject>(0.25));
}

TEST(InterpolationSettings, AreReadByTheOperatorsToTheLastBit) {
  TemporaryFolder const folder;
  std::string const file = folder.path() + "/settings.rbf";
  for (double const span : {1.0 / 3.0, 2.5, 500.0, 12345678.9}) {
    InterpolationSettings const settings = {2, span, 33, 0.125, true};
    CZynFaceRBFInternalObject face;
    CZynIBRBFInternalObject point;
    std::string base = WriteSettingsText(file, FaceSettingsText(settings));
    face.ChangeFileName(face.RBFFileName, ".rbf", base.data());
    face.ReadRBFbackdoorfile();
    base = WriteSettingsText(file, PointSettingsText(settings));
    point.ChangeFileName(point.RBFFileName, ".rbf", base.data());
    point.ReadRBFbackdoorfile();
    EXPECT_EQ(face.Span, span);
    EXPECT_EQ(point.Span, span);
    EXPECT_EQ(2, face.iSearch_method);
    EXPECT_EQ(2, point.iSearch_method);
    EXPECT_EQ(33, face.Search_number);
    EXPECT_EQ(33, point.Search_number);
    EXPECT_EQ(0.125, face.Search_distance);
    EXPECT_TRUE(face.bDebug);
  }
}

TEST(InterpolationOptions, AreReadFromTheCommandLine) {
  InterpolationOptions options = {"3", "500"};
  CLI::App app;
  AddInterpolationOptions(app, options, "\n  1: first");
  app.parse(std::vector<std::string>{"30", "--search-number", "2.5", "--span", "1", "--search-method"});
  InterpolationSettings const settings = ReadInterpolationOptions(options, 3);
  EXPECT_EQ(1, settings.method);
  EXPECT_EQ(2.5, settings.span);
  EXPECT_EQ(30, settings.number);
}

TEST(InterpolationOptions, RefuseWhatTheOperatorsDoNotKnow) {
  for (char const* method : {"0", "4", "two", "1.5", ""})
    EXPECT_THROW(ReadInterpolationOptions({method, "500"}, 3), UsageError) << method;
  EXPECT_NO_THROW(ReadInterpolationOptions({"4", "500"}, 4));
  for (char const* span : {"0", "-1", "inf", "wide"})
    EXPECT_THROW(ReadInterpolationOptions({"3", span}, 3), UsageError) << span;
  for (char const* number : {"0", "-5", "few"})
    EXPECT_THROW(ReadInterpolationOptions({"3", "500", number}, 3), UsageError) << number;
}

}  // namespace
}  // namespace zyngrad
