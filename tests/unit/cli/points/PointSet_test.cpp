#include "cli/points/PointSet.h"

#include <gtest/gtest.h>

#include <fstream>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "reference_host/mesh/MeshError.h"

namespace zyngrad {
namespace {

std::vector<std::string> const kReplaced = {"value", "error"};

/// Writes the text to a file and reads points from it.
class PointSetTest : public testing::Test {
 protected:
  PointSet Read(std::string const& text) {
    std::ofstream(File(), std::ios::binary) << text;
    return ReadPoints(File(), kReplaced);
  }

  /// What is wrong with the text, behind the file's name.
  std::string Complaint(std::string const& text) {
    try {
      Read(text);
    } catch (UsageError const& error) {
      std::string const what = error.what();
      return what.rfind(File() + ": ", 0) == 0 ? what.substr(File().size() + 2) : what;
    }
    return "none";
  }

  std::string File() const { return folder_.path() + "/points.csv"; }

  TemporaryFolder const folder_;
};

TEST_F(PointSetTest, TakesColumnsInAnyOrderAndCarriesTheOthers) {
  PointSet const points = Read("name,Z,x,Y\nfirst,3,1,2\nsecond,-6e-1,+4,.5\n");
  EXPECT_EQ((std::vector<double>{1.0, 4.0}), points.x);
  EXPECT_EQ((std::vector<double>{2.0, 0.5}), points.y);
  EXPECT_EQ((std::vector<double>{3.0, -0.6}), points.z);
  EXPECT_EQ("name,Z,x,Y", points.header);
  EXPECT_EQ((std::vector<std::string>{"first,3,1,2", "second,-6e-1,+4,.5"}), points.rows);
}

TEST_F(PointSetTest, CarriesQuotedFieldsAsTheyAreWritten) {
  PointSet const points =
      Read("\"x\",y,z,\"a \"\"b\"\"\"\n 1 ,\"2\",3,\"one,\ntwo \"\"three\"\"\"\n4,5,6,\n");
  EXPECT_EQ((std::vector<double>{2.0, 5.0}), points.y);
  EXPECT_EQ("\"x\",y,z,\"a \"\"b\"\"\"", points.header);
  EXPECT_EQ(" 1 ,\"2\",3,\"one,\ntwo \"\"three\"\"\"", points.rows[0]);
  EXPECT_EQ("4,5,6,", points.rows[1]);
}

TEST_F(PointSetTest, LeavesOutColumnsThatWillBeWrittenAnew) {
  PointSet const points = Read("value,x,y,z,error,id\n9,1,2,3,8,7\n");
  EXPECT_EQ("x,y,z,id", points.header);
  EXPECT_EQ((std::vector<std::string>{"1,2,3,7"}), points.rows);
}

TEST_F(PointSetTest, ReadsFilesOfOtherEditors) {
  PointSet const points = Read("\xEF\xBB\xBFx,y,z\r\n1,2,3\r\n\r\n  \n4,5,6");
  EXPECT_EQ((std::vector<double>{1.0, 4.0}), points.x);
  EXPECT_EQ((std::vector<std::string>{"1,2,3", "4,5,6"}), points.rows);
}

TEST_F(PointSetTest, MayBeEmpty) {
  EXPECT_EQ(0U, Read("x,y,z\n").size());
  EXPECT_EQ(0U, Read("z,y,x").size());
}

TEST_F(PointSetTest, NamesLineAndColumnOfWhatItCannotRead) {
  EXPECT_EQ("line 3, column 3: \"1.2.3\" is not a finite number (y)", Complaint("x,y,z\n1,2,3\n4,1.2.3,6\n"));
  EXPECT_EQ("line 2, column 5: \"nan\" is not a finite number (x)", Complaint("z,y,x\n1,2,nan\n"));
  EXPECT_EQ("line 2, column 3: \"inf\" is not a finite number (y)", Complaint("x,y,z\n1,inf,3\n"));
  EXPECT_EQ("line 2, column 3: \"1e999\" is not a finite number (y)", Complaint("x,y,z\n1,1e999,3\n"));
  EXPECT_EQ("line 2, column 3: \"\" is not a finite number (y)", Complaint("x,y,z\n1,,3\n"));
  EXPECT_EQ("line 2, column 3: \"+-2\" is not a finite number (y)", Complaint("x,y,z\n1,+-2,3\n"));
  EXPECT_EQ("line 4, column 5: \"c\" is not a finite number (z)",
            Complaint("x,y,z,note\n1,2,3,\"two\nlines\"\n1,2,c,\n"));
  EXPECT_EQ("line 2, column 4: 2 fields where the header has 3", Complaint("x,y,z\n1,2\n"));
  EXPECT_EQ("line 2, column 7: 4 fields where the header has 3", Complaint("x,y,z\n1,2,3,4\n"));
  EXPECT_EQ("line 1, column 1: the header has no column x", Complaint("x;y;z\n1;2;3\n"));
  EXPECT_EQ("line 1, column 1: the header has no column x", Complaint("1,2,3\n"));
  EXPECT_EQ("line 1, column 7: a second column x", Complaint("x,y,z,X\n"));
  EXPECT_EQ("line 1, column 1: expected a header", Complaint(""));
  EXPECT_EQ("line 3, column 1: expected a header", Complaint("\n \n"));
}

TEST_F(PointSetTest, RefusesQuotesThatAreNotAroundAField) {
  std::string const what = "a quote that is not closed, or not around a whole field";
  EXPECT_EQ(Complaint("x,y,z,note\n1,2,3,\"open\n"), "line 2, column 7: " + what);
  EXPECT_EQ(Complaint("x,y,z,note\n1,2,3,in\"side\n"), "line 2, column 9: " + what);
  EXPECT_EQ("line 2, column 10: expected a line end", Complaint("x,y,z,note\n1,2,3,\"a\"b\n"));
  EXPECT_EQ("line 2, column 7: expected a line end", Complaint("x,y,z\n1,2,3\r4\n"));
}

TEST_F(PointSetTest, NamesAFileThatIsNotThere) {
  EXPECT_THROW(ReadPoints(folder_.path() + "/missing.csv", {}), reference_host::MeshError);
  EXPECT_THROW(ReadPoints(folder_.path(), {}), reference_host::MeshError);
}

}  // namespace
}  // namespace zyngrad
