#pragma once

/// The collective reduction over the partitions.
class CZYNCom {
 public:
  virtual ~CZYNCom() = default;

  /// Collective. On return `value` is the minimum of `value` over all partitions. The result is ignored.
  virtual int AllMin(int& value) = 0;
};
