#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/FlushedPieces.h"
#include "tests/support/watch/SettingsFolder.h"

// The settings file and the solver's parameters: what is written, which lines are read, what makes the file start
// anew, and which of the two sources counts.

namespace zyn_test::settings_test {
namespace {

std::string const kDefaultLine = "Default DQ parameter is adopted.\n";

/// The file as the object writes it for a mean distance of 1.25.
std::string const kDefaultFile =
    "1002\n"
    "Span              = 500\n"
    "iSearch_method    = 3\n"
    "Search_distance   = 2.500000\n"
    "Search_number     = 20\n";

/// An object that is about to read its settings; all values begin as something that no default is.
struct Reader : PointBed {
  Reader() : PointBed(LooseCells({Point{0, 0, 0}, Point{1.25, 0, 0}})) {
    object.MeanDistance = 1.25;
    object.Span = 123.5;
    object.iSearch_method = 7;
    object.Search_distance = -3.5;
    object.Search_number = 77;
    object.ChangeFileName(object.RBFFileName, ".rbf", object.m_pGV->BaseFileName);
  }
  explicit Reader(std::string const& file) : Reader() { folder.Write(file); }

  std::string Read() {
    return Printed([this] { EXPECT_EQ(0, object.ReadRBFbackdoorfile()); });
  }

