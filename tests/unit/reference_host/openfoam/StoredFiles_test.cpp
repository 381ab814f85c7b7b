// Compressed and collated files: how they are found, and what is said of damaged ones.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "reference_host/openfoam/CollatedFile.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamStorage.h"
#include "reference_host/openfoam/GzipFile.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/openfoam/BinaryFoamFiles.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"

namespace stored_files {
namespace {

using foam_test::Collated;
using foam_test::Compressed;
using reference_host::CountProcessorFolders;
using reference_host::FindFoamFile;
using reference_host::FoamFile;
using reference_host::FoamStorage;
using reference_host::GzipFile;
using reference_host::ReadCollatedPiece;
using reference_host::StoredProcessorFolder;

std::string Text(std::string const& content) { return foam_test::Header("labelList") + content; }

/// The message without the folder.
template <class Work>
std::string RefusalIn(TemporaryFolder const& folder, Work const& work) {
  std::string const what = MeshErrorOf(work);
  EXPECT_EQ(0U, what.rfind(folder.Path() + "/", 0)) << what;
  return what.substr(std::min(what.size(), folder.Path().size() + 1));
}

std::string Unpacked(std::string const& file) { return std::string(GzipFile(file).ReadRest().View()); }

// Compressed files.

TEST(GzipFile, UnpacksFilesOfAnySize) {
  TemporaryFolder const folder;
  for (std::size_t const size : {std::size_t{0}, std::size_t{1}, std::size_t{1000}, std::size_t{3} << 20}) {
    std::string content;
    for (std::size_t i = 0; content.size() < size; ++i) content += std::to_string(i * i % 977) + "\n";
    content.resize(size);
    EXPECT_EQ(content, Unpacked(folder.Write("a.gz", Compressed(content))));
    // Several packed parts in a row are one file.
    EXPECT_EQ(content + content, Unpacked(folder.Write("b.gz", Compressed(content) + Compressed(content))));
  }
}

TEST(GzipFile, RefusesTruncatedFiles) {
  TemporaryFolder const folder;
  std::string const packed = Compressed(Text("3(1 2 3)\n"));
  for (std::size_t length = 2; length < packed.size(); ++length) {
    folder.Write("owner.gz", packed.substr(0, length));
    EXPECT_EQ("owner.gz: the compressed file is truncated",
              RefusalIn(folder, [&] { FoamFile(folder.Path(), "owner"); }));
  }
}

TEST(GzipFile, RefusesDamagedFiles) {
  TemporaryFolder const folder;
  std::string packed = Compressed(Text("3(1 2 3)\n"));
  packed[packed.size() - 6] ^= 1;  // the checksum
  folder.Write("owner.gz", packed);
  EXPECT_EQ("owner.gz: the compressed file is damaged",
            RefusalIn(folder, [&] { FoamFile(folder.Path(), "owner"); }));
}

TEST(GzipFile, NamesLinesOfTheUnpackedText) {
  TemporaryFolder const folder;
  folder.Write("owner.gz", Compressed(Text("three")));
  EXPECT_EQ("owner.gz:8: a number expected instead of 'three'", RefusalIn(folder, [&] {
              FoamFile file(folder.Path(), "owner");
              file.Text().Integer("a number");
            }));
}

// A few hundred kilobytes that stand for more than 256 MiB: what is too much is not unpacked.
TEST(GzipFile, RefusesWhatUnpacksToFarMoreThanItsSize) {
  TemporaryFolder const folder;
  std::string const blanks = Compressed(std::string(std::size_t{16} << 20, ' '));
  std::string packed;
  for (int i = 0; i < 17; ++i) packed += blanks;
  folder.Write("owner.gz", packed);
  EXPECT_EQ(
      "owner.gz: unpacks to more than 268435456 bytes, far more than files of numbers do; unpack it with "
      "gunzip "
      "if it is sound",
      RefusalIn(folder, [&] { FoamFile(folder.Path(), "owner"); }));
}

TEST(GzipFile, NamesWhatIsNotAFile) {
  TemporaryFolder const folder;
  std::filesystem::create_directories(folder.Path() + "/owner.gz");
  EXPECT_EQ("owner.gz: a folder, not a regular file",
            RefusalIn(folder, [&] { FoamFile(folder.Path(), "owner"); }));
}

// Where files are.

TEST(FoamStorage, TakesTheFileItselfBeforeTheCompressedOne) {
  TemporaryFolder const folder;
  std::string const packed = folder.Write("0/p.gz", "");
  EXPECT_EQ(packed, FindFoamFile(folder.Path() + "/0/p").file);
  EXPECT_TRUE(FindFoamFile(folder.Path() + "/0/p").IsCompressed());
  std::string const plain = folder.Write("0/p", "");
  EXPECT_EQ(plain, FindFoamFile(folder.Path() + "/0/p").file);
  EXPECT_EQ(FoamStorage::kWhole, FindFoamFile(folder.Path() + "/0/p").piece);
  EXPECT_EQ(folder.Path() + "/0/T", FindFoamFile(folder.Path() + "/0/T").file);  // to be reported as missing
}

TEST(FoamStorage, FindsThePieceOfAProcessor) {
  TemporaryFolder const folder;
  folder.Write("processors8_0-3/0/p", "");
  folder.Write("processors8_4-7/0/p.gz", "");
  folder.Write("processors/0/p", "");
  folder.Write("processors8_7-3/0/p", "");
  FoamStorage const two = FindFoamFile(folder.Path() + "/processor2/0/p");
  EXPECT_EQ(folder.Path() + "/processors8_0-3/0/p", two.file);
  EXPECT_EQ(2, two.piece);
  FoamStorage const six = FindFoamFile(folder.Path() + "/processor6/0/p");
  EXPECT_EQ(folder.Path() + "/processors8_4-7/0/p.gz", six.file);
  EXPECT_EQ(2, six.piece);
  EXPECT_EQ(6, six.processor);
  EXPECT_EQ(folder.Path() + "/processors8_4-7/0/T", FindFoamFile(folder.Path() + "/processor6/0/T").file);
  EXPECT_EQ(folder.Path() + "/processor9/0/p", FindFoamFile(folder.Path() + "/processor9/0/p").file);
  EXPECT_EQ(8, CountProcessorFolders(folder.Path()));
  EXPECT_EQ(folder.Path() + "/processors8_4-7", StoredProcessorFolder(folder.Path(), 5));
  EXPECT_EQ(folder.Path() + "/processor9", StoredProcessorFolder(folder.Path(), 9));
  // A folder of its own comes first.
  std::string const own = folder.Write("processor2/0/p", "");
  EXPECT_EQ(own, FindFoamFile(own).file);
  EXPECT_EQ(folder.Path() + "/processor2", StoredProcessorFolder(folder.Path(), 2));
}

TEST(FoamStorage, RefusesFoldersThatDoNotMakeACase) {
  auto const refusal = [](std::vector<std::string> const& names) {
    TemporaryFolder const folder;
    for (std::string const& name : names) std::filesystem::create_directories(folder.Path() + "/" + name);
    return MeshErrorOf([&] { CountProcessorFolders(folder.Path()); }).substr(folder.Path().size());
  };
  EXPECT_EQ(": no folder has the pieces of processor 2 of 4 (processorsN_A-B)",
            refusal({"processors4_0-1", "processors4_3-3"}));
  EXPECT_EQ(": no folder has the pieces of processor 0 of 4 (processorsN_A-B)", refusal({"processors4_1-3"}));
  EXPECT_EQ(": folders for 2 and for 4 processors (processorsN); remove those of one of them",
            refusal({"processors4", "processors2"}));
  EXPECT_EQ(": no processor folders", refusal({"constant"}));
}

// Collated files.

std::string Piece(std::string const& file, int piece) {
  return std::string(ReadCollatedPiece(file, piece, piece).content.View());
}

TEST(CollatedFile, GivesThePieceOfEachProcessor) {
  TemporaryFolder const folder;
  std::vector<std::string> const pieces = {Text("2(0 1)"), "1\n(\n)", "", std::string(100000, ')'),
                                           "\n(last"};
  for (bool const isCompressed : {false, true}) {
    std::string const content = Collated(pieces);
    std::string const file = folder.Write("owner", isCompressed ? Compressed(content) : content);
    for (std::size_t p = 0; p < pieces.size(); ++p) {
      auto const piece = ReadCollatedPiece(file, static_cast<int>(p), 7);
      EXPECT_EQ(pieces[p], piece.content.View());
      EXPECT_EQ(pieces[p], content.substr(piece.firstByte, pieces[p].size()));
      EXPECT_EQ(p > 0 ? pieces[0] : "", piece.header.View());
    }
  }
}

TEST(CollatedFile, NamesPlacesInTheWholeFile) {
  TemporaryFolder const folder;
  std::string const content = Collated({Text("2(0 1)"), "\n2(0 x)"});
  folder.Write("processors2/owner", content);
  EXPECT_EQ("processors2/owner: offset " + std::to_string(content.find('x')) +
                ": a number expected instead of 'x)'",
            RefusalIn(folder, [&] {
              FoamFile file(folder.Path() + "/processor1", "owner");
              file.Text().Integer("a number");
              file.Text().Expect('(');
              file.Text().Integer("a number");
              file.Text().Integer("a number");
            }));
}

TEST(CollatedFile, RefusesFilesWithoutThePiece) {
  TemporaryFolder const folder;
  std::string const content = Collated({Text("2(0 1)"), "2(0 1)"});
  std::string const file = folder.Write("owner", content);
  EXPECT_EQ("owner: offset " + std::to_string(content.size()) +
                ": the file ends after 2 pieces, before that of processor 5",
            RefusalIn(folder, [&] { ReadCollatedPiece(file, 3, 5); }));
  EXPECT_EQ(Text("2(0 1)"), Piece(file, 0));
}

TEST(CollatedFile, RefusesSizesThatTheFileCannotHold) {
  TemporaryFolder const folder;
  std::string const header = Collated({});
  auto const refusal = [&](std::string const& pieces, int piece) {
    std::string const file = folder.Write("owner", header + pieces);
    return RefusalIn(folder, [&] { ReadCollatedPiece(file, piece, piece); });
  };
  std::string const first = "owner: offset " + std::to_string(header.size()) + ": ";
  EXPECT_EQ(first + "the size of a processor's piece, 100 bytes, is not in 0 to 10, the rest of the file",
            refusal("100\n(123)", 0));
  EXPECT_EQ(first +
                "the size of a processor's piece, 9000000000000000000 bytes, is not in 0 to 28, the rest of "
                "the file",
            refusal("9000000000000000000\n(12345)", 1));
  EXPECT_EQ(first + "the size of a processor's piece, -1 bytes, is not in 0 to 9, the rest of the file",
            refusal("-1\n(123)", 1));
  EXPECT_EQ("owner: the piece of processor 0 has 6 bytes, but the file ends after 5",
            refusal("6\n(12345", 0));
  EXPECT_EQ("owner: offset " + std::to_string(header.size() + 5) + ": ')' expected instead of '3)'",
            refusal("2\n(123)", 0));
  EXPECT_EQ("owner: offset " + std::to_string(header.size() + 7) + ": the file ends where ')' is expected",
            refusal("4\n(1234", 1));
  EXPECT_EQ(first + "the size of a processor's piece expected instead of 'many'", refusal("many (", 0));
}

TEST(CollatedFile, RefusesFilesOfAnotherClass) {
  TemporaryFolder const folder;
  std::string const text = Text("2(0 1)");
  folder.Write("processors2/owner", text);
  EXPECT_EQ("processors2/owner: offset " + std::to_string(text.find('}')) +
                ": a file of class 'labelList' where decomposedBlockData, the pieces of several processors, "
                "is expected",
            RefusalIn(folder, [&] { FoamFile(folder.Path() + "/processor1", "owner"); }));
}

TEST(CollatedFile, SurvivesDamagedBytes) {
  TemporaryFolder const folder;
  std::string const whole = Collated({Text("2(0 1)"), "2(0 1)", "1(5)"});
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string content = whole;
    content[at] = "(9-\0 "[at % 5];
    folder.Write("processors3/owner", content);
    try {
      FoamFile(folder.Path() + "/processor2", "owner");
    } catch (reference_host::MeshError const& error) {
      EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace stored_files
