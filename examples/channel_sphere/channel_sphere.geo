// A channel of 4 x 2 x 2 with a sphere of diameter 0.8 in the flow, which goes along x. The mesh is finer at the
// sphere than at the walls.
SetFactory("OpenCASCADE");

Box(1) = {-1.5, -1, -1, 4, 2, 2};
Sphere(2) = {0, 0, 0, 0.4};
BooleanDifference(3) = { Volume{1}; Delete; }{ Volume{2}; Delete; };

// Surfaces are found by where they are: their numbers depend on the version of Gmsh.
tiny = 1e-3;
inlet() = Surface In BoundingBox{-1.5 - tiny, -1 - tiny, -1 - tiny, -1.5 + tiny, 1 + tiny, 1 + tiny};
outlet() = Surface In BoundingBox{2.5 - tiny, -1 - tiny, -1 - tiny, 2.5 + tiny, 1 + tiny, 1 + tiny};
sphere() = Surface In BoundingBox{-0.4 - tiny, -0.4 - tiny, -0.4 - tiny, 0.4 + tiny, 0.4 + tiny, 0.4 + tiny};
channel() = Surface{:};
channel() -= inlet();
channel() -= outlet();
channel() -= sphere();

Physical Surface("inlet") = inlet();
Physical Surface("outlet") = outlet();
Physical Surface("wall_channel") = channel();
Physical Surface("wall_sphere") = sphere();
Physical Volume("fluid") = {3};

// Edge length 0.062 on the sphere, growing to 0.16 at a distance of 0.8 from it.
Field[1] = Distance;
Field[1].SurfacesList = {sphere()};
Field[1].NumPointsPerCurve = 100;
Field[2] = Threshold;
Field[2].InField = 1;
Field[2].SizeMin = 0.062;
Field[2].SizeMax = 0.16;
Field[2].DistMin = 0.05;
Field[2].DistMax = 0.8;
Background Field = 2;

Mesh.MeshSizeExtendFromBoundary = 0;
Mesh.MeshSizeFromPoints = 0;
Mesh.Algorithm = 6;    // Frontal-Delaunay
Mesh.Algorithm3D = 1;  // Delaunay
Mesh.Optimize = 1;
Mesh.OptimizeThreshold = 0.4;
