#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ByteChannel.h"
#include "VirtualAmplifier.h"

namespace ovka {

/// Ties a virtual amplifier to a line. Call serveOnce again and again on one thread (a loop of a
/// ThreadLauncher, or the caller's own) with the clock's time; it never blocks.
class SimulatorServer {
 public:
  SimulatorServer(VirtualAmplifier& amplifier, ByteChannel& channel, const FaultChoice& faults);

  /// Called on the serving thread when a host comes or goes, when the line hangs up and when it
  /// returns; one line of text without an end of line.
  using Report = std::function<void(const std::string&)>;
  void onEvent(Report report) { report_ = std::move(report); }

  /// One round at time `now` (ns, any start): takes commands, greets, sends what is due, hangs up
  /// and returns. Gives the time until the next round is worth while.
  std::chrono::nanoseconds serveOnce(std::int64_t now);

  /// Hangs up now and returns after `nanoseconds` of the serving clock.
  void hangUp(std::int64_t now, std::int64_t nanoseconds);

  [[nodiscard]] bool hostPresent() const noexcept { return present_; }
  [[nodiscard]] std::uint64_t bytesSent() const noexcept { return bytesSent_; }

 private:
  void watchHost(std::int64_t now);
  void takeCommands();
  void sendDue(std::int64_t now);
  bool away(std::int64_t now);
  void say(const std::string& text) const {
    if (report_) report_(text);
  }

  VirtualAmplifier& amplifier_;
  ByteChannel& channel_;
  FaultChoice faults_;
  Report report_;
  bool present_ = false;
  bool hungUp_ = false;
  bool started_ = false;
  std::int64_t last_ = 0;        ///< ns, until when bytes were produced
  std::int64_t returnAt_ = 0;    ///< ns
  std::int64_t nextHangUp_ = 0;  ///< ns
  std::uint64_t bytesSent_ = 0;
  std::vector<std::uint8_t> out_;
};

}  // namespace ovka
