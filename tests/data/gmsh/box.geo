// A box of 2 x 1 x 1 of tetrahedra. Its ends in x and its sides in y are periodic; z = 0 and z = 1 are walls.
h = 0.5;
Point(1) = {0, 0, 0, h};
Point(2) = {2, 0, 0, h};
Point(3) = {2, 1, 0, h};
Point(4) = {0, 1, 0, h};
Line(1) = {1, 2};
Line(2) = {2, 3};
Line(3) = {3, 4};
Line(4) = {4, 1};
Curve Loop(1) = {1, 2, 3, 4};
Plane Surface(1) = {1};
side[] = Extrude {0, 0, 1} { Surface{1}; };  // top, volume, then y = 0, x = 2, y = 1, x = 0
Periodic Surface {side[3]} = {side[5]} Translate {2, 0, 0};
Periodic Surface {side[4]} = {side[2]} Translate {0, 1, 0};
Physical Surface("left") = {side[5]};
Physical Surface("right") = {side[3]};
Physical Surface("sides") = {side[2], side[4]};
Physical Surface("walls") = {1, side[0]};
Physical Volume("fluid") = {side[1]};
