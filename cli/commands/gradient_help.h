#pragma once

/// What `zyngrad gradient --help` prints.
namespace zyngrad::gradient_help {

inline constexpr char const* kSummary =
    "Compute the gradients of fields by each method; for a formula, with errors";

inline constexpr char const* kField = "The field, as a formula; once or three times";
inline constexpr char const* kMethods = "Methods, separated by commas (default all):";
inline constexpr char const* kSweeps = "Sweeps of the iterated method (default 3)";
inline constexpr char const* kWeight = "Coefficient of the weighted method, as a formula (default 1)";
inline constexpr char const* kSpan =
    "Support radius of rbf, as a multiple of the stencil's length (default 500)";
inline constexpr char const* kShapeNormalize =
    "rbf scales each axis, and with it its result, by the stencil's extent";
inline constexpr char const* kNonBlocking = "Use non-blocking exchange between ranks";
inline constexpr char const* kRepeat = "Timed calls after the first, at the first time (default 3)";
inline constexpr char const* kDerive =
    "Quantities derived from the gradient of a vector, separated by commas:";
inline constexpr char const* kWriteCase =
    "Write the results as fields into the time folder of the OpenFOAM case";
inline constexpr char const* kOverwrite = "With --write-case: replace fields that zyngrad did not write, too";

/// Stands before the names of the functions, and kFields behind them.
inline constexpr char const* kFormula =
    R"(EXPR is a formula in x, y and z, such as "sin(x)*y + z^2". It may contain + - * / ^, brackets, pi, e and
the functions )";

inline constexpr char const* kFields = R"(.

The method vector needs three fields, the other methods need one. If you choose both and give one
--field, vector uses it three times; if you give three, the other methods use the first. The field takes
the formula's values at cell centres and, on the boundary, at face centres. Errors are measured against the
formula's own gradient.
)";

/// Behind the paragraph on fields from files.
inline constexpr char const* kOutput = R"(
The method vector takes the three components of a vector in one pass, or three scalars; the other methods take
one component after the other. Every method is set up once for all times, and the timed calls are made at the
first time only.

--derive takes vectors from --field-file, or three --field as the components of one. Q is the second
invariant of the gradient, ((div u)^2 - tr(grad u . grad u)) / 2, as OpenFOAM's function object Q has it.

--write-case puts grad(p) of a scalar p, and of a vector U what --derive names (grad(U), div(U), vorticity,
Q, strainRate; without --derive grad(U)), beside the source field. The files are written as that is: text,
binary or compressed; of a decomposed case in each processor folder. All files appear together at the end,
or none. A file that zyngrad did not write, or that has changed since, stops the run unless --overwrite is
given.

The output folder receives gradient.json (the numbers of the tables), gradient.vtu (or gradient.pvtu and its
pieces; for several times gradient_TIME.vtu and gradient.pvd), log.rankN.txt (what the operators print) and
settings.rankN.rbf (the settings of rbf).

The exit code is 1 if a method could not be run on this mesh or if its gradient is not finite in some cells.
The last lines then give the method and the reason; the results of the other methods are valid.

Examples:
  zyngrad gradient channel.msh --field "sin(x)*y + z^2"
  zyngrad gradient box:20,20,20:tet --field "x^2" --method plain,iterated --sweeps 5 -o tet20
  mpirun -n 2 zyngrad gradient case/constant/polyMesh --field x --group frontAndBack=wall
  mpirun -n 4 zyngrad gradient case --field-file 0.5/T
  zyngrad gradient case --field-file U --field-file p --time all --method lsq
  zyngrad gradient case --field-file U --time latest --method lsq --derive curl,Q --write-case
  zyngrad gradient wing.cgns --field-file wing.cgns:Pressure --method lsq
  zyngrad gradient box:9,9,9 --method vector --field "x*y" --field "y*z" --field "z*x")";

}  // namespace zyngrad::gradient_help
