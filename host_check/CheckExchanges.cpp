#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <memory>
#include <vector>

#include "host_check/CollectiveChecks.h"
#include "host_check/HaloExchange.h"
#include "host_check/HaloSources.h"
#include "host_check/ProbeField.h"
#include "host_check/Text.h"

namespace host_check {

namespace {

class ExchangeCheck {
 public:
  ExchangeCheck(HostView const& view, CCommunication& communication, HostCheckReport& report)
      : view_(view),
        communication_(communication),
        report_(report),
        exchange_(view, communication, report),
        mark_(PartitionMark(view) % (1 << 19)) {}

  void CheckHalo(CZYNCom& reduction, HostCheckOptions const& options) {
    sources_ = FindHaloSources(view_, exchange_);
    CheckHaloCells(view_, exchange_, reduction, sources_, options, report_);
  }

  /// The neighbours' result of AllMin, which must equal the one here.
  /// @pre CheckHalo
  void CheckMinimum(int minimum) {
    ProbeField const field = exchange_.Exchanged([&](int) { return static_cast<double>(minimum); });
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      int const cell = exchange_.Halos()[i].cell;
      // A mean of equal integers is off by round-off, and in proportion to the sum of its weights.
      double const expected = minimum * sources_[i].sumOfWeights;
      double const tolerance = sources_[i].isMean ? 0.5 : 0.0;
      if (!field.IsFilled(cell) || std::abs(field[cell] - expected) <= tolerance) continue;
      report_.Add(HostBreach::MinimumDiffers, cell, [&] {
        if (sources_[i].isMean) {
          return Text("AllMin gave ", minimum, " here, but not on all partitions whose cells ",
                      view_.CellName(cell), " is a mean of");
        }
        return Text("AllMin gave ", minimum, " here and ", std::setprecision(17), field[cell],
                    " on the partition that owns ", view_.CellName(cell));
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
      communication_.DDM_Exch(expected_.back()->Data());
      exchange_.CheckUntouched(*expected_.back(), "DDM_Exch");
      fields_.push_back(std::make_unique<ProbeField>(view_, valueOf));
    }
    for (int k = 0; k < 4; ++k) Start(k, k);
    Wait(2, 2);
    Start(4, 2);
    Wait(0, 0);
    Wait(3, 3);
    Wait(1, 1);
    Wait(4, 2);
    for (auto const& field : fields_) exchange_.CheckUntouched(*field, "DDM_IExch_Start and DDM_IExch_Wait");
  }

 private:
  static constexpr int kFields = 5;

  /// A different number for every field, cell and (very likely) partition. Exact in double: 19 bits of the
  /// mark, 31 of the cell, 3 of the field.
  double ValueOf(int field, int c) const { return std::ldexp(mark_, 34) + 8.0 * c + field; }

  void Start(int field, int buffer) {
    communication_.DDM_IExch_Start(fields_[field]->Data(), static_cast<ZYNNonBlockingBufferId>(buffer));
  }

  void Wait(int field, int buffer) {
    communication_.DDM_IExch_Wait(fields_[field]->Data(), static_cast<ZYNNonBlockingBufferId>(buffer));
    for (HaloExchange::Halo const& halo : exchange_.Halos()) Compare(field, buffer, halo.cell);
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
  HostCheckReport& report_;
  HaloExchange exchange_;
  double const mark_;
  std::vector<HaloSource> sources_;
  std::vector<std::unique_ptr<ProbeField>> expected_, fields_;
};

}  // namespace

bool PartitionCellsAreSound(HostView const& view) {
  CheckedFaceGroup const& group = view.PartitionGroup();
  return std::all_of(group.otherSound.begin() + 1, group.otherSound.end(), [](char sound) { return sound; });
}

void CheckExchanges(HostView const& view, CCommunication& communication, CZYNCom& reduction, int minimum,
                    HostCheckOptions const& options, HostCheckReport& report) {
  ExchangeCheck check(view, communication, report);
  check.CheckHalo(reduction, options);
  check.CheckMinimum(minimum);
  if (options.nonBlocking) check.CheckNonBlocking();
}

}  // namespace host_check
