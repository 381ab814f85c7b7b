#pragma once

#include <cstddef>
#include <vector>

namespace reference_host {

/// Order of a graph's vertices in which neighbours stand close together. @cite cuthill1969
///
/// Component by component, in the order of their smallest vertices: breadth-first from a vertex at the rim
/// (pseudo-peripheral, @cite george1979), the neighbours of a vertex by ascending degree, equal degrees by
/// number. The result depends on the graph alone.
/// @param[in] rowStart  [0..n] vertex v has the neighbours columns[rowStart[v] .. rowStart[v+1]-1]
/// @param[in] columns   neighbours, 0-based; the graph is symmetric, repeated neighbours and loops do no harm
/// @return [0..n-1] the vertex at each place
std::vector<int> CuthillMcKee(std::vector<std::size_t> const& rowStart, std::vector<int> const& columns);

}  // namespace reference_host
