#pragma once

/// What the help of every command says about fields from files.
namespace zyngrad::field_file_help {

/// A paragraph of its own. Ends with a line end.
inline constexpr char const* kFieldFiles = R"(
--field-file replaces --field. FILE is a volScalarField or volVectorField of OpenFOAM, such as 0.5/U in the
case (a decomposed case has it in its processor folders); or FILE.cgns:ARRAY for an array at the cells, and
FILE.cgns:Velocity for the vector of VelocityX, VelocityY and VelocityZ. Give it once for each field. With
--time, FILE is the name of the field alone (--field-file U --time 0.1,0.2): times and ranges such as 0.5:2,
all, or latest, which is the last time that has the fields. Exact values of such a field are unknown, so
sizes are shown in place of errors, and which values the field took at the boundary.
)";

}  // namespace zyngrad::field_file_help
