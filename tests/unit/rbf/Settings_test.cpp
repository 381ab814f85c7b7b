#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/watch/FlushedOutput.h"
#include "tests/unit/rbf/Operators.h"

// The settings files of all three operators: how they are written, what is read, and what makes a file start anew.
// Which values an operator reads from which line is tested with each of them.

namespace zyn_test::settings_test {
namespace {

std::string const kDefaultLine = "Default DQ parameter is adopted.\n";

/// An operator that is about to read its settings; all values begin as something that no default is.
template <typename Operator>
class Reader {
 public:
  Reader() : bed_(CellsOneAndAQuarterApart()) {
    Operator::SetUnusualValues(Object());
    before_ = Values();
    Object().ChangeFileName(Object().*Operator::kSettingsFileName, ".rbf", bed_.host.globals.BaseFileName);
  }
  explicit Reader(std::string const& file) : Reader() { Folder().Write(file); }

  typename Operator::Object& Object() { return Operator::In(bed_); }
  SettingsFolder& Folder() { return bed_.folder; }

  std::string Read() {
    return Printed([this] { EXPECT_EQ(0, Object().ReadRBFbackdoorfile()); });
  }
  std::vector<double> Values() { return Operator::Values(Object()); }
  void ExpectValuesKept() { EXPECT_EQ(before_, Values()); }

 private:
  typename Operator::Bed bed_;
  std::vector<double> before_;
};

template <typename Operator>
class RadialBasisSettings : public ::testing::Test {
 protected:
  static void ExpectStartedAnew(std::string const& file) {
    Reader<Operator> reader(file);
    EXPECT_EQ(kDefaultLine, reader.Read()) << file;
    EXPECT_EQ(Operator::DefaultFile(), reader.Folder().Read()) << file;
    EXPECT_EQ(Operator::Defaults(), reader.Values()) << file;
  }

  static void ExpectRead(std::string const& file, double span = 25.0) {
    Reader<Operator> reader(file);
    EXPECT_EQ("", reader.Read()) << file;
    EXPECT_EQ(Operator::ValuesOfLines(span), reader.Values()) << file;
    EXPECT_EQ(file, reader.Folder().Read()) << "a file of its own is not written to";
  }

