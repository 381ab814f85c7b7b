#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Room for a name in a CGNS file: at most 32 characters and the terminating NUL.
constexpr std::size_t kCgnsNameSize = 33;

/// Elements of one Elements_t of the zone, all numbers counted from 1.
struct CgnsSection {
  std::string name;
  int index = 0;           ///< its number in the library
  int type = 0;            ///< ElementType_t
  std::int64_t first = 0;  ///< element numbers, both included
  std::int64_t last = 0;
  bool hasParents = false;

  std::int64_t size() const { return last - first + 1; }
};

/// The connectivity of a section: entries start[i] .. start[i+1]-1 belong to element first + i.
struct CgnsElements {
  std::vector<std::size_t> start;
  /// node numbers; MIXED: type, then nodes; NFACE_n: face elements with sign
  std::vector<std::int64_t> entry;
  /// [0..n-1] first and [n..2n-1] second cell of each face, 0: none; may be empty
  std::vector<std::int64_t> parent;
};

/// A CGNS file open for reading, and the one three-dimensional unstructured zone in it. This header does not
/// include those of the library, whose names are macros and global enumerators.
class CgnsFile {
 public:
  /// Throws MeshError if the file is not a regular file, cannot be opened, or does not have exactly one such
  /// zone.
  explicit CgnsFile(std::string name);
  ~CgnsFile();
  CgnsFile(CgnsFile const&) = delete;
  CgnsFile& operator=(CgnsFile const&) = delete;

  std::string const& Name() const { return name_; }
  int handle() const { return handle_; }
  int base() const { return base_; }
  static constexpr int zone() { return 1; }
  std::int64_t nNodes() const { return nNodes_; }
  std::int64_t nCells() const { return nCells_; }

  /// Fails if the zone has more nodes or cells than an int can count.
  void RequireIntCounts() const;

  std::vector<Point> Points() const { return Points(0, nNodes_); }
  std::vector<Point> Points(std::int64_t first,
                            std::int64_t n) const;  ///< of nodes first .. first + n - 1, from 0
  std::vector<CgnsSection> Sections() const;        ///< ascending by element number

  /// The connectivity of a section, with its parents if it has them.
  CgnsElements Elements(CgnsSection const& section) const;

  /// Fails if a list of a section in the file has another length than its range of elements says: the library would
  /// write behind the end of the memory that it is given.
  void CheckListLengths(CgnsSection const& section) const;

  /// Fails unless the file, together with the files that it links to, can hold `count` numbers. So nothing is
  /// allocated for a count that cannot be right.
  /// @param[in] what  what is counted, for the message: "nodes"
  void CheckRoom(std::int64_t count, std::string const& what) const;

  /// Throws MeshError "NAME: what: the library's reason" unless `status` means success.
  void Check(int status, std::string const& what) const;

  [[noreturn]] void Fail(std::string const& what) const;

 private:
  /// Closes the file even if the constructor fails.
  struct OpenFile {
    int handle = -1;
    ~OpenFile();
  };

  /// In bytes. Follows the links to the mesh, the solutions and the boundary conditions.
  std::int64_t SizeOfLinkedFiles() const;

  void FindBase();
  void FindZone();
  std::vector<double> Coordinate(char const* coordinate, std::int64_t first, std::int64_t n) const;

  std::string name_;
  std::string zoneName_;
  std::int64_t nBytes_ = 0;
  OpenFile open_;
  int handle_ = -1;
  int base_ = 0;
  std::int64_t nNodes_ = 0;
  std::int64_t nCells_ = 0;
};

}  // namespace reference_host
