#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "FaultInjector.h"
#include "FrameEncoder.h"
#include "Signal.h"
#include "SimulatorOptions.h"

namespace ovka {

/// An amplifier that exists only in time: host bytes go in, elapsed time brings bytes out. It knows
/// no line, no clock and no thread of its own; used by one thread.
///
/// Greets a host with two lines, then sends frames from 200 ms after the opening or from the first
/// "SR", whichever comes first. Replies stand between whole frames. Model 1 and the old Bluetooth
/// head set obey commands without a reply, because their streams have no lines; model 1 does not
/// greet either.
class VirtualAmplifier {
 public:
  /// `options` must have passed validate().
  VirtualAmplifier(const SimulatorOptions& options, std::unique_ptr<Signal> signal);

  /// A host opened the line: the greeting becomes due.
  void hostOpened();
  /// The host left: commands half received and replies not yet sent are forgotten.
  void hostLeft();

  /// Bytes from the host: "SR n\r" (sample speed, 1 to 16000), "FR x\r" (filter ratio), "BL\r"
  /// (battery). Anything else is counted and ignored.
  void feed(std::span<const std::uint8_t> bytes);

  /// Appends what leaves the line in the next `nanoseconds`. More than two seconds at once is taken
  /// as two; the frames in between are counted as skipped.
  void produce(std::int64_t nanoseconds, std::vector<std::uint8_t>& out);

  /// Until the next frame leaves (ns, 1 or more); 0 while none is on its way.
  [[nodiscard]] std::int64_t untilNextFrame() const noexcept;

  /// Sends an acknowledgement, four times `letter` ('a' to 'z') and a carriage return, at the next
  /// frame border.
  void acknowledge(char letter);
  /// Sends an overflow report of `count` lost samples, 0 to 9999999999.
  void reportOverflow(std::uint64_t count);
  void setEyesClosed(bool closed) { signal_->setEyesClosed(closed); }

  [[nodiscard]] std::uint32_t samplesPerSecond() const noexcept { return speed_; }
  /// Frames made so far, stalled and skipped ones included: the number of the next frame.
  [[nodiscard]] std::uint64_t frames() const noexcept { return frames_; }
  [[nodiscard]] std::uint64_t unknownCommands() const noexcept { return unknownCommands_; }
  [[nodiscard]] const FaultCounts& faults() const noexcept { return faults_.counts(); }
  [[nodiscard]] FaultCounts& faults() noexcept { return faults_.counts(); }

 private:
  [[nodiscard]] std::int64_t rate() const noexcept;
  void command(std::string_view line);
  void setSpeed(std::string_view digits);
  void reply(std::string_view line);
  void greet(std::int64_t nanoseconds, std::vector<std::uint8_t>& out);
  void stream(std::int64_t nanoseconds, std::vector<std::uint8_t>& out);
  void sendFrame(std::vector<std::uint8_t>& out);
  void skipFrames(std::int64_t nanoseconds);

  SimulatorOptions options_;
  FrameFormat format_;
  std::unique_ptr<Signal> signal_;
  FaultInjector faults_;
  std::uint32_t speed_;
  bool open_ = false;
  bool streaming_ = false;
  std::int64_t sinceOpening_ = 0;  ///< ns
  int greetingsSent_ = 0;
  std::int64_t samplePhase_ = 0;  ///< ns x samples/s x 1e6, a frame is due every 1e15
  std::uint64_t frames_ = 0;
  std::uint64_t unknownCommands_ = 0;
  std::string line_;     ///< command being received
  std::string replies_;  ///< waiting for a frame border
};

}  // namespace ovka
