#pragma once

#include <mutex>
#include <string>

#include "LiveMidi.h"
#include "MusicMachine.h"

namespace ovka::desktop {

/// The MIDI systems and the synthesizer of this machine, with the guard process that ends what
/// sounds when the program dies. Made before the first thread of the program.
class LiveMusic final : public MusicMachine {
 public:
  /// `systems`: one of kMidiChoices.
  explicit LiveMusic(std::string systems);
  /// How the synthesizer is to sound from the start; before look().
  void begin(const SynthesizerSettings& sound) { sound_ = sound; }

  [[nodiscard]] const MidiMachine* machine() const override { return &midi_.machine(); }
  void look() override;
  [[nodiscard]] std::vector<MusicFinding> findings() const override;
  [[nodiscard]] SynthesizerSettings sound() const override;
  void setSound(const SynthesizerSettings& sound) override;

 private:
  LiveMidi midi_;
  const std::string choice_;
  mutable std::mutex lock_;  // guards the next two
  std::vector<MusicFinding> systems_;
  SynthesizerSettings sound_;
};

}  // namespace ovka::desktop
