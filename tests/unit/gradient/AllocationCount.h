#pragma once

namespace gradient_test {

/// Allocations by operator new in this program so far, in any of its forms.
long Allocations();

/// Allocations by operator new that have not been given back.
long LiveAllocations();

}  // namespace gradient_test
