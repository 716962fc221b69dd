#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "Synthesizer.h"
#include "SynthesizerSettings.h"

namespace ovka {

/// The software synthesizer on this machine's sound output, behind the limiter. Without an output
/// or a sound font start() fails and messages go nowhere. Threads as the port says; the sound is
/// made on the audio driver's own thread.
class FluidSynthesizer final : public Synthesizer {
 public:
  explicit FluidSynthesizer(SynthesizerSettings settings = {});
  ~FluidSynthesizer() override;

  [[nodiscard]] std::string name() const override;
  [[nodiscard]] int start() override;
  [[nodiscard]] std::string explanation() const override;
  [[nodiscard]] bool started() const override { return started_.load(); }
  void message(std::span<const std::uint8_t> bytes) override;
  void silence() override;
  void stop() override;

  /// The volume counts at once, the rest from the next start(). Any thread.
  void setSettings(const SynthesizerSettings& settings);

  /// About once a second by the owner's thread: an output that has not asked for sound for some
  /// seconds (its sound server went) is opened anew; while there is none it is looked for every few
  /// ticks.
  void tick();

 private:
  struct Output;

  /// Empty `*problem` and an output, or nullptr and why.
  [[nodiscard]] static std::unique_ptr<Output> openOutput(SynthesizerSettings settings,
                                                          std::string* problem);
  void setOutput(std::unique_ptr<Output> output);
  int failed(int error, std::string explanation);

  mutable std::mutex lock_;  // guards the next three; held by messages, never by the sound
  SynthesizerSettings settings_;
  std::string explanation_;
  std::unique_ptr<Output> output_;
  std::atomic<bool> started_{false};
  bool wanted_ = false;
  int quietTicks_ = 0;
  int patience_ = 0;  ///< quiet ticks before another search; grows while there is no output
};

}  // namespace ovka
