#include "cli/output/OutputFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "cli/output/JsonFile.h"
#include "cli/output/RunSettings.h"
#include "cli/points/PointFiles.h"
#include "cli/vtk/VtpFile.h"
#include "cli/vtk/VtuFile.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

std::string Read(std::string const& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// The text of the UsageError, empty without one.
std::string ErrorOf(std::function<void()> const& work) {
  try {
    work();
  } catch (UsageError const& error) {
    return error.what();
  }
  return "";
}

/// A name behind which the disk is full: what is written stays in a buffer or fails.
class FullDisk {
 public:
  FullDisk() : name_(folder_.path() + "/full") { fs::create_symlink("/dev/full", name_); }
  std::string const& name() const { return name_; }
  std::string Error() const { return "cannot write \"" + name_ + "\": No space left on device"; }

 private:
  TemporaryFolder folder_;
  std::string name_;
};

TEST(OutputFile, HoldsWhatWasWrittenInThePlaceOfWhatWasThere) {
  TemporaryFolder const folder;
  std::string const file = folder.path() + "/file";
  WriteText(file, "a longer text from before");
  WriteText(file, "two\nlines");
  EXPECT_EQ("two\nlines", Read(file));
}

TEST(OutputFile, NoticesAFullDiskThatShowsOnlyWhenItCloses) {
  FullDisk const disk;
  OutputFile file(disk.name());
  file.stream() << "short enough for the stream's buffer";
  EXPECT_TRUE(file.stream().good());
  EXPECT_EQ(ErrorOf([&] { file.Close(); }), disk.Error());
}

TEST(OutputFile, TellsTheReasonOfAWriteThatFailedOnTheWay) {
  FullDisk const disk;
  OutputFile file(disk.name());
  file.stream() << std::string(1000000, 'x');
  EXPECT_FALSE(file.stream().good());
  EXPECT_EQ(ErrorOf([&] { file.Close(); }), disk.Error());
}

TEST(OutputFile, RefusesAPlaceThatCannotBeWritten) {
  TemporaryFolder const folder;
  std::string const file = folder.path() + "/missing/file";
  EXPECT_EQ(ErrorOf([&] { WriteText(file, ""); }),
            "cannot write \"" + file + "\": No such file or directory");
  EXPECT_EQ(ErrorOf([&] { WriteText(folder.path(), ""); }),
            "cannot write \"" + folder.path() + "\": Is a directory");
}

TEST(OutputFile, IsWhatEveryWriterOfResultsNoticesAFullDiskBy) {
  FullDisk const disk;
  EXPECT_EQ(ErrorOf([&] { WriteJson(disk.name(), {{"key", 1}}); }), disk.Error());
  EXPECT_EQ(ErrorOf([&] { WriteVtu(disk.name(), {}, {}); }), disk.Error());
  EXPECT_EQ(ErrorOf([&] { WritePvtu(disk.name(), {}, {"piece"}); }), disk.Error());
  EXPECT_EQ(ErrorOf([&] { WriteVertices(disk.name(), {}, {}); }), disk.Error());
  EXPECT_EQ(ErrorOf([&] { WritePointCsv(disk.name(), {}); }), disk.Error());
  EXPECT_EQ(ErrorOf([&] { WritePointVtp(disk.name(), {}); }), disk.Error());
}

}  // namespace
}  // namespace zyngrad
