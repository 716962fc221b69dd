// One tick of the band mapping with 128 set-ups of eight bands, as multiples of the naive
// evaluation in the same run: a walk over all set-ups that asks each for its time and, where one is
// due, fetches and transforms the newest block anew for every band. For every output mode: nothing
// due, everything due after a new sample, and everything due with nothing new. Messages go to an
// engine that only counts them. Medians of interleaved rounds, one core. Usage: bench_midi_tick
// [rounds, 15 unless given]

#include <chrono>
#include <cstdlib>

#include "AnalysisRig.h"
#include "BandPowers.h"
#include "BufferVariables.h"
#include "SetMIDIband.h"
#include "SetMIDIbandVariables.h"

namespace {

using namespace ovka;
using namespace ovka::setmidiband;

/// Counts what it is asked for.
struct CountingNotes final : NoteOutput {
  long requests = 0;
  double ahead = 0.0;  // seconds that the clock is put forward
  void MidiOutOn(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                 std::int32_t) override {
    ++requests;
  }
  void MidiOutOff(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {}
  void MidiOutOffOn(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                    std::int32_t, std::int32_t) override {
    ++requests;
  }
  void MidiOutOnOff(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                    std::int32_t, std::int32_t) override {
    ++requests;
  }
  void MidiControlChange(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                         std::int32_t) override {
    ++requests;
  }
  void MidiCpitch(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {}
  void MidiCprogram(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {
  }
  void MidiStop(std::int32_t) override {}
  void MidiCont(std::int32_t) override {}
  void MidiStart(std::int32_t) override {}
  void MidiShutDown() override {}
  [[nodiscard]] double mtimeatMIDIs() const override {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count() + ahead;
  }
  void because(const MidiCause&) override {}
  [[nodiscard]] bool running() const override { return true; }
  [[nodiscard]] std::int32_t portCount() const override { return 24; }
  void restart() override {}
};

struct Rig {
  bench::AnalysisRig engine;
  CountingNotes notes;
  EngineInput input{*engine.engine, *engine.engine};
  SetMIDIband band{notes, input};
  std::vector<double> block;
  std::array<double, 128> last{};
  long long asked = 0;

  void use(std::int32_t mode, std::int32_t timing) {
    for (std::size_t i = 0; i < 128; ++i) {
      MIDIoutONEX.set(i, 1);
      ONInputEX.set(i, 1);
      OVKAchannelEX.set(i, static_cast<std::int32_t>(i % 4));
      SendMIDItimingEX.set(i, timing);
      NoteOffOnEX.set(i, mode == 0 ? 1 : 0);
      NoteOnOffEX.set(i, mode == 1 ? 1 : 0);
      ControlEX.set(i, mode == 2 ? 1 : 0);
    }
  }
  /// The rule as it stands, with nothing kept from one band to the next.
  void walk(double interval) {
    for (std::size_t i = 0; i < 128; ++i) {
      if (MIDIoutONEX[i] != 1) continue;
      const double now = notes.mtimeatMIDIs();
      if (now - last[i] < interval) continue;
      for (std::size_t k = 0; k < kSetupBands; ++k) {
        const float value = evaluate(static_cast<std::int32_t>(i % 4), LowFX[k][i], HighFX[k][i]);
        notes.MidiOutOn(60, static_cast<std::int32_t>(value), 0, 0, 0, 0);
      }
      last[i] = now;
    }
  }
  float evaluate(std::int32_t channel, float low, float high) {
    const auto points = static_cast<std::size_t>(fft::fftp.get());
    block.resize(2 * points);
    engine.engine->getDataToBufferX(channel, buffer::ploop);
    for (std::size_t i = 0; i < points; ++i) {
      block[2 * i] = engine.engine->secondArray(channel, static_cast<std::int64_t>(i));
    }
    double peakF = 0;
    double peakV = 0;
    engine.engine->SpectrumPeak(block.data(), fft::fftp, static_cast<double>(low),
                                static_cast<double>(high), &peakF, &peakV);
    return static_cast<float>(peakV);
  }
};

void print(const char* what, const bench::Interleaved& work) {
  std::printf("%-14s %-28s %10.2f us  naive %10.1f us  ratio %.4f\n", what, work.name(0).c_str(),
              work.median(0) * 1e6, work.median(1) * 1e6, work.median(0) / work.median(1));
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
  const auto rig = std::make_unique<Rig>();
  rig->engine.use(3);  // 1024 points
  const char* modes[] = {"fixed notes", "pitches", "controllers"};
  for (std::int32_t mode = 0; mode < 3; ++mode) {
    rig->use(mode, 6);
    rig->band.timerUpdate();
    rig->walk(1e9);
    rig->notes.ahead -= 1e6;  // nothing comes due
    bench::Interleaved idle;
    idle.add("nothing due", [&] { rig->band.timerUpdate(); });
    idle.add("walk", [&] { rig->walk(1e9); });
    idle.run(rounds, 400e-6);
    print(modes[mode], idle);
    rig->notes.ahead += 1e6;
    for (const bool fresh : {true, false}) {
      bench::Interleaved work;
      work.add(fresh ? "all due, a new sample" : "all due, nothing new", [&] {
        if (fresh) rig->engine.oneFrame();
        rig->notes.ahead += 2.0;
        rig->band.timerUpdate();
      });
      work.add("walk", [&] {
        if (fresh) rig->engine.oneFrame();
        rig->notes.ahead += 2.0;
        rig->walk(1.0);
      });
      work.run(rounds, 400e-6);
      print(modes[mode], work);
    }
  }
  std::printf("(%ld requests)\n", rig->notes.requests);
}