  void ExpectValues(double span, int method, double distance, int number) const {
    EXPECT_EQ(span, object.Span);
    EXPECT_EQ(method, object.iSearch_method);
    EXPECT_EQ(distance, object.Search_distance);
    EXPECT_EQ(number, object.Search_number);
  }
  void ExpectDefaults() const { ExpectValues(500.0, 3, 2.5, 20); }
  void ExpectValuesKept() const { ExpectValues(123.5, 7, -3.5, 77); }
};

// --------------------------------------------------------------------------------------------- the new file

TEST(PointSettings, SecondRunReadsTheFileSilently) {
  Reader reader;
  reader.Read();
  reader.object.Span = 1.0;
  reader.object.MeanDistance = 77.0;  // of another mesh; the file counts
  EXPECT_EQ("", reader.Read());
  reader.ExpectDefaults();
  EXPECT_EQ(kDefaultFile, reader.folder.Read());
}

TEST(PointSettings, DefaultDistanceIsReadBackWithSixDecimals) {
  Reader reader;
  reader.object.MeanDistance = 1.0 / 3.0;
  reader.Read();
  EXPECT_NE(std::string::npos, reader.folder.Read().find("Search_distance   = 0.666667\n"));
  EXPECT_EQ(0.666667, reader.object.Search_distance);
}

TEST(PointSettings, AreNamedAfterTheBaseFileNameByTheSetUp) {
  PointBed bed(LooseCells({Point{0, 0, 0}, Point{1.25, 0, 0}}));
  bed.SetUp(AllUsable(2), {Point{0.5, 0, 0}});
  EXPECT_EQ(bed.folder.SettingsFileName(), bed.object.RBFFileName);
  EXPECT_EQ(kDefaultFile, bed.folder.Read());
  EXPECT_EQ(500.0, bed.object.Span);
  EXPECT_EQ(3, bed.object.iSearch_method);
  EXPECT_EQ(2.5, bed.object.Search_distance);
  EXPECT_EQ(20, bed.object.Search_number);
}

// ------------------------------------------------------------------------------------------------ the values

TEST(PointSettings, AllFourValuesAreTaken) {
  Reader reader(Settings("250", "2", "0.75", "12"));
  EXPECT_EQ("", reader.Read());
  reader.ExpectValues(250.0, 2, 0.75, 12);
  EXPECT_EQ(Settings("250", "2", "0.75", "12"), reader.folder.Read())
      << "a file of its own is not written to";
}

TEST(PointSettings, MethodAndNumberAreReadAsIntegers) {
  Reader reader(Settings("5", "2.9", "1e-1", "12.7"));
  reader.Read();
  reader.ExpectValues(5.0, 2, 0.1, 12);
}

TEST(PointSettings, NothingIsValidated) {
  Reader reader(Settings("-3", "-4", "-5.5", "-6"));
  reader.Read();
  reader.ExpectValues(-3.0, -4, -5.5, -6);
  Reader words(Settings("wide", "best", "far", "many"));
  words.Read();
  words.ExpectValues(0.0, 0, 0.0, 0);
}

TEST(PointSettings, DistanceServesNothing) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  for (char const* const method : {"1", "2", "3"}) {
    PointBed near(mesh, Settings("500", method, "0.000001", "8")),
        far(mesh, Settings("500", method, "1000", "8"));
    for (PointBed* const bed : {&near, &far})
      bed->SetUp(AllUsable(mesh.NCell()), {Point{1.2, 1.4, 1.6}, Point{7.0, 0.0, 0.0}});
    EXPECT_EQ(1000.0, far.object.Search_distance);
    far.object.Search_distance = near.object.Search_distance;
    EXPECT_TRUE(SameContent(near.object, far.object)) << "method " << method;
  }
}

// --------------------------------------------------------------------------------------------- lines by place

TEST(PointSettings, MisspeltKeysLoadByTheirPlace) {
  Reader reader("1002\nSpam = 25\nnonsense = 1\n = 4\nx = 9\n");
  reader.Read();
  reader.ExpectValues(25.0, 1, 0.0, 9);  // a line without a key has no value
}

TEST(PointSettings, ExchangedLinesLoadByTheirPlace) {
  Reader reader("1002\niSearch_method = 2\nSpan = 25\nSearch_number = 9\nSearch_distance = 4.5\n");
  EXPECT_EQ("", reader.Read());
  reader.ExpectValues(2.0, 25, 9.0, 4);
}

TEST(PointSettings, MissingFieldsTakeTheTextOfTheLastLineThatExists) {
  Reader five("1002\nSpan = 25\nm = 2\nd = 4.75\n");
  EXPECT_EQ("", five.Read());
  five.ExpectValues(25.0, 2, 4.75, 4);
  Reader four("1002\nSpan = 25.5\nm = 2\n");
  four.Read();
  four.ExpectValues(25.5, 2, 2.0, 2);
  Reader three("1002\nSpan = 25.5\n");
  three.Read();
  three.ExpectValues(25.5, 25, 25.5, 25);
}

TEST(PointSettings, FormatLineAloneGivesZeros) {
  Reader reader("1002\n");
  EXPECT_EQ("", reader.Read());
  reader.ExpectValues(0.0, 0, 0.0, 0);
}

TEST(PointSettings, LinesWithoutEqualsSignAreZero) {
  Reader reader("1002\nSpan 500\nm 2\nd 3\nn 4\n");
  reader.Read();
  reader.ExpectValues(0.0, 0, 0.0, 0);
}

TEST(PointSettings, LineOfMoreThan511CharactersCountsTwice) {
  Reader reader("1002" + std::string(600, 'x') + "\nm = 2\nd = 3\nn = 4\n");
  EXPECT_EQ("", reader.Read());
  reader.ExpectValues(0.0, 2, 3.0, 4);
}

TEST(PointSettings, AnyBytesDoNoHarm) {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes += static_cast<char>(i * 7 % 256);
  Reader reader("1002\n" + bytes + "\n" + bytes);
  EXPECT_EQ("", reader.Read());
  EXPECT_EQ("1002\n" + bytes + "\n" + bytes, reader.folder.Read());
}

// --------------------------------------------------------------------------- what cannot be read or written

TEST(PointSettings, WithoutAFolderAFreshObjectWorksOnItsOwnDefaults) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed lost(mesh), usual(mesh);
  std::filesystem::remove_all(lost.folder.Path());
  for (PointBed* const bed : {&lost, &usual}) bed->SetUp(AllUsable(mesh.NCell()), {Point{1.2, 1.4, 1.6}});
  EXPECT_EQ(500.0, lost.object.Span);
  EXPECT_EQ(0.0, lost.object.Search_distance);
  lost.object.Search_distance = usual.object.Search_distance;
  EXPECT_TRUE(SameContent(usual.object, lost.object));
}

