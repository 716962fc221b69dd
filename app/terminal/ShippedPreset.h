#pragma once

#include <string>

namespace ovka::terminal {

/// A path under which the preset of `--play` can be read; it lives in this process's memory, so
/// nothing is written to the user's folders. Empty: the machine gives no such memory. Main thread.
[[nodiscard]] std::string shippedPresetPath();

}  // namespace ovka::terminal
