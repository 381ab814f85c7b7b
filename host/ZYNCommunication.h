#pragma once

/// The buffers of the non-blocking exchanges. The operators have at most four exchanges under way at once,
/// and they start an exchange in a buffer only after they have waited for the previous one.
enum ZYNNonBlockingBufferId {
  ZYNNonBlockingBuffer0 = 0,
  ZYNNonBlockingBuffer1 = 1,
  ZYNNonBlockingBuffer2 = 2,
  ZYNNonBlockingBuffer3 = 3
};

/// The halo exchange between partitions.
///
/// All operations are collective: every partition makes the same calls in the same order with the same
/// buffers. The operators call them from the thread that called the operator. A field is a cell array
/// [1..NCell], borrowed.
class CCommunication {
 public:
  virtual ~CCommunication() = default;

  /// Blocking exchange: on return the halo cells of `field` hold their owners' values; other cells stay as
  /// they are.
  virtual void DDM_Exch(double* field) = 0;

  /// Starts the same exchange in buffer `id` and returns at once; `field` stays untouched until the wait. The
  /// buffers are independent: up to four exchanges, of different arrays, are under way together.
  virtual void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) = 0;

  /// Completes the exchange begun with the same `field` and `id`: the halo cells of `field` are then current.
  virtual void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) = 0;
};
