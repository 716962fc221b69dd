#pragma once

#include <optional>

namespace ovka {

/// Samples a second of the JACK server that runs; nothing when none runs or this build does not
/// know JACK. Starts no server. Takes some milliseconds.
[[nodiscard]] std::optional<double> jackSampleRate();

}  // namespace ovka
