// A plate with three holes, of names that tell their group (inlet, outlet, lowerWall, upperWall), names that do not
// (front, back) and names that differ in their number (hole1, hole2, hole3). make_plate.sh makes the mesh.
SetFactory("OpenCASCADE");
Box(1) = {0, 0, 0, 3, 1, 0.25};
For i In {1:3}
  Cylinder(1 + i) = {i - 0.5, 0.5, 0, 0, 0, 0.25, 0.2};
EndFor
BooleanDifference(5) = { Volume{1}; Delete; }{ Volume{2:4}; Delete; };
Mesh.MeshSizeMin = 0.3;
Mesh.MeshSizeMax = 0.3;
e = 1e-3;
Physical Surface("inlet") = Surface In BoundingBox {-e, -e, -e, e, 1 + e, 0.25 + e};
Physical Surface("outlet") = Surface In BoundingBox {3 - e, -e, -e, 3 + e, 1 + e, 0.25 + e};
Physical Surface("lowerWall") = Surface In BoundingBox {-e, -e, -e, 3 + e, e, 0.25 + e};
Physical Surface("upperWall") = Surface In BoundingBox {-e, 1 - e, -e, 3 + e, 1 + e, 0.25 + e};
Physical Surface("back") = Surface In BoundingBox {-e, -e, -e, 3 + e, 1 + e, e};
Physical Surface("front") = Surface In BoundingBox {-e, -e, 0.25 - e, 3 + e, 1 + e, 0.25 + e};
For i In {1:3}
  Physical Surface(Sprintf("hole%g", i)) = Surface In BoundingBox {i - 0.7 - e, 0.3 - e, -e, i - 0.3 + e, 0.7 + e, 0.25 + e};
EndFor
Physical Volume("inside") = {5};
