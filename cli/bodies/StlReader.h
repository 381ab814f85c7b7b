#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// Reads the triangles of an STL file, binary or text, all solids of it. The normals in the file are ignored: the
/// order of the corners says which side is outside.
///
/// A file is binary if its size is the one that its count of triangles gives, whatever its header says; otherwise it is
/// text if it begins with the word "solid" and has no zero bytes where text would be.
/// @return x, y, z of the three corners of each triangle in turn, L
///
/// Throws MeshError `car.stl:12: expected "vertex", found "vertx" (triangle 2)`, or for a binary file
/// `car.stl: offset 146: triangle 2, corner 1: nan is not a finite number (x)`.
std::vector<double> ReadStl(std::string const& file);

}  // namespace zyngrad
