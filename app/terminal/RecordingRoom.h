#pragma once

#include <string>

#include "Engine.h"

namespace ovka::terminal {

/// Keeps room in the buffer ahead of a recording, so that a recording has no length: an hour more
/// whenever less than five minutes are left. False once there is no more to be had and the
/// recording stands at the end; `*problem` is one line about a refusal, else empty.
[[nodiscard]] bool makeRoom(Engine& engine, std::string* problem);

}  // namespace ovka::terminal
