#pragma once

#include <string>
#include <vector>

#include "CaptureFormat.h"

namespace ovka {

class Engine;

/// The settings that a capture carries: everything that enters decoding and analysis, in an order
/// in which assigning them one after the other gives the same state; then the paths of the lines as
/// "input1=PATH" to "input4=PATH".
[[nodiscard]] CaptureSettings captureSettings(const Engine& engine,
                                              const std::vector<std::string>& inputs);

/// The paths of the lines that a capture names, in the order of their ports.
[[nodiscard]] std::vector<std::string> capturedInputs(const CaptureSettings& settings);

/// Assigns what captureSettings gave. Empty when done, else one line about the first that failed.
[[nodiscard]] std::string applyCaptureSettings(Engine& engine, const CaptureSettings& settings);

}  // namespace ovka
