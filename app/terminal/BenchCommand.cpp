#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "AnalysisSettings.h"
#include "BandPowers.h"
#include "BufferVariables.h"
#include "ClassicTransform.h"
#include "Commands.h"
#include "Console.h"
#include "Engine.h"
#include "FFTVariables.h"
#include "Interleaved.h"
#include "Json.h"
#include "LinuxAddressSpace.h"
#include "LinuxSerialPorts.h"
#include "ManualTime.h"
#include "Output.h"
#include "RealTransform.h"

namespace ovka::terminal {
namespace {

constexpr double kSlice = 400e-6;  // seconds that one piece of work runs in one round

/// An engine on manual time whose recording holds a test signal long enough for every length.
class BenchEngine {
 public:
  BenchEngine() : time_(0), engine_({time_, time_, time_, space_, serial_}) {
    engine_.store().initMalloc(2 * kPoints);
    engine_.store().sinwaveTest(3.7F, 90);
    buffer::ploop = kPoints;
  }
  Engine& operator*() { return engine_; }

  /// Length 128 << index, with its tables.
  void use(std::int32_t index) {
    fft::selectFFTpoint(index);
    engine_.fft().fftinit(fft::fftpX, fft::windSape);
  }
  /// One more sample, so that the analysis finds something new.
  void oneFrame() {
    const std::int64_t point = buffer::ploop;
    for (std::int32_t channel = 1; channel <= 4; ++channel) {
      engine_.store().putIntToBuffer(channel, point, point % 777);
    }
    buffer::ploop = point + 1 < 2 * kPoints ? point + 1 : kPoints;
  }

 private:
  static constexpr std::int64_t kPoints = 200000;
  Console console_{Console::Show::Nothing};
  ManualTime time_;
  LinuxAddressSpace space_;
  LinuxSerialPorts serial_;
  Engine engine_;
};

/// The plain transform of one length: the unit of every ratio.
class PlainWork {
 public:
  explicit PlainWork(int points) : signal_(static_cast<std::size_t>(points)), data_(signal_) {
    for (std::size_t i = 0; i < signal_.size(); ++i) signal_[i] = static_cast<double>(i * i % 977);
  }
  void run() {
    std::copy(signal_.begin(), signal_.end(), data_.begin());
    realTransform(data_.data(), static_cast<std::int32_t>(data_.size() / 2));
  }
  [[nodiscard]] const std::vector<double>& signal() const { return signal_; }

 private:
  std::vector<double> signal_;
  std::vector<double> data_;
};

/// Prints the rows of one interleaved measurement; entry 0 is the unit.
void report(Output& output, const bench::Interleaved& work, int points, bool json) {
  const double unit = work.median(0);
  for (std::size_t i = 0; i < work.size(); ++i) {
    const double microseconds = work.median(i) * 1e6;
    if (json) {
      JsonWriter line(output.text());
      line.beginObject().key("points").number(points).key("work").text(work.name(i));
      line.key("microseconds").number(microseconds).key("ratio").number(work.median(i) / unit);
      line.endObject();
      output.write("\n");
      continue;
    }
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%8d  %-46s %12.2f us %9.3f\n", points,
                  work.name(i).c_str(), microseconds, work.median(i) / unit);
    output.write(text.data());
  }
  output.flush();
}

void benchTransform(Output& output, int points, int rounds, bool json) {
  constexpr std::array<InstructionSet, 4> kSets{InstructionSet::plain, InstructionSet::baseline,
                                                InstructionSet::avx2, InstructionSet::avx512};
  PlainWork plain(points);
  const RealTransform* transform = RealTransform::forPoints(points);
  const auto size = static_cast<std::size_t>(points);
  std::vector<double> packed(size);
  std::vector<double> scratch(size);
  bench::Interleaved work;
  work.add("classic transform (the unit)", [&] { plain.run(); });
  for (const InstructionSet set : kSets) {
    if (!isSupported(set)) continue;
    work.add(std::string("transform, ") + nameOf(set), [&, set] {
      RealTransform::useInstructionSet(set);
      transform->transform(plain.signal().data(), packed.data(), nullptr, scratch.data());
    });
  }
  work.run(rounds, kSlice);
  RealTransform::useInstructionSet(fastestInstructionSet());
  report(output, work, points, json);
}

/// 1024 queries as the outputs ask them: the eight bands of four channels, or all different.
float askBands(QZFFT& fft, bool distinct) {
  float total = 0.0F;
  for (std::int32_t i = 0; i < 1024; ++i) {
    const Band& band = ovka::kBands[static_cast<std::size_t>(i % 8)];
    const float shift = distinct ? 0.01F * static_cast<float>(i / 8) : 0.0F;
    total += fft.peakFFTband(i / 8 % 4, static_cast<float>(band.low) + shift,
                             static_cast<float>(band.high) + shift, 0);
  }
  return total;
}

void benchAnalysis(Output& output, BenchEngine& engine, std::int32_t index, int rounds, bool json) {
  engine.use(index);
  const int points = 128 << index;
  PlainWork plain(points);
  QZFFT& fft = (*engine).fft();
  float total = 0.0F;
  const auto pass = [&](bool average) {
    fft::calculationSelectX = average ? 1 : 0;
    engine.oneFrame();
    fft.timerUpdate();
  };
  fft::selectAverageTime(6);
  bench::Interleaved work;
  work.add("classic transform (the unit)", [&] { plain.run(); });
  work.add("whole pass, 4 channels", [&] { pass(false); });
  work.add("whole pass, averaging over 64", [&] { pass(true); });
  work.add("1024 band queries, new data, default bands", [&] {
    engine.oneFrame();
    total += askBands(fft, false);
  });
  work.add("1024 band queries, new data, all distinct", [&] {
    engine.oneFrame();
    total += askBands(fft, true);
  });
  work.add("1024 band queries, nothing new", [&] { total += askBands(fft, false); });
  work.run(rounds, kSlice);
  report(output, work, points, json);
}

}  // namespace

void runBench(const Arguments& arguments) {
  const bool json = arguments.given("json");
  const auto rounds = static_cast<int>(arguments.integer("rounds").value_or(15));
  Output output;
  if (!json) {
    output.write(
        "  points  work                                                  median     ratio\n");
  }
  for (std::int32_t index = 0; index < 10; ++index) {
    benchTransform(output, 128 << index, rounds, json);
  }
  BenchEngine engine;
  for (const std::int32_t index : {3, 9}) benchAnalysis(output, engine, index, rounds, json);
}

}  // namespace ovka::terminal
