#include "SetMIDIband.h"

#include <cmath>

#include "DisplayVariables.h"
#include "FFTVariables.h"
#include "Print.h"
#include "SetMIDIbandVariables.h"

namespace ovka {

using namespace setmidiband;  // NOLINT: the code of these variables

namespace {

/// Above 9: the engine ends the slot's note before every new one.
constexpr std::int32_t kRetrigger = 127;
constexpr std::int32_t kUseQT = 0;

void setValue(std::size_t setup, std::size_t band, float value) {
  bandOutX[band].set(setup, value);
  bandOutXZ[band].set(setup, value);
}

}  // namespace

void SetMIDIband::init() {
  if (firstTimeRunX == 0) return;
  firstTimeRunX = 0;
  setmidiband::setDefaults();
  // So that bringing back channels that nobody put aside does no harm.
  for (std::size_t band = 0; band < kSetupBands; ++band) {
    for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
      MIDIchannelXZZ[band].set(setup, MIDIchannelX[band][setup]);
    }
  }
}

bool SetMIDIband::playsAll() const {
  return setSoloBandX != 0;
}

void SetMIDIband::setDefaults() {
  setmidiband::setDefaults();
}

std::array<std::int32_t, 8> SetMIDIband::channelsOf(std::size_t setup) const {
  std::array<std::int32_t, 8> channels{};
  for (std::size_t band = 0; band < kSetupBands; ++band) channels[band] = MIDIchannelX[band][setup];
  return channels;
}

void SetMIDIband::sendMIDIbandData(std::int32_t setup) {
  const std::scoped_lock guard(lock());
  if (const auto index = indexOf(setup)) static_cast<void>(play(*index));
}

void SetMIDIband::sendMIDInote(std::int32_t setup) {
  const std::scoped_lock guard(lock());
  if (const auto index = indexOf(setup)) sendNote(*index);
}

MidiMapping::Turn SetMIDIband::play(std::size_t setup) {
  if (MIDIoutONEX[setup] != 1) return Turn::NotYet;
  const double now = notes().mtimeatMIDIs();
  const Turn turn = turnOf(setup, now);
  if (turn != Turn::Now) return turn;
  if (ONInputEX[setup] == 1) refresh(setup);
  if (isShown(setup)) showValues(setup);
  sendNote(setup);
  sent(setup, now);
  return turn;
}

float SetMIDIband::FFTband(std::int32_t channel, float low, float high, std::int32_t mode) {
  const float value = analysis().peakFFTband(channel, low, high, mode);
  if (channel < 0 || channel > 3) return value;
  return value / display::displayGainX[static_cast<std::size_t>(channel)];
}

void SetMIDIband::refresh(std::size_t setup) {
  const std::int32_t source = UsePeakModeEX[setup];
  if (source == 1) readBrainSwitches(setup);
  if (source != 0) return;
  const std::int32_t channel = OVKAchannelEX[setup];
  const std::int32_t mode = PeakPowerEX[setup];
  for (std::size_t band = 0; band < kSetupBands; ++band) {
    setValue(setup, band, FFTband(channel, LowFX[band][setup], HighFX[band][setup], mode));
  }
}

void SetMIDIband::readBrainSwitches(std::size_t setup) {
  const std::int32_t channel = OVKAchannelEX[setup];
  if (channel < 0 || channel > 9) return;
  analysis().waven3DBSQC(channel);
  const auto source = static_cast<std::size_t>(channel);
  const auto& row =
      source < 4 ? fft::peakSWfftCount[source] : fft::peakSWcoherenceCount[source - 4];
  constexpr std::size_t kEntriesOfABand = 15;
  for (std::size_t band = 0; band < kSetupBands; ++band) {
    setValue(setup, band, row.get((band + 1) * kEntriesOfABand));
  }
}

void SetMIDIband::showValues(std::size_t setup) {
  static constexpr std::array<std::string_view, kSetupBands> kSliders{
      "bandSlider1:", "bandSlider2:", "bandSlider3:", "bandSlider4:",
      "bandSlider5:", "bandSlider6:", "bandSlider7:", "bandSlider8:"};
  for (std::size_t band = 0; band < kSetupBands; ++band) {
    view().show(kSliders[band], static_cast<double>(bandOutX[band][setup]));
  }
}

void SetMIDIband::sendNote(std::size_t setup) {
  const std::int32_t port = midiPortReturn(static_cast<std::int32_t>(setup));
  if (NoteOffOnEX[setup] != 1 && NoteOnOffEX[setup] != 1) held().release(setup);
  for (std::size_t band = 0; band < kSetupBands; ++band) sendBand(setup, band, port);
}

void SetMIDIband::sendBand(std::size_t setup, std::size_t band, std::int32_t port) {
  const auto number = static_cast<std::int32_t>(setup);
  const float v = gainNoteX[setup] * bandOutX[band][setup];
  const std::int32_t whole = mapping::truncated(static_cast<double>(v));
  const std::int32_t note = bandNoteX[band][setup];
  const std::int32_t channel = MIDIchannelX[band][setup];
  because(MidiCause::Source::Band, setup, band);
  if (NoteOffOnEX[setup] == 1) {
    static_cast<void>(held().hold(setup, band, {note, channel, port, HeldNotes::kFixed}));
    sendMidiOutOn(note, whole, number, channel, port, kUseQT);
  } else if (NoteOnOffEX[setup] == 1) {
    // In single precision, as its factors are: 0.29 means loudness 29.
    const float loudness = 100.0F * (v - std::trunc(v));
    static_cast<void>(held().hold(setup, band, {whole, channel, port, kRetrigger}));
    sendMidiOutOffOn(whole, mapping::truncated(static_cast<double>(loudness)), number, channel,
                     port, kRetrigger, kUseQT);
  } else if (ControlEX[setup] == 1) {
    sendMidiControlChange(note, whole, number, channel, port, kUseQT);
  }
}

void SetMIDIband::MIDIchannelCopy() {
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    for (std::size_t band = 0; band < kSetupBands; ++band) {
      const std::int32_t channel = MIDIchannelX[band][setup];
      MIDIchannelXZZ[band].set(setup, channel);
      Print("MIDIchannel%zuX=%d\n", band + 1, channel);
    }
  }
}

void SetMIDIband::MIDIchannelBackCopy() {
  for (std::size_t band = 0; band < kSetupBands; ++band) {
    for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
      MIDIchannelX[band].set(setup, MIDIchannelXZZ[band][setup]);
    }
  }
}

}  // namespace ovka
