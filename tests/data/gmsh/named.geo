// A cube of tetrahedra whose ends in x have the same nodes ($Periodic), but are called inlet and outlet.
h = 0.7;
Point(1) = {0, 0, 0, h};
Point(2) = {1, 0, 0, h};
Point(3) = {1, 1, 0, h};
Point(4) = {0, 1, 0, h};
Line(1) = {1, 2};
Line(2) = {2, 3};
Line(3) = {3, 4};
Line(4) = {4, 1};
Curve Loop(1) = {1, 2, 3, 4};
Plane Surface(1) = {1};
side[] = Extrude {0, 0, 1} { Surface{1}; };  // top, volume, then y = 0, x = 1, y = 1, x = 0
Periodic Surface {side[3]} = {side[5]} Translate {1, 0, 0};
Physical Surface("inlet") = {side[5]};
Physical Surface("outlet") = {side[3]};
Physical Surface("walls") = {1, side[0], side[2], side[4]};
Physical Volume("fluid") = {side[1]};
