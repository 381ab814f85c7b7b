#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class FaceCellCheck {
 public:
  FaceCellCheck(HostView& view, HostCheckReport& report) : view_(view), report_(report) {}

  void CheckGroup(int g) {
    CheckedFaceGroup& group = view_.groups[g];
    if (group.cv == nullptr || group.other == nullptr) return;
    for (int f = 1; f <= group.count; ++f) {
      int const cv = group.cv[f], other = group.other[f];
      group.cvSound[f] = view_.IsInterior(cv) ? 1 : 0;
      if (!group.cvSound[f]) TellRange(group, f, group.ArrayName("CV"), cv, 1, view_.nInner);

      if (cv == other) {
        report_.Add(HostBreach::FaceOnOneCell, f,
                    [&] { return Text(group.Name(f), " joins cell ", cv, " to itself"); });
        continue;
      }
      bool const toInterior = group.LeadsToInterior();
      group.otherSound[f] = toInterior ? view_.IsInterior(other) : view_.IsBeyond(other);
      if (!group.otherSound[f]) {
        int const first = toInterior ? 1 : view_.nInner + 1, last = toInterior ? view_.nInner : view_.nCell;
        TellRange(group, f, group.Names().prefix, other, first, last);
      } else if (!toInterior) {
        NameCell(g, f, other);
      }
    }
  }

 private:
  void TellRange(CheckedFaceGroup const& group, int f, std::string const& array, int value, int first,
                 int last) {
    report_.Add(HostBreach::IndexOutOfRange, f, [&] {
      return Text(group.Name(f), ": ", array, '[', f, "] = ", value, " is outside ", first, "..", last);
    });
  }

  /// Every boundary face has a ghost cell of its own; a halo cell may have several faces.
  void NameCell(int g, int f, int cell) {
    HostView::Namer& namer = view_.namer[cell];
    if (namer.group < 0) {
      namer = {g, f};
      return;
    }
    CheckedFaceGroup const &group = view_.groups[g], &former = view_.groups[namer.group];
    if (group.LeadsToHalo() && former.LeadsToHalo()) return;
    report_.Add(HostBreach::GhostNamedTwice, cell, [&] {
      return Text("cell ", cell, " lies beyond ", former.Name(namer.face), " and beyond ", group.Name(f));
    });
  }

  HostView& view_;
  HostCheckReport& report_;
};

}  // namespace

void CheckFaceCells(HostView& view, HostCheckReport& report) {
  FaceCellCheck check(view, report);
  for (int g = 0; g < HostView::kGroups; ++g) check.CheckGroup(g);
}

}  // namespace host_check
