#include "FluidVoices.h"

#include <algorithm>
#include <array>
#include <fluidsynth.h>

#include "LibraryMessages.h"

namespace ovka {
namespace {

constexpr int kChannels = 16;
/// What a channel keeps through silence(): volume, position, expression, echo, chorus.
constexpr std::array<int, 5> kKeptControllers{7, 10, 11, 91, 93};

struct ChannelState {
  int font = 0;
  int bank = 0;
  int program = 0;
  std::array<int, kKeptControllers.size()> controllers{};
};

ChannelState stateOf(fluid_synth_t* synth, int channel) {
  ChannelState state;
  fluid_synth_get_program(synth, channel, &state.font, &state.bank, &state.program);
  for (std::size_t i = 0; i < kKeptControllers.size(); ++i)
    fluid_synth_get_cc(synth, channel, kKeptControllers[i], &state.controllers[i]);
  return state;
}

void restore(fluid_synth_t* synth, int channel, const ChannelState& state) {
  fluid_synth_program_select(synth, channel, state.font, state.bank, state.program);
  for (std::size_t i = 0; i < kKeptControllers.size(); ++i)
    fluid_synth_cc(synth, channel, kKeptControllers[i], state.controllers[i]);
}

}  // namespace

std::string FluidVoices::libraryName() {
  return std::string("FluidSynth ") + fluid_version_str();
}

std::unique_ptr<FluidVoices> FluidVoices::load(const SynthesizerSettings& settings,
                                               std::string* explanation) {
  std::unique_ptr<FluidVoices> voices = make(settings, explanation);
  if (voices == nullptr || !voices->loadSounds(settings.soundFont, explanation)) return nullptr;
  return voices;
}

std::unique_ptr<FluidVoices> FluidVoices::make(const SynthesizerSettings& settings,
                                               std::string* explanation) {
  LibraryMessages messages;
  std::unique_ptr<FluidVoices> voices(new FluidVoices);
  voices->settings_ = new_fluid_settings();
  fluid_settings_t* const all = voices->settings_;
  if (all != nullptr) {
    fluid_settings_setnum(all, "synth.sample-rate", settings.sampleRate);
    fluid_settings_setnum(all, "synth.gain", std::clamp(settings.gain, 0.0, 10.0));
    fluid_settings_setint(all, "synth.threadsafe-api", 1);
    fluid_settings_setint(all, "synth.midi-channels", kChannels);
    // One core, no loading while playing: the same messages give the same samples.
    fluid_settings_setint(all, "synth.cpu-cores", 1);
    fluid_settings_setint(all, "synth.dynamic-sample-loading", 0);
    voices->synth_ = new_fluid_synth(all);
  }
  if (voices->synth_ != nullptr) return voices;
  *explanation = "the synthesizer could not be made: " + messages.takeLast();
  return nullptr;
}

bool FluidVoices::loadSounds(const std::string& soundFont, std::string* explanation) {
  LibraryMessages messages;
  if (fluid_synth_sfload(synth_, soundFont.c_str(), 1) != FLUID_FAILED) return true;
  *explanation =
      "the sound font " + soundFont + " is damaged; choose another: " + messages.takeLast();
  return false;
}

FluidVoices::~FluidVoices() {
  if (synth_ != nullptr) delete_fluid_synth(synth_);
  if (settings_ != nullptr) delete_fluid_settings(settings_);
}

void FluidVoices::setGain(double gain) {
  fluid_synth_set_gain(synth_, static_cast<float>(std::clamp(gain, 0.0, 10.0)));
}

void FluidVoices::message(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 2 || bytes.size() > 3) return;
  if (std::any_of(bytes.begin() + 1, bytes.end(), [](auto byte) { return byte > 0x7F; })) return;
  const int kind = bytes[0] & 0xF0;
  const bool two = kind == 0xC0 || kind == 0xD0;
  if (bytes.size() != (two ? 2U : 3U)) return;
  const int channel = bytes[0] & 0x0F;
  const int first = bytes[1];
  const int second = two ? 0 : bytes[2];
  switch (kind) {
    case 0x80:
      fluid_synth_noteoff(synth_, channel, first);
      break;
    case 0x90:
      fluid_synth_noteon(synth_, channel, first, second);
      break;
    case 0xA0:
      fluid_synth_key_pressure(synth_, channel, first, second);
      break;
    case 0xB0:
      fluid_synth_cc(synth_, channel, first, second);
      break;
    case 0xC0:
      fluid_synth_program_change(synth_, channel, first);
      break;
    case 0xD0:
      fluid_synth_channel_pressure(synth_, channel, first);
      break;
    case 0xE0:
      fluid_synth_pitch_bend(synth_, channel, second << 7 | first);
      break;
    default:
      break;
  }
}

void FluidVoices::silence() {
  // The reset ends the echoes but lets notes fade, also those that were ended before it.
  std::array<ChannelState, kChannels> states;
  for (int channel = 0; channel < kChannels; ++channel)
    states[static_cast<std::size_t>(channel)] = stateOf(synth_, channel);
  fluid_synth_system_reset(synth_);
  fluid_synth_all_sounds_off(synth_, -1);
  for (int channel = 0; channel < kChannels; ++channel)
    restore(synth_, channel, states[static_cast<std::size_t>(channel)]);
}

void FluidVoices::render(std::span<float> left, std::span<float> right) {
  const auto count = static_cast<int>(std::min(left.size(), right.size()));
  fluid_synth_write_float(synth_, count, left.data(), 0, 1, right.data(), 0, 1);
}

int FluidVoices::activeVoices() const {
  return fluid_synth_get_active_voice_count(synth_);
}

}  // namespace ovka
