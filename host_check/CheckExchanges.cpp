#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "host_check/CollectiveChecks.h"
#include "host_check/ProbeField.h"
#include "host_check/Text.h"

namespace host_check {

namespace {

class ExchangeCheck {
 public:
  ExchangeCheck(HostView const& view, CCommunication& communication, HostCheckOptions const& options,
                HostCheckReport& report)
      : view_(view),
        communication_(communication),
        options_(options),
        report_(report),
        mark_(PartitionMark(view) % (1 << 19)) {
    CollectHaloCells();
  }

  /// The owners' cell centres must equal the halo cells' centres of this partition.
  void CheckCentres() {
    double const* const components[] = {view_.centres.x, view_.centres.y, view_.centres.z};
    std::vector<ProbeField> received;
    for (double const* component : components) {
      // A partition without centres takes part all the same, because the exchange is collective.
      received.emplace_back(view_, [&](int c) { return component != nullptr ? component[c] : kUnknown; });
      Exchange(received.back(), "DDM_Exch");
    }
    for (Halo const& halo : halos_) CompareCentre(halo, received);
  }

  /// The neighbours' result of AllMin, which must equal the one here.
  void CheckMinimum(int minimum) {
    ProbeField field(view_, [&](int) { return static_cast<double>(minimum); });
    Exchange(field, "DDM_Exch");
    for (Halo const& halo : halos_) {
      int const cell = halo.cell;
      if (!field.IsFilled(cell) || field[cell] == minimum) continue;
      report_.Add(HostBreach::MinimumDiffers, cell, [&] {
        return Text("AllMin gave ", minimum, " here and ", field[cell], " on the partition that owns ",
                    view_.CellName(cell));
      });
    }
  }

  /// Five fields of different data through four buffers: four exchanges start together, and the fifth starts
  /// in the buffer of the first one that was waited for, while three are still under way. The operators do
  /// the same.
  void CheckNonBlocking() {
    for (int k = 0; k < kFields; ++k) {
      auto const valueOf = [&](int c) { return ValueOf(k, c); };
      expected_.push_back(std::make_unique<ProbeField>(view_, valueOf));
      Exchange(*expected_.back(), "DDM_Exch");
      fields_.push_back(std::make_unique<ProbeField>(view_, valueOf));
    }
    for (int k = 0; k < 4; ++k) Start(k, k);
    Wait(2, 2);
    Start(4, 2);
    Wait(0, 0);
    Wait(3, 3);
    Wait(1, 1);
    Wait(4, 2);
    for (auto const& field : fields_) CheckUntouched(*field, "DDM_IExch_Start and DDM_IExch_Wait");
  }

 private:
  static constexpr int kFields = 5;
  static constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

  struct Halo {
    int cell, face;  ///< the lowest partition face that leads to the cell
  };

  void CollectHaloCells() {
    CheckedFaceGroup const& group = view_.PartitionGroup();
    for (int f = 1; f <= group.count; ++f) halos_.push_back({group.other[f], f});
    std::stable_sort(halos_.begin(), halos_.end(),
                     [](Halo const& a, Halo const& b) { return a.cell < b.cell; });
    auto const end = std::unique(halos_.begin(), halos_.end(),
                                 [](Halo const& a, Halo const& b) { return a.cell == b.cell; });
    halos_.erase(end, halos_.end());
  }

  /// A different number for every field, cell and (very likely) partition. Exact in double: 19 bits of the
  /// mark, 31 of the cell, 3 of the field.
  double ValueOf(int field, int c) const { return std::ldexp(mark_, 34) + 8.0 * c + field; }

  void Exchange(ProbeField& field, char const* operation) {
    communication_.DDM_Exch(field.Data());
    CheckUntouched(field, operation);
  }

  void Start(int field, int buffer) {
    communication_.DDM_IExch_Start(fields_[field]->Data(), static_cast<ZYNNonBlockingBufferId>(buffer));
  }

