#include "cli/gradient/MethodOption.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

std::vector<std::string> NamesOf(std::string const& list) {
  std::vector<std::string> names;
  for (GradientMethod const* method : ChooseGradientMethods(list)) names.emplace_back(method->name);
  return names;
}

TEST(MethodOption, ChoosesEachOnceInTheOrderOfTables) {
  EXPECT_EQ((std::vector<std::string>{"plain", "rbf"}), NamesOf("rbf,plain,rbf"));
  EXPECT_EQ(NamesOf("all").size(), GradientMethods().size());
  EXPECT_EQ(NamesOf("lsq,all").size(), GradientMethods().size());
}

TEST(MethodOption, RefusesUnknownAndEmptyNames) {
  for (std::string const list : {"best", "", "lsq,", "lsq,,rbf", "Lsq"})
    EXPECT_THROW(ChooseGradientMethods(list), UsageError) << list;
}

TEST(MethodOption, MayBeGivenSeveralTimes) {
  CLI::App program;
  std::vector<std::string> lists;
  AddMethodOption(program, lists, "");
  program.parse("--method plain,lsq --method rbf");
  EXPECT_EQ("plain,lsq,rbf", JoinedLists(lists));
}

}  // namespace
}  // namespace zyngrad
