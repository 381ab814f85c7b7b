#include "host_check/HostBreach.h"

namespace host_check {

char const* NameOf(HostBreach breach) {
  // In the order of the enumeration.
  static constexpr char const* kNames[kHostBreaches] = {"missing-object",
                                                        "bad-count",
                                                        "missing-array",
                                                        "missing-row",
                                                        "arrays-overlap",
                                                        "bad-file-name",
                                                        "index-out-of-range",
                                                        "face-on-one-cell",
                                                        "ghost-named-twice",
                                                        "not-finite",
                                                        "zero-area",
                                                        "area-wrong-way",
                                                        "ghost-not-beyond-face",
                                                        "ghost-beside-face",
                                                        "face-centre-away",
                                                        "area-disagrees",
                                                        "cell-not-closed",
                                                        "bad-volume",
                                                        "volume-disagrees",
                                                        "cell-centre-away",
                                                        "weight-out-of-range",
                                                        "weight-of-other-side",
                                                        "weight-away",
                                                        "row-length",
                                                        "row-entry-missing",
                                                        "row-entry-extra",
                                                        "row-entry-twice",
                                                        "unknown-face-code",
                                                        "group-in-no-row",
                                                        "few-face-nodes",
                                                        "nodes-span-no-plane",
                                                        "nodes-off-plane",
                                                        "face-node-not-in-cell",
                                                        "minimum-wrong",
                                                        "minimum-differs",
                                                        "exchange-choice-differs",
                                                        "halo-not-filled",
                                                        "halo-from-elsewhere",
                                                        "halo-is-mean",
                                                        "halo-loses-constant",
                                                        "exchange-changes-interior",
                                                        "exchange-changes-ghost",
                                                        "exchange-outside-cells",
                                                        "non-blocking-early",
                                                        "non-blocking-mixed",
                                                        "non-blocking-differs"};
  return kNames[static_cast<int>(breach)];
}

}  // namespace host_check
