#include <algorithm>
#include <array>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class CellRowCheck {
 public:
  CellRowCheck(HostView const& view, CellFaces const& cellFaces, HostCheckReport& report)
      : view_(view), cellFaces_(cellFaces), report_(report) {}

  void CheckFaces(int c) {
    int const* faces = RowOf(view_.mesh.CellFace, "CellFace", c);
    int const* codes = RowOf(view_.mesh.CellFaceType, "CellFaceType", c);
    if (faces == nullptr || codes == nullptr || !LengthIsSound(faces[0], "CellFace", c)) return;
    isListed_.assign(static_cast<std::size_t>(cellFaces_.Count(c)), 0);
    for (int k = 1; k <= faces[0]; ++k) CheckFaceEntry(c, k, faces[k], codes[k]);
    CollectMissing(c);
  }

  /// Reports the faces that no row names. A group that is in no row at all is reported once instead.
  void TellMissing() {
    for (int g = 0; g < HostView::kGroups; ++g) {
      if (nMissing_[g] == 0 || nListed_[g] > 0) continue;
      CheckedFaceGroup const& group = view_.groups[g];
      report_.Add(HostBreach::GroupInNoRow, 0, [&] {
        return Text("no CellFace row names a ", group.Names().name, " face (code ", group.Names().code,
                    "), but ", group.Names().countName, " = ", group.count);
      });
    }
    for (Missing const& missing : missing_) {
      if (nListed_[missing.group] == 0) continue;
      report_.Add(HostBreach::RowEntryMissing, missing.cell, [&] {
        CheckedFaceGroup const& group = view_.groups[missing.group];
        return Text("the CellFace row of cell ", missing.cell, " lacks its ", group.Name(missing.face),
                    " (code ", group.Names().code, ')');
      });
    }
  }

  void CheckNeighbours(int c) {
    int const* row = RowOf(view_.mesh.CellCell, "CellCell", c);
    if (row == nullptr || !LengthIsSound(row[0], "CellCell", c)) return;
    CollectNeighbours(c);
    for (int k = 1; k <= row[0]; ++k) CheckNeighbourEntry(c, k, row[k]);
    for (std::size_t i = 0; i < neighbours_.size(); i = EndOfRun(i)) {
      Neighbour const& neighbour = neighbours_[i];
      if (!neighbour.isRequired || neighbour.isListed) continue;
      report_.Add(HostBreach::RowEntryMissing, c, [&] {
        return Text("the CellCell row of cell ", c, " lacks its neighbour, ", view_.CellName(neighbour.cell));
      });
    }
  }

 private:
  struct Missing {
    int group, face, cell;
  };
  /// Sorted by cell. A cell across several faces has an entry for each, and the row may list it as often.
  struct Neighbour {
    int cell;
    bool isRequired, isListed;
  };

  int const* RowOf(int* const* table, char const* name, int c) {
    if (table == nullptr) return nullptr;
    if (table[c] == nullptr) {
      report_.Add(HostBreach::MissingRow, c, [&] { return Text("row ", c, " of ", name, " is null"); });
    }
    return table[c];
  }

  /// A row that claims more entries than the cell has faces is not read: if a table is not 1-based, for
  /// example, row[0] is not a length.
  bool LengthIsSound(int length, char const* name, int c) {
    if (length >= 0 && length <= cellFaces_.Count(c)) return true;
    report_.Add(HostBreach::RowLength, c, [&] {
      return Text("the ", name, " row of cell ", c, " has the length ", length, ", but ", cellFaces_.Count(c),
                  " faces of the face tables belong to the cell");
    });
    return false;
  }

  void CheckFaceEntry(int c, int k, int face, int code) {
    int const g = view_.GroupOfCode(code);
    if (g < 0) {
      report_.Add(HostBreach::UnknownFaceCode, c, [&] {
        return Text("entry ", k, " of the CellFaceType row of cell ", c, " is ", code,
                    ", not 0, 1, 2, 3, 5 or 101");
      });
      return;
    }
    CheckedFaceGroup const& group = view_.groups[g];
    if (face < 1 || face > group.count) {
      report_.Add(HostBreach::IndexOutOfRange, c, [&] {
        return Text("entry ", k, " of the CellFace row of cell ", c, " is ", group.Names().name, " face ",
                    face, ", outside 1..", group.count);
      });
      return;
    }
    auto const* found = std::find_if(cellFaces_.begin(c), cellFaces_.end(c), [&](auto const& entry) {
      return entry.group == g && entry.face == face;
    });
    if (found == cellFaces_.end(c)) {
      report_.Add(HostBreach::RowEntryExtra, c, [&] {
        return Text("entry ", k, " of the CellFace row of cell ", c, " is ", group.Name(face),
                    ", which does not belong to the cell");
      });
      return;
    }
    char& isListed = isListed_[static_cast<std::size_t>(found - cellFaces_.begin(c))];
    if (isListed) {
      report_.Add(HostBreach::RowEntryTwice, c, [&] {
        return Text("the CellFace row of cell ", c, " names ", group.Name(face), " twice");
      });
    }
    isListed = 1;
    ++nListed_[g];
  }

  void CollectMissing(int c) {
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      if (!entry->isRequired || isListed_[static_cast<std::size_t>(entry - cellFaces_.begin(c))]) continue;
      ++nMissing_[entry->group];
      missing_.push_back({entry->group, entry->face, c});
    }
  }

  void CollectNeighbours(int c) {
    neighbours_.clear();
    hasUnknownNeighbour_ = false;
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      if (entry->neighbour == 0) {
        hasUnknownNeighbour_ = true;
      } else {
        neighbours_.push_back({entry->neighbour, entry->isRequired, false});
      }
    }
    std::sort(neighbours_.begin(), neighbours_.end(),
              [](Neighbour const& a, Neighbour const& b) { return a.cell < b.cell; });
    // The first of several equal cells stands for all of them in the search for missing ones.
    for (std::size_t i = 0; i < neighbours_.size(); i = EndOfRun(i)) {
      for (std::size_t j = i; j < EndOfRun(i); ++j) {
        neighbours_[i].isRequired = neighbours_[i].isRequired || neighbours_[j].isRequired;
      }
    }
  }

  /// One past the last neighbour that is the same cell as neighbours_[i].
  std::size_t EndOfRun(std::size_t i) const {
    std::size_t j = i + 1;
    while (j < neighbours_.size() && neighbours_[j].cell == neighbours_[i].cell) ++j;
    return j;
  }

  void CheckNeighbourEntry(int c, int k, int cell) {
    if (cell < 1 || cell > view_.nCell) {
      report_.Add(HostBreach::IndexOutOfRange, c, [&] {
        return Text("entry ", k, " of the CellCell row of cell ", c, " is ", cell, ", outside 1..",
                    view_.nCell);
      });
      return;
    }
    bool isNeighbour = false;
    for (Neighbour& neighbour : neighbours_) {
      if (neighbour.cell != cell) continue;
      isNeighbour = true;
      if (neighbour.isListed) continue;
      neighbour.isListed = true;
      return;
    }
    if (isNeighbour) {
      report_.Add(HostBreach::RowEntryTwice, c, [&] {
        return Text("the CellCell row of cell ", c, " names ", view_.CellName(cell), " twice");
      });
    } else if (!hasUnknownNeighbour_) {
      report_.Add(HostBreach::RowEntryExtra, c, [&] {
        return Text("entry ", k, " of the CellCell row of cell ", c, " is ", view_.CellName(cell),
                    ", which no face joins to the cell");
      });
    }
  }

  HostView const& view_;
  CellFaces const& cellFaces_;
  HostCheckReport& report_;
  std::vector<char> isListed_;  // [entry of the current cell]
  std::vector<Neighbour> neighbours_;
  bool hasUnknownNeighbour_ = false;
  std::array<int, HostView::kGroups> nListed_{}, nMissing_{};
  std::vector<Missing> missing_;
};

}  // namespace

void CheckCellRows(HostView const& view, CellFaces const& cellFaces, HostCheckReport& report) {
  CellRowCheck check(view, cellFaces, report);
  for (int c = 1; c <= view.nInner; ++c) {
    check.CheckFaces(c);
    check.CheckNeighbours(c);
  }
  check.TellMissing();
}

}  // namespace host_check
