#pragma once

#include <array>
#include <cstdint>

#include "Shared.h"

/// Display settings that other rooms read, or that documents and presets keep.
namespace ovka::display {

// name, default: meaning (unit); writer.
/// Display gain of channels A, B, D, E (factor, above 0): spectra are drawn with it, and the
/// outputs divide by it; the user.
inline constinit std::array<Shared<float>, 4> displayGainX{1.0F, 1.0F, 1.0F, 1.0F};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::display