TEST(PointSettings, MessageAndEmptyLineForWhatCannotBeOpenedAreFlushedEach) {
  Reader reader;
  std::filesystem::create_directory(reader.folder.SettingsFileName());
  std::vector<std::string> const expected = {kDefaultLine, "\n"};
  EXPECT_EQ(expected, PrintedPieces([&] { reader.object.ReadRBFbackdoorfile(); }));
}

// ---------------------------------------------------------------------------------------- solver's parameters

/// An object with parameters of the solver in place of a file.
struct WithParameters : Reader {
  explicit WithParameters(CZYNCMP_IBRBF_Parm const& block) {
    parameters.block = block;
    object.SetZYNKNCMP(&parameters);
  }
  void ReadBlock() { EXPECT_EQ(0, object.ReadRBFbackdoorfile_DLL()); }
  PointParameters parameters;
};

TEST(PointParameters, AreTakenAsTheyStandWithTheSpanWidened) {
  WithParameters reader({99, 250, 2, 0.75, 12});
  reader.ReadBlock();
  reader.ExpectValues(250.0, 2, 0.75, 12);
}

TEST(PointParameters, NegativeDistanceBecomesTwiceTheMeanDistance) {
  WithParameters reader({0, 250, 2, -0.001, 12});
  reader.ReadBlock();
  EXPECT_EQ(2.5, reader.object.Search_distance);
}

TEST(PointParameters, DistanceOfZeroStaysZero) {
  WithParameters reader({0, 250, 2, 0.0, 12});
  reader.ReadBlock();
  EXPECT_EQ(0.0, reader.object.Search_distance);
}

TEST(PointParameters, AreNotValidated) {
  WithParameters reader({0, -1, -2, 0.0, -3});
  reader.ReadBlock();
  reader.ExpectValues(-1.0, -2, 0.0, -3);
}

// The block may be another one each time; what the accessor gives last must not serve all four values.
TEST(PointParameters, BlockIsAskedForAnewForEachValue) {
  WithParameters reader({0, 250, 2, 0.75, 12});
  reader.parameters.onCall = [&reader] {
    int const n = reader.parameters.calls;
    reader.parameters.block = {0, 100 * n, n, 0.5 * n, 10 * n};
  };
  reader.ReadBlock();
  EXPECT_EQ(4, reader.parameters.calls);
  reader.ExpectValues(100.0, 2, 1.5, 40);
}

TEST(PointParameters, CountInPlaceOfTheFileWhichIsNeitherReadNorTouched) {
  std::string const foreign = "1001\nof the cell operator\n";
  for (std::string const& file : {foreign, std::string()}) {
    PointBed bed(Hexahedra(HexahedraOptions()));
    if (!file.empty()) bed.folder.Write(file);
    PointParameters parameters;
    parameters.block = {0, 400, 1, 0.0, 6};
    bed.object.SetZYNKNCMP(&parameters);
    std::string const printed = bed.SetUp(AllUsable(bed.host.mesh.NCell), {Point{1.2, 1.4, 1.6}});
    EXPECT_EQ(std::string::npos, printed.find(kDefaultLine));
    EXPECT_EQ(file.empty() ? "<no file>" : file, bed.folder.Read());
    EXPECT_EQ(400.0, bed.object.Span);
    EXPECT_EQ(1, bed.object.iSearch_method);
    EXPECT_EQ(bed.folder.SettingsFileName(), bed.object.RBFFileName) << "the name is made all the same";
  }
}

TEST(PointParameters, GiveTheSameTablesAsAFileOfTheSameContent) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  for (int const method : {1, 2, 3}) {
    PointBed byFile(mesh, Settings("400", std::to_string(method), "0.5", "6")), byBlock(mesh);
    PointParameters parameters;
    parameters.block = {0, 400, method, 0.5, 6};
    byBlock.object.SetZYNKNCMP(&parameters);
    for (PointBed* const bed : {&byFile, &byBlock})
      bed->SetUp(AllUsable(mesh.NCell()), {Point{1.2, 1.4, 1.6}, Point{0.1, 2.8, 1.0}});
    EXPECT_TRUE(SameContent(byFile.object, byBlock.object)) << "method " << method;
  }
}

}  // namespace
}  // namespace zyn_test::settings_test
