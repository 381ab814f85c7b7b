#include "cli/case_files/CaseMark.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <string>

#include "reference_host/openfoam/GzipText.h"

namespace zyngrad {
namespace {

std::string SealedText() {
  std::string text = "FoamFile\n{\n    note        \"" + CaseNote() + "\";\n}\ninternalField uniform 1;\n";
  Seal(text);
  return text;
}

TEST(CaseMark, RecognisesWhatItHasSealed) {
  EXPECT_TRUE(IsSealed(SealedText()));
  EXPECT_EQ(std::string::npos, SealedText().find("0000000000000000"));
}

TEST(CaseMark, SealsATextInPieces) {
  std::string const whole = SealedText();
  std::string unsealed =
      "FoamFile\n{\n    note        \"" + CaseNote() + "\";\n}\ninternalField uniform 1;\n";
  std::size_t const cut = unsealed.find("internalField");
  std::string beginning = unsealed.substr(0, cut);
  CaseSeal seal;
  seal.Add(beginning);
  seal.Add(unsealed.substr(cut, 5));
  seal.Add(unsealed.substr(cut + 5));
  seal.PutInto(beginning);
  EXPECT_EQ(whole, beginning + unsealed.substr(cut));
}

TEST(CaseMark, RecognisesLongFilesPackedOrNot) {
  std::string text = "FoamFile { note \"" + CaseNote() + "\"; }\n";
  for (int n = 0; n < 300000; ++n) text += std::to_string(n) + '\n';  // beyond one piece
  Seal(text);
  std::string const file = testing::TempDir() + "case_mark_test";
  for (bool const isPacked : {false, true}) {
    for (bool const isChanged : {false, true}) {
      std::string content = text;
      if (isChanged) content.back() = ' ';
      std::ofstream(file, std::ios::binary) << (isPacked ? reference_host::Gzipped(content) : content);
      EXPECT_EQ(!isChanged, IsOurCaseFile(file)) << isPacked;
    }
  }
  std::remove(file.c_str());
}

TEST(CaseMark, NoticesEveryChange) {
  std::string const text = SealedText();
  for (std::size_t k = 0; k < text.size(); ++k) {
    std::string changed = text;
    changed[k] = static_cast<char>(changed[k] + 1);
    EXPECT_FALSE(IsSealed(changed)) << "byte " << k;
  }
  EXPECT_FALSE(IsSealed(text + " "));
  EXPECT_FALSE(IsSealed(text.substr(0, text.size() - 1)));
}

TEST(CaseMark, DoesNotTakeFilesOfOthers) {
  EXPECT_FALSE(IsSealed(""));
  EXPECT_FALSE(IsSealed("FoamFile { note \"written by zyngrad \"; }"));
  EXPECT_FALSE(IsSealed("FoamFile { note \"" + CaseNote() + "\"; }"));
  EXPECT_FALSE(IsSealed(std::string(5000, ' ') + SealedText()));  // far behind any header
}

}  // namespace
}  // namespace zyngrad
