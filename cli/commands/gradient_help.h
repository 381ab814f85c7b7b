#pragma once

/// What `zyngrad gradient --help` prints.
namespace zyngrad::gradient_help {

inline constexpr char const* kSummary =
    "Compute the gradient of a field by each method; for a formula, with errors";

inline constexpr char const* kField = "The field, as a formula; once or three times";
inline constexpr char const* kFieldFile = "The field, from a file; once or three times";
inline constexpr char const* kMethods = "Methods, separated by commas (default all):";
inline constexpr char const* kSweeps = "Sweeps of the iterated method (default 3)";
inline constexpr char const* kWeight = "Coefficient of the weighted method, as a formula (default 1)";
inline constexpr char const* kSpan =
    "Support radius of rbf, as a multiple of the stencil's length (default 500)";
inline constexpr char const* kShapeNormalize =
    "rbf scales each axis, and with it its result, by the stencil's extent";
inline constexpr char const* kNonBlocking = "Use non-blocking exchange between ranks";
inline constexpr char const* kRepeat = "Timed calls after the first (default 3)";

/// Stands before the names of the functions, and kFooter behind them.
inline constexpr char const* kFormula =
    R"(EXPR is a formula in x, y and z, such as "sin(x)*y + z^2". It may contain + - * / ^, brackets, pi, e and
the functions )";

inline constexpr char const* kFooter = R"(.

The method vector needs three fields, the other methods need one. If you choose both and give one
--field, vector uses it three times; if you give three, the other methods use the first. The field takes
the formula's values at cell centres and, on the boundary, at face centres. Errors are measured against the
formula's own gradient.

--field-file replaces --field. FILE is a volScalarField of OpenFOAM, such as 0/T in the case (a decomposed
case has it in its processor folders), or FILE.cgns:ARRAY for a cell-centred array. The exact gradient of
such a field is unknown, so the tables show norms and ranges of the gradients instead of errors.

The output folder receives gradient.json (the numbers of the tables), gradient.vtu (or gradient.pvtu and its
pieces), log.rankN.txt (what the operators print) and settings.rankN.rbf (the settings of rbf).

The exit code is 1 if a method could not be run on this mesh or if its gradient is not finite in some cells.
The last lines then give the method and the reason; the results of the other methods are valid.

Examples:
  zyngrad gradient channel.msh --field "sin(x)*y + z^2"
  zyngrad gradient box:20,20,20:tet --field "x^2" --method plain,iterated --sweeps 5 -o tet20
  mpirun -n 2 zyngrad gradient case/constant/polyMesh --field x --group frontAndBack=wall
  mpirun -n 4 zyngrad gradient case --field-file 0.5/T
  zyngrad gradient wing.cgns --field-file wing.cgns:Pressure --method lsq
  zyngrad gradient box:9,9,9 --method vector --field "x*y" --field "y*z" --field "z*x")";

}  // namespace zyngrad::gradient_help
