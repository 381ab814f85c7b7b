#include "reference_host/MeshReader.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::ReadMesh;

char const* const kTetrahedron =
    "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n4\n1 0 0 0\n2 1 0 0\n3 0 1 0\n4 0 0 1\n$EndNodes\n"
    "$Elements\n1\n1 4 2 0 1 1 2 3 4\n$EndElements\n";

void WriteTetrahedron(TemporaryFolder const& folder, std::string const& subfolder) {
  auto const write = [&](std::string const& name, std::string const& className, std::string const& content) {
    folder.Write(subfolder + name, "FoamFile { format ascii; class " + className + "; }\n" + content);
  };
  write("points", "vectorField", "4((0 0 0) (1 0 0) (0 1 0) (0 0 1))");
  write("faces", "faceList", "4(3(0 2 1) 3(0 1 3) 3(1 2 3) 3(0 3 2))");
  write("owner", "labelList", "4{0}");
  write("neighbour", "labelList", "0()");
  write("boundary", "polyBoundaryMesh", "1(all { type wall; nFaces 4; startFace 0; })");
}

TEST(MeshReader, ReadsGmshFilesByTheirEnding) {
  TemporaryFolder const folder;
  EXPECT_EQ(1, ReadMesh(folder.Write("a.msh", kTetrahedron)).nCells);
}

TEST(MeshReader, FindsThePolyMeshInAFolder) {
  for (char const* const subfolder : {"", "polyMesh/", "constant/polyMesh/"}) {
    TemporaryFolder const folder;
    WriteTetrahedron(folder, subfolder);
    EXPECT_EQ(1, ReadMesh(folder.Path()).nCells) << subfolder;
    EXPECT_EQ(1, ReadMesh(folder.Path() + "/").nCells) << subfolder;
  }
}

TEST(MeshReader, NamesTheFileThatAPolyMeshLacks) {
  TemporaryFolder const folder;
  folder.Write("constant/polyMesh/owner", "");
  EXPECT_EQ(MeshErrorOf([&] { ReadMesh(folder.Path()); }),
            folder.Path() + "/constant/polyMesh/points: no such file");
}

TEST(MeshReader, RefusesUnknownFormats) {
  TemporaryFolder const folder;
  ExpectContains(MeshErrorOf([&] { ReadMesh(folder.Path()); }), "unknown format, no polyMesh");
  ExpectContains(MeshErrorOf([&] { ReadMesh(folder.Write("a.stl", "")); }),
                 "unknown format, neither a Gmsh file");
  EXPECT_EQ(MeshErrorOf([&] { ReadMesh(folder.Path() + "/none"); }),
            folder.Path() + "/none: no such file or folder");
}

}  // namespace
