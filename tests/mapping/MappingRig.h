#pragma once

#include <functional>
#include <map>

#include "AnalysisInput.h"
#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "DisplayVariables.h"
#include "DocumentVariables.h"
#include "FFTVariables.h"
#include "MappingVariables.h"
#include "RecordingNotes.h"
#include "SetMIDI.h"
#include "SetMIDIVariables.h"
#include "SetMIDIband.h"
#include "SetMIDIbandVariables.h"

namespace ovka::testing {

/// A spectral engine that answers what it is told to.
struct ScriptedAnalysis final : AnalysisInput {
  std::function<float(std::int32_t, float, float, std::int32_t)> band =
      [](std::int32_t, float, float, std::int32_t) { return 0.0F; };
  float frequency = 0;
  std::vector<std::int32_t> evaluated;
  float peakFFTband(std::int32_t source, float lowF, float highF, std::int32_t mode) override {
    return band(source, lowF, highF, mode);
  }
  float peakFFTbandF(std::int32_t, float, float, std::int32_t) override { return frequency; }
  void waven3DBSQC(std::int32_t channel) override { evaluated.push_back(channel); }
};

/// What the window shows at last.
struct RecordingView final : SetupView {
  std::map<std::string, double, std::less<>> shown;
  std::map<std::string, std::vector<std::string_view>, std::less<>> filled;
  void show(std::string_view control, double value) override {
    shown[std::string(control)] = value;
  }
  void fill(std::string_view control, std::span<const std::string_view> choices) override {
    filled[std::string(control)] = {choices.begin(), choices.end()};
  }
};

/// Both mappings over recorders, every variable at its default.
struct MappingRig {
  CapturedPrint printed;
  bool fresh = [] {
    setmidiband::resetVariables();
    setmidi::resetVariables();
    document::resetVariables();
    buffer::resetVariables();
    fft::resetVariables();
    display::resetVariables();
    mapping::PerformanceProfileX = 0;
    return true;
  }();
  RecordingNotes notes;
  ScriptedAnalysis analysis;
  RecordingView view;
  SetMIDIband band{notes, analysis};
  SetMIDI single{notes, analysis};

  MappingRig() {
    band.setView(&view);
    single.setView(&view);
  }
  MappingRig(const MappingRig&) = delete;
  MappingRig& operator=(const MappingRig&) = delete;

  /// A tick of the band mapping after so many seconds, and what it asked for.
  std::vector<std::string> tick(double seconds = 0.0) {
    notes.now += seconds;
    band.timerUpdate();
    return notes.take();
  }
  std::vector<std::string> tickSingle(double seconds = 0.0) {
    notes.now += seconds;
    single.timerUpdate();
    return notes.take();
  }
  /// Performs a window action; false when there is none.
  bool perform(MidiMapping& mapping, std::string_view selector, double value = 0) {
    for (const MappingAction& action : mapping.actions()) {
      if (action.selector != selector) continue;
      action.perform(value);
      return true;
    }
    return false;
  }
};

}  // namespace ovka::testing
