#pragma once

#include <cstddef>
#include <vector>

namespace reference_host {

/// Orders the vertices of a graph so that neighbours are close together. @cite cuthill1969
///
/// Components follow each other by their smallest vertices. Each is ordered breadth-first from a
/// pseudo-peripheral vertex (@cite george1979), with the neighbours of a vertex by ascending degree, equal
/// degrees by number. The result depends on the graph alone.
/// @param[in] rowStart  [0..n] vertex v has the neighbours columns[rowStart[v] .. rowStart[v+1]-1]
/// @param[in] columns   neighbours, 0-based; the graph is symmetric, repeated neighbours and loops do no harm
/// @return [0..n-1] the vertex at each place
std::vector<int> CuthillMcKee(std::vector<std::size_t> const& rowStart, std::vector<int> const& columns);

}  // namespace reference_host
