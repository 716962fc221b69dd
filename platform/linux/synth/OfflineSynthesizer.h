#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Clock.h"
#include "PeakLimiter.h"
#include "Synthesizer.h"
#include "SynthesizerSettings.h"

namespace ovka {

class FluidVoices;

/// The software synthesizer rendered into memory in step with a clock moved by hand: same sounds
/// and limiter as on a sound output, and the same messages at the same times give the same samples
/// on every run. A message counts from the library's next block of 64 samples on. One thread.
class OfflineSynthesizer final : public Synthesizer {
 public:
  /// Receives the sound in order: left and right in turn, 1 is full scale.
  using Sink = std::function<void(std::span<const float> interleaved)>;

  /// The sound begins where `clock` stands when start() is called. The driver settings do not
  /// count.
  OfflineSynthesizer(SynthesizerSettings settings, const Clock& clock, Sink sink);
  ~OfflineSynthesizer() override;

  [[nodiscard]] std::string name() const override;
  [[nodiscard]] int start() override;
  [[nodiscard]] std::string explanation() const override { return explanation_; }
  [[nodiscard]] bool started() const override { return voices_ != nullptr; }
  /// Renders up to the clock's time, then plays.
  void message(std::span<const std::uint8_t> bytes) override;
  void silence() override;
  /// Gives out what is still inside the limiter and ends; later messages go nowhere.
  void stop() override;

  /// Renders up to the clock's time.
  void catchUp();
  /// Renders on until everything has faded, at most `longest` nanoseconds.
  void fade(std::int64_t longest);

  /// Samples of one channel that were rendered since the start.
  [[nodiscard]] std::int64_t frames() const { return frames_; }
  [[nodiscard]] double sampleRate() const { return settings_.sampleRate; }

 private:
  void render(std::int64_t frames);
  void renderBlock(std::size_t frames);

  SynthesizerSettings settings_;
  const Clock& clock_;
  Sink sink_;
  PeakLimiter limiter_;
  std::unique_ptr<FluidVoices> voices_;
  std::string explanation_;
  std::string name_;
  std::int64_t begin_ = 0;
  std::int64_t frames_ = 0;
  std::size_t skip_ = 0;  // samples that come out of the limiter before the first of the sound
  float loudest_ = 0;     // of the last block
  std::vector<float> left_;
  std::vector<float> right_;
  std::vector<float> both_;
};

}  // namespace ovka
