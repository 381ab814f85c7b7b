#pragma once

#include "foundation/IBCnode.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "rbf_ib/RowStore.h"

/// The memory behind the row tables of the points. They are made point by point and read point by point, so each
/// table has its rows one behind the other.
struct CZynIBRBFInternalObject::Rows {
  RowStore<int> cells;         // m_ppIBConn
  RowStore<int> nodes;         // m_ppIBNodeConn
  RowStore<IBCnode> coef;      // m_ppIBCoef
  RowStore<double> valueCoef;  // m_ppIBValueCoef
};
