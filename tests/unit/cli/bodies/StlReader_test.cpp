#include "cli/bodies/StlReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

#include "cli/base/TemporaryFolder.h"
#include "reference_host/mesh/MeshError.h"
#include "tests/unit/cli/bodies/TestSurfaces.h"

namespace zyngrad {
namespace {

std::string const kFacet =
    "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n  vertex 0 1 0\n endloop\nendfacet\n";

class StlReader : public testing::Test {
 protected:
  std::vector<double> Read(std::string const& text) {
    std::ofstream(File(), std::ios::binary) << text;
    return ReadStl(File());
  }

  /// What is wrong with the content, behind the file's name.
  std::string Complaint(std::string const& text) {
    try {
      Read(text);
    } catch (reference_host::MeshError const& error) {
      std::string const what = error.what();
      return what.rfind(File(), 0) == 0 ? what.substr(File().size()) : what;
    }
    return "none";
  }

  std::string File() const { return folder_.path() + "/body.stl"; }

  TemporaryFolder const folder_;
};

std::vector<double> const kCorners = {0, 0, 0, 1, 0, 0, 0, 1, 0};

TEST_F(StlReader, ReadsTextInAnyLayoutAndAllSolids) {
  EXPECT_EQ(kCorners, Read("solid a name\n" + kFacet + "endsolid a name\n"));
  EXPECT_EQ(
      kCorners,
      Read("  SOLID\r\nFacet NORMAL nan nan nan outer loop vertex 0 -0.0 0e5 vertex +1 0 0 vertex 0 1. 0\r\n"
           "EndLoop EndFacet\tENDSOLID"));
  EXPECT_EQ(18U, Read("solid a\n" + kFacet + "endsolid a\nsolid b\n" + kFacet + "endsolid b\n\n").size());
  EXPECT_EQ(9U, Read("solid empty\nendsolid\nsolid b\n" + kFacet + "endsolid b").size());
}

TEST_F(StlReader, ReadsBinaryWhateverTheHeaderSays) {
  EXPECT_EQ(kCorners, Read(BinaryStl(kCorners)));
  EXPECT_EQ(kCorners, Read(BinaryStl(kCorners, "solid by a program that begins all headers so")));
}

TEST_F(StlReader, ReadsWhatGmshWrites) {
  std::string const folder = std::string(ZYN_TEST_DATA) + "/stl/";
  std::vector<double> const text = ReadStl(folder + "torus.stl"),
                            binary = ReadStl(folder + "torus_binary.stl");
  ASSERT_EQ(text.size(), binary.size());
  EXPECT_EQ(0U, text.size() % 9);
  for (std::size_t i = 0; i < text.size(); ++i)
    EXPECT_EQ(static_cast<float>(text[i]), static_cast<float>(binary[i]));
}

TEST_F(StlReader, NamesLineAndTriangleOfAnErrorInText) {
  std::string const begin = "solid a\n" + kFacet + "facet normal 0 0 1\nouter loop\nvertex 0 0 0\n";
  EXPECT_EQ(":12: \"one\" is not a finite number (y) (triangle 2)", Complaint(begin + "vertex 0 one 0"));
  EXPECT_EQ(":12: \"nan\" is not a finite number (x) (triangle 2)", Complaint(begin + "vertex nan 0 0"));
  EXPECT_EQ(":12: \"1e999\" is not a finite number (z) (triangle 2)", Complaint(begin + "vertex 0 0 1e999"));
  EXPECT_EQ(":12: \"+-1\" is not a finite number (x) (triangle 2)", Complaint(begin + "vertex +-1 0 0"));
  EXPECT_EQ(":12: expected \"vertex\", found \"vertx\" (triangle 2)", Complaint(begin + "vertx 0 0 0"));
  EXPECT_EQ(":12: expected \"vertex\", found the end of the file (triangle 2)", Complaint(begin));
  EXPECT_EQ(":9: expected \"endsolid\", found the end of the file (triangle 1)",
            Complaint("solid a\n" + kFacet));
  EXPECT_EQ(":10: expected \"solid\", found \"more\" (triangle 1)",
            Complaint("solid a\n" + kFacet + "endsolid a\nmore"));
  EXPECT_EQ(":1: no triangles", Complaint("solid a\nendsolid a\n"));
}

TEST_F(StlReader, NamesByteAndTriangleOfAnErrorInBinary) {
  std::string const file = BinaryStl(CornersOf(Ball(5, 4)));
  std::string const count = std::to_string((file.size() - 84) / 50);
  std::string const taken = std::to_string(file.size());
  for (std::size_t const size : {std::size_t{84}, std::size_t{200}, file.size() - 1}) {
    EXPECT_EQ(": offset 80: not a binary STL file, or cut off: " + count + " triangles take " + taken +
                  " bytes, and the file has " + std::to_string(size),
              Complaint(file.substr(0, size)));
  }
  EXPECT_NE("none", Complaint(file + "more"));
  EXPECT_EQ(
      ": offset 83: neither a text that begins with \"solid\" nor a binary STL file, which has at least 84 "
      "bytes",
      Complaint(file.substr(0, 83)));
  EXPECT_EQ(
      ": offset 0: neither a text that begins with \"solid\" nor a binary STL file, which has at least 84 "
      "bytes",
      Complaint(""));
  EXPECT_EQ(": offset 0: no triangles", Complaint(BinaryStl({})));

  std::vector<double> corners = CornersOf(Ball(5, 4));
  corners[9 + 4] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(": offset 162: triangle 2, corner 2: NaN is not a finite number (y)",
            Complaint(BinaryStl(corners)));
  corners[9 + 4] = std::numeric_limits<double>::infinity();
  EXPECT_EQ(": offset 162: triangle 2, corner 2: infinity is not a finite number (y)",
            Complaint(BinaryStl(corners)));
}

// The count of such a file is that of four characters of text, or of bytes that are missing.
TEST_F(StlReader, TellsACutBinaryFileFromTextByItsZeroBytes) {
  std::string const file = BinaryStl(CornersOf(Ball(5, 4)), "solid with a name");
  EXPECT_NE(std::string::npos, Complaint(file.substr(0, file.size() - 7)).find("cut off"));
}

TEST_F(StlReader, RefusesACountThatNoFileCanHold) {
  std::string file = BinaryStl(kCorners);
  for (std::size_t k = 80; k < 84; ++k) file[k] = '\xff';
  EXPECT_EQ(
      ": offset 80: not a binary STL file, or cut off: 4294967295 triangles take 214748364834 bytes, and the "
      "file has 134",
      Complaint(file));
}

}  // namespace
}  // namespace zyngrad
