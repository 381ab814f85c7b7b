#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// A box of nx * ny * nz cubes with edges of 1/max(nx, ny, nz) L and one corner in the origin.
///
/// Stretch and skew map that box onto itself (BoxMapping.h). Its patches are "inlet" (x = 0), "outlet" (the other end), "wall_ymin", "wall_ymax", "wall_zmin" and
/// "wall_zmax". Nodes and cubes are numbered with x running fastest, then y, then z; cells cube by cube;
/// faces by their owner, which is the cell with the lower number.
struct BoxSpec {
  /// Each cube is one hexahedron, six tetrahedra around its diagonal, or two prisms along z. Dual: the dual of
  /// the mesh of tetrahedra, a polyhedron of 14 faces around every node, less at the boundary.
  enum class Shape { Hex, Tet, Prism, Dual };

  int nx = 1, ny = 1, nz = 1;
  Shape shape = Shape::Hex;

  /// Every node that is not on the box's surface is moved by up to this many cube edges in each direction,
  /// below 0.5.
  double perturb = 0.0;
  std::uint64_t seed = 0;  ///< another seed moves the nodes otherwise

  /// The cells at y = 0 are so many times flatter than in the uniform box, and grow exponentially with y.
  double stretch = 1.0;
  /// Inner nodes are moved along x by up to this many box lengths, below 0.3, in waves along y and z.
  double skew = 0.0;
};

/// Whether the text asks for a box, well formed or not: it begins with "box:".
bool IsBoxSpec(std::string const& text);

/// Reads `box:NX,NY,NZ[:hex|tet|prism|dual][:perturb=A,seed=S,stretch=F,skew=W]`. Throws MeshError on anything
/// else and on a box whose cells, faces or nodes cannot be counted with 32 bits.
BoxSpec ParseBoxSpec(std::string const& text);

/// Throws MeshError, its text beginning with `name`, if the numbers of a box are outside what is told above.
void CheckBoxSpec(BoxSpec const& spec, std::string const& name);

/// Number of its nodes.
std::int64_t BoxNodeCount(BoxSpec const& spec);

/// The whole box.
FaceMesh MakeBox(BoxSpec const& spec);

/// One part of the box, made without the rest: equal to SplitMesh(MakeBox(spec), BoxPartOfCell(spec, nParts),
/// nParts)[part]; a part of a dual is cut out of the whole. Throws MeshError if there are more parts than cubes.
MeshPart MakeBoxPart(BoxSpec const& spec, int part, int nParts);

/// The part of every cell: blocks of whole cubes, or of nodes for a dual, found by cutting the longest side in two until each part
/// has its block.
std::vector<int> BoxPartOfCell(BoxSpec const& spec, int nParts);

}  // namespace reference_host
