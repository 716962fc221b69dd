#pragma once

#include <vector>

#include "Options.h"

namespace ovka::terminal {

/// The commands about music and the machine: midi, render, doctor.
[[nodiscard]] std::vector<CommandForm> midiForms();

/// Options that several of them have.
[[nodiscard]] Option midiSystemOption();
[[nodiscard]] Option destinationOption(std::string what);
[[nodiscard]] std::vector<Option> soundOptions();

}  // namespace ovka::terminal
