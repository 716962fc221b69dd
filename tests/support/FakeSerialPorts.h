#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <deque>
#include <doctest/doctest.h>
#include <functional>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "SerialPorts.h"

namespace ovka::testing {

/// Serial lines of a test: what an amplifier sends is scripted, what is written to it is recorded,
/// any step can be made to fail. Using a path or descriptor that the test did not set up fails the
/// test. Any thread.
class FakeSerialPorts final : public SerialPorts {
 public:
  enum class Step : std::uint8_t {
    Open,
    Exclusive,
    ClearNonBlocking,
    GetAttributes,
    SetAttributes,
    AssertDTR,
    ClearDTR,
    SetLines,
    GetLines,
    Latency,
    Speed,
    Wait,
    Read,
    Write,
    Drain
  };

  /// One device and its far end.
  struct Device {
    std::deque<std::string> input;  ///< one entry a read; an empty one is an end of file
    bool hungUp = false;            ///< the far end is gone (after the input)
    std::map<Step, int> errors;     ///< steps that fail, with their errno
    SerialAttributes attributes{9600, 9600, 0};
    std::int32_t realSpeed = 0;  ///< what the line says it runs at; 0: as set
    std::int64_t takes = -1;     ///< bytes that a write takes; negative: all
    std::string group;           ///< owner group
    std::vector<Step> steps;     ///< opening steps made, in order
    std::string written;         ///< everything written
    int opened = 0;
    int closed = 0;
    int lines = 0;
    int latency = 0;
    int speed = 0;  ///< of setSpeed
    /// Called on every wait that finds nothing, with its timeout in milliseconds.
    std::function<void(int)> whileWaiting;
  };

  std::vector<SerialDevice> found;  ///< what enumeration finds
  int findError = 0;

  /// Sets a device up; its path may be opened from now on.
  Device& device(const std::string& path) { return devices_[path]; }

  std::vector<SerialDevice> devices(int* error) override {
    if (error != nullptr) *error = findError;
    return found;
  }
  std::string ownerGroup(const std::string& path) override { return devices_[path].group; }

  SerialResult open(const std::string& path) override {
    const std::scoped_lock guard(lock_);
    const auto known = devices_.find(path);
    if (known == devices_.end()) {
      FAIL_CHECK("opened a path that was not set up: ", path);
      return {-1, ENOENT};
    }
    const SerialResult done = step(known->second, Step::Open);
    if (done.error != 0) return {-1, done.error};
    ++known->second.opened;
    open_[++lastDescriptor_] = &known->second;
    return {lastDescriptor_, 0};
  }
  SerialResult claimExclusive(int line) override { return stepOf(line, Step::Exclusive); }
  SerialResult clearNonBlocking(int line) override { return stepOf(line, Step::ClearNonBlocking); }
  SerialResult getAttributes(int line, SerialAttributes& attributes) override {
    const SerialResult done = stepOf(line, Step::GetAttributes);
    if (done.error == 0) attributes = at(line).attributes;
    return done;
  }
  SerialResult setAttributes(int line, const SerialAttributes& attributes) override {
    SerialResult done = stepOf(line, Step::SetAttributes);
    if (done.error != 0) return done;
    Device& device = at(line);
    device.attributes = attributes;
    done.value = device.realSpeed != 0 ? device.realSpeed : attributes.inputSpeed;
    return done;
  }
  SerialResult assertDTR(int line) override { return stepOf(line, Step::AssertDTR); }
  SerialResult clearDTR(int line) override { return stepOf(line, Step::ClearDTR); }
  SerialResult setHandshakeLines(int line, int lines) override {
    return keep(line, Step::SetLines, &Device::lines, lines);
  }
  SerialResult getHandshakeLines(int line) override {
    SerialResult done = stepOf(line, Step::GetLines);
    if (done.error == 0) done.value = at(line).lines;
    return done;
  }
  SerialResult setReadLatency(int line, int microseconds) override {
    return keep(line, Step::Latency, &Device::latency, microseconds);
  }
  SerialResult setSpeed(int line, int baud) override {
    return keep(line, Step::Speed, &Device::speed, baud);
  }

  SerialWait waitReadable(int descriptor, int timeoutMilliseconds) override {
    std::function<void(int)> whileWaiting;
    {
      const std::scoped_lock guard(lock_);
      Device& device = at(descriptor);
      if (!device.input.empty()) return SerialWait::Ready;
      if (device.errors.count(Step::Read) != 0) return SerialWait::Ready;
      if (device.hungUp) return SerialWait::HungUp;
      whileWaiting = device.whileWaiting;
    }
    if (whileWaiting) whileWaiting(timeoutMilliseconds);
    return SerialWait::TimedOut;
  }
  SerialResult read(int descriptor, std::span<std::uint8_t> bytes) override {
    const std::scoped_lock guard(lock_);
    Device& device = at(descriptor);
    if (device.input.empty()) {
      const auto error = device.errors.find(Step::Read);
      if (error != device.errors.end()) return {0, error->second};
      FAIL_CHECK("a read that would wait for ever");
      return {0, EAGAIN};
    }
    std::string& chunk = device.input.front();
    const std::size_t count = std::min(bytes.size(), chunk.size());
    std::copy_n(chunk.begin(), count, bytes.begin());
    chunk.erase(0, count);
    if (chunk.empty()) device.input.pop_front();
    return {static_cast<std::int64_t>(count), 0};
  }
  SerialResult write(int descriptor, std::span<const std::uint8_t> bytes) override {
    const std::scoped_lock guard(lock_);
    Device& device = at(descriptor);
    const auto error = device.errors.find(Step::Write);
    if (error != device.errors.end()) return {0, error->second};
    const auto all = static_cast<std::int64_t>(bytes.size());
    const std::int64_t count = device.takes < 0 ? all : std::min(all, device.takes);
    device.written.append(bytes.begin(), bytes.begin() + count);
    return {count, 0};
  }
  SerialResult drain(int descriptor) override { return stepOf(descriptor, Step::Drain); }
  void close(int descriptor) override {
    const std::scoped_lock guard(lock_);
    ++at(descriptor).closed;
    open_.erase(descriptor);
  }

 private:
  Device& at(int descriptor) {
    const auto line = open_.find(descriptor);
    if (line != open_.end()) return *line->second;
    FAIL_CHECK("used a descriptor that is not open: ", descriptor);
    static Device nowhere;
    return nowhere;
  }
  static SerialResult step(Device& device, Step step) {
    device.steps.push_back(step);
    const auto error = device.errors.find(step);
    return {0, error == device.errors.end() ? 0 : error->second};
  }
  SerialResult stepOf(int descriptor, Step step) {
    const std::scoped_lock guard(lock_);
    return FakeSerialPorts::step(at(descriptor), step);
  }
  SerialResult keep(int descriptor, Step step, int Device::*where, int value) {
    const SerialResult done = stepOf(descriptor, step);
    if (done.error == 0) at(descriptor).*where = value;
    return done;
  }

  std::mutex lock_;
  std::map<std::string, Device> devices_;
  std::map<int, Device*> open_;
  int lastDescriptor_ = 40;
};

}  // namespace ovka::testing
