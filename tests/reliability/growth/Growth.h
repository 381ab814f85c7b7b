#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// What a piece of work costs, the same on every run.
struct Cost {
  std::uint64_t instructions = 0;    ///< executed, those of the libraries included
  std::uint64_t allocatedBytes = 0;  ///< by operator new, whether they were freed or not
};

/// Runs the work once. The program must run under valgrind --tool=callgrind --instr-atstart=no with
/// --callgrind-out-file=$ZYN_GROWTH_FILE.
Cost Measure(std::function<void()> const& work);

/// Does `prepare(n)` and `prepare(2 n)`, which give the work on an input of that size, and expects that twice the input
/// costs about twice as much, a logarithm granted, and not much less, which would mean that n counts for nothing.
void ExpectLinear(int n, std::function<std::function<void()>(int)> const& prepare);

/// The same where the first byte that is too many ends the work: twice the input costs no more than twice.
void ExpectAtMostLinear(int n, std::function<std::function<void()>(int)> const& prepare);
