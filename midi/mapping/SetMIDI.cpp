#include "SetMIDI.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "DisplayVariables.h"
#include "FFTVariables.h"
#include "NoteScales.h"
#include "SetMIDIVariables.h"

namespace ovka {

using namespace setmidi;  // NOLINT: the code of these variables

namespace {

constexpr std::int32_t kUseQT = 1;
constexpr std::size_t kPeaks = 3;
/// Added to NOTEN: above 9 the engine sends a note anew even when it stays the same.
constexpr std::int32_t kRetrigger = 10;

using Floats = PerSetup<float>;

/// What one direction of the mapping reads and writes.
struct Direction {
  Floats &input, &inputZ, &output, &outputZ;
  Floats &low, &high, &lowOut, &highOut;
};
constexpr Direction kF{InputFX, InputFXZ, OutputFX, OutputFXZ, LowFX, HighFX, LowFNX, HighFNX};
constexpr Direction kV{InputVX, InputVXZ, OutputVX, OutputVXZ, LowVX, HighVX, LowVNX, HighVNX};

float mapped(float input, const Direction& to, std::size_t setup) {
  const float low = to.low[setup];
  const float width = to.high[setup] - low;
  const float lowOut = to.lowOut[setup];
  const float highOut = to.highOut[setup];
  float share = input > low ? 1.0F : 0.0F;
  if (width != 0.0F) share = (input - low) / width;
  const float output = lowOut + share * (highOut - lowOut);
  if (std::isnan(output)) return lowOut;
  return std::clamp(output, std::min(lowOut, highOut), std::max(lowOut, highOut));
}

void calculate(float input, std::size_t setup, const Direction& to) {
  const float output = mapped(input, to, setup);
  to.input.set(setup, input);
  to.inputZ.set(setup, input);
  to.output.set(setup, output);
  to.outputZ.set(setup, output);
}

std::int32_t whole(const Floats& of, std::size_t setup) {
  return mapping::truncated(static_cast<double>(of[setup]));
}

/// A note of the set-up, moved into its scale.
std::int32_t toScale(std::int32_t note, std::size_t setup) {
  return mapping::inScale(note, ScaleX[setup], ScaleRootX[setup]);
}

/// The place that holds the note of a NOTEN; one of the three peaks in every ordinary call.
std::size_t placeOf(std::int32_t NOTEN) {
  return static_cast<std::uint32_t>(NOTEN) % static_cast<std::uint32_t>(kRetrigger) %
         HeldNotes::kPlaces;
}

/// By its display gain, for channels that have one.
float byGain(float value, std::int32_t channel) {
  if (channel < 0 || channel > 3) return value;
  return value / display::displayGainX[static_cast<std::size_t>(channel)];
}

}  // namespace

void SetMIDI::init() {
  if (firstTimeRunX == 0) return;
  firstTimeRunX = 0;
  setmidi::setDefaults();
}

void SetMIDI::setDefaults() {
  setmidi::setDefaults();
}

std::array<std::int32_t, 8> SetMIDI::channelsOf(std::size_t setup) const {
  std::array<std::int32_t, 8> channels{};
  channels.fill(MIDIchannelX[setup]);
  return channels;
}

void SetMIDI::ended(std::size_t setup) {
  PlayNote.set(setup, 0);
}

// The flags are not copied back after the tick: nothing inside it writes them, so a copy could only
// undo a switch that the person threw meanwhile.
void SetMIDI::beforeTick() {
  for (std::size_t i = 0; i < midi::kSetups; ++i) MIDIoutONXZ.set(i, MIDIoutONX[i]);
}

void SetMIDI::doMIDI(std::int32_t setup) {
  const std::scoped_lock guard(lock());
  const auto index = indexOf(setup);
  if (!index) return;
  beforeTick();
  static_cast<void>(play(*index));
}

MidiMapping::Turn SetMIDI::play(std::size_t setup) {
  if (MIDIoutONX[setup] != 1) return Turn::NotYet;
  const double now = notes().mtimeatMIDIs();
  const Turn turn = turnOf(setup, now);
  if (turn != Turn::Now) return turn;
  const std::size_t peaks = Play3PeaksX[setup] == 1 ? kPeaks : 1;
  for (std::size_t peak = 0; peak < kPeaks; ++peak) {
    if (peak < peaks) {
      playPeak(setup, peak);
    } else {
      held().release(setup, peak);
    }
  }
  sent(setup, now);
  return turn;
}

void SetMIDI::playPeak(std::size_t setup, std::size_t peak) {
  because(MidiCause::Source::Single, setup, peak);
  if (ONInputX[setup] == 1) readInputs(setup, peak);
  const float input = InputFX[setup];
  if (!(input >= LowFX[setup] && input <= HighFX[setup])) {
    endPeak(setup, peak);
    return;
  }
  const auto slot = static_cast<std::int32_t>(peak);
  sendData(setup, PlayOnlyNoteChangedX[setup] == 1 ? slot : slot + kRetrigger);
  PlayNote.set(setup, 1);
}

// The note that sounds may be another than the one of the output that has left the range.
void SetMIDI::endPeak(std::size_t setup, std::size_t peak) {
  if (PlayNote[setup] == 1) {
    const auto number = static_cast<std::int32_t>(setup);
    sendMidiOutOff(toScale(whole(OutputFX, setup), setup), number, MIDIchannelX[setup],
                   midiPortReturn(number), kUseQT);
    PlayNote.set(setup, 0);
  }
  held().release(setup, peak);
}

void SetMIDI::readInputs(std::size_t setup, std::size_t peak) {
  const Inputs inputs = inputsOf(setup, peak);
  const auto number = static_cast<std::int32_t>(setup);
  if (isShown(setup)) {
    setInputFSlider(inputs.f, number);
    setInputVSlider(inputs.v, number);
  } else {
    setInputFCalc(inputs.f, number);
    setInputVCalc(inputs.v, number);
  }
}

SetMIDI::Inputs SetMIDI::inputsOf(std::size_t setup, std::size_t peak) {
  const Inputs before{InputFX[setup], InputVX[setup]};
  const std::int32_t channel = OVKAchannelX[setup];
  const bool eeg = channel >= 0 && channel <= 3;
  switch (UsePeakModeX[setup]) {
    case 0:
      return eeg ? peakInputs(static_cast<std::size_t>(channel), peak) : before;
    case 1: {
      if (!eeg || peak != 0) return before;
      const float low = LowFX[setup];
      const float high = HighFX[setup];
      const std::int32_t mode = PeakPowerX[setup];
      const float v = FFTbandV(channel, low, high, mode);
      return {FFTbandF(channel, low, high, mode), v};
    }
    case 2: {
      const std::int32_t row = BSchannelX[setup];
      if (row < 0 || row > 11) return before;
      return brainSwitchInputs(setup, peak, static_cast<std::size_t>(row), before);
    }
    case 3:
      return brainSwitchInputs(setup, peak, 0, before);
    default:
      return before;
  }
}

SetMIDI::Inputs SetMIDI::peakInputs(std::size_t channel, std::size_t peak) const {
  const auto number = static_cast<std::int32_t>(channel);
  const fft::PeakList& peaks = fft::peakFFT(number);
  const float power = byGain(peaks.get(2 * peak), number);
  const float frequency = peaks.get(2 * peak + 1);
  if (fft::LOGpowerONed == 0) return {frequency, power};
  return {frequency, mapping::single(std::pow(10.0, static_cast<double>(power) / 10.0 - 1.0))};
}

SetMIDI::Inputs SetMIDI::brainSwitchInputs(std::size_t setup, std::size_t peak, std::size_t row,
                                           const Inputs& before) {
  const std::int32_t channel = OVKAchannelX[setup];
  if (channel < 0 || channel > 9) return before;
  // Once: all peaks of a turn are of one evaluation.
  if (peak == 0) analysis().waven3DBSQC(channel);
  const auto source = static_cast<std::size_t>(channel);
  const auto& table =
      source < 4 ? fft::peakSWfftCount[source] : fft::peakSWcoherenceCount[source - 4];
  constexpr std::size_t kEntriesOfARow = 15;
  constexpr std::size_t kEntriesOfAPeak = 5;
  const std::size_t at = peak * kEntriesOfAPeak + row * kEntriesOfARow;
  return {table.get(at + 1), table.get(at)};
}

float SetMIDI::FFTbandV(std::int32_t channel, float low, float high, std::int32_t mode) {
  return byGain(analysis().peakFFTband(channel, low, high, mode), channel);
}

float SetMIDI::FFTbandF(std::int32_t channel, float low, float high, std::int32_t mode) {
  return analysis().peakFFTbandF(channel, low, high, mode);
}

void SetMIDI::setInputFCalc(float input, std::int32_t setupN) {
  if (const auto setup = indexOf(setupN)) calculate(input, *setup, kF);
}

void SetMIDI::setInputVCalc(float input, std::int32_t setupN) {
  if (const auto setup = indexOf(setupN)) calculate(input, *setup, kV);
}

void SetMIDI::setInputFSlider(float input, std::int32_t setupN) {
  setInputFCalc(input, setupN);
  const auto setup = indexOf(setupN);
  if (!setup || !isShown(*setup)) return;
  view().show("changeInputFSlider:", static_cast<double>(input));
  view().show("changeOutputFSlider:", static_cast<double>(OutputFX[*setup]));
}

void SetMIDI::setInputVSlider(float input, std::int32_t setupN) {
  setInputVCalc(input, setupN);
  const auto setup = indexOf(setupN);
  if (!setup || !isShown(*setup)) return;
  view().show("changeInputVSlider:", static_cast<double>(input));
  view().show("changeOutputVSlider:", static_cast<double>(OutputVX[*setup]));
}

void SetMIDI::sendMIDIData(std::int32_t setup, std::int32_t NOTEN) {
  const std::scoped_lock guard(lock());
  if (const auto index = indexOf(setup)) sendData(*index, NOTEN);
}

/// The roles of one output, and the two outputs from its point of view.
struct SetMIDI::Side {
  using Roles = PerSetup<std::int32_t>;
  Roles &note, &velocity, &channel, &program, &pitchbend, &controller, &controlled;
  Floats &driving, &other;
  bool second;  ///< V: keeps silent for what F has just sent
};

void SetMIDI::sendData(std::size_t setup, std::int32_t NOTEN) {
  static constexpr Side kSideF{MIDInoteFX,
                               MIDIvelocityFX,
                               MIDIchannelFX,
                               MIDIprogramchangeFX,
                               MIDIpitchbendFX,
                               MIDIcontrolchangeVFX,
                               MIDIcontrolchangeNFX,
                               OutputFX,
                               OutputVX,
                               false};
  static constexpr Side kSideV{MIDInoteVX,
                               MIDIvelocityVX,
                               MIDIchannelVX,
                               MIDIprogramchangeVX,
                               MIDIpitchbendVX,
                               MIDIcontrolchangeVVX,
                               MIDIcontrolchangeNVX,
                               OutputVX,
                               OutputFX,
                               true};
  if (MIDIoutONX[setup] != 1) return;
  noteSent_ = false;
  controllerSent_ = false;
  sendRoles(setup, NOTEN, kSideF);
  sendRoles(setup, NOTEN, kSideV);
  if (!noteSent_) held().release(setup, placeOf(NOTEN));
}

void SetMIDI::sendRoles(std::size_t setup, std::int32_t NOTEN, const Side& side) {
  const auto number = static_cast<std::int32_t>(setup);
  const std::int32_t port = midiPortReturn(number);
  const std::int32_t driving = whole(side.driving, setup);
  const std::int32_t other = whole(side.other, setup);
  if (!(side.second && noteSent_)) {
    if (side.note[setup] == 1) {
      noteSent_ = sendNote(setup, NOTEN, driving, other);
    } else if (side.velocity[setup] == 1) {
      noteSent_ = sendNote(setup, NOTEN, other, driving);
    }
  }
  if (side.channel[setup] == 1) takeChannel(setup, driving);
  const std::int32_t channel = MIDIchannelX[setup];
  if (side.program[setup] == 1) sendMidiCprogram(driving, number, channel, port, kUseQT);
  if (side.pitchbend[setup] == 1) sendMidiCpitch(driving, number, channel, port, kUseQT);
  if (side.second && controllerSent_) return;
  if (side.controller[setup] == 1) {
    sendMidiControlChange(driving, other, number, channel, port, kUseQT);
    controllerSent_ = true;
  } else if (side.controlled[setup] == 1) {
    sendMidiControlChange(other, driving, number, channel, port, kUseQT);
    controllerSent_ = true;
  }
}

// False when the set-up has no note style: then nothing is sent.
bool SetMIDI::sendNote(std::size_t setup, std::int32_t NOTEN, std::int32_t wanted,
                       std::int32_t velocity) {
  const std::int32_t note = toScale(wanted, setup);
  const auto number = static_cast<std::int32_t>(setup);
  const std::int32_t port = midiPortReturn(number);
  const std::int32_t channel = MIDIchannelX[setup];
  const std::size_t place = placeOf(NOTEN);
  if (NoteOnOffX[setup] == 1) {
    held().release(setup, place);
    sendMidiOutOnOff(note, velocity, number, channel, port, NOTEN, kUseQT);
    return true;
  }
  if (NoteOffOnX[setup] != 1) return false;
  if (held().hold(setup, place, {note, channel, port, NOTEN})) {
    sendMidiOutOn(note, velocity, number, channel, port, kUseQT);
  } else {
    sendMidiOutOffOn(note, velocity, number, channel, port, NOTEN, kUseQT);
  }
  return true;
}

void SetMIDI::takeChannel(std::size_t setup, std::int32_t channel) {
  const std::int32_t held = std::clamp(channel, 0, 15);
  MIDIchannelX.set(setup, held);
  MIDIchannelXZ.set(setup, held);
  if (isShown(setup)) view().show("selectMIDIchannel:", held);
}

void SetMIDI::sendPrograms() {
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    if (MIDIoutONX[setup] != 1) continue;
    const auto number = static_cast<std::int32_t>(setup);
    const std::int32_t port = midiPortReturn(number);
    because(MidiCause::Source::Single, setup, 0);
    for (const auto& [role, output] :
         {std::pair{&MIDIprogramchangeFX, &OutputFX}, std::pair{&MIDIprogramchangeVX, &OutputVX}}) {
      if ((*role)[setup] != 1) continue;
      sendMidiCprogram(whole(*output, setup), number, MIDIchannelX[setup], port, kUseQT);
    }
  }
}

}  // namespace ovka
