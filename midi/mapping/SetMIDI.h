#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "MidiMapping.h"

namespace ovka {

/// The single-value mapping: each of up to 128 set-ups maps a frequency-like input F and a
/// value-like input V linearly to two outputs, each with roles of its own: note, velocity, channel,
/// program, pitch bend, controller.
///
/// When the outputs of both sides have a note role (or both a controller role), one peak would give
/// the same note (or controller) twice: the V side then keeps silent for what the F side has just
/// sent.
class SetMIDI final : public MidiMapping {
 public:
  /// +sharedSetMIDI: the one of this process. Defined by the engine alone.
  static SetMIDI& sharedSetMIDI();

  /// `notes` and `analysis` outlive it.
  SetMIDI(NoteOutput& notes, AnalysisInput& analysis);

  /// init On the first creation in the process (`firstTimeRunX`): the set-ups take their defaults.
  void init();
  /// awakeFromNib of the set-up window.
  /// @param chosen the set-up of the main pop-up
  void awakeFromNib(std::int32_t chosen);

  /// doMIDI: one set-up's turn: up to three peaks, each read, mapped and sent. An input F out of
  /// its range sends nothing and ends the peak's note. Any thread.
  void doMIDI(std::int32_t setup);
  /// setInputFCalc:setupN: maps an input F to the output F; an input range of no width counts what
  /// is above it as its end. Any thread.
  void setInputFCalc(float input, std::int32_t setupN);
  /// setInputVCalc:setupN: the same for V.
  void setInputVCalc(float input, std::int32_t setupN);
  /// setInputFSlider:setupN: the same, and the sliders follow.
  void setInputFSlider(float input, std::int32_t setupN);
  /// setInputVSlider:setupN:
  void setInputVSlider(float input, std::int32_t setupN);
  /// sendMIDIData:NOTEN: sends a set-up's outputs in their roles, while it is on. NOTEN 0 to 2: the
  /// peak's note keeps sounding while it stays the same; 10 to 12: it is always sent anew.
  void sendMIDIData(std::int32_t setup, std::int32_t NOTEN);

  /// FFTbandV:lowF:highF:mode: the band's value, of channels 0 to 3 by its display gain.
  [[nodiscard]] float FFTbandV(std::int32_t channel, float low, float high, std::int32_t mode);
  /// FFTbandF:lowF:highF:mode: the frequency of the band's strongest bin (Hz).
  [[nodiscard]] float FFTbandF(std::int32_t channel, float low, float high, std::int32_t mode);

 protected:
  Turn play(std::size_t setup) override;
  [[nodiscard]] std::array<std::int32_t, 8> channelsOf(std::size_t setup) const override;
  void ended(std::size_t setup) override;
  void beforeTick() override;
  void setDefaults() override;
  void edited(const SetupField& field, std::size_t setup) override;
  void sendPrograms() override;
  void addActions(std::vector<MappingAction>& to) override;

 private:
  struct Side;
  struct Inputs {
    float f, v;
  };

  void playPeak(std::size_t setup, std::size_t peak);
  void readInputs(std::size_t setup, std::size_t peak);
  [[nodiscard]] Inputs inputsOf(std::size_t setup, std::size_t peak);
  [[nodiscard]] Inputs peakInputs(std::size_t channel, std::size_t peak) const;
  [[nodiscard]] Inputs brainSwitchInputs(std::size_t setup, std::size_t peak, std::size_t row,
                                         const Inputs& before);
  void endPeak(std::size_t setup, std::size_t peak);
  void sendData(std::size_t setup, std::int32_t NOTEN);
  void sendRoles(std::size_t setup, std::int32_t NOTEN, const Side& side);
  [[nodiscard]] bool sendNote(std::size_t setup, std::int32_t NOTEN, std::int32_t wanted,
                              std::int32_t velocity);
  void takeChannel(std::size_t setup, std::int32_t channel);

  bool noteSent_ = false;        // by the F side of this peak
  bool controllerSent_ = false;  // by the F side of this peak
};

}  // namespace ovka
