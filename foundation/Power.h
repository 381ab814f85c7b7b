#pragma once

/// @file
/// Integer powers rounded once: x^N is the floating-point number nearest to the exact power, with ties to even, for every
/// x. So a power has one value, whatever the compiler and the instructions of the processor; std::pow rounds nearly so,
/// and its C library, even the processor, decides where it does not.
///
/// Zeros, infinities and what is not a number give what std::pow gives, and so do powers beyond the range of numbers: an
/// infinity, or a number that lost digits, with the exceptions that say so. N is 4, 5, 6 or 8. The environment has to
/// round to nearest, as programs find it.

/// x^N.
template <int N>
double Power(double x);

/// Replaces x[0..n-1] by their powers, several at a time.
template <int N>
void RaiseToPower(double* x, int n);
