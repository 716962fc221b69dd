#include <algorithm>
#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "VirtualAmplifier.h"

using namespace ovka;

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
using Bytes = std::vector<std::uint8_t>;

VirtualAmplifier make(const SimulatorOptions& options, bool hostOpened = true) {
  REQUIRE(options.validate().empty());
  std::string error;
  VirtualAmplifier amplifier(options, makeSignal(options, error));
  if (hostOpened) amplifier.hostOpened();
  return amplifier;
}

SimulatorOptions sequence(std::uint32_t model = 0) {
  SimulatorOptions options;
  options.signal = SignalKind::Sequence;
  options.model = model;
  return options;
}

std::string produced(VirtualAmplifier& amplifier, std::int64_t milliseconds, int cuts = 1) {
  Bytes out;
  for (int i = 0; i < cuts; ++i) amplifier.produce(milliseconds * kMillisecond / cuts, out);
  return {out.begin(), out.end()};
}

void send(VirtualAmplifier& amplifier, const std::string& text) {
  amplifier.feed(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::uint64_t numberOf(const std::string& line) {
  return std::stoul(line.substr(0, 3), nullptr, 16) +
         4096 * std::stoul(line.substr(4, 3), nullptr, 16);
}

}  // namespace

TEST_CASE("an opened amplifier greets with two lines and then sends frames at its speed") {
  auto amplifier = make(sequence(), false);
  CHECK(produced(amplifier, 500).empty());
  amplifier.hostOpened();
  CHECK(produced(amplifier, 1) == "Amplifier 0\r");
  CHECK(produced(amplifier, 50) == "Ready.\r");
  CHECK(produced(amplifier, 149).size() == 0);
  const std::string stream = produced(amplifier, 1000, 8);
  CHECK(stream.size() == 120 * 16);
  CHECK(stream.substr(16, 16) == "001 000 001 000\r");
  amplifier.hostLeft();
  CHECK(produced(amplifier, 1000).empty());
}

TEST_CASE("commands are answered between whole frames, split or joined as they come") {
  auto amplifier = make(sequence());
  produced(amplifier, 300);
  send(amplifier, "S");
  send(amplifier, "R 1920\rBL\rFR 0.1234567890123\r\nXX\rSR 0\rSR 99999\rSR 1x\rFR ;\r" +
                      std::string(1000, 'y') + "\r");
  amplifier.acknowledge('s');
  amplifier.reportOverflow(42);
  amplifier.acknowledge('!');
  const std::string out = produced(amplifier, 100);
  const std::string replies = "sr 1920\rbl 219\rfr 0.12345678\rssss\rov 0042\r";
  CHECK(out.substr(0, replies.size()) == replies);
  CHECK(out.size() == replies.size() + 192 * 16);
  CHECK(amplifier.samplesPerSecond() == 1920);
  CHECK(amplifier.unknownCommands() == 6);
}

TEST_CASE("streams without lines carry no replies, but obey") {
  for (const bool old : {false, true}) {
    SimulatorOptions options = sequence(old ? 0 : 1);
    options.oldBluetooth = old;
    auto amplifier = make(options);
    send(amplifier, "SR 240\rBL\r");
    CHECK(produced(amplifier, 1000).size() == (old ? 240U * 20U : 240U));
  }
}

TEST_CASE("the sample clock keeps every speed exactly, however time is cut, and drifts on demand") {
  struct Row {
    std::uint32_t speed;
    std::int32_t drift;
    std::uint64_t frames;  // in 10 s
  };
  const Row rows[] = {{128, 0, 1280},      {256, 0, 2560},      {512, 0, 5120},   {1024, 0, 10240},
                      {120, 0, 1200},      {240, 0, 2400},      {480, 0, 4800},   {960, 0, 9600},
                      {1200, 0, 12000},    {1440, 0, 14400},    {1920, 0, 19200}, {77, 0, 770},
                      {1000, 1500, 10015}, {1000, -20000, 9800}};
  for (const Row& row : rows) {
    SimulatorOptions options;
    options.samplesPerSecond = row.speed;
    options.faults.driftPpm = row.drift;
    std::string whole;
    for (const int pieces : {10, 625, 1024}) {
      auto amplifier = make(options);
      produced(amplifier, 200);
      const std::string out = produced(amplifier, 10'000, pieces);
      CHECK(amplifier.frames() == row.frames);
      if (whole.empty()) whole = out;
      CHECK(out == whole);
    }
  }
}

TEST_CASE("a long absence is bounded and counted") {
  auto amplifier = make(sequence());
  produced(amplifier, 200);
  CHECK(produced(amplifier, 3'600'000).size() == 240 * 16);
  CHECK(amplifier.frames() == 120 * 3600);
  CHECK(amplifier.faults().skippedFrames == 120 * 3598);
}

TEST_CASE("faults are counted exactly and are the same for the same seed") {
  SimulatorOptions options = sequence();
  options.samplesPerSecond = 1000;
  options.faults.dropRate = 0.002;
  options.faults.duplicateRate = 0.001;
  options.faults.corruptRate = 0.003;
  const auto run = [&options](int cuts, FaultCounts& counts) {
    auto amplifier = make(options);
    produced(amplifier, 200);
    std::string out;
    for (int i = 0; i < 10; ++i) out += produced(amplifier, 1000, cuts);
    counts = amplifier.faults();
    return out;
  };
  FaultCounts counts;
  const std::string spoiled = run(1, counts);
  CHECK(spoiled.size() == 160000 - counts.droppedBytes + counts.duplicatedBytes);
  CHECK(counts.droppedBytes > 220);
  CHECK(counts.droppedBytes < 420);
  CHECK(counts.corruptedBytes > 340);
  CHECK(counts.corruptedBytes < 620);
  FaultCounts again;
  CHECK(run(50, again) == spoiled);
  CHECK(again.corruptedBytes == counts.corruptedBytes);
  options.seed = 2;
  CHECK(run(1, again) != spoiled);

  options.faults = {};
  const std::string clean = run(1, again);
  options.faults.corruptRate = 1.0;
  const std::string all = run(1, again);
  REQUIRE(all.size() == clean.size());
  int same = 0;
  for (std::size_t i = 0; i < all.size(); ++i) same += all[i] == clean[i] ? 1 : 0;
  CHECK(same == 0);
}

TEST_CASE("stalls lose whole frames and bursts only delay them, proved by the sequence") {
  for (const bool stall : {true, false}) {
    SimulatorOptions options = sequence();
    options.samplesPerSecond = 500;
    (stall ? options.faults.stallsPerMinute : options.faults.burstsPerMinute) = 30;
    (stall ? options.faults.stallSeconds : options.faults.burstSeconds) = 0.1;
    auto amplifier = make(options);
    produced(amplifier, 200);
    std::string out;
    std::size_t silent = 0;
    for (int i = 0; i < 6000; ++i) {
      const std::string piece = produced(amplifier, 10);
      silent += piece.empty() ? 1 : 0;
      out += piece;
    }
    const FaultCounts& counts = amplifier.faults();
    std::uint64_t next = 0;
    std::uint64_t missing = 0;
    std::uint64_t gaps = 0;
    for (std::size_t at = 0; at < out.size(); at += 16) {
      const std::uint64_t number = numberOf(out.substr(at, 16));
      gaps += number != next ? 1 : 0;
      missing += number - next;
      next = number + 1;
    }
    CHECK(silent > 100);
    CHECK(missing == counts.stalledFrames);
    CHECK(gaps == counts.stalls);
    CHECK((stall ? counts.stalls : counts.bursts) > 10);
    CHECK((stall ? counts.bursts : counts.stalls) == 0);
    CHECK(counts.heldFrames == counts.bursts * 50);
  }
}

TEST_CASE("choices that do not fit are refused in one line") {
  CHECK(SimulatorOptions().validate().empty());
  struct Row {
    void (*spoil)(SimulatorOptions&);
    const char* says;
  };
  const Row rows[] = {
      {[](SimulatorOptions& o) { o.model = 12; }, "there is no amplifier model 12"},
      {[](SimulatorOptions& o) { o.config = 4; }, "there is no configuration 4"},
      {[](SimulatorOptions& o) { o.samplesPerSecond = 0; }, "the sample speed must be 1 to 16000"},
      {[](SimulatorOptions& o) { o.oldBluetooth = true; }, "the old Bluetooth head set"},
      {[](SimulatorOptions& o) { o.port = 0; }, "the port of model 1"},
      {[](SimulatorOptions& o) { o.signal = SignalKind::File; }, "the file signal needs the path"},
      {[](SimulatorOptions& o) { o.sine.frequency = std::numeric_limits<double>::quiet_NaN(); },
       "the sine's frequency"},
      {[](SimulatorOptions& o) { o.sine.microvolts[2] = 1e9; }, "the sine's amplitudes"},
      {[](SimulatorOptions& o) { o.faults.dropRate = 1.5; }, "fault rates must be 0 to 1"},
      {[](SimulatorOptions& o) { o.faults.dropRate = o.faults.corruptRate = 0.6; },
       "the rates of dropped"},
      {[](SimulatorOptions& o) { o.faults.driftPpm = 2'000'000; }, "the drift must be"},
  };
  for (const Row& row : rows) {
    SimulatorOptions options;
    row.spoil(options);
    CHECK(options.validate().find(row.says) == 0);
  }
}
