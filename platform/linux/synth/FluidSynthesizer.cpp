#include "FluidSynthesizer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fluidsynth.h>
#include <utility>
#include <vector>

#include "FluidVoices.h"
#include "JackServer.h"
#include "LibraryMessages.h"
#include "PeakLimiter.h"
#include "SoundFonts.h"

namespace ovka {
namespace {

// pulseaudio first: PipeWire serves it, and it shares the output with other programs.
constexpr std::array<const char*, 3> kDrivers{"pulseaudio", "jack", "alsa"};
/// Ticks without a call of the driver until its output counts as gone, and between two searches for
/// another, which doubles up to the most: a search opens every sound system.
constexpr int kQuietTicks = 4;
constexpr int kMostQuietTicks = 30;

void setDriver(fluid_settings_t* all, const std::string& driver,
               const SynthesizerSettings& settings) {
  fluid_settings_setstr(all, "audio.driver", driver.c_str());
  fluid_settings_setint(all, "audio.period-size", std::clamp(settings.periodSize, 64, 8192));
  fluid_settings_setint(all, "audio.periods", std::clamp(settings.periods, 2, 64));
  fluid_settings_setint(all, "audio.jack.autoconnect", 1);
  fluid_settings_setstr(all, "audio.jack.id", "OVKA synthesizer");
  fluid_settings_setstr(all, "audio.pulseaudio.media-role", "music");
  if (!settings.device.empty() && driver != "jack") {
    const std::string key = "audio." + driver + ".device";
    fluid_settings_setstr(all, key.c_str(), settings.device.c_str());
  }
}

}  // namespace

/// What plays: voices, limiter and the driver that asks for their sound.
struct FluidSynthesizer::Output {
  Output(std::unique_ptr<FluidVoices> playing, const PeakLimiter::Settings& limit)
      : voices(std::move(playing)), limiter(limit) {}
  ~Output() {
    if (driver != nullptr) delete_fluid_audio_driver(driver);
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  static int play(void* self, int length, int, float**, int channels, float** out) {
    auto& output = *static_cast<Output*>(self);
    if (channels < 2 || length < 0) return FLUID_FAILED;
    const std::span left(out[0], static_cast<std::size_t>(length));
    const std::span right(out[1], static_cast<std::size_t>(length));
    output.voices->render(left, right);
    output.limiter.process(left, right);
    output.calls.fetch_add(1, std::memory_order_relaxed);
    return FLUID_OK;
  }

  std::unique_ptr<FluidVoices> voices;
  PeakLimiter limiter;
  std::string name;
  std::atomic<std::uint64_t> calls{0};
  std::uint64_t callsSeen = 0;
  fluid_audio_driver_t* driver = nullptr;
};

FluidSynthesizer::FluidSynthesizer(SynthesizerSettings settings) : settings_(std::move(settings)) {}

FluidSynthesizer::~FluidSynthesizer() {
  stop();
}

std::string FluidSynthesizer::name() const {
  const std::lock_guard held(lock_);
  return output_ != nullptr ? output_->name : FluidVoices::libraryName();
}

std::string FluidSynthesizer::explanation() const {
  const std::lock_guard held(lock_);
  return explanation_;
}

void FluidSynthesizer::setSettings(const SynthesizerSettings& settings) {
  const std::lock_guard held(lock_);
  settings_ = settings;
  if (output_ != nullptr) output_->voices->setGain(settings.gain);
}

std::unique_ptr<FluidSynthesizer::Output> FluidSynthesizer::openOutput(SynthesizerSettings settings,
                                                                       std::string* problem) {
  LibraryMessages messages;
  const std::string& driver = settings.driver;
  if (driver == "jack") {
    // Opening a driver would start a server that nobody asked for.
    const auto rate = jackSampleRate();
    if (!rate) {
      *problem = "no JACK server runs";
      return nullptr;
    }
    settings.sampleRate = *rate;
  }
  std::unique_ptr<FluidVoices> voices = FluidVoices::make(settings, problem);
  if (voices == nullptr) return nullptr;
  setDriver(voices->settings(), driver, settings);
  auto output = std::make_unique<Output>(
      std::move(voices),
      PeakLimiter::Settings{.sampleRate = settings.sampleRate, .ceiling = settings.ceiling});
  output->name = FluidVoices::libraryName() + ", " +
                 std::filesystem::path(settings.soundFont).filename().string() + ", " + driver;
  static_cast<void>(messages.takeLast());
  output->driver = new_fluid_audio_driver2(output->voices->settings(), &Output::play, output.get());
  // The sounds last: a machine without a sound output is asked again and again, and they are most
  // of the memory and of the time.
  if (output->driver != nullptr)
    return output->voices->loadSounds(settings.soundFont, problem) ? std::move(output) : nullptr;
  *problem = messages.takeLast();
  if (problem->empty()) *problem = "refused";
  return nullptr;
}

int FluidSynthesizer::failed(int error, std::string explanation) {
  const std::lock_guard held(lock_);
  explanation_ = std::move(explanation);
  return error;
}

int FluidSynthesizer::start() {
  if (output_ != nullptr) return 0;
  wanted_ = false;
  SynthesizerSettings settings;
  {
    const std::lock_guard held(lock_);
    settings = settings_;
  }
  const SoundFont font = findSoundFont(settings.soundFont);
  if (font.path.empty()) return failed(ENOENT, font.explanation);
  wanted_ = true;
  std::vector<std::string> drivers(kDrivers.begin(), kDrivers.end());
  if (!settings.driver.empty()) drivers = {settings.driver};
  settings.soundFont = font.path;
  std::string refusals;
  for (const std::string& driver : drivers) {
    std::string problem;
    settings.driver = driver;
    if (auto output = openOutput(settings, &problem)) {
      setOutput(std::move(output));
      return failed(0, {});
    }
    refusals += (refusals.empty() ? "" : "; ") + driver + ": " + problem;
  }
  return failed(ENODEV, "no sound output for the synthesizer (" + refusals +
                            "): start PipeWire, PulseAudio or JACK, or connect a sound card");
}

void FluidSynthesizer::message(std::span<const std::uint8_t> bytes) {
  const std::lock_guard held(lock_);
  if (output_ != nullptr) output_->voices->message(bytes);
}

void FluidSynthesizer::silence() {
  const std::lock_guard held(lock_);
  if (output_ != nullptr) output_->voices->silence();
}

void FluidSynthesizer::setOutput(std::unique_ptr<Output> output) {
  started_ = output != nullptr;
  quietTicks_ = 0;
  const std::lock_guard held(lock_);
  output_.swap(output);
  // The one before ends after the lock: its driver's thread is waited for.
}

void FluidSynthesizer::stop() {
  wanted_ = false;
  setOutput(nullptr);
}

void FluidSynthesizer::tick() {
  if (!wanted_) return;
  if (output_ != nullptr) {
    const std::uint64_t calls = output_->calls.load(std::memory_order_relaxed);
    if (calls != output_->callsSeen) quietTicks_ = 0;
    output_->callsSeen = calls;
  }
  if (++quietTicks_ <= std::max(patience_, kQuietTicks)) return;
  setOutput(nullptr);
  patience_ =
      start() == 0 ? kQuietTicks : std::min(2 * std::max(patience_, kQuietTicks), kMostQuietTicks);
}

}  // namespace ovka
