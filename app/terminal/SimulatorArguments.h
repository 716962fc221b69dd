#pragma once

#include <vector>

#include "Options.h"
#include "SimulatorOptions.h"

namespace ovka::terminal {

/// The options that describe the virtual amplifier itself: model, configuration, speed, battery.
[[nodiscard]] std::vector<Option> simulatorDeviceOptions();

/// The options of its signal and of its faults; `live` and `capture` have them too, for --demo.
[[nodiscard]] std::vector<OptionGroup> signalGroups();

/// The choices of a line that has some or all of these options. Throws Failure (ExitCode::Usage)
/// when they do not fit together.
[[nodiscard]] SimulatorOptions simulatorOptionsOf(const Arguments& arguments);

/// Throws Failure when an option of signalGroups() stands on a line without --demo.
void refuseSignalWithoutDemo(const Arguments& arguments);

}  // namespace ovka::terminal
