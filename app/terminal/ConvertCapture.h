#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Engine.h"
#include "Files.h"

namespace ovka::terminal {

/// Writes the recording as a capture whose replay gives the same samples, as far as the lines of
/// its model can carry them: the settings are those in force, but lines are cut by their fixed
/// length and the recording begins at point 0 and is not a loop. Model 4, which has no serial line,
/// becomes model 6, whose lines are the same. Returns a line about each thing that the capture does
/// not hold; empty when the replay gives every sample. Throws Failure (ExitCode::Output); the old
/// file stays then.
std::vector<std::string> writeCapture(Engine& engine, Files& files, const std::string& path,
                                      std::int64_t wallNanoseconds);

}  // namespace ovka::terminal
