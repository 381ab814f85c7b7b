#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/watch/FlushedOutput.h"

// The settings file: how it is written, which lines are read, what makes it start anew, and that no file
// whatever does harm.

namespace zyn_test::settings_test {
namespace {

std::string const kDefaultLine = "Default DQ parameter is adopted.\n";
std::string const kShapeOn = "iShape_Normalize = On\n";

/// An operator that is about to read its settings; both values begin as something that no default is.
struct Reader : CellBed {
  Reader() : CellBed(SevenPoints()) {
    object->Span = 123.5;
    object->iShape_Normalize = 7;
  }
  explicit Reader(std::string const& file) : Reader() { folder.Write(file); }

  void ExpectValues(double span, int shapeNormalize) const {
    EXPECT_EQ(span, object->Span);
    EXPECT_EQ(shapeNormalize, object->iShape_Normalize);
  }
  void ExpectValuesKept() const { ExpectValues(123.5, 7); }
};

// --------------------------------------------------------------------------------------------- the new file

TEST(CellSettings, WrittenKeysReachToColumn18) {
  Reader reader;
  reader.ReadSettings();
  std::string const file = reader.folder.Read();
  EXPECT_EQ(5U + 18U, file.find('='));
  EXPECT_EQ(file.find('\n', 5) + 1 + 18U, file.rfind('='));
}

TEST(CellSettings, MessagesAreFlushedAtOnce) {
  Reader reader, shapeOn(Settings("5", "1"));
  for (Reader* const r : {&reader, &shapeOn})
    r->object->ChangeFileName(r->object->m_szRBFFileName, ".rbf", r->object->m_pGV->BaseFileName);
  std::string defaults, both;
  {
    FlushedOutput const output;
    reader.object->ReadRBFbackdoorfile();
    defaults = output.Arrived();
    shapeOn.object->ReadRBFbackdoorfile();
    both = output.Arrived();
  }
  EXPECT_EQ(kDefaultLine, defaults);
  EXPECT_EQ(kDefaultLine + kShapeOn, both);
}

TEST(CellSettings, SetUpStartsFromTheDefaultsWhateverTheValuesWere) {
  CellBed bed(SevenPoints());
  std::filesystem::remove_all(bed.folder.Path());  // so that no file can be written
  bed.object->Span = 123.5;
  bed.object->iShape_Normalize = 7;
  bed.SetUp();
  EXPECT_EQ(500.0, bed.object->Span);
  EXPECT_EQ(0, bed.object->iShape_Normalize);
}

TEST(CellSettings, AreNamedAfterTheBaseFileName) {
  CellBed bed(SevenPoints());
  bed.SetUp();
  EXPECT_EQ(bed.folder.Path() + "/run.rbf", bed.object->m_szRBFFileName);
  EXPECT_TRUE(bed.folder.Exists());
}

TEST(CellSettings, SetUpReadsThemBeforeTheCollation) {
  CellBed bed(SevenPoints(), Settings("7.5", "1"));
  EXPECT_EQ(0U, bed.SetUp().find(kShapeOn + "NInnerFaces ok!\n"));
  EXPECT_EQ(7.5, bed.object->Span);
  EXPECT_EQ(1, bed.object->iShape_Normalize);
}

// ------------------------------------------------------------------------------------------------- the values

TEST(CellSettings, SpanIsReadLikeANumberInText) {
  Reader scientific(Settings("2.5e2 times", "0")), negative(Settings("-3", "0")), word(Settings("wide", "0"));
  scientific.ReadSettings();
  scientific.ExpectValues(250.0, 0);
  negative.ReadSettings();
  negative.ExpectValues(-3.0, 0);
  word.ReadSettings();
  word.ExpectValues(0.0, 0);
}

TEST(CellSettings, ShapeNormalize1IsAnnounced) {
  Reader reader(Settings("5", "1"));
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(5.0, 1);
}

TEST(CellSettings, ShapeNormalize2PrintsNothing) {
  Reader reader(Settings("5", "2"));
  EXPECT_EQ("", reader.ReadSettings());
  reader.ExpectValues(5.0, 2);
}

TEST(CellSettings, ShapeNormalizeIsReadAsAnInteger) {
  Reader fraction(Settings("5", "1.9")), word(Settings("5", "On")), negative(Settings("5", "-1"));
  EXPECT_EQ(kShapeOn, fraction.ReadSettings());
  fraction.ExpectValues(5.0, 1);
  EXPECT_EQ("", word.ReadSettings());
  word.ExpectValues(5.0, 0);
  EXPECT_EQ("", negative.ReadSettings());
  negative.ExpectValues(5.0, -1);
}

// --------------------------------------------------------------------------------------------- lines by place

TEST(CellSettings, SwappedLinesLoadByTheirPlace) {
  Reader reader("1001\nShape Normalize = 1\nSpan = 25\n");
  EXPECT_EQ("", reader.ReadSettings());
  reader.ExpectValues(1.0, 25);
}

TEST(CellSettings, ThirdLineMissingTakesSpanForTheShape) {
  Reader reader("1001\nSpan = 500\n");
  EXPECT_EQ("", reader.ReadSettings());
  reader.ExpectValues(500.0, 500);
}

TEST(CellSettings, ThirdLineMissingWithSpan1TurnsTheShapeOn) {
  Reader reader("1001\nSpan = 1\n");
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(1.0, 1);
}

TEST(CellSettings, ThirdLineMissingTakesTheIntegerPartOfSpan) {
  Reader reader("1001\nSpan = 1.75\n");
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(1.75, 1);
}

TEST(CellSettings, SecondLineWithoutEqualsSignIsSpan0) {
  Reader reader("1001\nSpan 500\nShape Normalize = 1\n");
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(0.0, 1);
}

TEST(CellSettings, FormatLineAloneIsSpan0) {
  Reader reader("1001\n");
  EXPECT_EQ("", reader.ReadSettings());
  reader.ExpectValues(0.0, 0);
}

// Nothing follows, so line 1 stays in the buffer, and the value of a line without "=" and newline is its last
// character.
TEST(CellSettings, FormatLineAloneWithoutNewlineGivesItsLastDigit) {
  Reader reader("1001");
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(1.0, 1);
}

TEST(CellSettings, LastLineNeedsNoNewline) {
  Reader reader("1001\nSpan = 25\nShape Normalize = 1");
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(25.0, 1);
}

TEST(CellSettings, EmptySecondAndThirdLinesAreZero) {
  Reader reader("1001\n\n\n");
  reader.ReadSettings();
  reader.ExpectValues(0.0, 0);
}

// ------------------------------------------------------------------------------------------ files of others

void ExpectStartedAnew(std::string const& file) {
  Reader reader(file);
  EXPECT_EQ(kDefaultLine, reader.ReadSettings()) << file;
  EXPECT_EQ(DefaultSettings(), reader.folder.Read()) << file;
  reader.ExpectValues(500.0, 0);
}

// --------------------------------------------------------------------------------------- files of any content

// The lines behind the format number are read in pieces of 511 characters: the first line is two pieces here,
// so that it counts for lines 1 and 2, and line 2 of the file counts for line 3.
TEST(CellSettings, LineOfMoreThan511CharactersCountsTwice) {
  Reader reader("1001" + std::string(600, 'x') + "\nSpan = 25\nShape = 1\n");
  EXPECT_EQ("", reader.ReadSettings());
  reader.ExpectValues(0.0, 25);
}

TEST(CellSettings, LineOf510CharactersAndNewlineCountsOnce) {
  Reader reader("1001" + std::string(506, 'x') + "\nSpan = 25\nShape = 1\n");
  reader.ReadSettings();
  reader.ExpectValues(25.0, 1);
}

// With the newline it has 512 characters; the piece behind the first 511 is the newline alone.
TEST(CellSettings, LineOf511CharactersAndNewlineCountsTwice) {
  Reader reader("1001" + std::string(507, 'x') + "\nSpan = 25\nShape = 1\n");
  reader.ReadSettings();
  reader.ExpectValues(0.0, 25);
}

TEST(CellSettings, VeryLongKeysAndValuesDoNoHarm) {
  for (std::size_t const length : {500U, 511U, 512U, 513U, 1023U, 1024U, 5000U, 100000U}) {
    for (char const fill : {'k', '=', ' ', '7'}) {
      Reader key("1001\n" + std::string(length, fill) + " = 5\nShape = 1\n");
      key.ReadSettings();
      Reader value("1001\nSpan = 5\nShape = " + std::string(length, fill) + "\n");
      value.ReadSettings();
      EXPECT_EQ(5.0, value.object->Span) << length << fill;
    }
  }
}

TEST(CellSettings, OneEndlessLineDoesNoHarm) {
  ExpectStartedAnew(std::string(1 << 20, 'x'));
  Reader reader("1001 " + std::string(1 << 20, 'x'));
  EXPECT_EQ("", reader.ReadSettings());
  reader.ExpectValues(0.0, 0);  // pieces without "=" and newline: the value is the last character, an x
}

TEST(CellSettings, NulBytesEndALineEarlyAndDoNoHarm) {
  std::string const nul(1, '\0');
  Reader reader("1001" + nul + "x\nSpan = 25" + nul + "9\nShape = 1" + nul + "\n");
  EXPECT_EQ(kShapeOn, reader.ReadSettings());
  reader.ExpectValues(25.0, 1);
  ExpectStartedAnew(nul + "1001\nSpan = 25\nShape = 1\n");
}

TEST(CellSettings, AllByteValuesDoNoHarm) {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes += static_cast<char>(i * 7 % 256);
  ExpectStartedAnew(bytes);
  Reader reader("1001\n" + bytes + "\n" + bytes);
  reader.ReadSettings();
  EXPECT_EQ("1001\n" + bytes + "\n" + bytes, reader.folder.Read());
}

}  // namespace
}  // namespace zyn_test::settings_test
