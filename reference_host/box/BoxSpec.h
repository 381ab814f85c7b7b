#pragma once

#include <cstdint>
#include <string>

namespace reference_host {

/// A box of nx * ny * nz cubes with edges of 1/max(nx, ny, nz) L and one corner at the origin.
///
/// Stretch and skew map the box onto itself (BoxMapping.h). Its patches are "inlet" (x = 0), "outlet" (the
/// other end), "wall_ymin", "wall_ymax", "wall_zmin" and "wall_zmax". Nodes and cubes are numbered with x
/// running fastest, then y, then z. Cells are numbered cube by cube, faces by their owner, which is the cell
/// with the lower number.
struct BoxSpec {
  /// Each cube is one hexahedron, six tetrahedra around its diagonal, or two prisms along z. Dual: the dual
  /// of the mesh of tetrahedra, a polyhedron around every node, of 14 faces inside and fewer at the boundary.
  enum class Shape { Hex, Tet, Prism, Dual };

  int nx = 1, ny = 1, nz = 1;
  Shape shape = Shape::Hex;

  /// Every node inside the box is moved by up to this many cube edges in each direction; below 0.5.
  double perturb = 0.0;
  std::uint64_t seed = 0;  ///< each seed moves the nodes differently

  /// The cells at y = 0 are this many times flatter than in the uniform box and grow exponentially with y.
  double stretch = 1.0;
  /// Nodes inside are moved along x by up to this many box lengths, below 0.3, in waves along y and z.
  double skew = 0.0;
};

/// Whether the text asks for a box, well-formed or not: it begins with "box:".
bool IsBoxSpec(std::string const& text);

/// Reads `box:NX,NY,NZ[:hex|tet|prism|dual][:perturb=A,seed=S,stretch=F,skew=W]`. Throws MeshError on anything
/// else and on a box whose cells, faces or nodes cannot be counted with 64 bits. Its parts must be countable with
/// 32 bits (MakeBoxPart).
BoxSpec ParseBoxSpec(std::string const& text);

/// "box:NX,NY,NZ", what messages call a box.
std::string BoxText(BoxSpec const& spec);

/// Throws a MeshError that begins with `name` if a number of the box is outside its range.
void CheckBoxSpec(BoxSpec const& spec, std::string const& name);

}  // namespace reference_host
