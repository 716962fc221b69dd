#include "CaptureSettings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "DisplayRows.h"
#include "Engine.h"

namespace ovka {
namespace {

constexpr std::string_view kInput = "input";

/// Other names of settings that are carried anyway, and what belongs to the moment: positions,
/// modes.
constexpr std::array<std::string_view, 11> kLeftOut{
    "samplingModeX",  "MaxTimeActionX",    "fftpX",          "FFTpointX",
    "setAverageTime", "setCoherenceLevel", "ploop",          "setRecModeX",
    "setPauseX",      "AutoSaveX",         "setNoPortAccess"};

/// Carried last: earlier ones would change them again.
constexpr std::array<std::string_view, 3> kLast{"maxploop", "scalerX", "scalerY"};

template <std::size_t N>
bool holds(const std::array<std::string_view, N>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// How something is looked at belongs to who looks.
bool isDisplay(std::string_view name) {
  return display::findRow(display::kWholeRows, name) != nullptr ||
         display::findRow(display::kRealRows, name) != nullptr;
}

}  // namespace

CaptureSettings captureSettings(const Engine& engine, const std::vector<std::string>& inputs) {
  CaptureSettings result;
  const auto carry = [&](const Setting& setting) {
    result.emplace_back(setting.name, SettingsRegistry::format(setting, setting.get()));
  };
  for (const Setting& setting : engine.settings().entries()) {
    // Tables are the outputs' set-ups: a preset's to keep.
    if (setting.count == 0 && setting.writable && !holds(kLeftOut, setting.name) &&
        !holds(kLast, setting.name) && !isDisplay(setting.name)) {
      carry(setting);
    }
  }
  for (const std::string_view name : kLast) carry(*engine.settings().find(name));
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    result.emplace_back(std::string(kInput) + std::to_string(i + 1), inputs[i]);
  }
  return result;
}

std::vector<std::string> capturedInputs(const CaptureSettings& settings) {
  std::vector<std::string> paths;
  for (const auto& [name, value] : settings) {
    if (name.starts_with(kInput)) paths.push_back(value);
  }
  return paths;
}

std::string applyCaptureSettings(Engine& engine, const CaptureSettings& settings) {
  for (const auto& [name, value] : settings) {
    if (name.starts_with(kInput)) continue;
    std::string problem = engine.assign(name + "=" + value);
    if (!problem.empty()) return "the capture's settings do not fit: " + problem;
  }
  return {};
}

}  // namespace ovka
