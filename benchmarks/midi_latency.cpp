// What our own code adds between a value and the MIDI system, beside the MIDI system's own round
// trip, and how old the newest sample is when the message it made is handed over.
//
// 1. Engine: band requests into a transport that does nothing: time of a request and messages a
//    second, beside the bare transport in the same run.
// 2. The MIDI system alone: from one JACK client to another, where a server runs ("jackd -d
// dummy"),
//    else none but the in-memory double of 1; the output says which.
// 3. Age: the virtual amplifier in this process, performance profile, controllers of one set-up.
// Usage: bench_midi_latency [seconds of each age measurement, 20 unless given]
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "LiveSession.h"
#include "MidiEngine.h"
#include "MidiSystems.h"
#include "MidiVariables.h"
#include "Print.h"

using namespace ovka;

namespace {

/// Counts what it is sent.
struct MemoryTransport final : MidiTransport {
  std::atomic<std::uint64_t> taken{0};
  std::string name() const override { return "in-memory double"; }
  int open(const MidiNames&, const MidiReaders&) override { return 0; }
  std::string explanation() const override { return {}; }
  std::vector<MidiEndpoint> destinations() override { return {{1, "A"}}; }
  std::vector<MidiEndpoint> sources() override { return {}; }
  std::vector<MidiDevice> devices() override { return {}; }
  std::vector<MidiDevice> externalDevices() override { return {}; }
  int connectSource(std::uint64_t) override { return 0; }
  int send(std::uint64_t, std::uint64_t, std::span<const std::uint8_t>) override {
    taken.fetch_add(1, std::memory_order_relaxed);
    return 0;
  }
  int received(std::uint64_t, std::span<const std::uint8_t>) override { return 0; }
  void rescan() override {}
  std::uint64_t changes() const override { return 0; }
  bool connected() const override { return true; }
  std::uint64_t dropped() const override { return 0; }
  void close() override {}
};

double secondsOf(std::chrono::steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

void throughTheEngine() {
  constexpr int kMessages = 2'000'000;
  const LinuxClock clock;
  MemoryTransport transport;
  const std::vector<std::uint8_t> bytes{0xB0, 7, 64};
  const auto bareStart = std::chrono::steady_clock::now();
  for (int i = 0; i < kMessages; ++i) static_cast<void>(transport.send(1, 0, bytes));
  const double bare = secondsOf(std::chrono::steady_clock::now() - bareStart);

  midi::resetVariables();
  MidiEngine engine({{&transport}, nullptr, nullptr, [] {}, {}}, clock);
  engine.mainMidi();
  engine.setGetOutMIDIPort();
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kMessages; ++i) engine.MidiControlChange(7, i & 127, 0, 0, 0, 0);
  const double ours = secondsOf(std::chrono::steady_clock::now() - start);
  std::printf("value to transport, own code:  median %lld ns  99th %lld ns  max %lld ns\n",
              static_cast<long long>(engine.sendTimes().median()),
              static_cast<long long>(engine.sendTimes().percentile(0.99)),
              static_cast<long long>(engine.sendTimes().max()));
  std::printf("messages a second:             %.0f through the engine, %.0f into the bare double\n",
              kMessages / ours, kMessages / bare);
}

/// Hears what comes back.
struct Echo {
  static void read(const std::uint8_t*, void* context, void*) {
    static_cast<Echo*>(context)->heard.fetch_add(1);
  }
  std::atomic<int> heard{0};
};

void trips(MidiTransport& from, std::uint64_t destination, const Echo& echo) {
  constexpr int kTrips = 500;
  const LinuxClock clock;
  LatencyMeter times;
  const std::vector<std::uint8_t> bytes{0xB0, 7, 64};
  int lost = 0;
  for (int i = 0; i < kTrips; ++i) {
    const int before = echo.heard;
    const std::int64_t start = clock.nanoseconds();
    static_cast<void>(from.send(destination, 0, bytes));
    while (echo.heard == before && clock.nanoseconds() - start < 1'000'000'000)
      std::this_thread::yield();
    lost += echo.heard == before ? 1 : 0;
    times.record(clock.nanoseconds() - start);
  }
  std::printf("%s, one client to another:  median %.3f ms  99th %.3f ms  (%d of %d lost)\n",
              from.name().c_str(), static_cast<double>(times.median()) * 1e-6,
              static_cast<double>(times.percentile(0.99)) * 1e-6, lost, kTrips);
}

/// False: no server runs, or it does not show one client to another.
bool throughJack() {
  const std::unique_ptr<MidiTransport> from = makeMidiTransport("JACK");
  const std::unique_ptr<MidiTransport> to = makeMidiTransport("JACK");
  Echo echo;
  if (from == nullptr || to == nullptr) return false;
  if (to->open({"echo", "", "", "echo in", ""}, {&Echo::read, &Echo::read, &echo}) != 0)
    return false;
  bool found = false;
  if (from->open({"caller", "", "caller out", "", ""}, {}) == 0) {
    for (int tries = 0; tries < 40 && !found; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      for (const MidiEndpoint& endpoint : from->destinations()) {
        if (found || endpoint.name.find("echo") == std::string::npos) continue;
        found = true;
        trips(*from, endpoint.id, echo);
      }
    }
    from->close();
  }
  to->close();
  return found;
}

void ages(int rate, int seconds) {
  MemoryTransport transport;
  const MidiMachine midi{{&transport}, nullptr, nullptr, {}, {}};
  LiveChoice choice;
  choice.demo = true;
  choice.midi = &midi;
  choice.assignments = {"SampleSpeed=" + std::to_string(rate),
                        "FixedFramingX=1",
                        "PerformanceProfileX=1",
                        "MIDIoutONEX[0]=1",
                        "ONInputEX[0]=1",
                        "SendMIDItimingEX[0]=0",
                        "NoteOffOnEX[0]=0",
                        "ControlEX[0]=1"};
  LiveSession session;
  const LiveSession::Opened opened = session.open(choice);
  if (!opened.explanation.empty()) {
    std::fprintf(stderr, "error: %s\n", opened.explanation.c_str());
    std::exit(1);
  }
  LatencyMeter& meter = session.engine().midi().notes().sampleAges();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  meter.reset();
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const auto ms = [&](double part) { return static_cast<double>(meter.percentile(part)) * 1e-6; };
  std::printf(
      "newest sample to message, %4d samples/s: median %.2f ms  95th %.2f ms  99th %.2f ms  max "
      "%.2f ms  (%llu messages; goal: 99th at most 20 ms)\n",
      rate, ms(0.5), ms(0.95), ms(0.99), static_cast<double>(meter.max()) * 1e-6,
      static_cast<unsigned long long>(meter.count()));
  session.close();
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
  setPrintSink([](std::string_view) {});
  throughTheEngine();
  if (!throughJack()) std::printf("no JACK server runs: the bare double above is the only peer\n");
  for (const int rate : {120, 1920}) ages(rate, seconds);
  return 0;
}
