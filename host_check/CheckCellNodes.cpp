#include <algorithm>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class CellNodeCheck {
 public:
  CellNodeCheck(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report)
      : view_(view), cellNodes_(cellNodes), report_(report) {}

  void CheckCell(int c) {
    int const* row = view_.mesh.CellLnods[c];
    int const number = view_.mesh.CellLnodsNumber[c];
    if (row == nullptr) {
      report_.Add(HostBreach::MissingRow, c, [&] { return Text("row ", c, " of CellLnods is null"); });
      return;
    }
    if (!cellNodes_.AreKnown(c)) return;  // the faces have been reported
    if (number < 0 || number > cellNodes_.Count(c) + cellNodes_.MayCount(c)) {
      report_.Add(HostBreach::RowLength, c, [&] {
        return Text("CellLnodsNumber[", c, "] = ", number, ", but the faces of the cell have ",
                    cellNodes_.Count(c), " nodes");
      });
      return;
    }
    sorted_.assign(row + 1, row + 1 + number);
    std::sort(sorted_.begin(), sorted_.end());
    CheckEntries(c);
    CheckMissing(c);
  }

 private:
  void CheckEntries(int c) {
    for (std::size_t k = 0; k < sorted_.size(); ++k) {
      int const node = sorted_[k];
      if (!view_.IsNode(node)) {
        report_.Add(HostBreach::IndexOutOfRange, c, [&] {
          return Text("the CellLnods row of cell ", c, " names node ", node, ", outside 1..", view_.nNode);
        });
      } else if (k > 0 && node == sorted_[k - 1]) {
        report_.Add(HostBreach::RowEntryTwice, c,
                    [&] { return Text("the CellLnods row of cell ", c, " names node ", node, " twice"); });
      } else if (!cellNodes_.Has(c, node) && !cellNodes_.MayHave(c, node)) {
        report_.Add(HostBreach::RowEntryExtra, c, [&] {
          return Text("the CellLnods row of cell ", c, " names node ", node,
                      ", which no face of the cell has");
        });
      }
    }
  }

  void CheckMissing(int c) {
    for (int const* node = cellNodes_.begin(c); node != cellNodes_.end(c); ++node) {
      if (std::binary_search(sorted_.begin(), sorted_.end(), *node)) continue;
      report_.Add(HostBreach::FaceNodeNotInCell, c, [&] {
        return Text("node ", *node, " of the faces of cell ", c, " is not in the cell's CellLnods row");
      });
    }
  }

  HostView const& view_;
  CellNodes const& cellNodes_;
  HostCheckReport& report_;
  std::vector<int> sorted_;
};

}  // namespace

void CheckCellNodes(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report) {
  if (view.mesh.CellLnods == nullptr || view.mesh.CellLnodsNumber == nullptr) return;
  CellNodeCheck check(view, cellNodes, report);
  for (int c = 1; c <= view.nInner; ++c) check.CheckCell(c);
}

}  // namespace host_check
