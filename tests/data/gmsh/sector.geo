// A quarter of a ring of tetrahedra, periodic by a rotation of 90 degrees.
h = 0.7;
Point(1) = {1, 0, 0, h};
Point(2) = {2, 0, 0, h};
Point(3) = {2, 0, 1, h};
Point(4) = {1, 0, 1, h};
Line(1) = {1, 2};
Line(2) = {2, 3};
Line(3) = {3, 4};
Line(4) = {4, 1};
Curve Loop(1) = {1, 2, 3, 4};
Plane Surface(1) = {1};
out[] = Extrude { {0, 0, 1}, {0, 0, 0}, Pi/2 } { Surface{1}; };
Periodic Surface {out[0]} = {1} Rotate {{0, 0, 1}, {0, 0, 0}, Pi/2};
Physical Surface("first") = {1};
Physical Surface("second") = {out[0]};
Physical Surface("walls") = {out[2], out[3], out[4], out[5]};
Physical Volume("fluid") = {out[1]};
