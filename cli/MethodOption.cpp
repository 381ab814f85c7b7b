#include "cli/MethodOption.h"

#include <algorithm>
#include <sstream>

#include "cli/MeshOptions.h"
#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {

std::vector<std::string> WordsBetweenCommas(const std::string& list) {
  std::vector<std::string> words;
  std::istringstream in(list + ',');  // so that an empty last word counts
  for (std::string word; std::getline(in, word, ',');) words.push_back(word);
  return words;
}

CLI::Option* AddMethodOption(CLI::App& command, std::vector<std::string>& lists,
                             const std::string& description) {
  return AddRepeatableOption(command, "--method", lists, description)->type_name("NAMES");
}

std::string JoinedLists(const std::vector<std::string>& lists) {
  std::string joined;
  for (std::size_t k = 0; k < lists.size(); ++k) joined += (k == 0 ? "" : ",") + lists[k];
  return joined;
}

std::vector<const GradientMethod*> ChooseGradientMethods(const std::string& names) {
  const std::vector<std::string> words = WordsBetweenCommas(names);
  const auto isAsked = [&words](const std::string& name) {
    return std::find(words.begin(), words.end(), name) != words.end();
  };
  const std::vector<GradientMethod>& all = GradientMethods();
  for (const std::string& word : words) {
    const bool isKnown =
        word == "all" ||
        std::any_of(all.begin(), all.end(), [&word](const GradientMethod& m) { return word == m.name; });
    if (!isKnown)
      throw UsageError("unknown method " + Quoted(word) + ": expected " + GradientMethodNames() + " or all");
  }
  std::vector<const GradientMethod*> chosen;
  for (const GradientMethod& method : all)
    if (isAsked("all") || isAsked(method.name)) chosen.push_back(&method);
  return chosen;
}

}  // namespace zyngrad