  /// A file of the operator's own.
  static std::string OwnFile(std::string const& span = "25") {
    return Operator::kFormat + Operator::Lines(span);
  }
};

TYPED_TEST_SUITE(RadialBasisSettings, AllOperators, OperatorNames);

// ------------------------------------------------------------------------------------------------ the new file

TYPED_TEST(RadialBasisSettings, FirstRunWritesTheDefaultsAndTakesThem) {
  Reader<TypeParam> reader;
  EXPECT_EQ(kDefaultLine, reader.Read());
  EXPECT_EQ(TypeParam::DefaultFile(), reader.Folder().Read());
  EXPECT_EQ(TypeParam::Defaults(), reader.Values());
}

TYPED_TEST(RadialBasisSettings, SecondRunReadsTheFileSilently) {
  Reader<TypeParam> reader;
  reader.Read();
  TypeParam::SetUnusualValues(reader.Object());
  EXPECT_EQ("", reader.Read());
  EXPECT_EQ(TypeParam::Defaults(), reader.Values());
  EXPECT_EQ(TypeParam::DefaultFile(), reader.Folder().Read());
}

TYPED_TEST(RadialBasisSettings, MessageIsFlushedAtOnce) {
  Reader<TypeParam> reader;
  std::string arrived;
  {
    FlushedOutput const output;
    reader.Object().ReadRBFbackdoorfile();
    arrived = output.Arrived();
  }
  EXPECT_EQ(kDefaultLine, arrived);
}

// --------------------------------------------------------------------------------------------- a file of its own

TYPED_TEST(RadialBasisSettings, LinesLoadByTheirPlaceWhateverTheirKeys) { this->ExpectRead(this->OwnFile()); }

TYPED_TEST(RadialBasisSettings, FractionalSpanIsHonoured) { this->ExpectRead(this->OwnFile("37.25"), 37.25); }

TYPED_TEST(RadialBasisSettings, FurtherLinesAreNotRead) {
  this->ExpectRead(this->OwnFile() + "Span = 3\nShape = 1\nDebug mode = 0\n");
}

TYPED_TEST(RadialBasisSettings, CarriageReturnsDoNoHarm) {
  std::string file;
  for (char const c : this->OwnFile()) file += c == '\n' ? std::string("\r\n") : std::string(1, c);
  this->ExpectRead(file);
}

TYPED_TEST(RadialBasisSettings, FormatNumberMayBeFollowedByText) {
  std::string const format = TypeParam::kFormat;
  for (std::string const& first : {format, "  " + format, "\t" + format + " ", format + ".5",
                                   format + " of an operator", "+" + format, "0" + format})
    this->ExpectRead(first + TypeParam::Lines("25"));
}

// ------------------------------------------------------------------------------------------- files of others

TYPED_TEST(RadialBasisSettings, FileOfAnotherOperatorIsDeletedAndWrittenAnew) {
  for (std::string const format : {"1001", "1002", "1003", "1004"})
    if (format != TypeParam::kFormat) this->ExpectStartedAnew(format + TypeParam::Lines("25"));
}

TYPED_TEST(RadialBasisSettings, OtherFirstLineIsDeletedAndWrittenAnew) {
  std::string const format = TypeParam::kFormat;
  std::string const hexadecimal[] = {"0x3E9", "0x3EA", "0x3EC"};
  for (std::string const& first :
       {std::string("0"), "-" + format, format + "0", std::string("100"), std::string("1000"),
        "1 " + format.substr(1), hexadecimal[0], hexadecimal[1], hexadecimal[2], std::string("1e3"),
        "format " + format, std::string()})
    this->ExpectStartedAnew(first + TypeParam::Lines("25"));
  this->ExpectStartedAnew("\n" + this->OwnFile());
}

TYPED_TEST(RadialBasisSettings, EmptyFileIsDeletedAndWrittenAnew) { this->ExpectStartedAnew(""); }

// The format number ends with the last character that is read of the first line; one more space cuts its last digit.
TYPED_TEST(RadialBasisSettings, FirstLineIsReadToALimit) {
  std::size_t const limit = TypeParam::kCharactersOfTheFirstLine;
  this->ExpectRead(std::string(limit - 4, ' ') + this->OwnFile());
  this->ExpectStartedAnew(std::string(limit - 3, ' ') + this->OwnFile());
  this->ExpectStartedAnew(std::string(300, ' ') + this->OwnFile());
}

TYPED_TEST(RadialBasisSettings, DeletionIsOfTheNameNotOfWhatALinkPointsTo) {
  Reader<TypeParam> reader;
  std::string const users = reader.Folder().Path() + "/users.txt";
  std::ofstream(users) << "1003\nof the user\n";
  std::filesystem::create_symlink(users, reader.Folder().SettingsFileName());
  EXPECT_EQ(kDefaultLine, reader.Read());
  EXPECT_FALSE(std::filesystem::is_symlink(reader.Folder().SettingsFileName()));
  EXPECT_EQ(TypeParam::DefaultFile(), reader.Folder().Read());
  EXPECT_TRUE(std::filesystem::exists(users));
}

// -------------------------------------------------------------------------- what cannot be opened or written

TYPED_TEST(RadialBasisSettings, MissingFolderKeepsTheValues) {
  Reader<TypeParam> reader;
  std::filesystem::remove_all(reader.Folder().Path());
  EXPECT_EQ(kDefaultLine, reader.Read());
  reader.ExpectValuesKept();
  EXPECT_FALSE(reader.Folder().Exists());
}

// It is like a file that cannot be opened, and not a word of a new one.
TYPED_TEST(RadialBasisSettings, FolderOfThatNameStaysAndTheValuesAreKept) {
  Reader<TypeParam> reader;
  std::string const inside = reader.Folder().SettingsFileName() + "/file";
  std::filesystem::create_directory(reader.Folder().SettingsFileName());
  std::ofstream(inside) << "content";
  EXPECT_EQ(kDefaultLine + "\n", reader.Read());
  EXPECT_EQ(7U, std::filesystem::file_size(inside));
  reader.ExpectValuesKept();
}

TYPED_TEST(RadialBasisSettings, EmptyFolderOfThatNameStaysAndTheValuesAreKept) {
  Reader<TypeParam> reader;
  std::filesystem::create_directory(reader.Folder().SettingsFileName());
  EXPECT_EQ(kDefaultLine + "\n", reader.Read());
  EXPECT_TRUE(std::filesystem::is_directory(reader.Folder().SettingsFileName()));
  EXPECT_TRUE(std::filesystem::is_empty(reader.Folder().SettingsFileName()));
  reader.ExpectValuesKept();
}

/// Gives up the rights of the superuser for its lifetime, so that permissions count.
class WithoutPrivileges {
 public:
  WithoutPrivileges() {
    if (geteuid() == 0 && seteuid(65534) == 0) wasRoot_ = true;
  }
  ~WithoutPrivileges() {
    if (wasRoot_ && seteuid(0) != 0) ADD_FAILURE() << "the superuser's rights did not come back";
  }
  WithoutPrivileges(WithoutPrivileges const&) = delete;
  WithoutPrivileges& operator=(WithoutPrivileges const&) = delete;

