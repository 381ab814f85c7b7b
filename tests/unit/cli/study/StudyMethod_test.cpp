#include "cli/study/StudyMethod.h"

#include <gtest/gtest.h>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

std::vector<std::string> NamesOf(std::string const& list) {
  std::vector<std::string> names;
  for (StudyMethod const* method : ChooseStudyMethods(list)) names.push_back(method->name);
  return names;
}

TEST(StudyMethod, ChoosesByNameAndByKindEachOnce) {
  EXPECT_EQ((std::vector<std::string>{"plain", "lsq"}), NamesOf("lsq,plain,lsq"));
  EXPECT_EQ((std::vector<std::string>{"plain", "iterated", "weighted", "lsq", "rbf"}), NamesOf("gradients"));
  EXPECT_EQ((std::vector<std::string>{"faces2", "points1", "points2", "points3"}), NamesOf("points,faces2"));
  EXPECT_EQ(12u, NamesOf("all").size());
}

TEST(StudyMethod, RefusesUnknownAndEmptyNames) {
  for (std::string const list : {"best", "", "lsq,", "lsq,,rbf", "faces5", "vector", "Lsq"}) {
    EXPECT_THROW(ChooseStudyMethods(list), UsageError) << list;
  }
}

TEST(StudyMethod, CombinesSpansAndSweepsWithThoseThatTakeThem) {
  std::vector<std::string> labels;
  for (StudyCase const& c : StudyCases(ChooseStudyMethods("iterated,lsq,rbf,points3"), {5, 1e-3}, {0, 1, 20}))
    labels.push_back(Label(c));
  EXPECT_EQ(
      (std::vector<std::string>{"iterated, 0 sweeps", "iterated, 1 sweep", "iterated, 20 sweeps", "lsq",
                                "rbf, Span 5", "rbf, Span 0.001", "points3, Span 5", "points3, Span 0.001"}),
      labels);
}

TEST(StudyMethod, TakesEachMethodsOwnSpanUnlessTold) {
  std::vector<double> spans;
  for (StudyCase const& c : StudyCases(ChooseStudyMethods("rbf,faces1,points1"), {}, {3}))
    spans.push_back(c.span);
  EXPECT_EQ((std::vector<double>{500, 1000, 500}), spans);
}

}  // namespace
}  // namespace zyngrad
