#pragma once

#include <memory>

#include "cli/commands/Command.h"

namespace zyngrad {

// The commands of the program; each is defined in the source of its name.

std::unique_ptr<Command> MakeGradientCommand();
std::unique_ptr<Command> MakeFacesCommand();
std::unique_ptr<Command> MakePointsCommand();
std::unique_ptr<Command> MakeStudyCommand();
std::unique_ptr<Command> MakeCheckCommand();
std::unique_ptr<Command> MakeCompareRanksCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeExplainCommand();

}  // namespace zyngrad
