#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Engine.h"
#include "FixedOutputs.h"
#include "LiveSnapshot.h"
#include "RateMeter.h"

namespace ovka::terminal {

/// Takes the numbers that the outputs show out of an engine. It only reads; the engine goes on
/// meanwhile. One thread.
class EngineReader {
 public:
  EngineReader(Engine& engine, std::string source);

  /// Notes how many points there are; call it ten times a second or so for a good rate.
  void look(std::int64_t nanoseconds);

  /// Everything of this moment but the console lines; `nanoseconds` is the chain's time.
  [[nodiscard]] LiveSnapshot snapshot(std::int64_t nanoseconds);

  /// Runs one pass per channel on the samples that end at `point` and leaves its results in
  /// `analysis`, whose spans stay valid until the next call. Only while nothing else runs passes.
  void analyse(std::int64_t point, bool coherence, PointAnalysis& analysis);

 private:
  void readChannel(std::size_t channel, ChannelReading& reading);
  void analyseCoherence(PointAnalysis& analysis);

  Engine& engine_;
  std::string source_;
  RateMeter rate_;
  std::int64_t lastPoint_ = 0;
  std::int64_t points_ = 0;  ///< so far, wraps of the loop counted
  std::vector<double> spectrum_;
  std::array<std::vector<double>, 3 * kAnalysisChannels> analysed_;
  std::array<std::vector<double>, 8> coherence_;
};

/// Which analysis channels the present model and configuration fill.
[[nodiscard]] std::array<bool, kAnalysisChannels> activeChannels();

/// The model for a person: "model 6: 24-bit, 230400 baud, 5 channels".
[[nodiscard]] std::string modelText();

}  // namespace ovka::terminal
