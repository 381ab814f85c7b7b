#pragma once

#include "volFields.H"

namespace plain {

/// Unweighted least squares over the face neighbours, written as directly as possible: boundary faces count with the
/// value at their centre, empty faces with the value of their own cell. Collective.
Foam::tmp<Foam::volVectorField> LeastSquares(Foam::volScalarField const& p);

/// Green-Gauss with `nSweep` sweeps: after the first, the previous gradient moves the value on an inner face to the
/// face's centre, limited to the values of the two cells. Collective.
/// @pre no rotational periodicity
Foam::tmp<Foam::volVectorField> IteratedGreenGauss(Foam::volScalarField const& p, int nSweep);

}  // namespace plain
