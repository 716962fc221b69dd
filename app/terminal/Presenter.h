#pragma once

#include <chrono>
#include <cstdint>

#include "Chain.h"
#include "Console.h"
#include "EngineReader.h"
#include "StopSignals.h"

namespace ovka::terminal {

/// How a running chain is shown.
struct Presentation {
  enum class Form : std::uint8_t { Screen, Lines, Json };
  Form form = Form::Lines;
  std::chrono::nanoseconds interval = std::chrono::seconds(1);  ///< between two lines
  std::chrono::nanoseconds length{0};                           ///< ends then; 0: no limit
};

/// Shows the chain until it ends, its length is over or the person asks for the end. Throws what
/// Output throws.
void present(Chain& chain, const Presentation& how, StopSignals& stop, const Console& console);

}  // namespace ovka::terminal