  void Wait(int field, int buffer) {
    communication_.DDM_IExch_Wait(fields_[field]->Data(), static_cast<ZYNNonBlockingBufferId>(buffer));
    for (Halo const& halo : halos_) Compare(field, buffer, halo.cell);
  }

  void CheckUntouched(ProbeField const& field, char const* operation) {
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

  void CompareCentre(Halo const& halo, std::vector<ProbeField> const& received) {
    int const cell = halo.cell;
    std::string const faceName = view_.PartitionGroup().Name(halo.face);
    bool const isFilled = std::all_of(received.begin(), received.end(),
                                      [cell](ProbeField const& field) { return field.IsFilled(cell); });
    if (!isFilled) {
      report_.Add(HostBreach::HaloNotFilled, cell, [&] {
        return Text("DDM_Exch does not fill ", view_.CellName(cell), ", which lies beyond ", faceName);
      });
      return;
    }
    Vec3 const owners = {received[0][cell], received[1][cell], received[2][cell]};
    // Values that are not finite are reported by the partition that owns them.
    if (!view_.centreSound[cell] || !IsFinite(owners)) return;
    Vec3 const own = view_.centres[cell];
    if (Norm(owners - own) <= Tolerance(halo.face, own)) return;
    report_.Add(HostBreach::HaloFromElsewhere, cell, [&] {
      return Text(view_.CellName(cell), " beyond ", faceName, " has the centre ", own,
                  ", but the centre that DDM_Exch brings is ", owners);
    });
  }

  /// Round-off of the coordinates, and a small fraction of the distance between the two cells.
  double Tolerance(int face, Vec3 const& centre) const {
    CheckedFaceGroup const& group = view_.PartitionGroup();
    bool const isKnown = group.cvSound[face] && view_.centreSound[group.cv[face]];
    double const distance = isKnown ? Norm(centre - view_.centres[group.cv[face]]) : 0.0;
    return options_.positionTolerance * distance + 1e-14 * Norm(centre);
  }

  /// Compares the result of a wait with that of the blocking exchange.
  void Compare(int field, int buffer, int cell) {
    double const value = (*fields_[field])[cell], expected = (*expected_[field])[cell];
    if (value == expected || !expected_[field]->IsFilled(cell)) return;
    if (!fields_[field]->IsFilled(cell)) {
      report_.Add(HostBreach::NonBlockingEarly, cell, [&] {
        return Text("DDM_IExch_Wait in buffer ", buffer, " came back before ", view_.CellName(cell),
                    " was filled");
      });
      return;
    }
    for (int other = 0; other < kFields; ++other) {
      if (value != (*expected_[other])[cell]) continue;
      report_.Add(HostBreach::NonBlockingMixed, cell, [&] {
        return Text("DDM_IExch_Wait in buffer ", buffer, " filled ", view_.CellName(cell),
                    " with the data of another exchange, started in buffer ", other == 4 ? 2 : other);
      });
      return;
    }
    report_.Add(HostBreach::NonBlockingDiffers, cell, [&] {
      return Text("DDM_IExch_Wait in buffer ", buffer, " filled ", view_.CellName(cell), " with ", value,
                  ", DDM_Exch with ", expected);
    });
  }

  HostView const& view_;
  CCommunication& communication_;
  HostCheckOptions const& options_;
  HostCheckReport& report_;
  double const mark_;
  std::vector<Halo> halos_;  // ascending by cell, each cell once
  std::vector<std::unique_ptr<ProbeField>> expected_, fields_;
};

}  // namespace

bool PartitionCellsAreSound(HostView const& view) {
  CheckedFaceGroup const& group = view.PartitionGroup();
  return std::all_of(group.otherSound.begin() + 1, group.otherSound.end(), [](char sound) { return sound; });
}

void CheckExchanges(HostView const& view, CCommunication& communication, int minimum,
                    HostCheckOptions const& options, HostCheckReport& report) {
  ExchangeCheck check(view, communication, options, report);
  check.CheckCentres();
  check.CheckMinimum(minimum);
  if (options.nonBlocking) check.CheckNonBlocking();
}

}  // namespace host_check
