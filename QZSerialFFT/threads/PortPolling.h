#pragma once

namespace ovka {

/// The amplifier's input as the acquisition threads poll it. No method blocks for long; one thread
/// at a time calls in: the mode flags keep the polling threads apart.
class PortPolling {
 public:
  virtual ~PortPolling() = default;
  /// One poll of all four ports while acquiring; while playing back, moves the current point.
  virtual void getFromPortNew() = 0;
  /// Reads port 2 alone, when it is open.
  virtual void getFromPort2New() = 0;
  /// Reads port 3 alone, when it is open.
  virtual void getFromPort3New() = 0;
  /// Reads port 4 alone, when it is open.
  virtual void getFromPort4New() = 0;
  /// Decodes the batch that waits, if any.
  virtual void putToData() = 0;
};

}  // namespace ovka
