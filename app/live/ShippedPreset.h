#pragma once

#include <cstdint>
#include <string>

namespace ovka {

/// A path under which the preset with the set-ups that come with the program can be read; it lives
/// in this process's memory, so nothing is written to the user's folders. Empty: the machine gives
/// no such memory. Main thread.
[[nodiscard]] std::string shippedPresetPath();

/// Two seconds at 120 samples/s: music follows the head sooner than a fine spectrum does.
inline constexpr const char* kShippedTransform = "fftp=256";

/// Sends every set-up of both mappings to one destination, by its place in the port list.
void useDestination(std::int32_t port);

}  // namespace ovka
