#pragma once

#include <string>
#include <vector>

#include "cli/gradient/GradientMethods.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zyngrad {

/// The words of a list separated by commas. An empty word is kept, so that the caller can refuse it.
std::vector<std::string> WordsBetweenCommas(std::string const& list);

/// Adds --method NAMES, with the same spelling in every command that chooses methods: names separated by commas; the
/// option may be repeated. @param[in] lists  bound to the option; each holds one list
CLI::Option* AddMethodOption(CLI::App& command, std::vector<std::string>& lists,
                             std::string const& description);

/// The lists as one.
std::string JoinedLists(std::vector<std::string> const& lists);

/// The methods in a list of names separated by commas, each once, in the order of GradientMethods(); "all" means
/// all of them. Throws UsageError that names an unknown word.
std::vector<GradientMethod const*> ChooseGradientMethods(std::string const& names);

}  // namespace zyngrad
