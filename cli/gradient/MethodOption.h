#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "cli/gradient/GradientMethods.h"

namespace zyngrad {

/// The words of a list between commas; an empty one stays, for the reader of the words to complain about.
std::vector<std::string> WordsBetweenCommas(std::string const& list);

/// Adds --method NAMES, spelled alike in every command that chooses methods: names between commas, and the option
/// as often as wanted. @param[in] lists  bound to the option; each holds a list
CLI::Option* AddMethodOption(CLI::App& command, std::vector<std::string>& lists,
                             std::string const& description);

/// The lists as one.
std::string JoinedLists(std::vector<std::string> const& lists);

/// Those of a list of names between commas, each once, in the order of GradientMethods(); "all" is each of them.
/// Throws UsageError naming what is unknown.
std::vector<GradientMethod const*> ChooseGradientMethods(std::string const& names);

}  // namespace zyngrad
