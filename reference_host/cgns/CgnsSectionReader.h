#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"

namespace reference_host {

/// Reads ranges of the elements of a section, and no more of the file than they take.
///
/// Elements with a fixed number of nodes come from the library. Its call for ranges of the others holds the whole
/// section, so this class reads their lists by itself. Files of CGNS 3 have other lists; the library makes the whole
/// section of them, and this class hands out pieces of it.
class CgnsSectionReader {
 public:
  /// @throws MeshError  the length of the section is wrong
  CgnsSectionReader(CgnsFile const& file, CgnsSection const& section);
  ~CgnsSectionReader();
  CgnsSectionReader(CgnsSectionReader const&) = delete;
  CgnsSectionReader& operator=(CgnsSectionReader const&) = delete;

  /// The connectivity of elements first .. first + n - 1, counted from 0 within the section.
  /// @throws MeshError
  CgnsElements Read(std::int64_t first, std::int64_t n) const;

  /// The two parents of such faces: [0..n-1] and [n..2n-1]. @pre the section has parents
  std::vector<std::int64_t> ReadParents(std::int64_t first, std::int64_t n) const;

 private:
  /// A list in the file: a node below that of the section.
  struct List {
    double id = 0.0;
    bool isOpen = false;
    bool isLong = false;  ///< numbers of 8 bytes, else of 4
    int nDimensions = 0;
    std::int64_t size = 0;  ///< along the first dimension
  };

  bool Open(double sectionId, char const* name, List& list) const;
  bool OpenLists();
  std::vector<std::int64_t> ReadList(List const& list, std::int64_t first, std::int64_t n,
                                     int column = 1) const;
  CgnsElements ReadOfOneSize(std::int64_t first, std::int64_t n) const;
  CgnsElements ReadFromLists(std::int64_t first, std::int64_t n) const;

  CgnsFile const& file_;
  CgnsSection section_;
  std::string failure_;
  int nodesOfElement_ = 0;  ///< 0: they differ
  std::int64_t nEntries_ = 0;
  int io_ = 0;
  List offsets_, entries_, parents_;
  std::optional<CgnsElements> whole_;
};

}  // namespace reference_host
