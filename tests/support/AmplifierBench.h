#pragma once

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <string>

#include "AddressSpace.h"
#include "AmplifierPorts.h"
#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "FakeSerialPorts.h"
#include "ManualTime.h"
#include "NotificationCenter.h"
#include "RecordingShell.h"
#include "SampleStore.h"
#include "StreamDecoder.h"

namespace ovka::testing {

/// The process-wide variables at their defaults, before and after a test.
struct FreshVariables {
  FreshVariables() { reset(); }
  ~FreshVariables() { reset(); }
  FreshVariables(const FreshVariables&) = delete;
  FreshVariables& operator=(const FreshVariables&) = delete;
  static void reset() {
    buffer::resetVariables();
    amplifier::resetVariables();
  }
};

/// Address space for small buffers: whatever is asked for, a few pages stand behind it. The thread
/// sanitizer takes seconds for each of the real, huge reservations.
struct SmallAddressSpace final : AddressSpace {
  static constexpr std::size_t kBytes = 64 * 1024;
  std::byte* reserve(std::size_t) override {
    return static_cast<std::byte*>(std::calloc(kBytes, 1));
  }
  int open(std::byte*, std::size_t bytes) override { return bytes <= kBytes ? 0 : ENOMEM; }
  void release(std::byte* block, std::size_t) override { std::free(block); }
};

using Device = FakeSerialPorts::Device;
using Step = FakeSerialPorts::Step;

/// The amplifier's ports over lines and a clock, with a small sample buffer.
template <typename Serial, typename Time>
struct AmplifierBenchOn {
  FreshVariables fresh;
  CapturedPrint print;
  RecordingShell shell;
  Serial serial;
  Time time;
  NotificationCenter notifications;
  LossCounters losses;
  SmallAddressSpace space;
  SampleStore store{space, shell.recording, shell.annotations};
  StreamDecoder decoder{store, notifications, losses, shell.application};
  AmplifierPorts ports{{serial, notifications, losses, time, shell.annotations, shell.portView,
                        shell.recording, shell.application},
                       decoder};

  AmplifierBenchOn() {
    store.initMalloc(2000);
    static_cast<void>(print.take());
  }
  ~AmplifierBenchOn() { static_cast<void>(print.take()); }
  AmplifierBenchOn(const AmplifierBenchOn&) = delete;
  AmplifierBenchOn& operator=(const AmplifierBenchOn&) = delete;

  void after(int milliseconds) { time.advance(std::chrono::milliseconds(milliseconds)); }

  /// A device whose amplifier greets once it is opened.
  Device& greeting(const std::string& path) {
    Device& device = serial.device(path);
    device.input = {"OVKA\r", "ready\r"};
    return device;
  }
};

/// Over fakes, with a clock moved by hand.
using AmplifierBench = AmplifierBenchOn<FakeSerialPorts, ManualTime>;

}  // namespace ovka::testing
