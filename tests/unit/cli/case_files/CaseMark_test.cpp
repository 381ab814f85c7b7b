#include "cli/case_files/CaseMark.h"

#include <gtest/gtest.h>

#include <string>

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
