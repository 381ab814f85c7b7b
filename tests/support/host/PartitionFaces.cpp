#include "tests/support/host/PartitionFaces.h"

#include <gtest/gtest.h>

namespace zyn_test {

int PartitionFaces::NParInterFace() {
  ++lent_.calls;
  if (lent_.onCount) lent_.onCount();
  return faces_.count;
}

void PartitionFaces::NotRead() const {
  if (lent_.failOnOtherCalls)
    ADD_FAILURE() << "the operator has no need of this array of the partition faces";
}

}  // namespace zyn_test
