#pragma once

#include <string>
#include <vector>

namespace reference_host {

/// The case that a polyMesh folder belongs to: CASE of CASE/constant/polyMesh or CASE/polyMesh.
std::string CaseOfPolyMesh(std::string const& polyMesh);

/// Where the times of an OpenFOAM mesh are: the case; the first processor folder of a decomposed one. Empty for other
/// meshes.
/// @param[in] meshSpec  as for LoadMesh
std::string FolderOfTimes(std::string const& meshSpec);

/// The subfolders whose names are finite numbers, ascending: "0", "0.1", "1e-05".
std::vector<std::string> TimesIn(std::string const& folder);

/// The names of the files in the folder of a time, without ".gz", ascending.
std::vector<std::string> FieldsIn(std::string const& folder);

/// For messages about a missing field: the fields of its time, or the times of the folder if it has no such time or if
/// none was named: "; times: 0, 0.1". Empty if the folder has no times.
/// @param[in] field  TIME/NAME or NAME
std::string WhatIsThereInstead(std::string const& folder, std::string const& field);

}  // namespace reference_host
