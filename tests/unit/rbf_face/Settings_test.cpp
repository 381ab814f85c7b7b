#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/SettingsFolder.h"

// Where the settings come from: how the file is written, which lines are read, what makes it start anew; and the
// parameter block.

namespace zyn_test::settings_test {
namespace {

std::string const kDefaultLine = "Default DQ parameter is adopted.\n";
std::string const kDefaults =
    "1004\nSpan              = 1000\niSearch_method    = 4\nSearch_distance   = 2.500000\nSearch_number     "
    "= "
    "20\nDebug mode        = 0\n";

/// An operator that is about to read its settings; all values begin as something that no default is.
struct Reader : FaceBed {
  Reader() : FaceBed(TwoCubes()) {
    object.Span = 123.5;
    object.iSearch_method = 7;
    object.Search_distance = 8.25;
    object.Search_number = 9;
    object.MeanDistance = 1.25;
    object.ChangeFileName(object.RBFFileName, ".rbf", host.globals.BaseFileName);
  }
  explicit Reader(std::string const& file) : Reader() { folder.Write(file); }

  std::string Read() {
    return Printed([this] { EXPECT_EQ(0, object.ReadRBFbackdoorfile()); });
  }
  void ExpectValues(double span, int method, double distance, int number, bool debug) const {
    EXPECT_EQ(span, object.Span);
    EXPECT_EQ(method, object.iSearch_method);
    EXPECT_EQ(distance, object.Search_distance);
    EXPECT_EQ(number, object.Search_number);
    EXPECT_EQ(debug, object.bDebug);
  }
  void ExpectDefaults() const { ExpectValues(1000.0, 4, 2.5, 20, false); }
  void ExpectValuesKept() const { ExpectValues(123.5, 7, 8.25, 9, false); }
};

// ------------------------------------------------------------------------------------------------ the new file

TEST(FaceSettings, WrittenDistanceIsTwiceTheMeanDistanceWithSixDigits) {
  Reader reader;
  reader.object.MeanDistance = 1.0 / 3.0;
  reader.Read();
  EXPECT_NE(std::string::npos, reader.folder.Read().find("\nSearch_distance   = 0.666667\n"));
  EXPECT_EQ(0.666667, reader.object.Search_distance);
}

TEST(FaceSettings, SetUpMeasuresTheMeshBeforeItWritesTheFile) {
  FaceBed bed(TwoCubes());
  EXPECT_EQ(kDefaultLine, bed.SetUp(kInner));
  EXPECT_EQ(1.0, bed.object.MeanDistance);
  EXPECT_EQ(2.0, bed.object.Search_distance);
  EXPECT_NE(std::string::npos, bed.folder.Read().find("\nSearch_distance   = 2.000000\n"));
}

// -------------------------------------------------------------------------------------------------- the values

TEST(FaceSettings, AllFiveLinesAreTaken) {
  Reader reader(Settings("25", "2", "0.75", "12", "1"));
  EXPECT_EQ("", reader.Read());
  reader.ExpectValues(25.0, 2, 0.75, 12, true);
  EXPECT_EQ(Settings("25", "2", "0.75", "12", "1"), reader.folder.Read())
      << "a file of its own is not written to";
}

TEST(FaceSettings, NumbersAreReadAsFarAsTheyGo) {
  Reader reader(Settings("2.5e2 times", "3.9", "-1e-1 L", "15 cells", "word"));
  reader.Read();
  reader.ExpectValues(250.0, 3, -0.1, 15, false);
}

TEST(FaceSettings, DistanceIsTakenAsItStandsEvenWhenNegative) {
  Reader reader(Settings("25", "2", "-3.5", "12", "0"));
  reader.Read();
  EXPECT_EQ(-3.5, reader.object.Search_distance);
}

TEST(FaceSettings, DebugModeIsOnForAnyNumberAbove0) {
  for (std::string const mode : {"1", "2", "100"}) {
    Reader reader(Settings("25", "2", "1", "12", mode));
    reader.Read();
    EXPECT_TRUE(reader.object.bDebug) << mode;
  }
}

TEST(FaceSettings, DebugModeThatIsNotAbove0KeepsItsValue) {
  for (bool const before : {false, true}) {
    for (std::string const mode : {"0", "-1", "off"}) {
      Reader reader(Settings("25", "2", "1", "12", mode));
      reader.object.bDebug = before;
      reader.Read();
      EXPECT_EQ(before, reader.object.bDebug) << mode;
    }
  }
}

// ---------------------------------------------------------------------------------------------- lines by place

TEST(FaceSettings, SwappedLinesLoadByTheirPlace) {
  Reader reader(
      "1004\nSearch_number = 12\nDebug mode = 1\nSpan = 25\niSearch_method = 2\nSearch_distance = 3\n");
  reader.Read();
  reader.ExpectValues(12.0, 1, 25.0, 2, true);
}

// What a read beyond the end leaves is the line before, which then counts once more.
TEST(FaceSettings, MissingLinesTakeTheValueOfTheLastOne) {
  Reader reader("1004\nSpan = 25\niSearch_method = 3\n");
  reader.Read();
  reader.ExpectValues(25.0, 3, 3.0, 3, true);
}

TEST(FaceSettings, LineWithoutEqualsSignIsItsLastCharacter) {
  Reader reader("1004\nSpan 25\n2\n0.5\n12\n1");
  reader.Read();
  reader.ExpectValues(0.0, 0, 0.0, 0, true);  // the newline of the first four, the 1 of the last
}

TEST(FaceSettings, LineOfMoreThan511CharactersCountsTwice) {
  Reader reader("1004" + std::string(600, 'x') + "\nSpan = 25\nm = 2\nd = 0.75\nn = 12\ndebug = 1\n");
  EXPECT_EQ("", reader.Read());
  reader.ExpectValues(0.0, 25, 2.0, 0, true);
}

TEST(FaceSettings, VeryLongKeysAndValuesDoNoHarm) {
  for (std::size_t const length : {500U, 511U, 512U, 513U, 1023U, 1024U, 5000U}) {
    for (char const fill : {'k', '=', ' ', '7'}) {
      Reader reader("1004\nSpan = 5\nm = " + std::string(length, fill) + "\n" + std::string(length, fill) +
                    " = 2\n");
      reader.Read();
      EXPECT_EQ(5.0, reader.object.Span) << length << fill;
    }
  }
}

// -------------------------------------------------------------------------- what cannot be opened or written

TEST(FaceSettings, SetUpWithoutAWritableFileGoesOnWithTheDefaults) {
  FaceBed bed(SkewedCubesOfAllGroups());
  std::filesystem::remove_all(bed.folder.Path());
  EXPECT_EQ(kDefaultLine, bed.SetUp(kInner));
  EXPECT_EQ(1000.0, bed.object.Span);
  EXPECT_EQ(4, bed.object.iSearch_method);
  EXPECT_GT(bed.object.m_ppFaceCellConn[1][0], 2);
}

// ------------------------------------------------------------------------------------------ the parameter block

/// An operator that is about to take its settings from the block.
struct BlockReader : Reader {
  BlockReader(int span, int method, double distance, int number, int debug) {
    CZYNCMP_FaceRBF_Parm& block = host.parameters.block;
    block.iFaceParmHead = 77;
    block.Span = span;
    block.iSearch_method = method;
    block.Search_distance = distance;
    block.Search_number = number;
    block.iDebugMode = debug;
    object.SetZYNKNCMP(&host.parameters);
  }
  void ReadBlock() {
    EXPECT_EQ("", Printed([this] { EXPECT_EQ(0, object.ReadRBFbackdoorfile_DLL()); }));
  }
};

TEST(FaceSettingsBlock, GivesAllFiveValues) {
  BlockReader reader(25, 2, 0.75, 12, 1);
  reader.ReadBlock();
  reader.ExpectValues(25.0, 2, 0.75, 12, true);
}

TEST(FaceSettingsBlock, NegativeDistanceBecomesTwiceTheMeanDistance) {
  BlockReader reader(25, 2, -0.001, 12, 0);
  reader.ReadBlock();
  EXPECT_EQ(2.5, reader.object.Search_distance);
}

TEST(FaceSettingsBlock, DistanceOf0Stays0) {
  BlockReader reader(25, 2, 0.0, 12, 0);
  reader.ReadBlock();
  EXPECT_EQ(0.0, reader.object.Search_distance);
}

TEST(FaceSettingsBlock, DebugModeThatIsNotAbove0KeepsItsValue) {
  for (bool const before : {false, true}) {
    for (int const mode : {0, -1}) {
      BlockReader reader(25, 2, 1.0, 12, mode);
      reader.object.bDebug = before;
      reader.ReadBlock();
      EXPECT_EQ(before, reader.object.bDebug);
    }
  }
}

TEST(FaceSettingsBlock, ComesBeforeTheFileWhichIsNotTouched) {
  FaceBed without(TwoCubes()), with(TwoCubes(), "1001\nof the cell operator\n");
  for (FaceBed* const bed : {&without, &with}) {
    EXPECT_EQ("", bed->SetUp(kInner, {2, 25.0, 4}));
    EXPECT_EQ(25.0, bed->object.Span);
    EXPECT_EQ(2, bed->object.iSearch_method);
    EXPECT_EQ(4, bed->object.Search_number);
  }
  EXPECT_FALSE(without.folder.Exists());
  EXPECT_EQ("1001\nof the cell operator\n", with.folder.Read());
}

/// The solver's parameters of a run that has no block for faces.
class ParametersWithoutBlock : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return nullptr; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return nullptr; }
};

