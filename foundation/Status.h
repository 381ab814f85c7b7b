#pragma once

/// What the operations return. Whether an operation answers success with 1 or with 0 is part of the operators'
/// interface: callers compare with the number.
struct Status {
  static constexpr int kSuccess = 1;   ///< the operation did what it was asked for
  static constexpr int kDone = 0;      ///< the operation ran to its end; it has no failure to report
  static constexpr int kNotFound = 0;  ///< a search or a lookup came back empty
  static constexpr int kFailure = -1;  ///< a null object or a number out of range; the earlier state is kept
  static constexpr int kNoRows = -2;   ///< a table has no rows to work on
};
