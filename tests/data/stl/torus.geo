// A torus around the axis along z through (0.5, 0.5, 0.5): radius 0.25 of its circle, 0.1 of its tube.
SetFactory("OpenCASCADE");
Torus(1) = {0.5, 0.5, 0.5, 0.25, 0.1};
Mesh.MeshSizeMin = 0.08;
Mesh.MeshSizeMax = 0.08;
