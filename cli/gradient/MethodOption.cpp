#include "cli/gradient/MethodOption.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/options/MeshOptions.h"

namespace zyngrad {

std::vector<std::string> WordsBetweenCommas(std::string const& list) {
  std::vector<std::string> words;
  std::istringstream in(list + ',');  // the comma makes an empty last word count
  for (std::string word; std::getline(in, word, ',');) words.push_back(word);
  return words;
}

CLI::Option* AddMethodOption(CLI::App& command, std::vector<std::string>& lists,
                             std::string const& description) {
  return AddRepeatableOption(command, "--method", lists, description)->type_name("NAMES");
}

std::string JoinedLists(std::vector<std::string> const& lists) {
  std::string joined;
  for (std::size_t k = 0; k < lists.size(); ++k) joined += (k == 0 ? "" : ",") + lists[k];
  return joined;
}

std::vector<GradientMethod const*> ChooseGradientMethods(std::string const& names) {
  std::vector<std::string> const words = WordsBetweenCommas(names);
  auto const isAsked = [&words](std::string const& name) {
    return std::find(words.begin(), words.end(), name) != words.end();
  };
  std::vector<GradientMethod> const& all = GradientMethods();
  for (std::string const& word : words) {
    bool const isKnown =
        word == "all" ||
        std::any_of(all.begin(), all.end(), [&word](GradientMethod const& m) { return word == m.name; });
    if (!isKnown)
      throw UsageError("unknown method " + Quoted(word) + ": expected " + GradientMethodNames() + " or all");
  }
  std::vector<GradientMethod const*> chosen;
  for (GradientMethod const& method : all)
    if (isAsked("all") || isAsked(method.name)) chosen.push_back(&method);
  return chosen;
}

}  // namespace zyngrad
