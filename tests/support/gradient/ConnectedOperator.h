#pragma once

#include "gradient/COperatorGradient.h"
#include "tests/support/host/OperatorHosts.h"

namespace zyn_test {

/// Hands all host objects to an operator.
inline void Connect(COperatorGradient& gradient, Host& host) {
  gradient.getZyn3dGV(&host.globals, nullptr, nullptr, &host.mesh);
  gradient.getPartitionFace(&host.partitionFaces);
  gradient.getCommunication(&host.communication, &host.com);
}

/// An operator connected to a host, with a gradient type.
struct ConnectedOperator {
  explicit ConnectedOperator(Host& host, int type = 0) {
    Connect(gradient, host);
    gradient.getGradType(type);
  }

  COperatorGradient gradient;
};

}  // namespace zyn_test
