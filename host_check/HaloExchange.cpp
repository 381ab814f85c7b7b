#include "host_check/HaloExchange.h"

#include <algorithm>

#include "host_check/Text.h"

namespace host_check {

HaloExchange::HaloExchange(HostView const& view, CCommunication& communication, HostCheckReport& report)
    : view_(view), communication_(communication), report_(report) {
  CheckedFaceGroup const& group = view_.PartitionGroup();
  for (int f = 1; f <= group.count; ++f) halos_.push_back({group.other[f], f});
  std::stable_sort(halos_.begin(), halos_.end(),
                   [](Halo const& a, Halo const& b) { return a.cell < b.cell; });
  auto const end = std::unique(halos_.begin(), halos_.end(),
                               [](Halo const& a, Halo const& b) { return a.cell == b.cell; });
  halos_.erase(end, halos_.end());
}

void HaloExchange::CheckUntouched(ProbeField const& field, char const* operation) {
  field.ForEachChangedInterior([&](int c) {
    report_.Add(HostBreach::ExchangeChangesInterior, c,
                [&] { return Text(operation, " changed the value of interior cell ", c); });
  });
  field.ForEachChangedGhost([&](int c) {
    report_.Add(HostBreach::ExchangeChangesGhost, c, [&] {
      return Text(operation, " changed the value of ", view_.CellName(c),
                  ", which lies beyond a boundary face");
    });
  });
  field.ForEachChangedOutside([&](int i) {
    report_.Add(HostBreach::ExchangeOutsideCells, i, [&] {
      return Text(operation, " wrote to element ", i, " of a field, outside 1..NCell = ", view_.nCell);
    });
  });
}

}  // namespace host_check
