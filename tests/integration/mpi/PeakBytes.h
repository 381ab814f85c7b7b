#pragma once

#include <cstddef>

namespace reference_host::test {

/// The memory of operator new in this program, in bytes.
std::size_t LiveBytes();

/// The most since the last call of ForgetPeak.
std::size_t PeakBytes();
void ForgetPeak();

}  // namespace reference_host::test