  bool Effective() const { return geteuid() != 0; }

 private:
  bool wasRoot_ = false;
};

constexpr mode_t kNone = 0, kRead = 0444, kWritable = 0777, kReadOnlyFolder = 0555;

/// Reads the settings under the given permissions of file and folder, for everybody alike.
/// @return whether this user can be kept from anything by permissions
template <typename Operator>
bool ReadUnderPermissions(Reader<Operator>& reader, mode_t file, mode_t folder, std::string& printed) {
  if (reader.Folder().Exists()) {
    EXPECT_EQ(0, chmod(reader.Folder().SettingsFileName().c_str(), file));
  }
  EXPECT_EQ(0, chmod(reader.Folder().Path().c_str(), folder));
  bool effective = false;
  {
    WithoutPrivileges const asAnyone;
    effective = asAnyone.Effective();
    if (effective) printed = reader.Read();
  }
  EXPECT_EQ(0, chmod(reader.Folder().Path().c_str(), kWritable));
  return effective;
}

TYPED_TEST(RadialBasisSettings, UnreadableFileIsReplacedByTheDefaults) {
  Reader<TypeParam> reader(this->OwnFile());
  std::string printed;
  if (!ReadUnderPermissions(reader, kNone, kWritable, printed))
    GTEST_SKIP() << "permissions do not bind this user";
  EXPECT_EQ(kDefaultLine + "\n" + kDefaultLine, printed);
  EXPECT_EQ(TypeParam::DefaultFile(), reader.Folder().Read());
  EXPECT_EQ(TypeParam::Defaults(), reader.Values());
}

TYPED_TEST(RadialBasisSettings, UnreadableFileInAReadOnlyFolderKeepsTheValues) {
  Reader<TypeParam> reader(this->OwnFile());
  std::string printed;
  if (!ReadUnderPermissions(reader, kNone, kReadOnlyFolder, printed))
    GTEST_SKIP() << "permissions do not bind this user";
  EXPECT_EQ(kDefaultLine + "\n", printed);
  reader.ExpectValuesKept();
  chmod(reader.Folder().SettingsFileName().c_str(), kRead);
  EXPECT_EQ(this->OwnFile(), reader.Folder().Read());
}

TYPED_TEST(RadialBasisSettings, ForeignFileThatCannotBeDeletedIsReadByPlace) {
  std::string const foreign = "1003" + TypeParam::Lines("25");
  Reader<TypeParam> reader(foreign);
  std::string printed;
  if (!ReadUnderPermissions(reader, kRead, kReadOnlyFolder, printed))
    GTEST_SKIP() << "permissions do not bind this user";
  EXPECT_EQ("", printed);
  EXPECT_EQ(TypeParam::ValuesOfLines(25.0), reader.Values());
  EXPECT_EQ(foreign, reader.Folder().Read());
}

TYPED_TEST(RadialBasisSettings, ReadOnlyFolderWithoutAFileKeepsTheValues) {
  Reader<TypeParam> reader;
  std::string printed;
  if (!ReadUnderPermissions(reader, kRead, kReadOnlyFolder, printed))
    GTEST_SKIP() << "permissions do not bind this user";
  EXPECT_EQ(kDefaultLine, printed);
  EXPECT_FALSE(reader.Folder().Exists());
  reader.ExpectValuesKept();
}

TYPED_TEST(RadialBasisSettings, ReadOnlyFileOfItsOwnIsRead) {
  Reader<TypeParam> reader(this->OwnFile());
  std::string printed;
  if (!ReadUnderPermissions(reader, kRead, kReadOnlyFolder, printed))
    GTEST_SKIP() << "permissions do not bind this user";
  EXPECT_EQ("", printed);
  EXPECT_EQ(TypeParam::ValuesOfLines(25.0), reader.Values());
}

}  // namespace
}  // namespace zyn_test::settings_test
