#include <bit>
#include <string>
#include <string_view>

#include "AmplifierModels.h"
#include "AmplifierVariables.h"
#include "AnalysisSettings.h"
#include "BufferVariables.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "FFTVariables.h"
#include "MaximumTime.h"
#include "SettingsTables.h"

namespace ovka {
namespace {

std::int32_t toIndex(double value) {
  return static_cast<std::int32_t>(value);
}

/// Index of the window menu for a window code.
std::int32_t windowIndex(double code) {
  constexpr std::string_view kMenu = "rtmnb";
  return static_cast<std::int32_t>(kMenu.find(static_cast<char>(code)));
}

}  // namespace

void Engine::addSettings() {
  addBufferSettings(settings_);
  addAmplifierSettings(settings_);
  addFFTSettings(settings_);
  addThreadSettings(settings_);
  addDisplaySettings(settings_);
  addAmplifierStatus(settings_);
  addBufferEffects();
  addAnalysisEffects();
}

// Before the start there is no memory to resize and no amplifier to tell: the variables alone
// change.

void Engine::addBufferEffects() {
  const SampleSpeedSender send = [this](std::uint32_t speed) {
    return static_cast<std::uint32_t>(serialPort_.SampleSpeedSet(static_cast<std::int32_t>(speed)));
  };
  settings_.onSet("maxploop", [this](double value) {
    const std::uint64_t before = buffer::maxploop;
    if (!serialPort_.initMalloc(static_cast<std::uint64_t>(value))) return;
    if (started_) serialPort_.recCleareX(before);
  });
  settings_.onSet("SampleSpeed", [this, send](double value) {
    const auto speed = static_cast<std::uint32_t>(value);
    changeSampleSpeed(serialPort_, started_ ? send(speed) : speed);
  });
  settings_.onSet("samplingModeX", [this, send](double value) {
    const auto quiet = [](std::uint32_t speed) { return speed; };
    setSamplingMode(serialPort_, toIndex(value), started_ ? send : SampleSpeedSender(quiet));
  });
  settings_.onSet("MaxTimeActionX",
                  [this](double value) { setMaxTime(serialPort_, toIndex(value)); });
  settings_.onSet("SelectDevice",
                  [](double value) { chooseAmplifierModel(static_cast<std::uint32_t>(value)); });
}

void Engine::addAnalysisEffects() {
  const auto rebuild = [this] {
    if (started_) fft_->fftinit(fft::fftpX, fft::windSape);
  };
  settings_.onSet("fftp", [rebuild](double value) {
    const auto points = static_cast<std::uint32_t>(value);
    fft::selectFFTpoint(static_cast<std::int32_t>(std::bit_width(points)) - 8);
    rebuild();
  });
  settings_.onSet("fftpX", [rebuild](double value) {
    fft::selectFFTpoint(toIndex(value) - 7);
    rebuild();
  });
  settings_.onSet("FFTpointX", [rebuild](double value) {
    fft::selectFFTpoint(toIndex(value));
    rebuild();
  });
  settings_.onSet("windSape", [rebuild](double value) {
    fft::selectWindow(windowIndex(value));
    rebuild();
  });
  settings_.onSet("FFTcalculationSelectX",
                  [](double value) { fft::selectFFTcalculation(toIndex(value)); });
  settings_.onSet("setAverageTime", [](double value) { fft::selectAverageTime(toIndex(value)); });
  settings_.onSet("setCoherenceLevel",
                  [](double value) { fft::selectCoherenceLevel(toIndex(value)); });
}

void Engine::addActions() {
  if (documents_ != nullptr) documents_->addActions(actions_);
  for (const MaximumTime& choice : kMaximumTimes) {
    actions_.add(choice.selector, "recording length of " + std::to_string(choice.seconds) + " s",
                 [this, selector = choice.selector](std::int32_t /*sender*/) {
                   setMaxTime(serialPort_, selector);
                 });
  }
}

}  // namespace ovka
