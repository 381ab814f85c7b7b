#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "reference_host/partition/MeshSummary.h"

namespace zyngrad {

/// Prints what every command says about its mesh first: ranks, cells, faces by group, quality.
void PrintMeshReport(std::ostream& out, std::string const& meshName, reference_host::MeshSummary const& mesh);

/// Prints the boundary patches with their groups, and how the cells are distributed over the ranks.
void PrintMeshDetails(std::ostream& out, reference_host::MeshSummary const& mesh);

/// The numbers of both.
nlohmann::ordered_json MeshReportAsJson(std::string const& meshName, reference_host::MeshSummary const& mesh);

}  // namespace zyngrad
