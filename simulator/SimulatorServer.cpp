#include "SimulatorServer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <span>

namespace ovka {
namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
/// Between rounds at the least: several frames leave together, as they do on a serial line behind a
/// USB adapter, whose latency timer has 16 ms.
constexpr std::chrono::nanoseconds kServing = std::chrono::milliseconds(12);
constexpr std::chrono::nanoseconds kIdle = std::chrono::milliseconds(20);

std::int64_t nanosecondsOf(double seconds) {
  return static_cast<std::int64_t>(seconds * 1e9);
}

}  // namespace

SimulatorServer::SimulatorServer(VirtualAmplifier& amplifier, ByteChannel& channel,
                                 const FaultChoice& faults)
    : amplifier_(amplifier), channel_(channel), faults_(faults) {}

std::chrono::nanoseconds SimulatorServer::serveOnce(std::int64_t now) {
  if (!started_) {
    started_ = true;
    nextHangUp_ = faults_.hangUpEvery > 0.0 ? now + nanosecondsOf(faults_.hangUpEvery) : kNever;
  }
  if (now >= nextHangUp_ && !hungUp_) hangUp(now, nanosecondsOf(faults_.hangUpSeconds));
  if (away(now)) return kIdle;
  watchHost(now);
  takeCommands();
  if (!present_) return kIdle;
  sendDue(now);
  return std::clamp(std::chrono::nanoseconds(amplifier_.untilNextFrame()), kServing, kIdle);
}

void SimulatorServer::hangUp(std::int64_t now, std::int64_t nanoseconds) {
  if (hungUp_) return;
  channel_.hangUp();
  amplifier_.hostLeft();
  ++amplifier_.faults().hangUps;
  present_ = false;
  hungUp_ = true;
  returnAt_ = now + nanoseconds;
  say("line hung up");
}

bool SimulatorServer::away(std::int64_t now) {
  if (!hungUp_) return false;
  if (now < returnAt_) return true;
  if (const int error = channel_.comeBack(); error != 0) {
    returnAt_ = now + nanosecondsOf(1.0);
    say(std::string("line could not return: ") + std::strerror(error));
    return true;
  }
  hungUp_ = false;
  if (faults_.hangUpEvery > 0.0) nextHangUp_ = now + nanosecondsOf(faults_.hangUpEvery);
  say("line returned as " + channel_.path());
  return false;
}

void SimulatorServer::watchHost(std::int64_t now) {
  const bool present = channel_.hostPresent();
  if (present == present_) return;
  present_ = present;
  last_ = now;
  if (present) {
    amplifier_.hostOpened();
    say("host opened the line");
  } else {
    amplifier_.hostLeft();
    channel_.discardUnread();
    say("host closed the line");
  }
}

void SimulatorServer::takeCommands() {
  std::array<std::uint8_t, 512> bytes{};
  // Bounded: a host that floods the line must not keep the samples waiting.
  for (int round = 0; round < 8; ++round) {
    const std::size_t count = channel_.read(bytes);
    if (count == 0) return;
    if (present_) amplifier_.feed(std::span(bytes).first(count));
  }
}

void SimulatorServer::sendDue(std::int64_t now) {
  out_.clear();
  amplifier_.produce(now - last_, out_);
  last_ = now;
  if (out_.empty()) return;
  const std::size_t taken = channel_.write(out_);
  bytesSent_ += taken;
  amplifier_.faults().overrunBytes += out_.size() - taken;
}

}  // namespace ovka
