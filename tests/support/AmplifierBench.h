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

/// The amplifier's ports over fakes, with a small sample buffer and a clock moved by hand.
struct AmplifierBench {
  FreshVariables fresh;
  CapturedPrint print;
  RecordingShell shell;
  FakeSerialPorts serial;
  ManualTime time;
  NotificationCenter notifications;
  LossCounters losses;
  SmallAddressSpace space;
  SampleStore store{space, shell.recording, shell.annotations};
  StreamDecoder decoder{store, notifications, losses, shell.application};
  AmplifierPorts ports{{serial, notifications, losses, time, shell.annotations, shell.portView,
                        shell.recording, shell.application},
                       decoder};

  AmplifierBench() {
    store.initMalloc(2000);
    static_cast<void>(print.take());
  }
  ~AmplifierBench() { static_cast<void>(print.take()); }
  AmplifierBench(const AmplifierBench&) = delete;
  AmplifierBench& operator=(const AmplifierBench&) = delete;

  void after(int milliseconds) { time.advance(std::chrono::milliseconds(milliseconds)); }

  /// A device whose amplifier greets once it is opened.
  FakeSerialPorts::Device& greeting(const std::string& path) {
    FakeSerialPorts::Device& device = serial.device(path);
    device.input = {"OVKA\r", "ready\r"};
    return device;
  }
};

}  // namespace ovka::testing