TEST(FaceSettingsBlock, ThatIsMissingKeepsTheValuesAndLeavesTheFile) {
  std::string const file = Settings("25", "2", "0.75", "12", "1");
  Reader reader(file);
  ParametersWithoutBlock parameters;
  reader.object.SetZYNKNCMP(&parameters);
  EXPECT_EQ("", Printed([&] { EXPECT_EQ(0, reader.object.ReadRBFbackdoorfile_DLL()); }));
  reader.ExpectValuesKept();
  EXPECT_EQ(file, reader.folder.Read());
}

TEST(FaceSettingsBlock, ThatIsMissingLeavesSetUpWithTheDefaults) {
  FaceBed bed(TwoCubes());
  ParametersWithoutBlock parameters;
  bed.object.SetZYNKNCMP(&parameters);
  EXPECT_EQ("", bed.SetUp(kInner));
  EXPECT_EQ(1000.0, bed.object.Span);
  EXPECT_EQ(4, bed.object.iSearch_method);
  EXPECT_EQ(20, bed.object.Search_number);
  EXPECT_EQ(1, bed.object.NFaceDone);
  EXPECT_FALSE(bed.folder.Exists());
}

TEST(FaceSettingsBlock, IsReadAfterTheMeshIsMeasured) {
  FaceBed bed(TwoCubes());
  bed.UseBlock({4, 1000.0, 20});
  bed.host.parameters.block.Search_distance = -1.0;
  bed.SetUp(kInner);
  EXPECT_EQ(2.0, bed.object.Search_distance);
}

}  // namespace
}  // namespace zyn_test::settings_test
