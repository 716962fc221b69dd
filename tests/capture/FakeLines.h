#pragma once

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "ManualTime.h"
#include "SerialPorts.h"

namespace ovka {

/// Serial lines whose one device, "/dev/a", sends what a script says at the times it says. Waits
/// move the manual clock, as a real wait takes real time.
class FakeLines : public SerialPorts {
 public:
  static constexpr int kHangUpByWait = -1;
  static constexpr int kHangUpByRead = -2;

  struct Arrival {
    std::int64_t at;  ///< ns on the clock
    std::string bytes;
    int hangUp = 0;  ///< how the line goes away: one of the above or an errno
  };

  FakeLines(ManualTime& time, std::vector<Arrival> script)
      : time_(time), script_(std::move(script)) {}

  std::int64_t writeTakes = 0;  ///< ns

  std::vector<SerialDevice> devices(int* /*error*/) override { return {}; }
  SerialResult open(const std::string& path) override {
    // Gone until the next bytes arrive after a hang-up.
    const bool away = gone_ && (script_.empty() || script_.front().at > time_.nanoseconds());
    if (path != "/dev/a" || away) return {0, ENOENT};
    gone_ = false;
    return {++descriptor_, 0};
  }
  SerialWait waitReadable(int descriptor, int timeoutMilliseconds) override {
    if (descriptor != descriptor_) return SerialWait::HungUp;
    const std::int64_t limit = time_.nanoseconds() + timeoutMilliseconds * 1'000'000LL;
    const bool comes = !script_.empty() && script_.front().at <= limit;
    if (timeoutMilliseconds > 0) time_.advanceTo(comes ? script_.front().at : limit);
    if (!comes) return SerialWait::TimedOut;
    if (script_.front().hangUp != kHangUpByWait) return SerialWait::Ready;
    leave();
    return SerialWait::HungUp;
  }
  SerialResult read(int descriptor, std::span<std::uint8_t> bytes) override {
    if (descriptor != descriptor_ || script_.empty()) return {0, EBADF};
    if (const int hangUp = script_.front().hangUp; hangUp != 0) {
      leave();
      return {0, std::max(hangUp, 0)};
    }
    // Everything that has arrived by now comes in one read.
    std::size_t count = 0;
    do {
      const std::string& next = script_.front().bytes;
      if (count + next.size() > bytes.size()) break;
      std::copy(next.begin(), next.end(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
      count += next.size();
      script_.erase(script_.begin());
    } while (!script_.empty() && script_.front().at <= time_.nanoseconds() &&
             script_.front().hangUp == 0 && count + script_.front().bytes.size() <= bytes.size());
    return {static_cast<std::int64_t>(count), 0};
  }
  SerialResult write(int /*descriptor*/, std::span<const std::uint8_t> bytes) override {
    time_.advance(std::chrono::nanoseconds(writeTakes));
    return {static_cast<std::int64_t>(bytes.size()), 0};
  }
  void close(int /*descriptor*/) override {}

  SerialResult claimExclusive(int) override { return {}; }
  SerialResult clearNonBlocking(int) override { return {}; }
  SerialResult getAttributes(int, SerialAttributes&) override { return {}; }
  SerialResult setAttributes(int, const SerialAttributes&) override { return {}; }
  SerialResult assertDTR(int) override { return {}; }
  SerialResult clearDTR(int) override { return {}; }
  SerialResult setHandshakeLines(int, int) override { return {}; }
  SerialResult getHandshakeLines(int) override { return {}; }
  SerialResult setReadLatency(int, int) override { return {}; }
  SerialResult setSpeed(int, int) override { return {}; }
  SerialResult drain(int) override { return {}; }

 private:
  void leave() {
    gone_ = true;
    script_.erase(script_.begin());
  }

  ManualTime& time_;
  std::vector<Arrival> script_;
  int descriptor_ = 2;
  bool gone_ = false;
};

}  // namespace ovka
