#pragma once

#include <vector>

#include "host/ZYNCommunication.h"
#include "host_check/HostCheckReport.h"
#include "host_check/HostView.h"
#include "host_check/ProbeField.h"

namespace host_check {

/// The halo cells of a partition, and exchanges of the checker's own fields.
class HaloExchange {
 public:
  struct Halo {
    int cell, face;  ///< the lowest partition face that leads to the cell
  };

  /// @pre PartitionCellsAreSound
  HaloExchange(HostView const& view, CCommunication& communication, HostCheckReport& report);

  std::vector<Halo> const& Halos() const { return halos_; }  ///< ascending by cell, each cell once

  /// Collective. Exchanges a field and reports what the exchange changes besides halo cells.
  /// @param valueOf  double(int cell), for the interior cells
  template <class ValueOf>
  ProbeField Exchanged(ValueOf const& valueOf) {
    ProbeField field(view_, valueOf);
    communication_.DDM_Exch(field.Data());
    CheckUntouched(field, "DDM_Exch");
    return field;
  }

  void CheckUntouched(ProbeField const& field, char const* operation);

 private:
  HostView const& view_;
  CCommunication& communication_;
  HostCheckReport& report_;
  std::vector<Halo> halos_;
};

}  // namespace host_check
