#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshError.h"

/// A temporary folder for the files of one test, removed with its content at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "mesh_test_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  /// Writes a file, creates its folders and returns its path.
  std::string Write(std::string const& name, std::string const& content) const {
    std::filesystem::path const file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
  }

  std::string Path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

/// The text of the MeshError that `action` throws. Fails the test if it throws none.
template <class Action>
std::string MeshErrorOf(Action const& action) {
  try {
    action();
  } catch (reference_host::MeshError const& error) {
    std::string const what = error.what();
    EXPECT_EQ(what.find('\n'), std::string::npos) << "not one line: " << what;
    return what;
  }
  ADD_FAILURE() << "no MeshError";
  return {};
}

/// Expects that `text` contains `part`, and shows both if not.
inline void ExpectContains(std::string const& text, std::string const& part) {
  EXPECT_NE(text.find(part), std::string::npos) << "'" << part << "' is not in '" << text << "'";
}

/// Expects two meshes to be equal to the last bit.
inline void ExpectSameMesh(reference_host::FaceMesh const& a, reference_host::FaceMesh const& b) {
  EXPECT_EQ(a.nCells, b.nCells);
  EXPECT_EQ(a.points, b.points);
  EXPECT_EQ(a.faceStart, b.faceStart);
  EXPECT_EQ(a.faceNode, b.faceNode);
  EXPECT_EQ(a.owner, b.owner);
  EXPECT_EQ(a.neighbour, b.neighbour);
  EXPECT_EQ(a.facePatch, b.facePatch);
  ASSERT_EQ(a.patches.size(), b.patches.size());
  for (std::size_t p = 0; p < a.patches.size(); ++p) {
    EXPECT_EQ(a.patches[p].name, b.patches[p].name);
    EXPECT_EQ(a.patches[p].type, b.patches[p].type);
  }
}

/// Number of faces of the patch with that name; -1: there is no such patch.
inline int FacesInPatch(reference_host::FaceMesh const& mesh, std::string const& name) {
  for (std::size_t p = 0; p < mesh.patches.size(); ++p) {
    if (mesh.patches[p].name != name) continue;
    int n = 0;
    for (int const patch : mesh.facePatch) n += patch == static_cast<int>(p) ? 1 : 0;
    return n;
  }
  return -1;
}
