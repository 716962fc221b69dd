#include <algorithm>
#include <cmath>
#include <cstdint>
#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <vector>

#include "AmplifierPorts.h"
#include "AmplifierVariables.h"
#include "CapturedPrint.h"
#include "CapturingSerialPorts.h"
#include "FakeLines.h"
#include "GuardedAddressSpace.h"
#include "ManualTime.h"
#include "MemoryBytes.h"
#include "RecordingShell.h"
#include "ReplaySerialPorts.h"
#include "SampleStore.h"
#include "VirtualAmplifier.h"

using namespace ovka;
using namespace std::chrono_literals;

namespace {

constexpr std::int64_t kPoints = 20000;

/// Serial lines with a virtual amplifier at the far end, on the manual clock.
class AmplifierLines final : public FakeLines {
 public:
  AmplifierLines(ManualTime& time, const SimulatorOptions& options)
      : FakeLines(time, {}), time_(time), amplifier_(options, signalOf(options)) {}

  SerialResult open(const std::string& path) override {
    amplifier_.hostOpened();
    last_ = time_.nanoseconds();
    return FakeLines::open(path);
  }
  SerialWait waitReadable(int /*descriptor*/, int timeoutMilliseconds) override {
    const std::int64_t limit = time_.nanoseconds() + timeoutMilliseconds * 1'000'000LL;
    while (produce(), here_.empty() && time_.nanoseconds() < limit) time_.advance(1ms);
    return here_.empty() ? SerialWait::TimedOut : SerialWait::Ready;
  }
  SerialResult read(int /*descriptor*/, std::span<std::uint8_t> bytes) override {
    const std::size_t count = std::min({here_.size(), bytes.size(), std::size_t{4095}});
    std::copy_n(here_.begin(), count, bytes.begin());
    here_.erase(here_.begin(), here_.begin() + static_cast<std::ptrdiff_t>(count));
    return {static_cast<std::int64_t>(count), 0};
  }
  SerialResult write(int /*descriptor*/, std::span<const std::uint8_t> bytes) override {
    time_.advance(3ms);
    amplifier_.feed(bytes);
    return {static_cast<std::int64_t>(bytes.size()), 0};
  }

 private:
  static std::unique_ptr<Signal> signalOf(const SimulatorOptions& options) {
    std::string error;
    return makeSignal(options, error);
  }
  void produce() {
    amplifier_.produce(time_.nanoseconds() - last_, here_);
    last_ = time_.nanoseconds();
  }

  ManualTime& time_;
  VirtualAmplifier amplifier_;
  std::vector<std::uint8_t> here_;
  std::int64_t last_ = 0;
};

/// The receiving side of the system, from the lines to the sample buffer.
struct Receiver {
  Receiver(SerialPorts& lines, ManualTime& clock, const SimulatorOptions& options) : time(clock) {
    buffer::resetVariables();
    amplifier::resetVariables();
    buffer::SelectDevice = options.model;
    buffer::DeviceConfig = options.config;
    buffer::setRecModeX = 2;
    store.initMalloc(kPoints);
    store.recCleare();
    ports = std::make_unique<AmplifierPorts>(
        AmplifierServices{lines, notifications, losses, time, shell.annotations, shell.portView,
                          shell.recording, shell.application},
        decoder);
  }
  ~Receiver() {
    time.stopAll();
    ports.reset();
    buffer::resetVariables();
    amplifier::resetVariables();
  }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  /// Opens the line, then polls it. The polls of a line that is being opened would do nothing.
  void open(const std::string& path) {
    REQUIRE(ports->openInput(1, path).explanation.empty());
    time.repeat("poll", 15ms, [this] { ports->getFromPortNew(); });
  }
  /// Every stored value so far, channel by channel.
  [[nodiscard]] std::vector<std::int32_t> samples() const {
    std::vector<std::int32_t> all;
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
      for (std::int64_t point = 0; point < buffer::ploop; ++point) {
        all.push_back(store.storedValue(channel, point));
      }
    }
    return all;
  }

  ManualTime& time;
  ovka::testing::CapturedPrint print;
  ovka::testing::GuardedAddressSpace space;
  ovka::testing::RecordingShell shell;
  NotificationCenter notifications;
  LossCounters losses;
  SampleStore store{space, shell.recording, shell.annotations};
  StreamDecoder decoder{store, notifications, losses, shell.application};
  std::unique_ptr<AmplifierPorts> ports;
};

}  // namespace

TEST_CASE("amplifier to samples: right in microvolts, and the replay gives the same samples") {
  struct Row {
    std::uint32_t model, config;
    double unit;  // reader's units a microvolt
    double step;  // code step in reader's units
  };
  const Row rows[] = {{0, 3, 1, 2},    {2, 1, 1, 2},    {3, 2, 1, 2}, {6, 3, 1, 0.01},
                      {5, 0, 1, 0.01}, {9, 2, 1, 0.01}, {1, 0, 1, 4}};
  for (const Row& row : rows) {
    CAPTURE(row.model);
    SimulatorOptions options;
    options.model = row.model;
    options.config = row.config;
    options.signal = SignalKind::Sine;
    options.sine.microvolts = {50, 50, 50, 50, 50};
    options.sine.frequency = 10.3;

    std::vector<std::int32_t> live;
    MemorySink sink;
    {
      ManualTime time;
      AmplifierLines lines(time, options);
      CaptureWriter writer(sink);
      REQUIRE(writer.begin(0, {}));
      CapturingSerialPorts capturing(lines, time, writer, time);
      Receiver receiver(capturing, time, options);
      time.advance(1234ms);
      receiver.open("/dev/a");
      time.advance(30s);
      CHECK(capturing.finish());
      live = receiver.samples();
      const std::int64_t points = buffer::ploop;
      CHECK(points > 2500);
      double highest = 0;
      for (std::int64_t point = 100; point < points; ++point) {
        highest = std::max(highest, receiver.store.getIntFromBuffer(1, point));
      }
      CHECK(std::abs(highest - 50 * row.unit) <= row.step * 0.5 + 1);
    }
    for (int run = 0; run < 2; ++run) {
      ManualTime time;
      MemorySource source(sink.bytes);
      CaptureReader reader(source);
      REQUIRE(reader.begin());
      ReplaySerialPorts lines(reader, time, [&time](std::int64_t to) { time.advanceTo(to); });
      Receiver receiver(lines, time, options);
      receiver.open(lines.firstPath());
      while (!lines.finished()) time.advance(10ms);
      time.advance(100ms);
      CHECK(receiver.samples() == live);
    }
  }
}
